#include "svp/CSvpPdInfo.h"

#include <iterator>

#include "svp/CSvpCommon.h"
#include "svp/SvpNameTables.h"

namespace {

constexpr std::uint64_t DRIVE_HEADER_SIZE = 3;
// All names but the number's.
constexpr std::size_t USUAL_ITEMS = PD_GEN_NAMES - 1;

}  // namespace

CSvpPdInfo::CSvpPdInfo() = default;

CSvpPdInfo::~CSvpPdInfo() = default;

void CSvpPdInfo::InitForm() {
    *this = CSvpPdInfo();
}

void CSvpPdInfo::AddItem(const std::string& label, const std::string& value) {
    m_Items.reserve(USUAL_ITEMS);
    m_Items.emplace_back(label, value);
}

void CSvpPdInfo::CheckMyItem() {
    if (!IsComplete()) {
        m_Items.clear();
    }
}

bool CSvpPdInfo::IsComplete() const {
    auto item = m_Items.begin();
    for (const std::string* name = std::next(tsPdGenList); !name->empty(); ++name, ++item) {
        if (item == m_Items.end() || item->Lavel() != *name || item->Value().empty()) {
            return false;
        }
    }
    return true;
}

void CSvpPdInfo::SetDataSize() {
    std::uint64_t size = DRIVE_HEADER_SIZE;
    for (const CSvpCtrlPdItem& item : m_Items) {
        size += item.DataSize();
    }
    m_PDSectionSize = CSvpCommon::Low16(size);
    m_DumpSize = m_PDSectionSize;
}

void CSvpPdInfo::DumpMe(std::string* out) const {
    *out += CSvpCommon::ValueToBinString(&m_PDNo, sizeof m_PDNo);
    *out += CSvpCommon::ValueToBinString(&m_PDSectionSize, sizeof m_PDSectionSize);
    for (const CSvpCtrlPdItem& item : m_Items) {
        item.DumpMe(out);
    }
}

void CSvpPdInfo::OutPutMemberToDebugLog() const {
    CSvpCommon::TraceStart("CSvpPdInfo");
    CSvpCommon::TraceNumber("m_PDNo", m_PDNo);
    CSvpCommon::TraceNumber("m_PDSectionSize", m_PDSectionSize);
    for (const CSvpCtrlPdItem& item : m_Items) {
        item.OutPutMemberToDebugLog();
    }
    CSvpCommon::TraceEnd("CSvpPdInfo");
}
