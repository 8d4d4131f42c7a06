// Mutates inputs that are lines: whole lines and sections are taken away, doubled, moved, mixed and
// put in, keys and values exchanged. Every other mutation is left to the fuzzer's own ones, which
// know bytes only.
//
// Most mutants are a few lines of what they come from: ten of them take the time of a whole report,
// and find as much. Very few are large, up to the fuzzer's limit.
#include <algorithm>
#include <random>
#include <utility>

#include "Fuzz.h"

extern "C" {

size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);
size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed);
size_t LLVMFuzzerCustomCrossOver(const uint8_t* data1, size_t size1, const uint8_t* data2,
                                 size_t size2, uint8_t* out, size_t maxOutSize, unsigned int seed);

}  // extern "C"

namespace {

using CRandom = std::minstd_rand;
using CLines = std::vector<std::string>;
using CLineViews = std::vector<std::string_view>;

// Of mutants that are not meant to be large.
constexpr size_t USUAL_SIZE = 4096;
// One mutant of so many is large, one of so many is no smaller than what it comes from.
constexpr size_t LARGE_SHARE = 4096;
constexpr size_t WHOLE_SHARE = 16;
constexpr size_t MOST_LINES_OF_PIECE = 16;

// A number below `count`, which is not 0.
size_t Pick(CRandom& random, size_t count) {
    return random() % count;
}

CLines::iterator PickPlace(CLines& lines, CRandom& random) {
    return lines.begin() + static_cast<std::ptrdiff_t>(Pick(random, lines.size() + 1));
}

std::string PickWord(CRandom& random) {
    static const std::vector<std::string_view> words = qorfuzz::Vocabulary();
    return std::string(words[Pick(random, words.size())]);
}

// From a line to the one before the next empty line.
std::pair<CLines::iterator, CLines::iterator> PickSection(CLines& lines, CRandom& random) {
    const auto begin = lines.begin() + static_cast<std::ptrdiff_t>(Pick(random, lines.size()));
    return {begin, std::find(begin + 1, lines.end(), "")};
}

void InsertWord(CLines& lines, CRandom& random) {
    lines.insert(PickPlace(lines, random), PickWord(random));
}

void ReplaceLine(CLines& lines, CRandom& random) {
    lines[Pick(random, lines.size())] = PickWord(random);
}

void EraseLine(CLines& lines, CRandom& random) {
    lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(Pick(random, lines.size())));
}

void SwapLines(CLines& lines, CRandom& random) {
    std::swap(lines[Pick(random, lines.size())], lines[Pick(random, lines.size())]);
}

void DoubleSection(CLines& lines, CRandom& random) {
    const auto [begin, end] = PickSection(lines, random);
    const CLines section(begin, end);
    lines.insert(PickPlace(lines, random), section.begin(), section.end());
}

void EraseSection(CLines& lines, CRandom& random) {
    const auto [begin, end] = PickSection(lines, random);
    lines.erase(begin, end);
}

// The key of one line with the value of another.
void MixPair(CLines& lines, CRandom& random) {
    std::string& line = lines[Pick(random, lines.size())];
    const std::string other =
        Pick(random, 2) == 0 ? PickWord(random) : lines[Pick(random, lines.size())];
    const size_t colon = line.find(':');
    const size_t otherColon = other.find(':');
    line = line.substr(0, colon) + ":" +
           (otherColon == std::string::npos ? other : other.substr(otherColon + 1));
}

void ChangeBorder(CLines& lines, CRandom& random) {
    static constexpr std::string_view BYTES(" \t\r\0:#", 6);
    std::string& line = lines[Pick(random, lines.size())];
    line.insert(Pick(random, 2) == 0 ? 0 : line.size(), 1, BYTES[Pick(random, BYTES.size())]);
}

void Mutate(CLines& lines, CRandom& random) {
    using COperation = void (*)(CLines&, CRandom&);
    static constexpr COperation OPERATIONS[] = {InsertWord, ReplaceLine,   EraseLine,
                                                SwapLines,  DoubleSection, EraseSection,
                                                MixPair,    ChangeBorder};
    if (lines.empty()) {
        InsertWord(lines, random);
        return;
    }
    OPERATIONS[Pick(random, std::size(OPERATIONS))](lines, random);
}

size_t Store(const CLines& lines, bool lastIsEnded, uint8_t* out, size_t maxSize) {
    std::string text;
    for (const std::string& line : lines) {
        text += line + '\n';
    }
    if (!lastIsEnded && !text.empty()) {
        text.pop_back();
    }
    const size_t size = std::min(text.size(), maxSize);
    std::copy_n(text.begin(), size, out);
    return size;
}

// All lines, or a few in a row.
CLineViews PieceOf(const CLineViews& lines, CRandom& random) {
    if (lines.empty() || Pick(random, WHOLE_SHARE) == 0) {
        return lines;
    }
    const size_t begin = Pick(random, lines.size());
    const size_t count = 1 + Pick(random, std::min(MOST_LINES_OF_PIECE, lines.size() - begin));
    const auto first = lines.begin() + static_cast<std::ptrdiff_t>(begin);
    return {first, first + static_cast<std::ptrdiff_t>(count)};
}

// Of a large input, only a part is taken apart.
CLines PickLines(const uint8_t* data, size_t size, CRandom& random) {
    const size_t begin = size > USUAL_SIZE ? Pick(random, size - USUAL_SIZE) : 0;
    const std::string text = qorfuzz::InputText(data + begin, std::min(size, USUAL_SIZE));
    const CLineViews piece = PieceOf(qorfuzz::LinesOf(text), random);
    return {piece.begin(), piece.end()};
}

// Between the usual size and the limit; each doubling is as likely as the others.
size_t PickLargeSize(size_t limit, CRandom& random) {
    size_t doublings = 0;
    while ((USUAL_SIZE << (doublings + 1)) <= limit) {
        ++doublings;
    }
    return std::min(limit, USUAL_SIZE << (doublings > 0 ? 1 + Pick(random, doublings) : 0));
}

// What stands in the place of a line when it is repeated for the nth time.
using CRepeated = std::string (*)(const std::string& line, size_t number);

std::string Same(const std::string& line, size_t) {
    return line + '\n';
}

std::string OneLine(const std::string& line, size_t) {
    return line + ' ';
}

std::string NumberedKey(const std::string& line, size_t number) {
    const size_t end = std::min(line.find_first_of(":=|"), line.size());
    return line.substr(0, end) + "(" + std::to_string(number) + ")" + line.substr(end) + '\n';
}

std::string NumberedEnd(const std::string& line, size_t number) {
    return line + " (" + std::to_string(number) + ")\n";
}

// Of an item list: below the one before.
std::string Nested(const std::string& line, size_t number) {
    const std::string parent = number == 0 ? "" : std::to_string(number - 1);
    return parent + " | " + std::to_string(number) +
           line.substr(std::min(line.find(" | "), line.size())) + '\n';
}

// One line after the other, or all of them, again and again.
size_t StoreLarge(const CLines& lines, uint8_t* out, size_t maxSize, CRandom& random) {
    static constexpr CRepeated FORMS[] = {Same, Same, OneLine, NumberedKey, NumberedEnd, Nested};
    const CRepeated form = FORMS[Pick(random, std::size(FORMS))];
    const size_t size = PickLargeSize(maxSize, random);
    const size_t share = Pick(random, 2) == 0 ? 1 : size / lines.size();  // bytes of a line in turn
    std::string text;
    size_t number = 0;
    for (size_t i = 0; text.size() < size; ++i) {
        const std::string& line = lines[i % lines.size()];
        const size_t end = text.size() + share;
        do {
            text += form(line, number++);
        } while (text.size() < end);
    }
    std::copy_n(text.begin(), size, out);
    return size;
}

}  // namespace

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed) {
    CRandom random(seed);
    CLines lines = PickLines(data, size, random);
    if (Pick(random, LARGE_SHARE) == 0 && !lines.empty() && maxSize > USUAL_SIZE) {
        return StoreLarge(lines, data, maxSize, random);
    }
    const size_t most = std::min(maxSize, USUAL_SIZE);
    if (Pick(random, 2) == 0) {
        return LLVMFuzzerMutate(data, Store(lines, true, data, most), most);
    }
    for (size_t left = 1 + Pick(random, 3); left > 0; --left) {
        Mutate(lines, random);
    }
    return Store(lines, Pick(random, 8) != 0, data, most);
}

// The beginning of one input and the end of another.
size_t LLVMFuzzerCustomCrossOver(const uint8_t* data1, size_t size1, const uint8_t* data2,
                                 size_t size2, uint8_t* out, size_t maxOutSize, unsigned int seed) {
    CRandom random(seed);
    CLines lines = PickLines(data1, size1, random);
    CLines rest = PickLines(data2, size2, random);
    lines.erase(PickPlace(lines, random), lines.end());
    lines.insert(lines.end(), PickPlace(rest, random), rest.end());
    return Store(lines, true, out, std::min(maxOutSize, USUAL_SIZE));
}
