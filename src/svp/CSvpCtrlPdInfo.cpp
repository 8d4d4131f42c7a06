#include "svp/CSvpCtrlPdInfo.h"

#include <utility>

#include "svp/CSvpCommon.h"

namespace {

constexpr std::uint64_t CONTROLLER_HEADER_SIZE = 6;

}  // namespace

CSvpCtrlPdInfo::CSvpCtrlPdInfo() = default;

CSvpCtrlPdInfo::~CSvpCtrlPdInfo() = default;

void CSvpCtrlPdInfo::InitForm() {
    *this = CSvpCtrlPdInfo();
}

void CSvpCtrlPdInfo::AddItem(const std::string& label, const std::string& value) {
    m_Items.emplace_back(label, value);
}

void CSvpCtrlPdInfo::AddPD(CSvpPdInfo pd) {
    m_PDs.push_back(std::move(pd));
}

void CSvpCtrlPdInfo::SetDataSize() {
    std::uint64_t size = CONTROLLER_HEADER_SIZE;
    for (const CSvpCtrlPdItem& item : m_Items) {
        size += item.DataSize();
    }
    m_CtrlSectionSize = CSvpCommon::Low16(size);
    for (CSvpPdInfo& pd : m_PDs) {
        pd.SetDataSize();
        m_PDCountOnCtrl = CSvpCommon::Low8(m_PDCountOnCtrl + 1U);
        size += pd.DataSize();
    }
    m_CtrlAndPDSectionSize = CSvpCommon::Low16(size);
    m_DumpSize = m_CtrlAndPDSectionSize;
}

void CSvpCtrlPdInfo::DumpMe(std::string* out) const {
    *out += CSvpCommon::ValueToBinString(&m_CtrlNo, sizeof m_CtrlNo);
    *out += CSvpCommon::ValueToBinString(&m_PDCountOnCtrl, sizeof m_PDCountOnCtrl);
    *out += CSvpCommon::ValueToBinString(&m_CtrlAndPDSectionSize, sizeof m_CtrlAndPDSectionSize);
    *out += CSvpCommon::ValueToBinString(&m_CtrlSectionSize, sizeof m_CtrlSectionSize);
    for (const CSvpCtrlPdItem& item : m_Items) {
        item.DumpMe(out);
    }
    for (const CSvpPdInfo& pd : m_PDs) {
        pd.DumpMe(out);
    }
}

void CSvpCtrlPdInfo::OutPutMemberToDebugLog() const {
    CSvpCommon::TraceStart("CSvpCtrlPdInfo");
    CSvpCommon::TraceNumber("m_CtrlNo", m_CtrlNo);
    CSvpCommon::TraceNumber("m_PDCountOnCtrl", m_PDCountOnCtrl);
    CSvpCommon::TraceNumber("m_CtrlAndPDSectionSize", m_CtrlAndPDSectionSize);
    CSvpCommon::TraceNumber("m_CtrlSectionSize", m_CtrlSectionSize);
    for (const CSvpCtrlPdItem& item : m_Items) {
        item.OutPutMemberToDebugLog();
    }
    for (const CSvpPdInfo& pd : m_PDs) {
        pd.OutPutMemberToDebugLog();
    }
    CSvpCommon::TraceNumber("m_DumpSize", m_DumpSize);
    CSvpCommon::TraceEnd("CSvpCtrlPdInfo");
}
