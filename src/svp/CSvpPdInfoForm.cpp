#include "svp/CSvpPdInfoForm.h"

#include <algorithm>
#include <utility>

#include "svp/CSvpCommon.h"

namespace {

constexpr std::uint64_t FORM_HEADER_SIZE = 16;

template <std::size_t Count>
std::string ToBinString(const std::array<unsigned char, Count>& bytes) {
    return CSvpPdInfoForm::StringToBinString(bytes.data(), static_cast<int>(Count));
}

}  // namespace

CSvpPdInfoForm::CSvpPdInfoForm() = default;

CSvpPdInfoForm::~CSvpPdInfoForm() = default;

void CSvpPdInfoForm::InitForm() {
    *this = CSvpPdInfoForm();
}

void CSvpPdInfoForm::AddCtrl(CSvpCtrlPdInfo ctrl) {
    m_Ctrls.push_back(std::move(ctrl));
}

void CSvpPdInfoForm::SetDataSize() {
    std::uint64_t size = FORM_HEADER_SIZE;
    for (CSvpCtrlPdInfo& ctrl : m_Ctrls) {
        ctrl.SetDataSize();
        m_CtrlCount = CSvpCommon::Low8(m_CtrlCount + 1U);
        size += ctrl.DataSize();
        m_PDCount = CSvpCommon::Low8(std::uint64_t{m_PDCount} + ctrl.PDCountOnCtrl());
    }
    m_TotalDataSize = CSvpCommon::Low32(size);
    m_DumpSize = m_TotalDataSize;
}

void CSvpPdInfoForm::DumpMe(std::string* out) const {
    out->reserve(out->size() + 2 * m_DumpSize);
    *out += ToBinString(m_Signature);
    *out += ToBinString(m_FormatRevision);
    *out += ToBinString(m_Reserved1);
    *out += CSvpCommon::ValueToBinString(&m_TotalDataSize, sizeof m_TotalDataSize);
    *out += CSvpCommon::ValueToBinString(&m_CtrlCount, sizeof m_CtrlCount);
    *out += CSvpCommon::ValueToBinString(&m_PDCount, sizeof m_PDCount);
    *out += ToBinString(m_Reserved2);
    for (const CSvpCtrlPdInfo& ctrl : m_Ctrls) {
        ctrl.DumpMe(out);
    }
}

void CSvpPdInfoForm::OutPutMemberToDebugLog() const {
    CSvpCommon::TraceStart("CSvpPdInfoForm");
    CSvpCommon::TraceText("m_Signature", ToBinString(m_Signature));
    CSvpCommon::TraceText("m_FormatRevision", ToBinString(m_FormatRevision));
    CSvpCommon::TraceText("m_Reserved1", ToBinString(m_Reserved1));
    CSvpCommon::TraceNumber("m_TotalDataSize", m_TotalDataSize);
    CSvpCommon::TraceNumber("m_CtrlCount", m_CtrlCount);
    CSvpCommon::TraceNumber("m_PDCount", m_PDCount);
    CSvpCommon::TraceText("m_Reserved2", ToBinString(m_Reserved2));
    for (const CSvpCtrlPdInfo& ctrl : m_Ctrls) {
        ctrl.OutPutMemberToDebugLog();
    }
    CSvpCommon::TraceNumber("m_DumpSize", m_DumpSize);
    CSvpCommon::TraceEnd("CSvpPdInfoForm");
}

std::string CSvpPdInfoForm::StringToBinString(const unsigned char* bytes, int count) {
    return CSvpCommon::BytesToBinString(bytes, static_cast<std::size_t>(std::max(count, 0)),
                                        std::endian::little);
}
