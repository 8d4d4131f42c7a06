#include "ItemTrees.h"

#include <array>
#include <iterator>
#include <random>

namespace qorbench {
namespace {

constexpr std::uint_fast32_t SEED = 20231117;
constexpr const char* GENERAL = "### General Information ###";
constexpr const char* FIRMWARE = "### Firmware/BIOS/Driver Information ###";
constexpr const char* ENCLOSURE = "### Enclosure Properties Information ###";
constexpr const char* CTRL_ROOT = "Controller Information";
constexpr const char* PD_ROOT = "Physical Drive Information";

struct CPair {
    const char* name;
    const char* value;
};

constexpr std::array<CPair, 15> DRIVE_PAIRS = {{{"RG No.", "RG0"},
                                                {"LD No.", "LD0"},
                                                {"Raw Capacity", "1.091TB"},
                                                {"Interface Type", "SAS"},
                                                {"Media Type", "HDD"},
                                                {"Product ID", "NL1200MM0129"},
                                                {"Serial Number", "SAS00"},
                                                {"Vendor ID", "NORDLYS"},
                                                {"PD Status", "NO ERROR"},
                                                {"PD Status(Detail)", "ONLINE"},
                                                {"Media Error Count", "0"},
                                                {"Drive Speed", "12.0Gb/s"},
                                                {"Revision Level", "N102"},
                                                {"Temperature", "31C"},
                                                {"Power Status", "Active"}}};

void AddDrive(ItemList& items, unsigned number, std::mt19937& random) {
    AddItem(items, "", PD_ROOT, "");
    AddItem(items, PD_ROOT, GENERAL, "");
    AddItem(items, GENERAL, "PD No.", "PD" + std::to_string(number));
    for (const CPair& pair : DRIVE_PAIRS) {
        std::string value = pair.value;
        if (value == "SAS00") {
            value += std::to_string(random() % 1'000'000);
        }
        AddItem(items, GENERAL, pair.name, value);
    }
    AddItem(items, PD_ROOT, ENCLOSURE, "");
    AddItem(items, ENCLOSURE, "Enclosure ID", "0");
    AddItem(items, ENCLOSURE, "Slot No.", std::to_string(number % 24));
}

}  // namespace

void AddDriveItems(ItemList& items, std::size_t count) {
    std::mt19937 random(SEED);
    for (unsigned number = 0; items.size() < count; ++number) {
        AddDrive(items, number, random);
    }
    while (items.size() > count) {
        DeleteItemDisp(items.back());
        items.pop_back();
    }
}

void AddServer(ItemList& items, unsigned controllers, unsigned drives) {
    std::mt19937 random(SEED);
    for (unsigned ctrl = 0; ctrl < controllers; ++ctrl) {
        AddItem(items, "", CTRL_ROOT, "");
        AddItem(items, CTRL_ROOT, GENERAL, "");
        AddItem(items, GENERAL, "Controller No.", std::to_string(ctrl));
        AddItem(items, GENERAL, "Product Name", "TRC 3108-8i 2GB");
        AddItem(items, GENERAL, "PCI Bus/Dev/Func", "59/0/0");
        AddItem(items, CTRL_ROOT, FIRMWARE, "");
        AddItem(items, FIRMWARE, "Firmware Package Version", "24.21.0-0148");
        AddItem(items, FIRMWARE, "Firmware Version", "4.680.00-8527");
        for (unsigned drive = 0; drive < drives; ++drive) {
            AddDrive(items, drive, random);
        }
    }
}

std::vector<CLevelEnd> LevelEnds(const ItemList& items) {
    std::vector<CLevelEnd> ends;
    std::vector<const std::string*> open;  // the names of the open items
    for (auto item = items.begin(); item != items.end(); ++item) {
        open.push_back(&(*item)->ItemName());
        const auto next = std::next(item);
        CLevelEnd end = {next == items.end() || (*next)->ParentName() != *open.back(), 0};
        while (!open.empty() && (next == items.end() || *open.back() != (*next)->ParentName())) {
            open.pop_back();
            ++end.closed;
        }
        ends.push_back(end);
    }
    return ends;
}

}  // namespace qorbench
