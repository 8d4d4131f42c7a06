// JSON that somebody else may have written.
#ifndef QORSIM_JSONTEXT_H
#define QORSIM_JSONTEXT_H

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>

namespace qorsim {

// How deep arrays and objects may be nested in each other. Much of what is done with JSON recurses.
inline constexpr size_t MAX_JSON_DEPTH = 64;
// How many values a text may hold, itself and arrays and objects included: six times those of the
// largest host that there can be.
inline constexpr size_t MAX_JSON_VALUES = 1000000;

// What makes the text, which need be no JSON, more than this system reads; "" for nothing.
std::string JsonExcess(const std::string& text);

// Of a value: how deep it is nested (0 for what is no array and no object), and how many there are.
size_t DepthOf(const nlohmann::json& value);
size_t CountValues(const nlohmann::json& value);
// The values and the bytes of all texts and keys: what it takes to copy them.
size_t WeightOf(const nlohmann::json& value);

}  // namespace qorsim

#endif  // QORSIM_JSONTEXT_H
