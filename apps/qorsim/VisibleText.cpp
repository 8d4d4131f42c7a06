#include "VisibleText.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iterator>

#include "util/Printable.h"

namespace qorsim {
namespace {

constexpr size_t MAX_MESSAGE = 2000;

unsigned char ByteAt(std::string_view text, size_t position) {
    return static_cast<unsigned char>(text[position]);
}

// The length of a UTF-8 character by its first byte; 0 for a byte that is none.
size_t LengthBy(unsigned char lead) {
    return lead < 0x80   ? 1
           : lead < 0xC2 ? 0
           : lead < 0xE0 ? 2
           : lead < 0xF0 ? 3
           : lead < 0xF5 ? 4
                         : 0;
}

bool IsPrintable(uint32_t code, size_t length) {
    constexpr std::array<uint32_t, 5> SMALLEST = {0, 0, 0x80, 0x800, 0x10000};
    return code >= SMALLEST[length] && util::IsPrintable(code);
}

// The length of the printable character at the front of `text`, which is not empty; 0 for none.
size_t PrintableLength(std::string_view text) {
    const size_t length = LengthBy(ByteAt(text, 0));
    if (length < 2 || length > text.size()) {
        return length == 1 && IsPrintable(ByteAt(text, 0), 1) ? 1 : 0;
    }
    uint32_t code = ByteAt(text, 0) & (0x7FU >> length);
    for (size_t i = 1; i < length; ++i) {
        if ((ByteAt(text, i) & 0xC0U) != 0x80) {
            return 0;
        }
        code = (code << 6U) | (ByteAt(text, i) & 0x3FU);
    }
    return IsPrintable(code, length) ? length : 0;
}

}  // namespace

std::string VisibleLines(std::string_view text) {
    std::string visible;
    for (size_t end = 0; (end = text.find_first_of("\n\t")) != std::string_view::npos;) {
        visible += Visible(text.substr(0, end)) + text[end];
        text.remove_prefix(end + 1);
    }
    return visible + Visible(text);
}

std::string Visible(std::string_view text) {
    std::string visible;
    while (!text.empty()) {
        const size_t length = PrintableLength(text);
        if (length != 0) {
            visible += text.substr(0, length);
        } else if (text.front() == '\n') {
            visible += "\\n";
        } else {
            fmt::format_to(std::back_inserter(visible), "\\x{:02x}", ByteAt(text, 0));
        }
        text.remove_prefix(std::max<size_t>(length, 1));
    }
    return visible;
}

void Complain(const std::string& who, const std::string& what) {
    const bool whole = what.size() <= MAX_MESSAGE;
    const std::string text = who + ": " + Visible(std::string_view(what).substr(0, MAX_MESSAGE)) +
                             (whole ? "\n" : "...\n");
    std::fputs(text.c_str(), stderr);
}

}  // namespace qorsim
