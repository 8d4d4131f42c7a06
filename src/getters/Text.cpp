#include "getters/Text.h"

namespace {

constexpr const char* LEADING_SPACE = " \t";
constexpr const char* TRAILING_SPACE = " \t\r\n";
constexpr size_t COMMAND_BUFFER_SIZE = 768;

}  // namespace

std::string_view TrimmedView(std::string_view text) {
    const size_t begin = text.find_first_not_of(LEADING_SPACE);
    if (begin == std::string_view::npos) {
        return {};
    }
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(TRAILING_SPACE) + 1);
}

std::string Trimmed(std::string_view text) {
    return std::string(TrimmedView(text));
}

bool IsKeyValueLine(std::string_view line) {
    const size_t colon = line.find(':');
    return colon != std::string_view::npos && colon > 0;
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
