// Mutates inputs that are JSON documents: values are taken away, doubled, copied elsewhere, and put
// in the place of others. A third of the mutations is left to the fuzzer's own ones, which know
// bytes only.
#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <random>

#include "Fuzz.h"

extern "C" {

size_t LLVMFuzzerMutate(uint8_t* data, size_t size, size_t maxSize);
size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed);

}  // extern "C"

namespace {

using nlohmann::json;
using CRandom = std::minstd_rand;

constexpr auto VALUES = std::to_array<std::string_view>(
    {"null",
     "true",
     "0",
     "1",
     "-1",
     "65535",
     "65536",
     "4294967296",
     "1e400",
     "0.5",
     "\"\"",
     "\"LD0\"",
     "\"GHS\"",
     "\"DHS sRG0\"",
     "\"SATA\"",
     "\"SAS\"",
     "\"a, b (c) : d\"",
     "\"### x ###\"",
     "\"\\u0000\"",
     "\"\\u00e4\"",
     "[]",
     "{}",
     "[0]",
     "{\"Attribute\": \":\"}",
     "[{\"after_s\": 0, \"patch\": [{\"op\": \"remove\", \"path\": \"/controllers\"}]}]",
     "[{\"op\": \"copy\", \"from\": \"\", \"path\": \"/description\"}]",
     "{\"report\": \"ldpdinfo\", \"section\": \"General Information\", \"keys\": {\">LD\": "
     "\"(\"}}"});

size_t Pick(CRandom& random, size_t count) {
    return random() % count;
}

void CollectPlaces(json& value, std::vector<json*>& places) {
    places.push_back(&value);
    if (value.is_structured()) {
        for (json& element : value) {
            CollectPlaces(element, places);
        }
    }
}

json PickValue(const std::vector<json*>& places, CRandom& random) {
    return Pick(random, 2) == 0 ? json::parse(VALUES[Pick(random, VALUES.size())], nullptr, false)
                                : *places[Pick(random, places.size())];
}

// The name of some member of the document.
std::string PickName(const std::vector<json*>& places, CRandom& random) {
    const json& place = *places[Pick(random, places.size())];
    if (!place.is_object() || place.empty()) {
        return "description";
    }
    return std::next(place.begin(), static_cast<long>(Pick(random, place.size()))).key();
}

void EraseSome(json& place, CRandom& random) {
    if (place.is_structured() && !place.empty()) {
        place.erase(std::next(place.begin(), static_cast<long>(Pick(random, place.size()))));
    } else {
        place = nullptr;
    }
}

void Mutate(json& document, CRandom& random) {
    std::vector<json*> places;
    CollectPlaces(document, places);
    json& place = *places[Pick(random, places.size())];
    const size_t operation = Pick(random, 4);
    if (operation == 0) {
        EraseSome(place, random);
    } else if (operation == 1 && place.is_array()) {
        place.push_back(PickValue(places, random));
    } else if (operation == 1 && place.is_object()) {
        const std::string name = PickName(places, random);
        place[name] = PickValue(places, random);
    } else {
        json value = PickValue(places, random);
        place.swap(value);
    }
}

}  // namespace

size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned int seed) {
    CRandom random(seed);
    json document = json::parse(data, data + size, nullptr, false);
    if (document.is_discarded() || Pick(random, 3) == 0) {
        return LLVMFuzzerMutate(data, size, maxSize);
    }
    for (size_t left = 1 + Pick(random, 3); left > 0; --left) {
        Mutate(document, random);
    }
    const std::string text = document.dump(-1, ' ', false, json::error_handler_t::replace);
    const size_t stored = std::min(text.size(), maxSize);
    std::copy_n(text.begin(), stored, data);
    return stored;
}
