#include "ProfileReader.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace qorsim {
namespace {

using nlohmann::json;

constexpr size_t MAX_TEXT = 1000;

// In a JSON pointer "~" and "/" of a name are written "~0" and "~1".
std::string Escape(const std::string& name) {
    std::string escaped;
    for (const char c : name) {
        escaped += c == '~' ? "~0" : c == '/' ? "~1" : std::string(1, c);
    }
    return escaped;
}

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < 0x20 || c == 0x7f;
}

}  // namespace

void CProfileReader::Reject(const std::string& reason) const {
    if (m_Problem->empty()) {
        *m_Problem = fmt::format("{}: {}", m_Pointer.empty() ? "/" : m_Pointer, reason);
    }
}

void CProfileReader::DemandKeys(std::initializer_list<const char*> keys) const {
    if (!m_Value->is_object()) {
        Reject(fmt::format("must be an object, is {}", m_Value->type_name()));
        return;
    }
    for (const auto& [name, value] : m_Value->items()) {
        if (std::find(keys.begin(), keys.end(), name) == keys.end()) {
            Reject(fmt::format("unknown key \"{}\" (known: {})", name, fmt::join(keys, ", ")));
        }
    }
}

bool CProfileReader::Has(const std::string& key) const {
    return m_Value->is_object() && m_Value->contains(key);
}

CProfileReader CProfileReader::Member(const std::string& key) const {
    static const json nothing;
    if (!Has(key)) {
        Reject(fmt::format("\"{}\" is missing", key));
        return {nothing, m_Pointer + "/" + Escape(key), *m_Problem};
    }
    return {m_Value->at(key), m_Pointer + "/" + Escape(key), *m_Problem};
}

std::vector<std::string> CProfileReader::Names() const {
    if (!m_Value->is_object()) {
        Reject(fmt::format("must be an object, is {}", m_Value->type_name()));
        return {};
    }
    std::vector<std::string> names;
    for (const auto& [name, value] : m_Value->items()) {
        names.push_back(name);
    }
    return names;
}

std::vector<CProfileReader> CProfileReader::Elements() const {
    std::vector<CProfileReader> elements;
    if (!m_Value->is_array()) {
        Reject(fmt::format("must be an array, is {}", m_Value->type_name()));
        return elements;
    }
    for (const json& element : *m_Value) {
        elements.emplace_back(element, fmt::format("{}/{}", m_Pointer, elements.size()),
                              *m_Problem);
    }
    return elements;
}

std::vector<CProfileReader> CProfileReader::ElementsOf(const std::string& key) const {
    return Has(key) ? Member(key).Elements() : std::vector<CProfileReader>();
}

std::string CProfileReader::Text() const {
    if (!m_Value->is_string()) {
        Reject(fmt::format("must be a string, is {}", m_Value->type_name()));
        return "";
    }
    const std::string& text = m_Value->get_ref<const std::string&>();
    if (std::any_of(text.begin(), text.end(), IsControl)) {
        Reject("must not hold control characters");
    }
    if (text.size() > MAX_TEXT) {
        Reject(fmt::format("must not be longer than {} bytes", MAX_TEXT));
        return "";
    }
    return text;
}

std::string CProfileReader::TextOf(const std::string& key, const std::string& absent) const {
    return Has(key) ? Member(key).Text() : absent;
}

std::string CProfileReader::TextLike(const CTextForm& form) const {
    std::string text = Text();
    if (!std::regex_match(text, form.expression)) {
        Reject(fmt::format("must have the form {}, is \"{}\"", form.name, text));
    }
    return text;
}

std::string CProfileReader::OneOf(std::initializer_list<const char*> texts) const {
    std::string text = Text();
    if (std::find(texts.begin(), texts.end(), text) == texts.end()) {
        Reject(fmt::format("must be one of {}, is \"{}\"", fmt::join(texts, ", "), text));
    }
    return text;
}

long CProfileReader::Number(long least, long most) const {
    if (!m_Value->is_number_integer()) {
        Reject(fmt::format("must be a whole number, is {}", m_Value->type_name()));
        return least;
    }
    const double wide = m_Value->get<double>();  // holds what does not fit a long, too
    if (wide < static_cast<double>(least) || wide > static_cast<double>(most)) {
        Reject(fmt::format("must be {} to {}, is {}", least, most, m_Value->dump()));
        return least;
    }
    return m_Value->get<long>();
}

long CProfileReader::NumberOf(const std::string& key, long least, long most, long absent) const {
    return Has(key) ? Member(key).Number(least, most) : absent;
}

}  // namespace qorsim
