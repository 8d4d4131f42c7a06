// One label and value pair of the service-processor form. In the form:
//
//     offset  width         content
//     0       1             label length + 1
//     1       length + 1    label and a zero byte
//     ...     2             value length + 1, little-endian
//     ...     length + 1    value and a zero byte
//
// Thread rule: a plain record; one thread at a time.
#ifndef QOR_SVP_CSVPCTRLPDITEM_H
#define QOR_SVP_CSVPCTRLPDITEM_H

#include <cstdint>
#include <string>

class CSvpCtrlPdItem {
public:
    // Keeps the first 31 characters of the label and the first 255 of the value.
    CSvpCtrlPdItem(const std::string& label, const std::string& value);
    CSvpCtrlPdItem(const CSvpCtrlPdItem&) = default;
    CSvpCtrlPdItem(CSvpCtrlPdItem&&) = default;
    CSvpCtrlPdItem& operator=(const CSvpCtrlPdItem&) = default;
    CSvpCtrlPdItem& operator=(CSvpCtrlPdItem&&) = default;
    virtual ~CSvpCtrlPdItem();

    // Empties both texts and sets every size to 0, those of the two zero bytes included.
    void InitForm();

    // Appends the item's bytes as hexadecimal text. `out` is never null.
    void DumpMe(std::string* out) const;

    void OutPutMemberToDebugLog() const;

    // Two digits for each character and "00" for the zero byte behind the text. Characters of 0x80
    // and above give no digits although the sizes count them: the readers of the form are built for
    // a dump that is shorter than its sizes say.
    static std::string StringToBinString(const std::string& text);

    // Bytes that the item takes in the form.
    std::uint64_t DataSize() const { return m_DumpSize; }
    std::uint8_t LavelSize() const { return m_LavelSize; }
    const std::string& Lavel() const { return m_Lavel; }
    std::uint16_t ValueSize() const { return m_ValueSize; }
    const std::string& Value() const { return m_Value; }

private:
    std::uint64_t m_DumpSize;
    std::uint8_t m_LavelSize;  // "Lavel" is how the form's trace lines spell it
    std::string m_Lavel;
    std::uint16_t m_ValueSize;
    std::string m_Value;
};

#endif  // QOR_SVP_CSVPCTRLPDITEM_H
