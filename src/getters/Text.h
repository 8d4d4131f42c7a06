// The text rules that all reports share.
#ifndef QOR_GETTERS_TEXT_H
#define QOR_GETTERS_TEXT_H

#include <string>
#include <string_view>

// Removes blanks and tabs from the front, and blanks, tabs, carriage returns and line feeds from
// the end. A text of nothing else becomes empty. Byte by byte: there is rarely more than one to
// remove.
inline std::string_view TrimmedView(std::string_view text) {
    const auto isBlank = [](char character) { return character == ' ' || character == '\t'; };
    while (!text.empty() && isBlank(text.front())) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (isBlank(text.back()) || text.back() == '\r' || text.back() == '\n')) {
        text.remove_suffix(1);
    }
    return text;
}

// Same, as a new text.
std::string Trimmed(std::string_view text);

// A key/value line is "key : value": it has a colon, and not as its first character. The first
// colon counts; later ones belong to the value. Where it stands; npos if the line is none.
inline size_t ColonOf(std::string_view line) {
    const size_t colon = line.find(':');
    return colon > 0 ? colon : std::string_view::npos;
}

inline bool IsKeyValueLine(std::string_view line) {
    return ColonOf(line) != std::string_view::npos;
}

// The trimmed text behind the first colon; the line must have one.
std::string ValueOfLine(std::string_view line);

// True if `text` begins with `head` and a decimal digit follows.
bool BeginsWithNumbered(std::string_view text, std::string_view head);

inline bool Contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// The command of a getter: `format` with its first "%s", if any, replaced by `argument`, cut to
// what the tool's command buffer of 768 bytes holds.
std::string FormatCommand(const std::string& format, const std::string& argument);

#endif  // QOR_GETTERS_TEXT_H
