#include "FaultText.h"

#include <algorithm>
#include <random>

namespace qorsim {
namespace {

constexpr size_t BYTES_PER_MUTATION = 256;
constexpr size_t LONGEST_RANGE = 16;

// The distributions of the library differ between implementations; the engine does not.
size_t Pick(std::mt19937& random, size_t count) {
    return random() % count;
}

void MutateOnce(std::string& text, std::mt19937& random) {
    const size_t position = Pick(random, text.size());
    const size_t length = 1 + Pick(random, LONGEST_RANGE);
    const char byte = static_cast<char>(Pick(random, 256));
    switch (Pick(random, 4)) {
        case 0:
            text[position] = byte;
            break;
        case 1:
            text.insert(position, 1, byte);
            break;
        case 2:
            text.erase(position, length);
            break;
        default:
            text.insert(position, text.substr(position, length));
            break;
    }
}

}  // namespace

void RemoveLastNewlines(std::string& text) {
    text.resize(text.find_last_not_of('\n') + 1);
}

void UseCarriageReturns(std::string& text) {
    std::string result;
    for (const char byte : text) {
        result += byte == '\n' ? "\r\n" : std::string(1, byte);
    }
    text = std::move(result);
}

void PlaceNuls(std::string& text, size_t distance) {
    for (size_t i = distance - 1; i < text.size(); i += distance) {
        text[i] = '\0';
    }
}

void GrowTo(std::string& text, size_t size) {
    if (text.empty()) {
        text = "\n";
    }
    text.reserve(std::max(size, text.size()));
    while (text.size() < size) {
        text.append(text, 0, size - text.size());
    }
    text.resize(size);
}

void Mutate(std::string& text, unsigned long seed) {
    const std::string original = text;
    std::mt19937 random(static_cast<std::mt19937::result_type>(seed));
    const size_t count = 1 + text.size() / BYTES_PER_MUTATION;
    for (size_t i = 0; (i < count || text == original) && !text.empty(); ++i) {
        MutateOnce(text, random);
    }
}

}  // namespace qorsim
