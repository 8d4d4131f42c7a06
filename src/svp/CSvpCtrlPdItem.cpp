#include "svp/CSvpCtrlPdItem.h"

#include "svp/CSvpCommon.h"

namespace {

constexpr std::size_t LABEL_MAX = 31;
constexpr std::size_t VALUE_MAX = 255;
constexpr std::uint64_t SIZE_FIELDS = 3;  // one byte of label size, two of value size

// Two digits for each byte and for the zero byte behind the text.
std::size_t MostDigitsOf(const std::string& text) {
    return 2 * (text.size() + 1);
}

// Writes what StringToBinString() tells of; returns the place behind it.
char* WriteText(char* digits, const std::string& text) {
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x80) {
            digits = CSvpCommon::WriteByte(digits, byte);
        }
    }
    return CSvpCommon::WriteByte(digits, 0);
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
    const std::size_t begin = out->size();
    out->resize(begin + 2 * SIZE_FIELDS + MostDigitsOf(m_Lavel) + MostDigitsOf(m_Value));
    char* digits = CSvpCommon::WriteByte(out->data() + begin, m_LavelSize);
    digits = WriteText(digits, m_Lavel);
    digits = CSvpCommon::WriteByte(digits, CSvpCommon::Low8(m_ValueSize));
    digits = CSvpCommon::WriteByte(digits, CSvpCommon::Low8(m_ValueSize >> 8U));
    digits = WriteText(digits, m_Value);
    out->resize(static_cast<std::size_t>(digits - out->data()));
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
    std::string digits(MostDigitsOf(text), '\0');
    digits.resize(static_cast<std::size_t>(WriteText(digits.data(), text) - digits.data()));
    return digits;
}
