#include "format/JsonDocument.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "format/JsonScan.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

std::string Dumped(const CJson& json, int indentation) {
    return json.dump(indentation, ' ', false, CJson::error_handler_t::replace);
}

template <typename VALUE>
void AddTold(CJson& object, const char* name, const std::optional<VALUE>& value) {
    if (value) {
        object[name] = *value;
    }
}

}  // namespace

CJson NewDocument(std::string_view command) {
    return {{"schema_version", JSON_SCHEMA_VERSION}, {"command", command}};
}

CJson TextOrNull(const std::optional<std::string>& text) {
    return text && !text->empty() ? CJson(*text) : CJson();
}

CJson ValueOrNull(const CMeasure& value) {
    if (!value) {
        return {};
    }
    return value->number ? CJson(*value->number) : TextOrNull(value->text);
}

void AddDrive(CJson& json, const std::optional<CDriveIdentity>& drive) {
    if (!drive) {
        return;
    }
    CJson object = CJson::object();
    AddTold(object, "controller", drive->controller);
    AddTold(object, "enclosure", drive->place.enclosure);
    AddTold(object, "slot", drive->place.slot);
    AddTold(object, "drive", drive->number);
    AddTold(object, "serial", drive->serial);
    AddTold(object, "product", drive->product);
    if (drive->capacity) {
        object["capacity"] = drive->capacity->text;
        AddTold(object, "capacity_bytes", drive->capacity->number);
    }
    json["physical_drive"] = std::move(object);
}

CJson ParseJson(const std::string& text, size_t deepest) {
    return JsonDepth(text) <= deepest ? CJson::parse(text, nullptr, false)
                                      : CJson(CJson::value_t::discarded);
}

std::string JsonText(const CJson& json, int indentation) {
    return MakeJsonVisible(Dumped(json, indentation), {.utf8 = true}) + '\n';
}

std::string ValidUtf8(std::string_view text) {
    constexpr unsigned char LAST_OF_ASCII = 0x7F;
    if (std::all_of(text.begin(), text.end(), [](char character) {
            return static_cast<unsigned char>(character) <= LAST_OF_ASCII;
        })) {
        return std::string(text);
    }
    // What the document itself makes of it.
    return CJson::parse(Dumped(text, NO_INDENTATION)).get<std::string>();
}

}  // namespace qorctl
