#include <algorithm>
#include <charconv>
#include <limits>
#include <system_error>
#include <utility>

#include "comlib/NumberText.h"
#include "plugin/ComLib.h"

namespace comlib {

long LeadingNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) {
        text.remove_prefix(1);
    }
    unsigned long magnitude = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), magnitude);
    constexpr unsigned long LARGEST = std::numeric_limits<long>::max();
    if (result.ec == std::errc::result_out_of_range || magnitude > LARGEST) {
        return negative ? std::numeric_limits<long>::min() : std::numeric_limits<long>::max();
    }
    const long number = static_cast<long>(magnitude);
    return negative ? -number : number;
}

}  // namespace comlib

std::string CStringUtil::NumberToTString(long number) {
    return std::to_string(number);
}

long CStringUtil::TStringToNumber(std::string text) {
    return comlib::LeadingNumber(text);
}

std::string CStringUtil::StringToUpperCase(std::string text) {
    for (char& c : text) {
        if (c >= 'a' && c <= 'z') {
            c = static_cast<char>(c - 'a' + 'A');
        }
    }
    return text;
}

std::list<std::string> CStringUtil::SplitByDot(const std::string& text) {
    std::list<std::string> parts;
    size_t begin = 0;
    for (size_t dot = text.find('.'); dot != std::string::npos; dot = text.find('.', begin)) {
        parts.push_back(text.substr(begin, dot - begin));
        begin = dot + 1;
    }
    parts.push_back(text.substr(begin));
    return parts;
}

// Builds the new text beside the old one: linear in its length, and right too when `what` or `with`
// is `text` itself.
void CStringUtil::strReplace(std::string& text, const std::string& what, const std::string& with) {
    if (what.empty()) {
        return;
    }
    std::string result;
    size_t begin = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, begin)) {
        result.append(text, begin, at - begin).append(with);
        begin = at + what.size();
    }
    result.append(text, begin);
    text = std::move(result);
}
