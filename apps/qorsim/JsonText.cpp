#include "JsonText.h"

#include <fmt/format.h>

#include <algorithm>

namespace qorsim {
namespace {

using nlohmann::json;

// Counts what a parser finds, and stops it when it is too much.
class CJsonCounter {
public:
    bool null() { return Count(); }
    bool boolean(bool) { return Count(); }
    bool number_integer(json::number_integer_t) { return Count(); }
    bool number_unsigned(json::number_unsigned_t) { return Count(); }
    bool number_float(json::number_float_t, const std::string&) { return Count(); }
    bool string(std::string&) { return Count(); }
    bool binary(json::binary_t&) { return Count(); }
    bool key(std::string&) { return true; }
    bool start_object(size_t) { return Open(); }
    bool start_array(size_t) { return Open(); }
    bool end_object() { return Close(); }
    bool end_array() { return Close(); }
    bool parse_error(size_t, const std::string&, const json::exception&) { return false; }

    const std::string& Excess() const { return m_Excess; }

private:
    bool Count() {
        if (++m_Values > MAX_JSON_VALUES) {
            m_Excess = fmt::format("must not hold more than {} values", MAX_JSON_VALUES);
        }
        return m_Excess.empty();
    }
    bool Open() {
        if (++m_Depth > MAX_JSON_DEPTH) {
            m_Excess = fmt::format("must not be nested deeper than {} levels", MAX_JSON_DEPTH);
        }
        return Count();
    }
    bool Close() {
        --m_Depth;
        return true;
    }

    size_t m_Values = 0;
    size_t m_Depth = 0;
    std::string m_Excess;
};

}  // namespace

std::string JsonExcess(const std::string& text) {
    CJsonCounter counter;
    json::sax_parse(text, &counter);
    return counter.Excess();
}

size_t DepthOf(const json& value) {
    if (!value.is_structured()) {
        return 0;
    }
    size_t deepest = 0;
    for (const json& element : value) {
        deepest = std::max(deepest, DepthOf(element));
    }
    return deepest + 1;
}

size_t CountValues(const json& value) {
    size_t count = 1;
    if (value.is_structured()) {
        for (const json& element : value) {
            count += CountValues(element);
        }
    }
    return count;
}

size_t WeightOf(const json& value) {
    size_t weight = 1;
    if (value.is_string()) {
        weight += value.get_ref<const std::string&>().size();
    }
    if (value.is_array()) {
        for (const json& element : value) {
            weight += WeightOf(element);
        }
    }
    if (value.is_object()) {
        for (const auto& [key, element] : value.items()) {
            weight += key.size() + WeightOf(element);
        }
    }
    return weight;
}

}  // namespace qorsim
