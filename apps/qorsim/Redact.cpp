#include "Redact.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vector>

namespace qorsim {
namespace {

constexpr size_t LEAST_LENGTH_ANYWHERE = 6;
// A longer one counts as several: at each place of a text all lengths are tried.
constexpr size_t MAX_IDENTIFIER = 64;
constexpr int DRAWS = 1000;  // few identifiers are so short that this does not find a free one

// Keys of identifiers, in lower case: those that are one of these, and those that contain one.
constexpr const char* WHOLE_KEYS[] = {"serial", "sn", "wwid", "guid"};
constexpr const char* KEY_PARTS[] = {"serial number", "serial no", "wwn", "world wide name",
                                     "sas address"};
// Values that say that there is no identifier.
constexpr const char* NO_VALUES[] = {"n/a",           "na",           "none", "unknown",
                                     "not available", "not supported"};

constexpr const char* WORD_SEPARATORS = " \t\r,;()[]";
constexpr const char* HEX_PREFIX = "0x";

std::string ToLower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char byte) {
        return static_cast<char>(byte < 0x80 ? std::tolower(byte) : byte);
    });
    return text;
}

bool IsAlphanumeric(char byte) {
    return std::isalnum(static_cast<unsigned char>(byte)) != 0;
}

std::string Trimmed(const std::string& text) {
    const size_t begin = text.find_first_not_of(" \t\r");
    return begin == std::string::npos
               ? ""
               : text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

bool IsIdentifierKey(const std::string& key) {
    return std::any_of(std::begin(WHOLE_KEYS), std::end(WHOLE_KEYS),
                       [&](const char* whole) { return key == whole; }) ||
           std::any_of(std::begin(KEY_PARTS), std::end(KEY_PARTS),
                       [&](const char* part) { return key.find(part) != std::string::npos; });
}

// Where the value of a line begins that holds an identifier; the line's length when it holds none.
size_t FindIdentifierValue(const std::string& line) {
    const size_t separator = line.find_first_of(":=");
    if (separator == std::string::npos ||
        !IsIdentifierKey(ToLower(Trimmed(line.substr(0, separator))))) {
        return line.size();
    }
    const std::string value = ToLower(Trimmed(line.substr(separator + 1)));
    const bool absent =
        std::find(std::begin(NO_VALUES), std::end(NO_VALUES), value) != std::end(NO_VALUES);
    return absent ? line.size() : separator + 1;
}

// The words of a value that have something to replace, in lower case and without "0x".
std::vector<std::string> IdentifierWords(const std::string& value) {
    std::vector<std::string> words;
    const std::string text = ToLower(value);
    for (size_t begin = 0;
         (begin = text.find_first_not_of(WORD_SEPARATORS, begin)) != std::string::npos;) {
        const size_t end = std::min(text.find_first_of(WORD_SEPARATORS, begin), text.size());
        std::string word = text.substr(begin, end - begin);
        if (word.starts_with(HEX_PREFIX)) {
            word.erase(0, std::strlen(HEX_PREFIX));
        }
        if (std::any_of(word.begin(), word.end(), IsAlphanumeric)) {
            for (size_t piece = 0; piece < word.size(); piece += MAX_IDENTIFIER) {
                words.push_back(word.substr(piece, MAX_IDENTIFIER));
            }
        }
        begin = end;
    }
    return words;
}

// Gives the letters of `text` the case that those of `model` have.
std::string WithCaseOf(const std::string& model, std::string text) {
    for (size_t i = 0; i < text.size(); ++i) {
        if (std::isupper(static_cast<unsigned char>(model[i])) != 0) {
            text[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
        }
    }
    return text;
}

// Calls `use` for each line without its line feed, and whether it had one.
template <typename Use>
void ForLines(const std::string& text, const Use& use) {
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = text.find('\n', begin);
        const bool complete = end != std::string::npos;
        use(text.substr(begin, complete ? end - begin : end), complete);
        begin = complete ? end + 1 : text.size();
    }
}

}  // namespace

CRedactor::CRedactor() : m_Random(std::random_device{}()) {}

void CRedactor::Learn(const std::string& text) {
    ForLines(text, [this](const std::string& line, bool) {
        for (const std::string& word : IdentifierWords(line.substr(FindIdentifierValue(line)))) {
            m_Originals.insert(word);
            m_Lengths.insert(word.size());
        }
    });
}

std::string CRedactor::Redact(const std::string& text) {
    std::string result;
    ForLines(text, [&](const std::string& line, bool complete) {
        const size_t value = FindIdentifierValue(line);
        result += RedactAnywhere(line.substr(0, value), LEAST_LENGTH_ANYWHERE);
        result += RedactAnywhere(line.substr(value), 1);
        result += complete ? "\n" : "";
    });
    return result;
}

const std::string& CRedactor::ReplacementOf(const std::string& original) {
    const auto [place, isNew] = m_Replacements.try_emplace(original);
    if (isNew) {
        place->second = Draw(original);
        m_Used.insert(place->second);
    }
    return place->second;
}

// Digits become digits, letters letters, those of a hexadecimal number again such ones.
std::string CRedactor::Draw(const std::string& original) {
    const bool isHex = original.find_first_not_of("0123456789abcdef:-") == std::string::npos;
    std::string text = original;
    for (int draw = 0; draw < DRAWS || text == original; ++draw) {
        for (char& byte : text) {
            if (std::isdigit(static_cast<unsigned char>(byte)) != 0) {
                byte = static_cast<char>('0' + m_Random() % 10);
            } else if (IsAlphanumeric(byte)) {
                byte = static_cast<char>('a' + m_Random() % (isHex ? 6 : 26));
            }
        }
        if (m_Originals.count(text) == 0 && m_Used.count(text) == 0) {
            break;
        }
    }
    return text;
}

// At each place the longest identifier is taken, since one may be a part of another.
std::string CRedactor::RedactAnywhere(const std::string& text, size_t leastLength) {
    const std::string lower = ToLower(text);
    const std::string_view whole = lower;
    std::string result;
    for (size_t position = 0; position < text.size();) {
        size_t taken = 0;
        for (auto length = m_Lengths.rbegin(); length != m_Lengths.rend() && taken == 0; ++length) {
            const std::string_view candidate = whole.substr(position, *length);
            if (*length >= leastLength && candidate.size() == *length &&
                m_Originals.contains(candidate)) {
                taken = *length;
                result +=
                    WithCaseOf(text.substr(position, taken), ReplacementOf(std::string(candidate)));
            }
        }
        if (taken == 0) {
            result += text[position];
            taken = 1;
        }
        position += taken;
    }
    return result;
}

}  // namespace qorsim
