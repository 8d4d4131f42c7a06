#include "getters/CMSRAID_InfoGetter.h"

#include <array>
#include <cstdint>
#include <cstdio>

#include "base/Trace.h"
#include "cli/CMSRAID_KRZ.h"

namespace {

constexpr const char* ERR_RUN_FAILED = "01";
constexpr const char* ERR_REPORT_NOT_READ = "03";
constexpr const char* ERR_REPORT_NOT_UNDERSTOOD = "04";
constexpr const char* ERR_TIMEOUT = "05";
constexpr size_t NAME_BUFFER_SIZE = 768;
// Half a gigabyte for the items of one request: of 16 MB of usual lines and of tables of SMART
// data.
constexpr size_t ITEM_MEMORY = size_t{512} << 20;
constexpr size_t MEMORY_OF_EMPTY_ITEM = 200;  // about, with either kind of std::string

size_t MemoryOfItem(const std::string& parentName, const std::string& itemName,
                    const std::string& itemValue) {
    return MEMORY_OF_EMPTY_ITEM + parentName.size() + itemName.size() + itemValue.size();
}

}  // namespace

CMSRAID_InfoGetter::CMSRAID_InfoGetter()
    : m_RootItem(m_RaidList.end()), m_CurTitle(m_RaidList.end()) {
    const CTraceScope trace("CMSRAID_InfoGetter::CMSRAID_InfoGetter");
}

CMSRAID_InfoGetter::~CMSRAID_InfoGetter() {
    const CTraceScope trace("CMSRAID_InfoGetter::~CMSRAID_InfoGetter");
}

bool CMSRAID_InfoGetter::GetInfo(long ctrlNo, std::list<CItemDisp*>& out) {
    const CTraceScope trace("CMSRAID_InfoGetter::GetInfo");
    return _GetInfo(FormatCommand(m_CommandFormat, CStringUtil::NumberToTString(ctrlNo)), out);
}

bool CMSRAID_InfoGetter::GetInfo(std::list<CItemDisp*>& out) {
    const CTraceScope trace("CMSRAID_InfoGetter::GetInfo");
    return _GetInfo(m_CommandFormat, out);
}

bool CMSRAID_InfoGetter::_GetInfo(const std::string& command, std::list<CItemDisp*>& out) {
    m_RaidList.clear();
    const CResultFile file(GetRsltFilePath());
    unsigned long cliRtn = 0;
    const unsigned int run = CMSRAID_KRZ::ExecCli(command, &cliRtn, file);
    if (run != KRZ_OK) {
        QOR_TRACE(FAILURE, "Failed to execute krzcli command ret=%08x.", run);
        NoteRunFailure(run, command);
        return false;
    }
    return ParseReport(file.Path(), command, out);
}

bool CMSRAID_InfoGetter::ParseReport(const std::string& path, const std::string& command,
                                     std::list<CItemDisp*>& out) {
    CResultStream stream;
    if (!OpenReport(path, stream)) {
        return false;
    }
    CItemListGuard guard(m_RaidList);
    bool isParsed = false;
    try {
        isParsed = Parse(stream, command);
    } catch (const CReportTooLarge&) {
        FreeItemList();
        return RefuseAsTooLarge(path);
    }
    if (!IsReadToTheEnd(path, stream)) {
        return false;
    }
    if (!isParsed) {
        QOR_TRACE(FAILURE, "Failed to parse RAID Information ret=%08x.", 0U);
        m_ErrCode.insert(0, ERR_REPORT_NOT_UNDERSTOOD);
        return false;
    }
    guard.Dismiss();
    out.splice(out.end(), m_RaidList);
    return true;
}

void CMSRAID_InfoGetter::NoteRunFailure(unsigned int result, const std::string& command) {
    m_ErrCode.insert(0, result == KRZ_TIMEOUT ? ERR_TIMEOUT : ERR_RUN_FAILED);
    m_ErrDetail = command;
}

bool CMSRAID_InfoGetter::OpenReport(const std::string& path, CResultStream& stream) {
    if (IsTooLarge(path)) {
        return RefuseAsTooLarge(path);
    }
    const bool isOpen = stream.Open(path);
    if (!isOpen) {
        NoteUnreadableReport(path);
    }
    return isOpen;
}

bool CMSRAID_InfoGetter::IsReadToTheEnd(const std::string& path, const std::ifstream& stream) {
    if (stream.bad()) {
        NoteUnreadableReport(path);
        return false;
    }
    return !IsTooLarge(path) || RefuseAsTooLarge(path);
}

ItemPosition CMSRAID_InfoGetter::InsertItem(std::list<CItemDisp*>& list, ItemPosition position,
                                            const std::string& parentName,
                                            const std::string& itemName,
                                            const std::string& itemValue, EItemFlag flag) {
    TakeMemory(MemoryOfItem(parentName, itemName, itemValue));
    return ::InsertItem(list, position, parentName, itemName, itemValue, flag);
}

ItemPosition CMSRAID_InfoGetter::AddItem(std::list<CItemDisp*>& list, const std::string& parentName,
                                         const std::string& itemName, const std::string& itemValue,
                                         EItemFlag flag) {
    return InsertItem(list, list.end(), parentName, itemName, itemValue, flag);
}

void CMSRAID_InfoGetter::TakeMemory(size_t bytes) {
    *m_CountedMemory += bytes;
    if (*m_CountedMemory > ITEM_MEMORY) {
        throw CReportTooLarge();
    }
}

void CMSRAID_InfoGetter::CountAlso(const std::list<CItemDisp*>& items) {
    for (const CItemDisp* item : items) {
        *m_CountedMemory += MemoryOfItem(item->ParentName(), item->ItemName(), item->ItemValue());
    }
}

bool CMSRAID_InfoGetter::RefuseAsTooLarge(const std::string& path) {
    TraceTooLarge(path);
    m_ErrCode.insert(0, ERR_REPORT_NOT_UNDERSTOOD);
    return false;
}

void CMSRAID_InfoGetter::NoteUnreadableReport(const std::string& path) {
    QOR_TRACE(FAILURE, "Failed to open file output by krzcli(%s).", path.c_str());
    m_ErrCode.insert(0, ERR_REPORT_NOT_READ);
}

bool CMSRAID_InfoGetter::Parse(std::ifstream& stream, std::string) {
    const CTraceScope trace("CMSRAID_InfoGetter::Parse");
    bool result = true;
    for (std::string line; result && std::getline(stream, line);) {
        result = CreateRAIDItem(stream, line);
    }
    if (!result) {
        QOR_TRACE(FAILURE, "CreateRAIDItem is FAILED (ret=%08x).", 0U);
    }
    FreeItemList();
    return result;
}

bool CMSRAID_InfoGetter::ParseTitle(std::ifstream&, std::string line) {
    if (m_RaidList.empty()) {
        QOR_TRACE(FAILURE, "m_RaidList size is zero.");
        return false;
    }
    if (!line.starts_with(TITLE_BEGIN_NAME)) {
        QOR_TRACE(FAILURE, "Failed to ParseTitle. (%s)", line.c_str());
        return false;
    }
    Trim(line);
    m_CurTitle = AddItem(m_RaidList, (*m_RootItem)->ItemName(), line, "");
    return true;
}

bool CMSRAID_InfoGetter::ParseKeyValue(std::ifstream&, std::string line,
                                       std::list<CItemDisp*>& list) {
    if (m_RaidList.empty()) {
        QOR_TRACE(FAILURE, "m_RaidList size is zero.");
        return false;
    }
    const size_t colon = ColonOf(line);
    if (colon == std::string::npos) {
        QOR_TRACE(FAILURE, "Failed to parse ParseKeyValue.(%s)", line.c_str());
        return false;
    }
    m_Value.assign(line, colon + 1);
    line.resize(colon);  // the key
    Trim(line);
    Trim(m_Value);
    AddItem(list, CurTitleName(), line, m_Value);
    return true;
}

void CMSRAID_InfoGetter::AddRootItem() {}

void CMSRAID_InfoGetter::FreeItemList() {}

void CMSRAID_InfoGetter::Trim(std::string& text) {
    // In place: every line of a report comes by here. Both views are of the same bytes, which
    // text.data() would leave where a std::string of before C++11 shares them.
    const std::string_view whole = text;
    const std::string_view trimmed = TrimmedView(whole);
    const auto begin = static_cast<size_t>(trimmed.data() - whole.data());
    text.resize(begin + trimmed.size());
    text.erase(0, begin);
}

void CMSRAID_InfoGetter::StartRoot(const char* rootName) {
    m_RootItem = AddItem(m_RaidList, "", rootName, "");
    m_CurTitle = m_RootItem;
}

void CMSRAID_InfoGetter::AddPlaceholder(const char* name) {
    AddItem(m_RaidList, CurTitleName(), name, "", EItemFlag::PLACEHOLDER);
}

bool CMSRAID_InfoGetter::ParseHeaderNumber(std::ifstream& stream, const std::string& line,
                                           std::list<CItemDisp*>& held, const char* name) {
    if (!ParseKeyValue(stream, line, held)) {
        QOR_TRACE(FAILURE, "ParseKeyValue is FAILED (ret=%08x).", 0U);
        return false;
    }
    held.back()->SetParentName(GENERAL_INFO_TITLE_NAME);
    held.back()->SetItemName(name);
    return true;
}

bool CMSRAID_InfoGetter::ReadSectionLine(std::ifstream& stream, std::string& line) {
    if (!std::getline(stream, line)) {
        return false;
    }
    Trim(line);
    return !line.empty();
}

void CMSRAID_InfoGetter::UngetLine(std::ifstream& stream, const std::string& line) {
    const std::streamoff lineFeed = stream.eof() ? 0 : 1;
    stream.clear(stream.rdstate() & std::ios::badbit);  // a failure to read stays one
    stream.seekg(-(static_cast<std::streamoff>(line.size()) + lineFeed), std::ios::cur);
}

std::string CMSRAID_InfoGetter::GetRsltFilePath() {
    static std::uint64_t count = 0;
    const unsigned long thread = GetCurrentThreadId();
    const std::string installPath = CFileUtility::GetInstallPath(0);
    if (installPath.empty()) {
        QOR_TRACE(FAILURE, "Failed to get INSTALLPATH_CIM.");
    }
    const std::string tmpDir = installPath + "/" + PROVIDER_TMP_DIR;
    _mkdir(tmpDir.c_str());
    const std::string resultDir = tmpDir + "/" + MSRAID_DIR;
    _mkdir(resultDir.c_str());
    std::array<char, NAME_BUFFER_SIZE> prefix = {};
    std::snprintf(prefix.data(), prefix.size(), "%08lx_%08lx_", thread,
                  static_cast<unsigned long>(count++));
    return resultDir + "/" + prefix.data() + KRZ_RSLT_FILE;
}
