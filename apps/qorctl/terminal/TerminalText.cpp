#include "terminal/TerminalText.h"

#include <fmt/format.h>
#include <utf8proc.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <limits>

#include "util/Printable.h"

namespace qorctl {
namespace {

// Columns of text in a line that hardly has any left.
constexpr size_t SMALLEST_ROOM = 8;

constexpr size_t MAX_LENGTH = 4;  // of a character, in bytes

bool IsInsideCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

struct CCharacter {
    uint32_t code = 0;
    size_t length = 0;  // 0: the bytes are no character
};

// The UTF-8 character at the front of `text`, which is not empty.
CCharacter FirstCharacter(std::string_view text) {
    utf8proc_int32_t code = 0;
    const utf8proc_ssize_t length =
        utf8proc_iterate(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                         static_cast<utf8proc_ssize_t>(text.size()), &code);
    return length > 0 ? CCharacter{static_cast<uint32_t>(code), static_cast<size_t>(length)}
                      : CCharacter{};
}

size_t ColumnsOf(uint32_t code) {
    const auto known = static_cast<utf8proc_int32_t>(code);
    // The second and third letters of a Korean syllable stand in the columns of the first.
    const unsigned place = utf8proc_get_property(known)->boundclass;
    return place == UTF8PROC_BOUNDCLASS_V || place == UTF8PROC_BOUNDCLASS_T
               ? 0
               : static_cast<size_t>(utf8proc_charwidth(known));
}

struct CReach {
    size_t bytes = 0;
    size_t columns = 0;
};

// How far whole characters go in at most `most` columns, with the marks over the last one.
CReach Reach(std::string_view visibleText, size_t most) {
    CReach reach;
    while (reach.bytes < visibleText.size()) {
        const CCharacter character = FirstCharacter(visibleText.substr(reach.bytes));
        const size_t columns = reach.columns + ColumnsOf(character.code);
        if (columns > most) {
            break;
        }
        reach = {reach.bytes + std::max<size_t>(character.length, 1), columns};
    }
    return reach;
}

bool IsPrintable(uint32_t code, const CTextStyle& style) {
    return (code <= 0x7E || style.utf8) && util::IsPrintable(code);
}

void AppendEscaped(std::string& out, unsigned char byte) {
    switch (byte) {
        case '\t':
            out += "\\t";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        default:
            fmt::format_to(std::back_inserter(out), "\\x{:02x}", byte);
    }
}

// Returns how many bytes that were.
size_t AppendEscaped(std::string& out, std::string_view bytes) {
    for (const char byte : bytes) {
        AppendEscaped(out, static_cast<unsigned char>(byte));
    }
    return bytes.size();
}

void AppendJsonEscape(std::string& out, uint32_t code) {
    constexpr uint32_t FIRST_OF_TWO = 0x10000;
    if (code < FIRST_OF_TWO) {
        fmt::format_to(std::back_inserter(out), "\\u{:04x}", code);
    } else {
        fmt::format_to(std::back_inserter(out), "\\u{:04x}\\u{:04x}",
                       0xD800 + ((code - FIRST_OF_TWO) >> 10U), 0xDC00 + (code & 0x3FFU));
    }
}

// The length of the end of a line or the tab at the front of `text`, 0 when there is neither.
size_t LayoutLength(std::string_view text) {
    if (text.starts_with('\n') || text.starts_with('\t')) {
        return 1;
    }
    return text.starts_with("\r\n") ? 2 : 0;
}

// The length of the printable ASCII at the front of `text`: nearly all of nearly every text.
size_t PlainLength(std::string_view text) {
    return static_cast<size_t>(
        std::find_if(text.begin(), text.end(),
                     [](char character) { return character < ' ' || character > '~'; }) -
        text.begin());
}

// A copy in which `rewrite` has appended something else for each character that is not printable.
// It is called with the rest of the text and its first character, and returns how many bytes it
// has used.
template <class TRewrite>
std::string Rewritten(std::string_view text, const CTextStyle& style, TRewrite rewrite) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const size_t plain = PlainLength(text);
        out += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        const CCharacter character = FirstCharacter(text);
        size_t used = character.length;
        if (used > 0 && IsPrintable(character.code, style)) {
            out += text.substr(0, used);
        } else {
            used = rewrite(out, text, character);
        }
        text.remove_prefix(used);
    }
    return out;
}

// Columns that are left beside `used` ones.
size_t Room(size_t width, size_t used) {
    return width > used + SMALLEST_ROOM ? width - used : SMALLEST_ROOM;
}

// The length of the first line of a text that does not fit into `room` columns. A line below has
// `roomBelow`: with more room there, a word is moved rather than broken.
size_t LineLength(std::string_view text, size_t room, size_t roomBelow) {
    const size_t full = FirstColumns(text, room).size();
    const size_t blank = text.rfind(' ', full);
    if (blank != std::string_view::npos && blank != 0) {
        return blank;
    }
    return room < roomBelow ? 0 : full;
}

}  // namespace

std::string MakeVisible(std::string_view text, const CTextStyle& style) {
    return Rewritten(text, style,
                     [](std::string& out, std::string_view rest, const CCharacter& at) {
                         return AppendEscaped(out, rest.substr(0, std::max<size_t>(at.length, 1)));
                     });
}

std::string MakeLinesVisible(std::string_view text, const CTextStyle& style) {
    return Rewritten(
        text, style, [](std::string& out, std::string_view rest, const CCharacter& at) {
            const size_t layout = LayoutLength(rest);
            out += rest.substr(0, layout);
            return layout > 0 ? layout
                              : AppendEscaped(out, rest.substr(0, std::max<size_t>(at.length, 1)));
        });
}

std::string MakeJsonVisible(std::string_view json, const CTextStyle& style) {
    return Rewritten(json, style,
                     [](std::string& out, std::string_view rest, const CCharacter& at) {
                         const size_t layout = LayoutLength(rest);
                         if (layout > 0) {
                             out += rest.substr(0, layout);
                             return layout;
                         }
                         AppendJsonEscape(out, at.code);
                         return std::max<size_t>(at.length, 1);
                     });
}

std::string CutText(std::string_view text, size_t most) {
    if (text.size() <= most) {
        return std::string(text);
    }
    const std::string mark = fmt::format("... ({} bytes)", text.size());
    size_t end = most - mark.size();
    for (size_t i = 1; i < MAX_LENGTH && end > 0 && IsInsideCharacter(text[end]); ++i) {
        --end;
    }
    return std::string(text.substr(0, end)) + mark;
}

size_t CountColumns(std::string_view visibleText) {
    return Reach(visibleText, std::numeric_limits<size_t>::max()).columns;
}

std::string_view FirstColumns(std::string_view visibleText, size_t count) {
    return visibleText.substr(0, Reach(visibleText, count).bytes);
}

std::string WrapText(std::string_view visibleText, size_t width, size_t used,
                     std::string_view indent) {
    std::string out;
    const size_t roomBelow = Room(width, CountColumns(indent));
    size_t room = Room(width, used);
    while (width != ANY_WIDTH && FirstColumns(visibleText, room).size() < visibleText.size()) {
        const size_t end = LineLength(visibleText, room, roomBelow);
        out.append(visibleText.substr(0, end)).append("\n").append(indent);
        visibleText.remove_prefix(end);
        visibleText.remove_prefix(std::min(visibleText.find_first_not_of(' '), visibleText.size()));
        room = roomBelow;
    }
    return out.append(visibleText);
}

}  // namespace qorctl
