// Counts the RAID controllers, and reports one controller ("krzcli -ctrlinfo").
//
//     report   = { ignored line } "RAID Controller" … ":" number LF { section }
//     section  = title LF { key/value LF } LF
//
// Three sections are special: under General Information the controller number comes first; Firmware
// and Settings are read to their blank line and get placeholders for what the tool left out.
#ifndef QOR_GETTERS_CMSRAID_CTRLINFOGETTER_H
#define QOR_GETTERS_CMSRAID_CTRLINFOGETTER_H

#include "cli/ResultFile.h"
#include "getters/CMSRAID_InfoGetter.h"

class CMSRAID_CtrlInfoGetter : public CMSRAID_InfoGetter {
public:
    static constexpr const char* CTRL_INFO_ROOT_NAME = "Controller Information";
    static constexpr const char* CTRL_RECON_RATE_NAME = "Reconstruction Rate";
    static constexpr const char* CTRL_CC_RATE_NAME = "Consistency Check Rate";
    static constexpr const char* CTRL_FIRM_PACK_VER_NAME = "Firmware Package Version";
    static constexpr const char* CTRL_FIRM_VER_NAME = "Firmware Version";
    static constexpr const char* CTRL_FIRM_BUILD_TIME_NAME = "Firmware Build Time";
    static constexpr const char* CTRL_FIRM_TITLE_NAME = "### Firmware/BIOS/Driver Information ###";
    static constexpr const char* CTRL_SETINFO_TITLE_NAME =
        "### Controller Settings Information ###";
    static constexpr const char* CTRL_NO_NAME = "Controller No.";
    static constexpr const char* CTRL_SUBVEN_ID_OLD_NAME = "SubVendor ID";
    static constexpr const char* CTRL_SUBVEN_ID_NAME = "Subsystem Vendor ID";
    static constexpr const char* CTRL_SUBSYS_ID_OLD_NAME = "SubDevice ID";
    static constexpr const char* CTRL_SUBSYS_ID_NAME = "Subsystem ID";

    CMSRAID_CtrlInfoGetter();
    ~CMSRAID_CtrlInfoGetter() override;

    // Writes the number of controllers to `*count` (above 127 it wraps, 0 on failure); `count` may
    // not be null. False if the tool or its report failed; ErrCode() and ErrDetail() tell why. No
    // controller is no failure, but where the tool tells so by an error, the two are set all the
    // same: look at them after a failure only.
    bool GetCtrlNum(char* count);

    bool CreateRAIDItem(std::ifstream& stream, std::string line) override;
    void AddRootItem() override;
    void FreeItemList() override;

    // The header line: its number is held until General Information comes.
    bool ParseCtrlNo(std::ifstream& stream, std::string line);
    // The lines of the Settings section, after its title.
    bool ParseSettingInfo(std::ifstream& stream, std::string line);
    // The lines of the Firmware section, after its title.
    bool ParseFirmwareInfo(std::ifstream& stream, std::string line);

private:
    bool CountControllers(const std::string& command, const CResultFile& file, long& count);
    bool ParseOtherLine(std::ifstream& stream, std::string line);
    bool ParseSection(std::ifstream& stream, const std::string& line);

    CItemListOwner m_CtrlHeadItemList;
};

#endif  // QOR_GETTERS_CMSRAID_CTRLINFOGETTER_H
