// Mutates inputs that are lines: whole lines and sections are taken away, doubled, moved, mixed and
// put in, keys and values exchanged. Every other mutation is left to the fuzzer's own ones, which
// know bytes only.
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

// A number below `count`, which is not 0.
size_t Pick(CRandom& random, size_t count) {
    return random() % count;
}

CLines::iterator PickPlace(CLines& lines, CRandom& random) {
    return lines.begin() + static_cast<std::ptrdiff_t>(Pick(random, lines.size() + 1));
}

CLines CopyOf(const std::vector<std::string_view>& lines) {
    return {lines.begin(), lines.end()};
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

}  // namespace

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed) {
    CRandom random(seed);
    if (Pick(random, 2) == 0) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    const std::string text = qorfuzz::InputText(data, size);
    CLines lines = CopyOf(qorfuzz::LinesOf(text));
    for (size_t left = 1 + Pick(random, 3); left > 0; --left) {
        Mutate(lines, random);
    }
    return Store(lines, Pick(random, 8) != 0, data, maxSize);
}

// The beginning of one input and the end of another.
size_t LLVMFuzzerCustomCrossOver(const uint8_t* data1, size_t size1, const uint8_t* data2,
                                 size_t size2, uint8_t* out, size_t maxOutSize, unsigned int seed) {
    CRandom random(seed);
    const std::string first = qorfuzz::InputText(data1, size1);
    const std::string second = qorfuzz::InputText(data2, size2);
    CLines lines = CopyOf(qorfuzz::LinesOf(first));
    CLines rest = CopyOf(qorfuzz::LinesOf(second));
    lines.erase(PickPlace(lines, random), lines.end());
    lines.insert(lines.end(), PickPlace(rest, random), rest.end());
    return Store(lines, true, out, maxOutSize);
}
