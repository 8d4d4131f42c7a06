#include "Generator.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <random>

namespace qorsim {
namespace {

using CJson = nlohmann::ordered_json;

constexpr int SLOTS = 24;  // of an enclosure
constexpr int FIRST_ENCLOSURE = 8;
constexpr int FIRST_BUS = 0x10;
constexpr int FIRST_SSD_BUS = 0xc0;
constexpr int ILL_GROUPS = 12;  // one in so many has lost a drive

struct CProduct {
    const char* name;
    const char* device;
    const char* subsystem;
    int memory;
    int ports;
    const char* package;
    const char* version;
    const char* buildTime;
};

constexpr std::array<CProduct, 4> PRODUCTS = {{
    {"TRC 3108-8i 2GB", "005d", "9361", 2048, 8, "24.21.0-0148", "4.680.00-8527",
     "Aug 21 2020, 10:32:15"},
    {"TRC 3516-16e 4GB", "0014", "9480", 4096, 16, "51.16.0-4076", "5.160.02-3552",
     "Jun 11 2021, 08:57:41"},
    {"TRC 3508-8i 2GB", "0016", "9461", 2048, 8, "51.16.0-4076", "5.160.02-3552",
     "Jun 11 2021, 08:57:41"},
    {"TRC 3916-16i 8GB", "10e2", "4000", 8192, 16, "52.22.0-4544", "5.220.02-3691",
     "Feb 03 2023, 17:20:08"},
}};

// Of the host that is extended.
struct CModel {
    const char* name;
    std::int64_t megabytes;
    bool hasSmartRows;
};

constexpr std::array<CModel, 4> MODELS = {{
    {"sas-1200", 1143996, false},
    {"sas-ssd-800", 763096, false},
    {"sata-8000", 7629438, true},
    {"sata-ssd-480", 457861, true},
}};

struct CLevel {
    const char* name;
    const char* groupHead;
    int least;  // drives
    int most;
    int step;
    bool mirrored;
    int parity;  // drives' worth
};

constexpr std::array<CLevel, 4> LEVELS = {{
    {"RAID 1", "RG", 2, 2, 1, true, 0},
    {"RAID 5", "RG", 3, 8, 1, false, 1},
    {"RAID 6", "RG", 5, 12, 1, false, 2},
    {"RAID 10", "sRG", 4, 16, 2, true, 0},
}};

struct CSsdProduct {
    const char* name;
    const char* size;
};

constexpr std::array<CSsdProduct, 3> SSDS = {
    {{"Cobalt CB2-1205", "1205GB"}, {"Cobalt CB2-2410", "2410GB"}, {"Cobalt CB3-3200", "3200GB"}}};

std::string SizeText(std::int64_t megabytes) {
    constexpr std::int64_t GIGABYTE = 1024;
    constexpr std::int64_t TERABYTE = 1024 * GIGABYTE;
    const bool large = megabytes >= TERABYTE;
    const std::int64_t thousandths = megabytes * 1000 / (large ? TERABYTE : GIGABYTE);
    return fmt::format("{}.{:03}{}", thousandths / 1000, thousandths % 1000, large ? "TB" : "GB");
}

class CGenerator {
public:
    explicit CGenerator(const CHostSize& size) : m_Size(size), m_Random(size.seed) {}

    CJson Profile();

private:
    // A number from 0 to count - 1. (The library's distributions differ between libraries.)
    int Pick(int count) { return static_cast<int>(m_Random() % static_cast<std::uint64_t>(count)); }
    template <typename Table>
    const auto& PickFrom(const Table& table) {
        return table[static_cast<size_t>(Pick(static_cast<int>(table.size())))];
    }

    CJson PciDevices();
    CJson Controller(int number, int driveCount);
    void AddGroup(CJson& controller, int room);
    CJson LogicalDrives(std::int64_t megabytes, const char* state);
    void AddSpare(CJson& controller, const CJson& group, const CModel& model);
    void AddStock(CJson& controller);
    CJson& AddDrive(CJson& controller, const std::string& use, const char* status,
                    const CModel& model);
    CJson Ssd(int number);

    CHostSize m_Size;
    std::mt19937_64 m_Random;
    int m_Drives = 0;  // so far, of all controllers
    int m_NextLd = 0;  // of the controller
    std::vector<const CProduct*> m_Products;
    int m_SsdCount = 0;
};

CJson CGenerator::Profile() {
    for (int i = 0; i < m_Size.controllers; ++i) {
        m_Products.push_back(&PickFrom(PRODUCTS));
    }
    m_SsdCount = Pick(static_cast<int>(SSDS.size()) + 1);
    CJson profile = {{"extends", "large"},
                     {"description", fmt::format("Generated: {} controllers, {} drives, seed {}",
                                                 m_Size.controllers, m_Size.drives, m_Size.seed)},
                     {"pciDevices", PciDevices()},
                     {"controllers", CJson::array()},
                     {"pcieSsds", CJson::array()}};
    for (int i = 0; i < m_Size.controllers; ++i) {
        const int rest = m_Size.drives % m_Size.controllers;
        profile["controllers"].push_back(
            Controller(i, m_Size.drives / m_Size.controllers + (i < rest ? 1 : 0)));
    }
    for (int i = 0; i < m_SsdCount; ++i) {
        profile["pcieSsds"].push_back(Ssd(i));
    }
    return profile;
}

CJson PciDevice(int bus, const char* vendor, const char* device, const char* subsystem) {
    return {{"address", fmt::format("{:02x}:00.0", bus)},
            {"vendor", vendor},
            {"device", device},
            {"subsystemVendor", vendor},
            {"subsystem", subsystem},
            {"revision", "01"}};
}

CJson CGenerator::PciDevices() {
    CJson devices = CJson::array();
    devices.push_back(PciDevice(0x01, "8086", "1521", "0002"));
    int bus = FIRST_BUS;
    for (const CProduct* product : m_Products) {
        devices.push_back(PciDevice(bus++, "1000", product->device, product->subsystem));
    }
    for (int i = 0; i < m_SsdCount; ++i) {
        devices.push_back(PciDevice(FIRST_SSD_BUS + i, "1aed", "2001", "2001"));
    }
    return devices;
}

CJson CGenerator::Controller(int number, int driveCount) {
    const CProduct& product = *m_Products[static_cast<size_t>(number)];
    CJson controller = {{"product", product.name},
                        {"serial", fmt::format("TR{:08}", 10000000 + number * 1009 + Pick(1000))},
                        {"pci", fmt::format("{:02x}:00.0", FIRST_BUS + number)},
                        {"sasAddress", fmt::format("500605b0{:08x}", 0x01000000 + number * 16)},
                        {"memory", product.memory},
                        {"ports", product.ports},
                        {"firmware",
                         {{"package", product.package},
                          {"version", product.version},
                          {"buildTime", product.buildTime},
                          {"bios", "7.16.00.0_0x07100501"},
                          {"driver", "07.719.03.00"}}},
                        {"rates", CJson::object()},
                        {"groups", CJson::array()},
                        {"drives", CJson::array()}};
    if (Pick(8) != 0) {
        controller["battery"] = {{"type", "Supercapacitor"},
                                 {"status", "Normal"},
                                 {"charge", 90 + Pick(11)},
                                 {"temperature", 24 + Pick(12)}};
    }
    m_NextLd = 0;
    const int grouped = driveCount - driveCount / 10;
    const auto room = [&] { return grouped - static_cast<int>(controller["drives"].size()); };
    while (room() >= LEVELS.front().least) {
        AddGroup(controller, room());
    }
    while (static_cast<int>(controller["drives"].size()) < driveCount) {
        AddStock(controller);
    }
    return controller;
}

// `room`: how many drives the group and its spare may take, two or more.
void CGenerator::AddGroup(CJson& controller, int room) {
    const CLevel& wanted = PickFrom(LEVELS);
    const CLevel& level = wanted.least <= room ? wanted : LEVELS.front();
    const int steps = (std::min(level.most, room) - level.least) / level.step;
    const int count = level.least + level.step * Pick(steps + 1);
    const CModel& model = PickFrom(MODELS);
    const bool ill = Pick(ILL_GROUPS) == 0;
    const std::int64_t megabytes =
        model.megabytes * (level.mirrored ? count / 2 : count - level.parity);
    const std::string use = fmt::format("LD{}", m_NextLd);
    CJson group = {{"name", fmt::format("{}{}", level.groupHead, controller["groups"].size())},
                   {"level", level.name},
                   {"size", SizeText(megabytes)},
                   {"drives", CJson::array()},
                   {"lds", LogicalDrives(megabytes, ill ? "Degraded" : "Optimal")}};
    for (int i = 0; i < count; ++i) {
        group["drives"].push_back(controller["drives"].size());
        const bool lost = ill && i == count / 2;
        const bool rebuilds = lost && Pick(2) == 0;
        CJson& drive = AddDrive(controller, use,
                                rebuilds ? "REBUILD"
                                : lost   ? "FAILED"
                                         : "ONLINE",
                                model);
        if (rebuilds) {
            drive["progress"] = Pick(100);
        }
    }
    if (count < room && Pick(4) == 0) {
        AddSpare(controller, group, model);
    }
    controller["groups"].push_back(std::move(group));
}

CJson CGenerator::LogicalDrives(std::int64_t megabytes, const char* state) {
    CJson lds = CJson::array();
    const int count = 1 + Pick(3);
    for (int i = 0; i < count; ++i) {
        lds.push_back({{"no", m_NextLd},
                       {"name", fmt::format("volume {}", m_NextLd)},
                       {"capacity", SizeText(megabytes / count)},
                       {"state", state}});
        ++m_NextLd;
    }
    return lds;
}

void CGenerator::AddSpare(CJson& controller, const CJson& group, const CModel& model) {
    AddDrive(controller, "DHS " + group["name"].get<std::string>(), "HOT SPARE", model);
}

void CGenerator::AddStock(CJson& controller) {
    const CModel& model = PickFrom(MODELS);
    if (Pick(3) == 0) {
        AddDrive(controller, "GHS", "HOT SPARE", model);
        return;
    }
    constexpr std::array<const char*, 8> STATUSES = {
        "Unconfig GOOD", "Unconfig GOOD", "Unconfig GOOD", "Unconfig GOOD",
        "Unconfig GOOD", "Unconfig GOOD", "Unconfig BAD",  "Foreign"};
    AddDrive(controller, "Unassigned", PickFrom(STATUSES), model);
}

CJson& CGenerator::AddDrive(CJson& controller, const std::string& use, const char* status,
                            const CModel& model) {
    const int number = static_cast<int>(controller["drives"].size());
    const int hours = 100 + Pick(40000);
    const int temperature = 25 + Pick(20);
    const bool broken = std::string(status) == "FAILED" || std::string(status) == "Unconfig BAD";
    CJson drive = {{"no", number},
                   {"use", use},
                   {"status", status},
                   {"model", model.name},
                   {"enclosure", FIRST_ENCLOSURE + number / SLOTS},
                   {"slot", number % SLOTS},
                   {"serial", fmt::format("G{:04X}{:06}", Pick(0x10000), m_Drives)},
                   {"wwn", fmt::format("5000c500{:08x}", m_Drives)},
                   {"powerOnHours", hours}};
    if (!broken) {
        drive["temperature"] = temperature;
    } else {
        drive["mediaErrors"] = 1 + Pick(500);
        drive["predictiveFailures"] = 1 + Pick(3);
    }
    if (model.hasSmartRows) {
        drive["smart"] = {{"Power-On Hours", std::to_string(hours)},
                          {"Temperature", std::to_string(temperature)}};
    }
    ++m_Drives;
    return controller["drives"].emplace_back(std::move(drive));
}

CJson CGenerator::Ssd(int number) {
    const CSsdProduct& product = PickFrom(SSDS);
    return {{"pci", fmt::format("{:02x}:00.0", FIRST_SSD_BUS + number)},
            {"product", product.name},
            {"serial", fmt::format("1149D{:04}", Pick(10000))},
            {"firmware", "v7.1.17"},
            {"size", product.size},
            {"status", "Healthy"},
            {"temperature", 35 + Pick(20)},
            {"lifeUsed", Pick(60)},
            {"written", fmt::format("{}TB", 1 + Pick(900))}};
}

bool IsFlat(const CJson& value) {
    return std::none_of(value.begin(), value.end(),
                        [](const CJson& element) { return element.is_structured(); });
}

// An object or array without others in it stands in one line, as a person would write it; so does a
// drive.
void Write(const CJson& value, const std::string& indent, std::string& out) {
    if (!value.is_structured() || IsFlat(value) || value.contains("wwn")) {
        out += value.dump();
        return;
    }
    const std::string inner = indent + "  ";
    out += value.is_object() ? "{" : "[";
    const char* separator = "\n";
    for (const auto& [name, member] : value.items()) {
        out += separator + inner + (value.is_object() ? CJson(name).dump() + ": " : "");
        Write(member, inner, out);
        separator = ",\n";
    }
    out += "\n" + indent + (value.is_object() ? "}" : "]");
}

}  // namespace

std::string GenerateProfile(const CHostSize& size) {
    std::string text;
    Write(CGenerator(size).Profile(), "", text);
    return text + "\n";
}

}  // namespace qorsim
