// Reports the physical drives of one controller ("krzcli -pdinfo").
//
//     report = { drive }
//     drive  = "PD" number "(" kind ")" LF { section }
//     kind   = "LD" number | "GHS" … | "RLD" … | "DHS" … ("RG" | "sRG") number | anything else
//     section = title LF { key/value LF } LF
//
// Every drive gets a root item of its own. Which RAID group a drive belongs to is not in this
// report; it is looked up in the logical drives' report first.
#ifndef QOR_GETTERS_CMSRAID_PDINFOGETTER_H
#define QOR_GETTERS_CMSRAID_PDINFOGETTER_H

#include <map>

#include "getters/CMSRAID_InfoGetter.h"

class CMSRAID_PDInfoGetter : public CMSRAID_InfoGetter {
public:
    static constexpr const char* PD_INFO_ROOT_NAME = "Physical Drive Information";
    static constexpr const char* PDLD_NO_NAME_HEAD = "PD";
    static constexpr const char* PD_STAT_NAME_HEAD = "PD Status";  // the tool's key
    static constexpr const char* PD_TEMPERATURE_NAME = "Temperature";
    static constexpr const char* PD_ENCL_ID_NAME = "Enclosure ID";
    static constexpr const char* PD_STAT_BASIC_NAME = "PD Status";  // the item made from it
    static constexpr const char* PD_STAT_DETAIL_NAME = "PD Status(Detail)";
    static constexpr const char* SLOT_INFO_TITLE_NAME = "### Slot Information ###";
    static constexpr const char* ENCL_PROP_TITLE_NAME = "### Enclosure Properties Information ###";
    static constexpr const char* SMART_INFO_TITLE_NAME = "### SMART Information ###";
    static constexpr const char* PD_STAT_D_ONLINE = "ONLINE";
    static constexpr const char* PD_STAT_D_COPYBACK = "COPYBACK";
    static constexpr const char* PD_STAT_D_UNCONFIG_GOOD = "Unconfig GOOD";
    static constexpr const char* PD_STAT_D_HOT_SPARE = "HOT SPARE";
    static constexpr const char* PD_STAT_D_OFFLINE = "OFFLINE";
    static constexpr const char* PD_STAT_D_UNCONFIG_BAD = "Unconfig BAD";
    static constexpr const char* PD_STAT_D_FAILED = "FAILED";
    static constexpr const char* PD_STAT_D_REBUILD = "REBUILD";
    static constexpr const char* PD_STAT_B_NO_ERROR = "NO ERROR";
    static constexpr const char* PD_STAT_B_ERROR = "ERROR";
    static constexpr const char* PD_STAT_B_REBUILD = "REBUILD";
    static constexpr const char* PD_STAT_B_UNKNOWN = "UNKNOWN";
    static constexpr const char* PD_PD_NO_NAME = "PD No.";
    static constexpr const char* PD_TYPE_LD = "LD";
    static constexpr const char* PD_TYPE_GHS = "GHS";
    static constexpr const char* PD_TYPE_DHS = "DHS";
    static constexpr const char* PD_TYPE_RLD = "RLD";
    static constexpr const char* PD_IFTYPE_NAME = "Interface Type";
    static constexpr const char* PD_IFTYPE_SAS = "SAS";
    static constexpr const char* PD_IFTYPE_SATA = "SATA";
    static constexpr const char* PD_POWER_STAT_NAME = "Power Status";

    CMSRAID_PDInfoGetter();
    // For a tool of this version: from 4.0 on it is asked to leave SMART data out, which takes long
    // to read and is not shown here. Any other form than "major.minor" is taken for an old tool.
    explicit CMSRAID_PDInfoGetter(const std::string& version);
    ~CMSRAID_PDInfoGetter() override;

    using CMSRAID_InfoGetter::GetInfo;
    bool GetInfo(long ctrlNo, std::list<CItemDisp*>& out) override;
    bool CreateRAIDItem(std::ifstream& stream, std::string line) override;
    void AddRootItem() override;
    void FreeItemList() override;

    // Parts of a report. Each takes the line that opens its part; those that read on do so from
    // `stream`, which may be at its end but not in error. All but ParsePDLDNo() need a root item.
    // False rejects the report.

    // Slot 11. Skips the SMART section, whose title is the last item, up to the next line that
    // begins with "PD".
    virtual bool ParseSMARTInfo(std::ifstream& stream, std::string line);

    // The lines of General Information; takes in what was held for it. Its spelling, with "lnfo",
    // is the operation's name.
    bool ParseGeneralnfo(std::ifstream& stream, std::string line);
    // Turns the last item, the tool's status, into the basic and the detailed one.
    bool ParsePDStatus(std::ifstream& stream, std::string line);
    // The header line of a drive: its three items are held until General Information comes.
    bool ParsePDLDNo(std::ifstream& stream, std::string line);
    // The lines of Slot Information, after a placeholder.
    bool ParseSlotInfo(std::ifstream& stream, std::string line);

protected:
    std::string m_IFType;  // the drive's interface type, for the SMART table

private:
    bool ParseSection(std::ifstream& stream, const std::string& line);
    bool ParseKind(const std::string& header, const std::string& kind);
    bool ParseLDKind(const std::string& header, const std::string& kind);
    bool ParseDHSKind(const std::string& header, const std::string& kind);
    void AddHeadItem(const char* name, const std::string& value);

    CItemListOwner m_PDHeadItemList;
    std::map<long, std::string> m_MapRGNo;

    // Titles that left m_RaidList while they still are the current section. They never reach a
    // host, so they are not handed to DeleteItemDisp but freed with the getter.
    class CRetiredTitles : public ItemList {
    public:
        CRetiredTitles() = default;
        ~CRetiredTitles();
        CRetiredTitles(const CRetiredTitles&) = delete;
        CRetiredTitles& operator=(const CRetiredTitles&) = delete;
    };
    CRetiredTitles m_RetiredTitles;
};

#endif  // QOR_GETTERS_CMSRAID_PDINFOGETTER_H
