#include "Quoted.h"

#include <algorithm>
#include <cctype>

namespace qorapps {
namespace {

constexpr size_t MAX_SHOWN = 60;   // bytes of a word
constexpr size_t MAX_BARE = 24;    // and of one without quotation marks
constexpr size_t MAX_TYPED = 40;   // what is longer is no name with a mistake
constexpr size_t MIN_PREFIX = 3;   // characters that may stand for the whole name
constexpr size_t WORD_A_TYPO = 3;  // characters for each of which one mistake is believed

bool IsBehindFirstByte(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

// Not within a character.
std::string_view Cut(std::string_view word) {
    size_t size = MAX_SHOWN;
    while (size > 0 && IsBehindFirstByte(word[size])) {
        --size;
    }
    return word.substr(0, size == 0 ? MAX_SHOWN : size);
}

std::string Plain(const std::string& name) {
    std::string plain = name.substr(std::min(name.find_first_not_of('-'), name.size()));
    std::transform(plain.begin(), plain.end(), plain.begin(),
                   [](unsigned char byte) { return static_cast<char>(std::tolower(byte)); });
    return plain;
}

// How many characters have to be changed, put in, left out, or swapped with the next one.
size_t Typos(const std::string& one, const std::string& two) {
    std::vector<std::vector<size_t>> cost(one.size() + 1, std::vector<size_t>(two.size() + 1));
    for (size_t i = 0; i <= one.size(); ++i) {
        for (size_t j = 0; j <= two.size(); ++j) {
            if (i == 0 || j == 0) {
                cost[i][j] = i + j;
                continue;
            }
            const size_t change = one[i - 1] == two[j - 1] ? 0 : 1;
            cost[i][j] =
                std::min({cost[i - 1][j] + 1, cost[i][j - 1] + 1, cost[i - 1][j - 1] + change});
            if (i > 1 && j > 1 && one[i - 1] == two[j - 2] && one[i - 2] == two[j - 1]) {
                cost[i][j] = std::min(cost[i][j], cost[i - 2][j - 2] + 1);
            }
        }
    }
    return cost[one.size()][two.size()];
}

}  // namespace

std::string Quoted(std::string_view word) {
    std::string text = "\"";
    for (const char byte : word.size() > MAX_SHOWN ? Cut(word) : word) {
        text += byte == '\n' ? "\\n" : std::string(1, byte);
    }
    return text + (word.size() > MAX_SHOWN ? "...\"" : "\"");
}

std::string Shown(std::string_view word) {
    const bool isBare = !word.empty() && word.size() <= MAX_BARE &&
                        word.find_first_of(" \n\t") == std::string_view::npos;
    return isBare ? std::string(word) : Quoted(word);
}

std::string NearestName(const std::string& word, const std::vector<std::string>& names) {
    const std::string typed = Plain(word);
    if (typed.empty() || typed.size() > MAX_TYPED) {
        return "";
    }
    std::string nearest;
    size_t least = std::max<size_t>((typed.size() + 1) / WORD_A_TYPO, 1) + 1;
    for (const std::string& name : names) {
        const std::string plain = Plain(name);
        const bool isBegun = typed.size() >= MIN_PREFIX && plain.starts_with(typed);
        const size_t typos = isBegun ? 0 : Typos(typed, plain);
        if (typos < std::min(least, typed.size())) {
            nearest = name;
            least = typos;
        }
    }
    return nearest;
}

std::string Listed(const std::vector<std::string>& names) {
    std::string text;
    for (const std::string& name : names) {
        text += (text.empty() ? "" : ", ") + name;
    }
    return text;
}

}  // namespace qorapps
