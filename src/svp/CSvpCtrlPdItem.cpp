#include "svp/CSvpCtrlPdItem.h"

#include "svp/CSvpCommon.h"

namespace {

constexpr std::size_t LABEL_MAX = 31;
constexpr std::size_t VALUE_MAX = 255;
constexpr std::uint64_t SIZE_FIELDS = 3;  // one byte of label size, two of value size

// What StringToBinString() tells of.
void AppendText(std::string& out, const std::string& text) {
    const std::size_t size = out.size();
    out.resize(size + 2 * text.size() + 2);
    char* digits = out.data() + size;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x80) {
            digits = CSvpCommon::WriteByte(digits, byte);
        }
    }
    digits = CSvpCommon::WriteByte(digits, 0);
    out.resize(static_cast<std::size_t>(digits - out.data()));
}

}  // namespace

CSvpCtrlPdItem::CSvpCtrlPdItem(const std::string& label, const std::string& value)
    : m_Lavel(label, 0, LABEL_MAX), m_Value(value, 0, VALUE_MAX) {
    m_LavelSize = CSvpCommon::Low8(m_Lavel.size() + 1);
    m_ValueSize = CSvpCommon::Low16(m_Value.size() + 1);
    m_DumpSize = SIZE_FIELDS + m_LavelSize + m_ValueSize;
}

CSvpCtrlPdItem::~CSvpCtrlPdItem() = default;

void CSvpCtrlPdItem::InitForm() {
    m_LavelSize = 0;
    m_Lavel.clear();
    m_ValueSize = 0;
    m_Value.clear();
    m_DumpSize = 0;
}

void CSvpCtrlPdItem::DumpMe(std::string* out) const {
    *out += CSvpCommon::ValueToBinString(&m_LavelSize, sizeof m_LavelSize);
    AppendText(*out, m_Lavel);
    *out += CSvpCommon::ValueToBinString(&m_ValueSize, sizeof m_ValueSize);
    AppendText(*out, m_Value);
}

void CSvpCtrlPdItem::OutPutMemberToDebugLog() const {
    CSvpCommon::TraceStart("CSvpCtrlPdItem");
    CSvpCommon::TraceNumber("m_LavelSize", m_LavelSize);
    CSvpCommon::TraceText("m_Lavel", m_Lavel);
    CSvpCommon::TraceNumber("m_ValueSize", m_ValueSize);
    CSvpCommon::TraceText("m_Value", m_Value);
    CSvpCommon::TraceEnd("CSvpCtrlPdItem");
}

std::string CSvpCtrlPdItem::StringToBinString(const std::string& text) {
    std::string digits;
    AppendText(digits, text);
    return digits;
}
