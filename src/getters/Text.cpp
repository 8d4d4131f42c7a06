#include "getters/Text.h"

namespace {

constexpr size_t COMMAND_BUFFER_SIZE = 768;

}  // namespace

std::string Trimmed(std::string_view text) {
    return std::string(TrimmedView(text));
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
