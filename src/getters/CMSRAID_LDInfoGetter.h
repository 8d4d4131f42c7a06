// Reports the RAID groups and logical drives of one controller ("krzcli -ldpdinfo").
//
//     report  = { group }
//     group   = ("RG" | "sRG" | "scRG") digit … LF { key/value LF } { ">LD" list line } { section }
//     LD line = ">LD" number "(" name "," capacity "," state ")"     the name may hold commas
//     PD line = ">>PD" number "(" … ")" LF { key/value LF } LF
//
// Every group gets a root item of its own. Items that the tool prints before the title they belong
// under are held until that title comes.
#ifndef QOR_GETTERS_CMSRAID_LDINFOGETTER_H
#define QOR_GETTERS_CMSRAID_LDINFOGETTER_H

#include <map>
#include <string>
#include <string_view>

#include "getters/CMSRAID_InfoGetter.h"

class CMSRAID_LDInfoGetter : public CMSRAID_InfoGetter {
public:
    static constexpr const char* LD_INFO_ROOT_NAME = "Logical Drive Information";
    static constexpr const char* LD_LDLIST_NAME_HEAD = ">LD";
    static constexpr const char* LD_PDLIST_NAME_HEAD = ">>PD";
    static constexpr const char* LD_ASSOC_CACHE_NAME = "Associated CacheCade LD";
    static constexpr const char* PD_NUM_NAME = "# of PD";
    static constexpr const char* LD_STRIPE_SIZE_NAME = "Stripe Size";
    static constexpr const char* LD_LIST_TITLE_NAME = "LD List";
    static constexpr const char* LD_PDLIST_TITLE_NAME = "PD List";
    static constexpr const char* LD_NAME_NAME = "Name";
    static constexpr const char* LD_CAPACITY_NAME = "Capacity";
    static constexpr const char* LD_STATE_NAME = "State";
    static constexpr const char* LD_ACCESS_POLICY_NAME_OLD = "Access Policy";
    static constexpr const char* LD_ACCESS_POLICY_NAME = "Default Access Policy";
    static constexpr const char* LD_SET_INFO_TITLE_NAME = "### LD Settings Information ###";

    CMSRAID_LDInfoGetter();
    ~CMSRAID_LDInfoGetter() override;

    // Fills `mapRGNo` with the RAID group of each physical drive of controller `ctrlNo`, by drive
    // number; the first group that lists a drive counts. False if the tool or its report failed;
    // ErrCode() and ErrDetail() tell why, the map is as it was.
    bool GetPDRGNo(long ctrlNo, std::map<long, std::string>& mapRGNo);

    bool CreateRAIDItem(std::ifstream& stream, std::string line) override;
    void AddRootItem() override;
    void FreeItemList() override;

    // Parts of a report. Each takes the line that opens its part; those that read on do so from
    // `stream`, which may not be at its end. All but ParseLDList() need a root item. False rejects
    // the report. The "lnfo" (with an l) of two names is theirs; traces show it so.

    // The lines of a group, which are held; one without a key is left to be read again.
    bool ParseRAIDlnfo(std::ifstream& stream, std::string line);
    // The lines of an LD's General Information, after its title; takes in what was held for it.
    bool ParseGeneralnfo(std::ifstream& stream, std::string line);
    // One ">LD" line, which is held.
    bool ParseLDList(std::ifstream& stream, std::string line);
    // One ">>PD" line and the lines of that drive.
    bool ParsePDList(std::ifstream& stream, std::string line);
    // The LDs that use this cache LD, one a line.
    bool ParseAssocLD(std::ifstream& stream, std::string line);

private:
    void ReadPDRGNo(std::ifstream& stream, std::map<long, std::string>& mapRGNo);
    bool ParseOtherLine(std::ifstream& stream, std::string line);
    bool ParseSection(std::ifstream& stream, const std::string& line);
    bool ParseListedPD(std::ifstream& stream, const std::string& line);
    bool ParseAssocBlock(std::ifstream& stream, const std::string& line, ItemPosition pdNumber);
    void MoveAccessPolicy();
    // Cuts the text behind the last comma off `text` and adds it to `list` as item `name`.
    bool CutLastPart(std::string_view& text, ItemList& list, const char* parent, const char* name);
    // "… (name, capacity, state)", with the bracket at `open`: read from the end, since only the
    // name may hold commas. Items added before a failure stay in the list.
    bool AddLDParts(std::string_view text, size_t open, ItemList& list, const char* parent);
    bool AddListedLD(const std::string& line, ItemList& list);
    bool AddAssocLD(const std::string& line, const std::string& section, ItemList& list);

    CItemListOwner m_RGItemList;
    CItemListOwner m_LDListItemList;
    CItemListOwner m_LDSetItemList;
};

#endif  // QOR_GETTERS_CMSRAID_LDINFOGETTER_H
