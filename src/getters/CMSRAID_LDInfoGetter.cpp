#include "getters/CMSRAID_LDInfoGetter.h"

#include <string_view>
#include <utility>

#include "base/Trace.h"
#include "cli/CMSRAID_KRZ.h"
#include "cli/ResultFile.h"
#include "getters/Text.h"

namespace {

// About what an entry of the map of groups takes besides its text.
constexpr size_t MEMORY_OF_EMPTY_ENTRY = sizeof(std::pair<long, std::string>) + 6 * sizeof(void*);

bool IsRGHeader(const std::string& line) {
    return BeginsWithNumbered(line, CMSRAID_InfoGetter::RG_NO_HEAD) ||
           BeginsWithNumbered(line, CMSRAID_InfoGetter::S_RG_NO_HEAD) ||
           BeginsWithNumbered(line, CMSRAID_InfoGetter::CACHE_RG_NO_HEAD);
}

}  // namespace

CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter() {
    const CTraceScope trace("CMSRAID_LDInfoGetter::CMSRAID_LDInfoGetter");
    m_CommandFormat = "krzcli -ldpdinfo -a%s";
}

CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter() {
    const CTraceScope trace("CMSRAID_LDInfoGetter::~CMSRAID_LDInfoGetter");
}

bool CMSRAID_LDInfoGetter::GetPDRGNo(long ctrlNo, std::map<long, std::string>& mapRGNo) {
    const CTraceScope trace("CMSRAID_LDInfoGetter::GetPDRGNo");
    const CResultFile file(GetRsltFilePath());
    const std::string command =
        FormatCommand(m_CommandFormat, CStringUtil::NumberToTString(ctrlNo));
    unsigned long exitCode = 0;
    const unsigned int run = CMSRAID_KRZ::ExecCli(command, &exitCode, file);
    if (run != KRZ_OK) {
        QOR_TRACE(FAILURE, "Failed to execute krzcli command %08x.", run);
        NoteRunFailure(run, command);
        return false;
    }
    CResultStream stream;
    if (!OpenReport(file.Path(), stream)) {
        return false;
    }
    std::map<long, std::string> found;
    try {
        ReadPDRGNo(stream, found);
    } catch (const CReportTooLarge&) {
        return RefuseAsTooLarge(file.Path());
    }
    if (!IsReadToTheEnd(file.Path(), stream)) {
        return false;
    }
    mapRGNo.merge(found);
    return true;
}

void CMSRAID_LDInfoGetter::ReadPDRGNo(std::ifstream& stream, std::map<long, std::string>& mapRGNo) {
    const std::string_view pdHead = LD_PDLIST_NAME_HEAD;
    std::string group;
    for (std::string raw; std::getline(stream, raw);) {
        const std::string_view line = TrimmedView(raw);
        if (line.starts_with(RG_NO_NAME) && Contains(line, ":")) {
            group = ValueOfLine(line);
        } else if (line.starts_with(pdHead) && Contains(line, "(") && !group.empty()) {
            const std::string_view number =
                line.substr(pdHead.size(), line.find('(') - pdHead.size());
            TakeMemory(MEMORY_OF_EMPTY_ENTRY + group.size());
            mapRGNo.emplace(CStringUtil::TStringToNumber(Trimmed(number)), group);
        }
    }
}

bool CMSRAID_LDInfoGetter::CreateRAIDItem(std::ifstream& stream, std::string line) {
    const CTraceScope trace("CMSRAID_LDInfoGetter::CreateRAIDItem");
    if (IsRGHeader(line)) {
        AddRootItem();
        return ParseRAIDlnfo(stream, line);
    }
    if (line.starts_with(CTRL_NO_NAME_HEAD) && Contains(line, ":")) {
        return true;
    }
    if (line.starts_with(TITLE_BEGIN_NAME)) {
        return ParseSection(stream, line);
    }
    if (Contains(line, LD_LDLIST_NAME_HEAD) && Contains(line, "(")) {
        return ParseLDList(stream, line);
    }
    if (Contains(line, LD_PDLIST_NAME_HEAD)) {
        return ParsePDList(stream, line);
    }
    return ParseOtherLine(stream, std::move(line));
}

bool CMSRAID_LDInfoGetter::ParseOtherLine(std::ifstream& stream, std::string line) {
    if (!IsKeyValueLine(line) || m_RaidList.empty()) {
        return true;
    }
    if (!ParseKeyValue(stream, std::move(line), m_RaidList)) {
        return false;
    }
    if (std::string_view(m_RaidList.back()->ItemName()) == LD_ACCESS_POLICY_NAME_OLD) {
        m_RaidList.back()->SetItemName(LD_ACCESS_POLICY_NAME);
    }
    return true;
}

bool CMSRAID_LDInfoGetter::ParseSection(std::ifstream& stream, const std::string& line) {
    std::string titleLine = line;
    CStringUtil::strReplace(titleLine, "\t", " ");
    if (!ParseTitle(stream, titleLine)) {
        return false;
    }
    const std::string& title = m_RaidList.back()->ItemName();
    if (title == GENERAL_INFO_TITLE_NAME) {
        return ParseGeneralnfo(stream, titleLine);
    }
    if (title == LD_SET_INFO_TITLE_NAME) {
        m_RaidList.splice(m_RaidList.end(), m_LDSetItemList);
    }
    return true;
}

bool CMSRAID_LDInfoGetter::ParseRAIDlnfo(std::ifstream& stream, std::string headerLine) {
    const CTraceScope trace("CMSRAID_LDInfoGetter::ParseRAIDlnfo", headerLine.c_str());
    if (!stream.good()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    for (std::string raw; std::getline(stream, raw);) {
        std::string line = raw;
        Trim(line);
        if (line.empty()) {
            break;
        }
        if (!IsKeyValueLine(line)) {
            UngetLine(stream, raw);
            break;
        }
        if (!ParseKeyValue(stream, line, m_RGItemList)) {
            QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
            return false;
        }
        m_RGItemList.back()->SetParentName(GENERAL_INFO_TITLE_NAME);
    }
    return true;
}

bool CMSRAID_LDInfoGetter::CutLastPart(std::string_view& text, ItemList& list, const char* parent,
                                       const char* name) {
    const size_t comma = text.rfind(',');
    if (comma == std::string_view::npos || comma + 1 == text.size()) {
        return false;
    }
    AddItem(list, parent, name, Trimmed(text.substr(comma + 1)));
    text = text.substr(0, comma);
    return true;
}

bool CMSRAID_LDInfoGetter::AddLDParts(std::string_view text, size_t open, ItemList& list,
                                      const char* parent) {
    const size_t close = text.rfind(')');
    if (close == std::string_view::npos) {
        return false;
    }
    text = text.substr(0, close);
    if (!CutLastPart(text, list, parent, LD_STATE_NAME) ||
        !CutLastPart(text, list, parent, LD_CAPACITY_NAME) || text.size() < open + 1) {
        return false;
    }
    AddItem(list, parent, LD_NAME_NAME, Trimmed(text.substr(open + 1)));
    return true;
}

bool CMSRAID_LDInfoGetter::AddListedLD(const std::string& line, ItemList& list) {
    const std::string_view head = LD_LDLIST_NAME_HEAD;
    AddItem(list, GENERAL_INFO_TITLE_NAME, LD_LIST_TITLE_NAME, "");
    const size_t open = line.find('(');
    if (open == std::string::npos || open <= head.size()) {
        return false;
    }
    AddItem(list, LD_LIST_TITLE_NAME, LD_NO_NAME,
            Trimmed(std::string_view(line).substr(1, open - 1)));
    return AddLDParts(line, open, list, LD_LIST_TITLE_NAME);
}

bool CMSRAID_LDInfoGetter::AddAssocLD(const std::string& line, const std::string& section,
                                      ItemList& list) {
    const char* parent = LD_ASSOC_CACHE_NAME;
    AddItem(list, section, parent, "");
    const size_t open = line.find('(');
    if (open == std::string::npos || open + 1 == line.size()) {
        return false;
    }
    AddItem(list, parent, LD_NO_NAME, Trimmed(std::string_view(line).substr(0, open)));
    return AddLDParts(line, open, list, parent);
}

bool CMSRAID_LDInfoGetter::ParseLDList(std::ifstream&, std::string line) {
    const CTraceScope trace("CMSRAID_LDInfoGetter::ParseLDList", line.c_str());
    if (!AddListedLD(line, m_LDListItemList)) {
        QOR_TRACE(FAILURE, "Parse LDList Error(%s).", line.c_str());
        return false;
    }
    return true;
}

bool CMSRAID_LDInfoGetter::ParsePDList(std::ifstream& stream, std::string line) {
    // Traced under the name of its sibling: support tools know it so.
    const CTraceScope trace("CMSRAID_LDInfoGetter::ParseLDList", line.c_str());
    if (!stream.good()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    if (m_RaidList.empty()) {
        QOR_TRACE(FAILURE, "m_RaidList size is zero.");
        return false;
    }
    const ItemPosition section = m_CurTitle;
    const bool result = ParseListedPD(stream, line);
    m_CurTitle = section;
    return result;
}

bool CMSRAID_LDInfoGetter::ParseListedPD(std::ifstream& stream, const std::string& line) {
    m_CurTitle = AddItem(m_RaidList, CurTitleName(), LD_PDLIST_TITLE_NAME, "");
    const size_t open = line.find('(');
    if (open != std::string::npos && open > std::string_view(LD_PDLIST_NAME_HEAD).size()) {
        AddItem(m_RaidList, LD_PDLIST_TITLE_NAME, PD_NO_NAME,
                Trimmed(std::string_view(line).substr(2, open - 2)));
    }
    if (!ParsePairs(stream, [](const CItemDisp&) {})) {
        QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
        return false;
    }
    return true;
}

bool CMSRAID_LDInfoGetter::ParseGeneralnfo(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_LDInfoGetter::ParseGeneralnfo");
    if (!stream.good()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    m_RaidList.splice(m_RaidList.end(), m_RGItemList);
    m_RaidList.splice(m_RaidList.end(), m_LDListItemList);
    ItemPosition pdNumber = m_RaidList.end();
    for (std::string line; ReadSectionLine(stream, line);) {
        if (line.starts_with(LD_ASSOC_CACHE_NAME)) {
            return ParseAssocBlock(stream, line, pdNumber);
        }
        if (!IsKeyValueLine(line)) {
            continue;
        }
        if (!ParseKeyValue(stream, line, m_RaidList)) {
            QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
            return false;
        }
        if (m_RaidList.back()->ItemName() == PD_NUM_NAME) {
            pdNumber = std::prev(m_RaidList.end());
        } else if (m_RaidList.back()->ItemName() == LD_ACCESS_POLICY_NAME_OLD) {
            MoveAccessPolicy();
        }
    }
    AddPlaceholder(LD_ASSOC_CACHE_NAME);
    return true;
}

// The access policy is shown under LD Settings, whatever section the tool printed it in.
void CMSRAID_LDInfoGetter::MoveAccessPolicy() {
    AddItem(m_LDSetItemList, LD_SET_INFO_TITLE_NAME, LD_ACCESS_POLICY_NAME,
            m_RaidList.back()->ItemValue());
    DeleteItemDisp(m_RaidList.back());
    m_RaidList.pop_back();
}

// A cache LD has no stripe size and no access policy of its own.
bool CMSRAID_LDInfoGetter::ParseAssocBlock(std::ifstream& stream, const std::string& line,
                                           ItemPosition pdNumber) {
    if (!ParseAssocLD(stream, line)) {
        QOR_TRACE(FAILURE, "ParseAssocLD is FAILED (ret=%08x).", 0U);
        return false;
    }
    InsertItem(m_RaidList, pdNumber, CurTitleName(), LD_STRIPE_SIZE_NAME, "",
               EItemFlag::PLACEHOLDER);
    AddItem(m_LDSetItemList, LD_SET_INFO_TITLE_NAME, LD_ACCESS_POLICY_NAME, "",
            EItemFlag::PLACEHOLDER);
    return true;
}

bool CMSRAID_LDInfoGetter::ParseAssocLD(std::ifstream& stream, std::string headLine) {
    const CTraceScope trace("CMSRAID_LDInfoGetter::ParseAssocLD");
    if (!stream.good()) {
        QOR_TRACE(FAILURE, "Invalid Arg.");
        return false;
    }
    for (std::string line; ReadSectionLine(stream, line);) {
        if (!AddAssocLD(line, CurTitleName(), m_RaidList)) {
            QOR_TRACE(FAILURE, "Parse Associated CacheCade LD Error(%s).", headLine.c_str());
            return false;
        }
    }
    return true;
}

void CMSRAID_LDInfoGetter::AddRootItem() {
    const CTraceScope trace("CMSRAID_LDInfoGetter::AddRootItem");
    StartRoot(LD_INFO_ROOT_NAME);
}

void CMSRAID_LDInfoGetter::FreeItemList() {
    const CTraceScope trace("CMSRAID_LDInfoGetter::FreeItemList");
    DeleteItems(m_RGItemList);
    DeleteItems(m_LDListItemList);
    DeleteItems(m_LDSetItemList);
}
