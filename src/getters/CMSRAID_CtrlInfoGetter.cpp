#include "getters/CMSRAID_CtrlInfoGetter.h"

#include <string_view>
#include <utility>

#include "base/Trace.h"
#include "cli/CMSRAID_KRZ.h"
#include "cli/ResultFile.h"
#include "getters/Text.h"

namespace {

constexpr const char* ALL_CONTROLLERS = "All";
constexpr const char* NO_CONTROLLER_HEAD = "Error - No RAID controller is found.";

bool IsCtrlHeader(const std::string& line) {
    return line.starts_with(CMSRAID_InfoGetter::CTRL_NO_NAME_HEAD) && Contains(line, ":");
}

// Older tools have other names for two keys.
void UseCurrentName(CItemDisp& item) {
    const std::string_view name = item.ItemName();
    if (name == CMSRAID_CtrlInfoGetter::CTRL_SUBVEN_ID_OLD_NAME) {
        item.SetItemName(CMSRAID_CtrlInfoGetter::CTRL_SUBVEN_ID_NAME);
    } else if (name == CMSRAID_CtrlInfoGetter::CTRL_SUBSYS_ID_OLD_NAME) {
        item.SetItemName(CMSRAID_CtrlInfoGetter::CTRL_SUBSYS_ID_NAME);
    }
}

}  // namespace

CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter() {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::CMSRAID_CtrlInfoGetter");
    m_CommandFormat = "krzcli -ctrlinfo -a%s";
}

CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter() {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::~CMSRAID_CtrlInfoGetter");
}

bool CMSRAID_CtrlInfoGetter::GetCtrlNum(char* count) {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::GetCtrlNum");
    const CResultFile file(GetRsltFilePath());
    long number = 0;
    const bool result =
        CountControllers(FormatCommand(m_CommandFormat, ALL_CONTROLLERS), file, number);
    *count = static_cast<char>(number);
    return result;
}

bool CMSRAID_CtrlInfoGetter::CountControllers(const std::string& command, const CResultFile& file,
                                              long& count) {
    unsigned long exitCode = 0;
    const unsigned int run = CMSRAID_KRZ::ExecCliNoRetry(command, &exitCode, file);
    if (run != KRZ_OK) {
        QOR_TRACE(FAILURE, "Failed to execute krzcli command %08x.", run);
        NoteRunFailure(run, command);
        if (run != KRZ_TOOL_ERROR || !FirstLineBeginsWith(file.Path(), NO_CONTROLLER_HEAD)) {
            return false;
        }
        QOR_TRACE(RESULT, "No RAID controller is found.");
        return true;
    }
    CResultStream stream;
    if (!OpenReport(file.Path(), stream)) {
        return false;
    }
    long headers = 0;
    for (std::string line; std::getline(stream, line);) {
        headers += IsCtrlHeader(line) ? 1 : 0;
    }
    if (!IsReadToTheEnd(file.Path(), stream)) {
        return false;
    }
    count = headers;
    return true;
}

bool CMSRAID_CtrlInfoGetter::CreateRAIDItem(std::ifstream& stream, std::string line) {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::CreateRAIDItem");
    if (IsCtrlHeader(line)) {
        AddRootItem();
        return ParseCtrlNo(stream, line);
    }
    if (line.starts_with(TITLE_BEGIN_NAME)) {
        return ParseSection(stream, line);
    }
    return ParseOtherLine(stream, std::move(line));
}

bool CMSRAID_CtrlInfoGetter::ParseOtherLine(std::ifstream& stream, std::string line) {
    if (!IsKeyValueLine(line) || m_RaidList.empty()) {
        return true;
    }
    if (!ParseKeyValue(stream, std::move(line), m_RaidList)) {
        return false;
    }
    UseCurrentName(*m_RaidList.back());
    return true;
}

bool CMSRAID_CtrlInfoGetter::ParseSection(std::ifstream& stream, const std::string& line) {
    if (!ParseTitle(stream, line)) {
        return false;
    }
    const std::string& title = m_RaidList.back()->ItemName();
    if (title == GENERAL_INFO_TITLE_NAME) {
        m_RaidList.splice(m_RaidList.end(), m_CtrlHeadItemList);
        return true;
    }
    if (title == CTRL_FIRM_TITLE_NAME) {
        return ParseFirmwareInfo(stream, line);
    }
    if (title == CTRL_SETINFO_TITLE_NAME) {
        return ParseSettingInfo(stream, line);
    }
    return true;
}

bool CMSRAID_CtrlInfoGetter::ParseCtrlNo(std::ifstream& stream, std::string line) {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::ParseCtrlNo", line.c_str());
    return ParseHeaderNumber(stream, line, m_CtrlHeadItemList, CTRL_NO_NAME);
}

bool CMSRAID_CtrlInfoGetter::ParseSettingInfo(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::ParseSettingInfo");
    if (!stream.good()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    bool reconRateSeen = false;
    ItemPosition placeholderPosition = m_RaidList.end();
    const bool result = ParsePairs(stream, [&](const CItemDisp& item) {
        if (item.ItemName() == CTRL_RECON_RATE_NAME) {
            reconRateSeen = true;
        } else if (item.ItemName() == CTRL_CC_RATE_NAME) {
            placeholderPosition = std::prev(m_RaidList.end());
        }
    });
    if (!result) {
        QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (hr=%08x).", 0U);
        return false;
    }
    if (!reconRateSeen) {
        if (placeholderPosition != m_RaidList.end()) {
            ++placeholderPosition;
        }
        InsertItem(m_RaidList, placeholderPosition, CurTitleName(), CTRL_RECON_RATE_NAME, "",
                   EItemFlag::PLACEHOLDER);
    }
    return true;
}

bool CMSRAID_CtrlInfoGetter::ParseFirmwareInfo(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::ParseFirmwareInfo");
    if (!stream.good()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    const ItemPosition title = std::prev(m_RaidList.end());
    bool packageSeen = false;
    bool versionSeen = false;
    bool buildTimeSeen = false;
    const bool result = ParsePairs(stream, [&](const CItemDisp& item) {
        packageSeen = packageSeen || item.ItemName() == CTRL_FIRM_PACK_VER_NAME;
        versionSeen = versionSeen || item.ItemName() == CTRL_FIRM_VER_NAME;
        buildTimeSeen = buildTimeSeen || item.ItemName() == CTRL_FIRM_BUILD_TIME_NAME;
    });
    if (!result) {
        QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
        return false;
    }
    const ItemPosition first = std::next(title);
    const auto addPlaceholder = [&](const char* name) {
        InsertItem(m_RaidList, first, CurTitleName(), name, "", EItemFlag::PLACEHOLDER);
    };
    if (!packageSeen) {
        addPlaceholder(CTRL_FIRM_PACK_VER_NAME);
    }
    // Crossed on purpose: hosts rely on which placeholder comes with which missing line.
    if (!buildTimeSeen) {
        addPlaceholder(CTRL_FIRM_VER_NAME);
    }
    if (!versionSeen) {
        addPlaceholder(CTRL_FIRM_BUILD_TIME_NAME);
    }
    return true;
}

void CMSRAID_CtrlInfoGetter::AddRootItem() {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::AddRootItem");
    StartRoot(CTRL_INFO_ROOT_NAME);
}

void CMSRAID_CtrlInfoGetter::FreeItemList() {
    const CTraceScope trace("CMSRAID_CtrlInfoGetter::FreeItemList");
    DeleteItems(m_CtrlHeadItemList);
}
