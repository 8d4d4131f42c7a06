#include "watch/SeenInventory.h"

#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "watch/TickEvents.h"

namespace qorctl {
namespace {

constexpr unsigned ASCII_END = 0x80;
constexpr unsigned HIGH_BITS = 6;
constexpr unsigned LOW_MASK = 0x3F;
constexpr unsigned LEAD = 0xC0;

std::string BytesToUtf8(std::string_view bytes) {
    std::string text;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        if (byte < ASCII_END) {
            text += each;
        } else {
            text += static_cast<char>(LEAD | (byte >> HIGH_BITS));
            text += static_cast<char>(ASCII_END | (byte & LOW_MASK));
        }
    }
    return text;
}

std::string Utf8ToBytes(const std::string& text) {
    std::string bytes;
    for (size_t i = 0; i < text.size(); ++i) {
        const unsigned lead = static_cast<unsigned char>(text[i]);
        if (lead < ASCII_END || i + 1 == text.size()) {
            bytes += text[i];
        } else {
            const unsigned low = static_cast<unsigned char>(text[++i]);
            bytes += static_cast<char>((lead << HIGH_BITS) | (low & LOW_MASK));
        }
    }
    return bytes;
}

void Put(CJson& json, const std::string& name, const CText& value) {
    if (value) {
        json[name] = BytesToUtf8(*value);
    }
}

void Put(CJson& json, const std::string& name, const CNumber& value) {
    if (value) {
        json[name] = *value;
    }
}

void Put(CJson& json, const std::string& name, const CMeasure& value) {
    if (value) {
        Put(json[name], "text", CText(value->text));
        Put(json[name], "number", value->number);
    }
}

void Get(const CJson& json, const std::string& name, CText& value) {
    if (json.contains(name)) {
        value = Utf8ToBytes(json.at(name).get<std::string>());
    }
}

void Get(const CJson& json, const std::string& name, CNumber& value) {
    if (json.contains(name)) {
        value = WholeNumber(json.at(name));
    }
}

void Get(const CJson& json, const std::string& name, CMeasure& value) {
    if (json.contains(name)) {
        CText text;
        Get(json.at(name), "text", text);
        value = CQuantity{text.value_or(""), std::nullopt};
        Get(json.at(name), "number", value->number);
    }
}

// The members of each kind of device, for both directions: `visit` takes a name and a member.
template <typename DEVICE, typename OF>
concept Is = std::is_same_v<std::remove_const_t<DEVICE>, OF>;

void VisitMembers(Is<CController> auto& device, const auto& visit) {
    visit("number", device.number);
    visit("serial", device.serial);
    visit("battery", device.batteryStatus);
}

void VisitMembers(Is<CLogicalDrive> auto& device, const auto& visit) {
    visit("controller", device.controller);
    visit("number", device.number);
    visit("state", device.state);
    visit("group", device.group);
}

void VisitMembers(Is<CPhysicalDrive> auto& device, const auto& visit) {
    visit("controller", device.controller);
    visit("number", device.number);
    visit("enclosure", device.place.enclosure);
    visit("slot", device.place.slot);
    visit("state", device.statusDetail);
    visit("use", device.use);
    visit("group", device.group);
    visit("serial", device.serial);
    visit("product", device.product);
    visit("capacity", device.capacity);
    visit("progress", device.progress);
    for (const CCounter& counter : COUNTERS) {
        visit(std::string(counter.noun), device.*counter.value);
    }
}

void VisitMembers(Is<CPcieSsd> auto& device, const auto& visit) {
    visit("bus", device.bus);
    visit("state", device.status);
    visit("serial", device.serial);
}

template <typename DEVICE>
CJson DevicesToJson(const std::vector<DEVICE>& devices) {
    CJson json = CJson::array();
    for (const DEVICE& device : devices) {
        CJson each = CJson::object();
        VisitMembers(device,
                     [&](const std::string& name, const auto& value) { Put(each, name, value); });
        json.push_back(std::move(each));
    }
    return json;
}

template <typename DEVICE>
void DevicesFromJson(const CJson& json, std::vector<DEVICE>& devices) {
    for (const CJson& each : json) {
        DEVICE device;
        VisitMembers(device, [&](const std::string& name, auto& value) { Get(each, name, value); });
        devices.push_back(std::move(device));
    }
}

}  // namespace

CJson SeenToJson(const CInventory& inventory) {
    return {{"controllers", DevicesToJson(inventory.controllers)},
            {"logical_drives", DevicesToJson(inventory.logicalDrives)},
            {"drives", DevicesToJson(inventory.physicalDrives)},
            {"pcie_ssds", DevicesToJson(inventory.pcieSsds)}};
}

CInventory SeenFromJson(const CJson& json) {
    CInventory inventory;
    DevicesFromJson(json.at("controllers"), inventory.controllers);
    DevicesFromJson(json.at("logical_drives"), inventory.logicalDrives);
    DevicesFromJson(json.at("drives"), inventory.physicalDrives);
    DevicesFromJson(json.at("pcie_ssds"), inventory.pcieSsds);
    return inventory;
}

}  // namespace qorctl
