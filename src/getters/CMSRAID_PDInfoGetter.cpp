#include "getters/CMSRAID_PDInfoGetter.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

#include "base/Trace.h"
#include "cli/KRZVersion.h"
#include "getters/CMSRAID_LDInfoGetter.h"
#include "getters/Text.h"

namespace {

constexpr const char* COMMAND_WITH_SMART = "krzcli -pdinfo -a%s";
constexpr const char* COMMAND_WITHOUT_SMART = "krzcli -pdinfo -nosmart -a%s";
constexpr int LAST_MAJOR_WITHOUT_NOSMART = 3;
constexpr const char* NO_GROUP = "-";
constexpr const char* NO_DRIVE = "None";

const char* CommandForVersion(const std::string& version) {
    const std::optional<CKRZVersion> parsed = CKRZVersion::Parse(version);
    return parsed && parsed->major > LAST_MAJOR_WITHOUT_NOSMART ? COMMAND_WITHOUT_SMART
                                                                : COMMAND_WITH_SMART;
}

struct CStatusRow {
    std::string_view detail;
    const char* basic;
};

constexpr std::array<CStatusRow, 8> STATUS_TABLE = {{
    {CMSRAID_PDInfoGetter::PD_STAT_D_ONLINE, CMSRAID_PDInfoGetter::PD_STAT_B_NO_ERROR},
    {CMSRAID_PDInfoGetter::PD_STAT_D_COPYBACK, CMSRAID_PDInfoGetter::PD_STAT_B_NO_ERROR},
    {CMSRAID_PDInfoGetter::PD_STAT_D_UNCONFIG_GOOD, CMSRAID_PDInfoGetter::PD_STAT_B_NO_ERROR},
    {CMSRAID_PDInfoGetter::PD_STAT_D_HOT_SPARE, CMSRAID_PDInfoGetter::PD_STAT_B_NO_ERROR},
    {CMSRAID_PDInfoGetter::PD_STAT_D_OFFLINE, CMSRAID_PDInfoGetter::PD_STAT_B_ERROR},
    {CMSRAID_PDInfoGetter::PD_STAT_D_UNCONFIG_BAD, CMSRAID_PDInfoGetter::PD_STAT_B_ERROR},
    {CMSRAID_PDInfoGetter::PD_STAT_D_FAILED, CMSRAID_PDInfoGetter::PD_STAT_B_ERROR},
    {CMSRAID_PDInfoGetter::PD_STAT_D_REBUILD, CMSRAID_PDInfoGetter::PD_STAT_B_REBUILD},
}};

const char* BasicStatus(std::string_view detail) {
    const auto* const row =
        std::find_if(STATUS_TABLE.begin(), STATUS_TABLE.end(),
                     [&](const CStatusRow& entry) { return entry.detail == detail; });
    return row != STATUS_TABLE.end() ? row->basic : CMSRAID_PDInfoGetter::PD_STAT_B_UNKNOWN;
}

void TraceFormatError(const std::string& header) {
    QOR_TRACE(FAILURE, "ParsePDLDNo format error.(%s)", header.c_str());
}

}  // namespace

CMSRAID_PDInfoGetter::CRetiredTitles::~CRetiredTitles() {
    for (const CItemDisp* title : *this) {
        delete title;
    }
}

CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter() {
    const CTraceScope trace("CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter");
    m_CommandFormat = COMMAND_WITH_SMART;
}

CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter(const std::string& version) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::CMSRAID_PDInfoGetter");
    QOR_TRACE(RESULT, "KRZ Version is %s.", version.c_str());
    m_CommandFormat = CommandForVersion(version);
}

CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter() {
    const CTraceScope trace("CMSRAID_PDInfoGetter::~CMSRAID_PDInfoGetter");
}

bool CMSRAID_PDInfoGetter::GetInfo(long ctrlNo, std::list<CItemDisp*>& out) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::GetInfo");
    m_MapRGNo.clear();
    CMSRAID_LDInfoGetter ldGetter;
    ldGetter.CountTogetherWith(*this);
    if (!ldGetter.GetPDRGNo(ctrlNo, m_MapRGNo)) {
        QOR_TRACE(FAILURE, "CMSRAID_LDInfoGetter::GetPDRGNo is FAILED (ret=%08x).", 0U);
        m_ErrCode = ldGetter.ErrCode();
        m_ErrDetail = ldGetter.ErrDetail();
        return false;
    }
    return CMSRAID_InfoGetter::GetInfo(ctrlNo, out);
}

bool CMSRAID_PDInfoGetter::CreateRAIDItem(std::ifstream& stream, std::string line) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::CreateRAIDItem");
    if (BeginsWithNumbered(line, PDLD_NO_NAME_HEAD)) {
        AddRootItem();
        return ParsePDLDNo(stream, line);
    }
    if (line.starts_with(CTRL_NO_NAME_HEAD) && Contains(line, ":")) {
        return true;
    }
    if (line.starts_with(TITLE_BEGIN_NAME)) {
        return ParseSection(stream, line);
    }
    if (IsKeyValueLine(line) && !m_RaidList.empty()) {
        return ParseKeyValue(stream, std::move(line), m_RaidList);
    }
    return true;
}

bool CMSRAID_PDInfoGetter::ParseSection(std::ifstream& stream, const std::string& line) {
    if (!ParseTitle(stream, line)) {
        return false;
    }
    CItemDisp& title = *m_RaidList.back();
    if (title.ItemName() == GENERAL_INFO_TITLE_NAME) {
        return ParseGeneralnfo(stream, line);
    }
    if (title.ItemName() == SLOT_INFO_TITLE_NAME) {
        title.SetItemName(ENCL_PROP_TITLE_NAME);
        return ParseSlotInfo(stream, line);
    }
    if (title.ItemName().starts_with(SMART_INFO_TITLE_NAME)) {
        return ParseSMARTInfo(stream, line);
    }
    return true;
}

void CMSRAID_PDInfoGetter::AddHeadItem(const char* name, const std::string& value) {
    AddItem(m_PDHeadItemList, GENERAL_INFO_TITLE_NAME, name, value);
}

bool CMSRAID_PDInfoGetter::ParsePDLDNo(std::ifstream&, std::string line) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::ParsePDLDNo", line.c_str());
    const std::string header = Trimmed(line);
    const size_t open = header.find('(');
    if (open == std::string::npos || open <= std::string_view(PDLD_NO_NAME_HEAD).size()) {
        TraceFormatError(line);
        return false;
    }
    AddHeadItem(PD_PD_NO_NAME, Trimmed(header.substr(0, open)));
    if (open + 1 == header.size()) {
        TraceFormatError(line);
        return false;
    }
    return ParseKind(line, header.substr(open + 1));
}

// `kind` is the text behind the header's "(", the closing bracket included.
bool CMSRAID_PDInfoGetter::ParseKind(const std::string& header, const std::string& kind) {
    if (kind.starts_with(PD_TYPE_LD)) {
        return ParseLDKind(header, kind);
    }
    for (const char* type : {PD_TYPE_GHS, PD_TYPE_RLD}) {
        if (kind.starts_with(type)) {
            AddHeadItem(RG_NO_NAME, NO_GROUP);
            AddHeadItem(LD_NO_NAME, type);
            return true;
        }
    }
    if (kind.starts_with(PD_TYPE_DHS)) {
        return ParseDHSKind(header, kind);
    }
    // Only for an unassigned drive the logical drive comes before the group; hosts rely on it.
    AddHeadItem(LD_NO_NAME, NO_DRIVE);
    AddHeadItem(RG_NO_NAME, NO_GROUP);
    return true;
}

bool CMSRAID_PDInfoGetter::ParseLDKind(const std::string& header, const std::string& kind) {
    const std::string& pdNo = m_PDHeadItemList.back()->ItemValue();
    const long number =
        CStringUtil::TStringToNumber(pdNo.substr(std::string_view(PDLD_NO_NAME_HEAD).size()));
    const auto group = m_MapRGNo.find(number);
    if (group == m_MapRGNo.end()) {
        QOR_TRACE(FAILURE, "m_MapRGNo search error.(%s)", header.c_str());
    }
    AddHeadItem(RG_NO_NAME, group != m_MapRGNo.end() ? group->second : NO_GROUP);
    const size_t close = kind.find(')');
    if (close == std::string::npos) {
        TraceFormatError(header);
        return false;
    }
    AddHeadItem(LD_NO_NAME, kind.substr(0, close));
    return true;
}

bool CMSRAID_PDInfoGetter::ParseDHSKind(const std::string& header, const std::string& kind) {
    size_t group = kind.find(S_RG_NO_HEAD);
    if (group == std::string::npos) {
        group = kind.find(RG_NO_HEAD);
    }
    if (group == std::string::npos) {
        QOR_TRACE(FAILURE, "ParsePDLDNo is FAILED.(%s)", header.c_str());
        return false;
    }
    AddHeadItem(RG_NO_NAME, Trimmed(kind.substr(group, kind.size() - 1 - group)));
    AddHeadItem(LD_NO_NAME, PD_TYPE_DHS);
    return true;
}

bool CMSRAID_PDInfoGetter::ParseGeneralnfo(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::ParseGeneralnfo");
    if (stream.fail()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    m_RaidList.splice(m_RaidList.end(), m_PDHeadItemList);
    bool temperatureSeen = false;
    ItemPosition powerStatus = m_RaidList.end();
    const bool result = ParsePairs(stream, [&](const CItemDisp& item) {
        const std::string_view name = item.ItemName();
        if (name == PD_TEMPERATURE_NAME) {
            temperatureSeen = true;
        } else if (name == PD_POWER_STAT_NAME) {
            powerStatus = std::prev(m_RaidList.end());
        } else if (name == PD_IFTYPE_NAME) {
            m_IFType = item.ItemValue();
        } else if (name == PD_STAT_NAME_HEAD && !ParsePDStatus(stream, {})) {
            QOR_TRACE(FAILURE, "ParsePDStatus is FAILED (ret=%08x).", 0U);
        }
    });
    if (!result) {
        QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
        return false;
    }
    if (!temperatureSeen) {
        InsertItem(m_RaidList, powerStatus, CurTitleName(), PD_TEMPERATURE_NAME, "",
                   EItemFlag::PLACEHOLDER);
    }
    return true;
}

bool CMSRAID_PDInfoGetter::ParsePDStatus(std::ifstream&, std::string) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::ParsePDStatus");
    CItemDisp& detail = *m_RaidList.back();
    detail.SetItemName(PD_STAT_DETAIL_NAME);
    InsertItem(m_RaidList, std::prev(m_RaidList.end()), CurTitleName(), PD_STAT_BASIC_NAME,
               BasicStatus(detail.ItemValue()));
    return true;
}

bool CMSRAID_PDInfoGetter::ParseSlotInfo(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::ParseSlotInfo");
    AddPlaceholder(PD_ENCL_ID_NAME);
    if (stream.fail()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    if (!ParsePairs(stream, [](const CItemDisp&) {})) {
        QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
        return false;
    }
    return true;
}

bool CMSRAID_PDInfoGetter::ParseSMARTInfo(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_PDInfoGetter::ParseSMARTInfo");
    if (stream.fail()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    m_RetiredTitles.splice(m_RetiredTitles.end(), m_RaidList, std::prev(m_RaidList.end()));
    for (std::string raw; std::getline(stream, raw);) {
        std::string line = raw;
        Trim(line);
        if (line.starts_with(PDLD_NO_NAME_HEAD)) {
            UngetLine(stream, raw);
            break;
        }
    }
    return true;
}

void CMSRAID_PDInfoGetter::AddRootItem() {
    const CTraceScope trace("CMSRAID_PDInfoGetter::AddRootItem");
    StartRoot(PD_INFO_ROOT_NAME);
}

void CMSRAID_PDInfoGetter::FreeItemList() {
    const CTraceScope trace("CMSRAID_PDInfoGetter::FreeItemList");
    DeleteItems(m_PDHeadItemList);
}
