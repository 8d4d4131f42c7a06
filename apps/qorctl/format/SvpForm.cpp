#include "format/SvpForm.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <utility>

namespace qorctl {
namespace {

constexpr size_t CONTROLLER_COUNT = 12;  // offset in the header

constexpr std::string_view WHITE_SPACE = " \t\n\v\f\r";
constexpr uint64_t FORM_HEADER = 16;
constexpr uint64_t CONTROLLER_HEADER = 6;
constexpr uint64_t DRIVE_HEADER = 3;
constexpr uint64_t ITEM_SIZE_FIELDS = 3;
constexpr uint64_t LOW_8 = 0xFF;
constexpr uint64_t LOW_16 = 0xFFFF;
constexpr uint64_t LOW_32 = 0xFFFFFFFF;
constexpr size_t MAX_ENTRIES = 1000000;  // more than the plug-in's largest form has
constexpr size_t NAME_COLUMNS = 28;      // the longest label that is usual, indented

// The value of a hexadecimal digit, or -1.
int DigitValue(char character) {
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    if (character >= 'a' && character <= 'f') {
        return character - 'a' + 10;
    }
    return character >= 'A' && character <= 'F' ? character - 'A' + 10 : -1;
}

std::optional<std::string> ReadDigits(std::string_view digits, std::string& problem) {
    std::string bytes;
    bytes.reserve(digits.size() / 2);
    size_t count = 0;
    int high = 0;
    for (size_t position = 0; position < digits.size(); ++position) {
        if (WHITE_SPACE.find(digits[position]) != std::string_view::npos) {
            continue;
        }
        const int value = DigitValue(digits[position]);
        if (value < 0) {
            problem = fmt::format("offset {} of the text: '{}' is not a hexadecimal digit",
                                  position, digits[position]);
            return std::nullopt;
        }
        if (count % 2 == 1) {
            bytes += static_cast<char>(high * 16 + value);
        }
        high = value;
        ++count;
    }
    if (count % 2 == 1) {
        problem = fmt::format("{} digits, an odd number: the last byte lacks one", count);
        return std::nullopt;
    }
    return bytes;
}

std::string HexText(std::string_view bytes) {
    std::string text;
    for (const char character : bytes) {
        fmt::format_to(std::back_inserter(text), "{:02x}", static_cast<unsigned char>(character));
    }
    return text;
}

std::string SizeText(uint64_t size) {
    return fmt::format("{} byte{}", size, size == 1 ? "" : "s");
}

// Reads the form from its first byte to its last. Each operation returns false once the form
// turned out to be malformed; m_Problem says why then.
class CSvpDecoder {
public:
    explicit CSvpDecoder(std::string bytes) : m_Bytes(std::move(bytes)) {}

    bool Decode();

    std::vector<CSvpEntry>& Entries() { return m_Entries; }
    const std::string& Problem() const { return m_Problem; }

private:
    bool ReadHeader();
    bool ReadController();
    bool ReadDrive(uint64_t& sectionSum);
    bool ReadItems(uint64_t sum, size_t depth);
    bool ReadItem(uint64_t& left, size_t depth);
    bool ReadZeroBytes(size_t width, const char* name);
    bool ReadNumber(size_t width, const char* name, uint64_t& number);
    bool ReadText(const char* name, uint64_t size, std::string& text);
    bool CheckSum(size_t offset, const char* name, uint64_t stated, uint64_t sum, uint64_t mask);
    bool CheckEnd();

    void AddHeading(size_t offset, size_t depth, std::string name);
    void AddField(size_t offset, size_t depth, std::string name, std::string value);
    void AddNote(size_t depth, std::string text);
    void NoteMissing(size_t depth, const char* what, uint64_t missing);
    bool Fail(size_t offset, const std::string& reason);
    bool FailAtEnd(const char* name, uint64_t size);

    const std::string m_Bytes;
    size_t m_Position = 0;
    std::vector<CSvpEntry> m_Entries;
    std::string m_Problem;
    uint64_t m_TotalSize = 0;        // as the header states it
    uint64_t m_ControllerCount = 0;  // likewise
    uint64_t m_DriveCount = 0;       // likewise
    uint64_t m_SizeSum = FORM_HEADER;
    uint64_t m_DriveSum = 0;
    uint64_t m_Missing = 0;  // bytes that the texts so far lack
};

bool CSvpDecoder::Decode() {
    if (!ReadHeader()) {
        return false;
    }
    for (uint64_t i = 0; i < m_ControllerCount; ++i) {
        if (!ReadController()) {
            return false;
        }
    }
    return CheckEnd();
}

bool CSvpDecoder::ReadHeader() {
    AddHeading(0, 0, "header");
    uint64_t revision = 0;
    if (!ReadZeroBytes(5, "signature") || !ReadNumber(1, "format revision", revision)) {
        return false;
    }
    if (revision != 0) {
        return Fail(5, fmt::format("format revision {} is not known", revision));
    }
    AddField(5, 1, "format revision", "0");
    if (!ReadZeroBytes(2, "reserved") || !ReadNumber(4, "total size", m_TotalSize) ||
        !ReadNumber(1, "number of controllers", m_ControllerCount) ||
        !ReadNumber(1, "number of drives", m_DriveCount)) {
        return false;
    }
    AddField(8, 1, "total size", SizeText(m_TotalSize));
    AddField(CONTROLLER_COUNT, 1, "number of controllers", std::to_string(m_ControllerCount));
    AddField(13, 1, "number of drives", std::to_string(m_DriveCount));
    return ReadZeroBytes(2, "reserved");
}

bool CSvpDecoder::ReadController() {
    const size_t start = m_Position;
    const uint64_t missingBefore = m_Missing;
    uint64_t number = 0;
    uint64_t drives = 0;
    uint64_t wholeSize = 0;
    uint64_t ownSize = 0;
    if (!ReadNumber(1, "number of a controller", number) ||
        !ReadNumber(1, "number of drives of a controller", drives) ||
        !ReadNumber(2, "size with drives", wholeSize) ||
        !ReadNumber(2, "size without drives", ownSize)) {
        return false;
    }
    AddHeading(start, 0, fmt::format("controller {}", number));
    AddField(start + 1, 1, "number of drives", std::to_string(drives));
    AddField(start + 2, 1, "size with drives", SizeText(wholeSize));
    AddField(start + 4, 1, "size without drives", SizeText(ownSize));
    if (ownSize < CONTROLLER_HEADER) {
        return Fail(start + 4, fmt::format("the size without drives is {}, less than the 6 bytes "
                                           "that it stands in",
                                           ownSize));
    }
    if (!ReadItems(ownSize - CONTROLLER_HEADER, 1)) {
        return false;
    }
    uint64_t sum = ownSize;
    for (uint64_t i = 0; i < drives; ++i) {
        if (!ReadDrive(sum)) {
            return false;
        }
    }
    NoteMissing(1, "controller", m_Missing - missingBefore);
    m_SizeSum += wholeSize;
    m_DriveSum += drives;
    return CheckSum(start + 2, "size with drives", wholeSize, sum, LOW_16);
}

bool CSvpDecoder::ReadDrive(uint64_t& sectionSum) {
    const size_t start = m_Position;
    const uint64_t missingBefore = m_Missing;
    uint64_t number = 0;
    uint64_t size = 0;
    if (!ReadNumber(1, "number of a drive", number) || !ReadNumber(2, "size of a drive", size)) {
        return false;
    }
    AddHeading(start, 1, fmt::format("drive {}", number));
    AddField(start + 1, 2, "size", SizeText(size));
    if (size < DRIVE_HEADER) {
        return Fail(start + 1, fmt::format("the size of a drive is {}, less than the 3 bytes that "
                                           "it stands in",
                                           size));
    }
    if (!ReadItems(size - DRIVE_HEADER, 2)) {
        return false;
    }
    NoteMissing(2, "drive", m_Missing - missingBefore);
    sectionSum += size;
    return true;
}

// Reads items until their sizes add up to `sum`.
bool CSvpDecoder::ReadItems(uint64_t sum, size_t depth) {
    while (sum > 0) {
        if (!ReadItem(sum, depth)) {
            return false;
        }
    }
    return true;
}

// `left` is what the section's size leaves for this item and those behind it.
bool CSvpDecoder::ReadItem(uint64_t& left, size_t depth) {
    const size_t start = m_Position;
    if (m_Entries.size() >= MAX_ENTRIES) {
        return Fail(start, fmt::format("there are more than {} entries", MAX_ENTRIES));
    }
    uint64_t labelSize = 0;
    uint64_t valueSize = 0;
    std::string label;
    std::string value;
    if (!ReadNumber(1, "size of a label", labelSize) || !ReadText("label", labelSize, label) ||
        !ReadNumber(2, "size of a value", valueSize) || !ReadText("value", valueSize, value)) {
        return false;
    }
    const uint64_t size = ITEM_SIZE_FIELDS + labelSize + valueSize;
    if (size > left) {
        return Fail(start, fmt::format("the item's sizes add up to {}, but its section's size "
                                       "leaves {}",
                                       SizeText(size), left));
    }
    left -= size;
    const uint64_t labelMissing = labelSize - label.size() - 1;
    const uint64_t valueMissing = valueSize - value.size() - 1;
    AddField(start, depth, std::move(label), std::move(value));
    NoteMissing(depth + 1, "label", labelMissing);
    NoteMissing(depth + 1, "value", valueMissing);
    m_Missing += labelMissing + valueMissing;
    return true;
}

// Bytes that are shown as digits.
bool CSvpDecoder::ReadZeroBytes(size_t width, const char* name) {
    if (m_Bytes.size() - m_Position < width) {
        return FailAtEnd(name, width);
    }
    const std::string bytes = m_Bytes.substr(m_Position, width);
    AddField(m_Position, 1, name, HexText(bytes));
    if (bytes != std::string(width, '\0')) {
        AddNote(2, "these bytes should be zero");
    }
    m_Position += width;
    return true;
}

bool CSvpDecoder::ReadNumber(size_t width, const char* name, uint64_t& number) {
    if (m_Bytes.size() - m_Position < width) {
        return FailAtEnd(name, width);
    }
    number = 0;
    for (size_t i = width; i > 0; --i) {
        number = number << 8U | static_cast<unsigned char>(m_Bytes[m_Position + i - 1]);
    }
    m_Position += width;
    return true;
}

bool CSvpDecoder::ReadText(const char* name, uint64_t size, std::string& text) {
    const std::string_view field = std::string_view(m_Bytes).substr(m_Position, size);
    const size_t end = field.find('\0');
    if (end != std::string_view::npos) {
        text = field.substr(0, end);
        m_Position += end + 1;
        return true;
    }
    if (field.size() < size) {
        return FailAtEnd(name, size);
    }
    return Fail(m_Position,
                fmt::format("the {} has no zero byte within its {}", name, SizeText(size)));
}

// A number with fewer bits than the sum wrapped, and says all that it can.
bool CSvpDecoder::CheckSum(size_t offset, const char* name, uint64_t stated, uint64_t sum,
                           uint64_t mask) {
    if (stated != (sum & mask)) {
        return Fail(offset, fmt::format("the {} is {}, but what it counts adds up to {}", name,
                                        stated, sum));
    }
    if (sum > mask) {
        AddNote(1, fmt::format("the {} wrapped: what it counts adds up to {}", name, sum));
    }
    return true;
}

bool CSvpDecoder::CheckEnd() {
    if (m_Position < m_Bytes.size()) {
        return Fail(m_Position,
                    fmt::format("{} beyond the {} controllers that the header counts",
                                SizeText(m_Bytes.size() - m_Position), m_ControllerCount));
    }
    NoteMissing(0, "form", m_Missing);
    return CheckSum(13, "header's number of drives", m_DriveCount, m_DriveSum, LOW_8) &&
           CheckSum(8, "header's total size", m_TotalSize, m_SizeSum, LOW_32);
}

void CSvpDecoder::AddHeading(size_t offset, size_t depth, std::string name) {
    m_Entries.push_back({.kind = CSvpEntry::EKind::HEADING,
                         .offset = offset,
                         .depth = depth,
                         .name = std::move(name)});
}

void CSvpDecoder::AddField(size_t offset, size_t depth, std::string name, std::string value) {
    m_Entries.push_back({.kind = CSvpEntry::EKind::FIELD,
                         .offset = offset,
                         .depth = depth,
                         .name = std::move(name),
                         .value = std::move(value)});
}

void CSvpDecoder::AddNote(size_t depth, std::string text) {
    m_Entries.push_back({.kind = CSvpEntry::EKind::NOTE, .depth = depth, .name = std::move(text)});
}

void CSvpDecoder::NoteMissing(size_t depth, const char* what, uint64_t missing) {
    if (missing > 0) {
        AddNote(depth, fmt::format("the {} lacks {} of the bytes that its size counts: characters "
                                   "beyond ASCII are left out",
                                   what, missing));
    }
}

bool CSvpDecoder::Fail(size_t offset, const std::string& reason) {
    m_Problem = fmt::format("offset {}: {}", offset, reason);
    return false;
}

bool CSvpDecoder::FailAtEnd(const char* name, uint64_t size) {
    return Fail(m_Bytes.size(), fmt::format("the form ends here, but the {} takes {} from "
                                            "offset {} on",
                                            name, SizeText(size), m_Position));
}

}  // namespace

std::optional<std::vector<CSvpEntry>> DecodeSvpForm(std::string_view digits, std::string& problem) {
    std::optional<std::string> bytes = ReadDigits(digits, problem);
    if (!bytes) {
        return std::nullopt;
    }
    CSvpDecoder decoder(std::move(*bytes));
    if (!decoder.Decode()) {
        problem = decoder.Problem();
        return std::nullopt;
    }
    return std::move(decoder.Entries());
}

size_t CountSvpControllers(std::string_view digits) {
    std::string problem;
    const std::optional<std::string> bytes = ReadDigits(digits, problem);
    return bytes && bytes->size() > CONTROLLER_COUNT
               ? static_cast<unsigned char>((*bytes)[CONTROLLER_COUNT])
               : 0;
}

std::string FormatSvpForm(const std::vector<CSvpEntry>& form, const CTextStyle& style) {
    std::string text;
    for (const CSvpEntry& entry : form) {
        const std::string indent(2 * entry.depth, ' ');
        const std::string name = MakeVisible(entry.name, style);
        if (entry.kind == CSvpEntry::EKind::NOTE) {
            text += fmt::format("{:8}  {}note: {}\n", "", indent, name);
            continue;
        }
        text += fmt::format("{:>8}  {}{}", entry.offset, indent, name);
        if (entry.kind == CSvpEntry::EKind::FIELD) {
            const size_t width = indent.size() + CountColumns(name);
            text.append(NAME_COLUMNS - std::min(width, NAME_COLUMNS), ' ');
            text += " :";
            text += entry.value.empty() ? "" : " " + MakeVisible(entry.value, style);
        }
        text += '\n';
    }
    return text;
}

}  // namespace qorctl
