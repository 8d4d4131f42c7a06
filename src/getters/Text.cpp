#include "getters/Text.h"

namespace {

constexpr size_t COMMAND_BUFFER_SIZE = 768;

constexpr bool IsLeadingSpace(char character) {
    return character == ' ' || character == '\t';
}

constexpr bool IsTrailingSpace(char character) {
    return IsLeadingSpace(character) || character == '\r' || character == '\n';
}

}  // namespace

// Byte by byte: there is rarely more than one to remove.
std::string_view TrimmedView(std::string_view text) {
    size_t begin = 0;
    while (begin < text.size() && IsLeadingSpace(text[begin])) {
        ++begin;
    }
    size_t end = text.size();
    while (end > begin && IsTrailingSpace(text[end - 1])) {
        --end;
    }
    return text.substr(begin, end - begin);
}

std::string Trimmed(std::string_view text) {
    return std::string(TrimmedView(text));
}

bool IsKeyValueLine(std::string_view line) {
    return ColonOf(line) != std::string_view::npos;
}

size_t ColonOf(std::string_view line) {
    const size_t colon = line.find(':');
    return colon > 0 ? colon : std::string_view::npos;
}

std::string ValueOfLine(std::string_view line) {
    return Trimmed(line.substr(line.find(':') + 1));
}

bool BeginsWithNumbered(std::string_view text, std::string_view head) {
    return text.starts_with(head) && text.size() > head.size() && text[head.size()] >= '0' &&
           text[head.size()] <= '9';
}

std::string FormatCommand(const std::string& format, const std::string& argument) {
    std::string command = format;
    const size_t place = command.find("%s");
    if (place != std::string::npos) {
        command.replace(place, 2, argument);
    }
    return command.substr(0, COMMAND_BUFFER_SIZE - 1);
}
