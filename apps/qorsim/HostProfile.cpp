#include "HostProfile.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <regex>
#include <set>

#include "ProfileReader.h"

namespace qorsim {
namespace {

using nlohmann::json;

constexpr long MAX_NUMBER = 65535;      // of a drive, an LD, a slot
constexpr long MAX_COUNT = 4294967295;  // of errors, hours
constexpr long MAX_TEMPERATURE = 200;
constexpr long MIN_TEMPERATURE = -40;

// Each drive has its model's SMART rows for itself: so many of one, and of all together.
constexpr size_t MAX_MODEL_ROWS = 255;
constexpr size_t MAX_DRIVE_ROWS = 500000;

const CTextForm PCI_ID{std::regex("[0-9a-f]{4}"), "of 4 lower-case hexadecimal digits"};
const CTextForm PCI_ADDRESS{std::regex("[0-9a-f]{2}:[0-9a-f]{2}\\.[0-7]"),
                            "BB:DD.F in lower-case hexadecimal digits"};
const CTextForm PCI_REVISION{std::regex("[0-9a-f]{2}"), "of 2 lower-case hexadecimal digits"};
const CTextForm HEX_16{std::regex("[0-9a-f]{16}"), "of 16 lower-case hexadecimal digits"};
const CTextForm DRIVE_USE{std::regex("LD\\d+|GHS|DHS s?RG\\d+|RLD\\d*|Unassigned"),
                          "LDn, GHS, DHS RGn, DHS sRGn, RLDn or Unassigned"};
const CTextForm GROUP_NAME{std::regex("(s|sc)?RG\\d+"), "RGn, sRGn or scRGn"};
const CTextForm LD_TEXT{std::regex("[^,]+"), "of a text without commas"};

// A SMART table's cells: none is empty, only a name holds blanks, and each fits its column.
const CTextForm ROW_NAME{std::regex("\\S(.{0,38}\\S)?"), "of 1 to 40 characters"};
const CTextForm ROW_HEAD{std::regex("\\[Head.*\\]"), "[Head...]"};
const CTextForm CELL{std::regex("\\S{1,15}"), "of 1 to 15 characters that are no blanks"};

using CPciDevices = std::map<std::string, CPciDevice>;  // by their addresses

struct CDriveModels {
    std::map<std::string, CDriveModel> byName;
    size_t rowsLeft = MAX_DRIVE_ROWS;  // that drives may still take
};

// The keys of an addition stand in the report in their alphabetical order.
CAddition ReadAddition(const CProfileReader& place) {
    place.DemandKeys({"report", "section", "after", "keys"});
    CAddition addition;
    addition.report = place.Member("report").OneOf({"ctrlinfo", "ldpdinfo", "pdinfo", "pssdinfo"});
    addition.section = place.Member("section").Text();
    addition.after = place.TextOf("after", "");
    const CProfileReader keys = place.Member("keys");
    for (const std::string& key : keys.Names()) {
        addition.keys.emplace_back(key, keys.Member(key).Text());
    }
    return addition;
}

CTool ReadTool(const CProfileReader& place) {
    place.DemandKeys({"version", "missing", "additions"});
    CTool tool;
    tool.version = place.Member("version").Text();
    for (const CProfileReader& element : place.ElementsOf("additions")) {
        tool.additions.push_back(ReadAddition(element));
    }
    for (const CProfileReader& element : place.ElementsOf("missing")) {
        tool.missing.insert(element.OneOf({"krzcli", "MegaCli", "storcli"}));
    }
    return tool;
}

std::string ReadPciId(const CProfileReader& place) {
    return place.TextLike(PCI_ID);
}

std::string ReadPciAddress(const CProfileReader& place) {
    return place.TextLike(PCI_ADDRESS);
}

CPciDevice ReadPciDevice(const CProfileReader& place) {
    place.DemandKeys({"address", "vendor", "device", "subsystemVendor", "subsystem", "revision"});
    CPciDevice device;
    device.address = ReadPciAddress(place.Member("address"));
    device.vendor = ReadPciId(place.Member("vendor"));
    device.device = ReadPciId(place.Member("device"));
    device.subsystemVendor = ReadPciId(place.Member("subsystemVendor"));
    device.subsystem = ReadPciId(place.Member("subsystem"));
    device.revision = place.Member("revision").TextLike(PCI_REVISION);
    return device;
}

// The device at the address that this place names.
CPciDevice FindPciDevice(const CProfileReader& place, const CPciDevices& devices) {
    const std::string address = ReadPciAddress(place);
    const auto device = devices.find(address);
    if (device == devices.end()) {
        place.Reject(fmt::format("\"pciDevices\" has no device at {}", address));
        return {};
    }
    return device->second;
}

CSmartRow ReadSmartRow(const CProfileReader& place, const std::string& interfaceType) {
    CSmartRow row;
    if (interfaceType == "SATA") {
        place.DemandKeys({"id", "name", "current", "worst", "value", "threshold"});
        row.id = place.Member("id").Number(1, 255);
        row.current = place.Member("current").Number(0, 255);
        row.worst = place.Member("worst").Number(0, 255);
    } else {
        place.DemandKeys({"head", "name", "value", "threshold"});
        row.head = place.Has("head") ? place.Member("head").TextLike(ROW_HEAD) : "";
    }
    row.name = place.Member("name").TextLike(ROW_NAME);
    row.value = place.Member("value").TextLike(CELL);
    row.threshold = place.Member("threshold").TextLike(CELL);
    return row;
}

CDriveModel ReadDriveModel(const CProfileReader& place) {
    place.DemandKeys(
        {"interface", "media", "vendor", "product", "firmware", "size", "linkSpeed", "smart"});
    CDriveModel model;
    model.interfaceType = place.Member("interface").OneOf({"SAS", "SATA"});
    model.mediaType = place.Member("media").OneOf({"HDD", "SSD"});
    model.vendor = place.Member("vendor").Text();
    model.product = place.Member("product").Text();
    model.firmware = place.Member("firmware").Text();
    model.size = place.Member("size").Text();
    model.linkSpeed = place.Member("linkSpeed").Text();
    for (const CProfileReader& element : place.ElementsOf("smart")) {
        model.smart.push_back(ReadSmartRow(element, model.interfaceType));
    }
    if (model.smart.size() > MAX_MODEL_ROWS) {
        place.Reject(fmt::format("there are more than {} SMART rows", MAX_MODEL_ROWS));
        model.smart.clear();
    }
    return model;
}

CDriveModels ReadDriveModels(const CProfileReader& profile) {
    CDriveModels models;
    if (profile.Has("driveModels")) {
        const CProfileReader place = profile.Member("driveModels");
        for (const std::string& name : place.Names()) {
            models.byName[name] = ReadDriveModel(place.Member(name));
        }
    }
    return models;
}

CDriveModel FindDriveModel(const CProfileReader& place, CDriveModels& models) {
    const auto model = models.byName.find(place.Text());
    if (model == models.byName.end()) {
        place.Reject(fmt::format("\"driveModels\" has no model \"{}\"", place.Text()));
        return {};
    }
    const size_t rows = model->second.smart.size();
    if (rows > models.rowsLeft) {
        place.Reject(
            fmt::format("the drives have more than {} SMART rows together", MAX_DRIVE_ROWS));
        return {};
    }
    models.rowsLeft -= rows;
    return model->second;
}

// The drive's own values of its model's SMART rows: row name to value.
void ReadSmartValues(const CProfileReader& place, CDriveModel& model) {
    for (const std::string& name : place.Names()) {
        const auto row = std::find_if(model.smart.begin(), model.smart.end(),
                                      [&](const CSmartRow& each) { return each.name == name; });
        if (row == model.smart.end()) {
            place.Reject(fmt::format("the drive's model has no SMART row \"{}\"", name));
            return;
        }
        row->value = place.Member(name).TextLike(CELL);
    }
}

std::optional<long> ReadOptional(const CProfileReader& place, const char* key, long least,
                                 long most) {
    if (!place.Has(key)) {
        return std::nullopt;
    }
    return place.Member(key).Number(least, most);
}

CDrive ReadDrive(const CProfileReader& place, CDriveModels& models) {
    place.DemandKeys({"no", "use", "status", "model", "enclosure", "slot", "serial", "wwn", "power",
                      "temperature", "powerOnHours", "mediaErrors", "otherErrors",
                      "predictiveFailures", "progress", "smart"});
    CDrive drive;
    drive.number = place.Member("no").Number(0, MAX_NUMBER);
    drive.use = place.Member("use").TextLike(DRIVE_USE);
    drive.status = place.Member("status").Text();
    drive.model = FindDriveModel(place.Member("model"), models);
    drive.enclosure = place.Member("enclosure").Number(0, MAX_NUMBER);
    drive.slot = place.Member("slot").Number(0, MAX_NUMBER);
    drive.serial = place.Member("serial").Text();
    drive.wwn = place.Member("wwn").TextLike(HEX_16);
    drive.power = place.TextOf("power", "Active");
    drive.temperature = ReadOptional(place, "temperature", MIN_TEMPERATURE, MAX_TEMPERATURE);
    drive.powerOnHours = ReadOptional(place, "powerOnHours", 0, MAX_COUNT);
    drive.mediaErrors = place.NumberOf("mediaErrors", 0, MAX_COUNT, 0);
    drive.otherErrors = place.NumberOf("otherErrors", 0, MAX_COUNT, 0);
    drive.predictiveFailures = place.NumberOf("predictiveFailures", 0, MAX_COUNT, 0);
    drive.progress = ReadOptional(place, "progress", 0, 100);
    if (place.Has("smart")) {
        ReadSmartValues(place.Member("smart"), drive.model);
    }
    return drive;
}

CLogicalDrive ReadLogicalDrive(const CProfileReader& place) {
    place.DemandKeys({"no", "name", "capacity", "state", "stripeSize", "accessPolicy", "readPolicy",
                      "writePolicy", "cachedLds"});
    CLogicalDrive ld;
    ld.number = place.Member("no").Number(0, MAX_NUMBER);
    ld.name = place.Member("name").Text();
    ld.capacity = place.Member("capacity").TextLike(LD_TEXT);
    ld.state = place.Member("state").TextLike(LD_TEXT);
    ld.stripeSize = place.TextOf("stripeSize", "64KB");
    ld.accessPolicy = place.TextOf("accessPolicy", "Read Write");
    ld.readPolicy = place.TextOf("readPolicy", "Read Ahead");
    ld.writePolicy = place.TextOf("writePolicy", "Write Back");
    for (const CProfileReader& element : place.ElementsOf("cachedLds")) {
        ld.cachedLds.push_back(element.Number(0, MAX_NUMBER));
    }
    return ld;
}

// Notes a number that must not occur twice.
void DemandNew(const CProfileReader& place, const char* what, long number, std::set<long>& known) {
    if (!known.insert(number).second) {
        place.Reject(fmt::format("the {} occurs twice", what));
    }
}

CRaidGroup ReadRaidGroup(const CProfileReader& place, const std::set<long>& driveNumbers,
                         std::set<long>& ldNumbers) {
    place.DemandKeys({"name", "level", "size", "drives", "lds"});
    CRaidGroup group;
    group.name = place.Member("name").TextLike(GROUP_NAME);
    group.level = place.Member("level").Text();
    group.size = place.Member("size").Text();
    for (const CProfileReader& element : place.Member("drives").Elements()) {
        group.drives.push_back(element.Number(0, MAX_NUMBER));
        if (driveNumbers.count(group.drives.back()) == 0) {
            element.Reject(fmt::format("the controller has no drive {}", group.drives.back()));
        }
    }
    for (const CProfileReader& element : place.Member("lds").Elements()) {
        group.lds.push_back(ReadLogicalDrive(element));
        DemandNew(element, "LD number", group.lds.back().number, ldNumbers);
    }
    return group;
}

void DemandCachedLds(const CProfileReader& place, const CController& controller,
                     const std::set<long>& ldNumbers) {
    for (const CRaidGroup& group : controller.groups) {
        for (const CLogicalDrive& ld : group.lds) {
            for (const long number : ld.cachedLds) {
                if (ldNumbers.count(number) == 0) {
                    place.Reject(fmt::format("LD{} caches LD{}, which the controller has not",
                                             ld.number, number));
                }
            }
        }
    }
}

CFirmware ReadFirmware(const CProfileReader& place) {
    place.DemandKeys({"package", "version", "buildTime", "bios", "driver"});
    CFirmware firmware;
    firmware.package = place.Member("package").Text();
    firmware.version = place.Member("version").Text();
    firmware.buildTime = place.Member("buildTime").Text();
    firmware.bios = place.Member("bios").Text();
    firmware.driver = place.Member("driver").Text();
    return firmware;
}

CRates ReadRates(const CProfileReader& place) {
    place.DemandKeys({"rebuild", "backgroundInitialization", "consistencyCheck", "patrolRead",
                      "reconstruction"});
    constexpr long USUAL = 30;
    CRates rates;
    rates.rebuild = place.NumberOf("rebuild", 0, 100, USUAL);
    rates.backgroundInitialization = place.NumberOf("backgroundInitialization", 0, 100, USUAL);
    rates.consistencyCheck = place.NumberOf("consistencyCheck", 0, 100, USUAL);
    rates.patrolRead = place.NumberOf("patrolRead", 0, 100, USUAL);
    rates.reconstruction = place.NumberOf("reconstruction", 0, 100, USUAL);
    return rates;
}

CBattery ReadBattery(const CProfileReader& place) {
    place.DemandKeys({"type", "status", "charge", "temperature"});
    CBattery battery;
    battery.type = place.Member("type").Text();
    battery.status = place.Member("status").Text();
    battery.charge = place.Member("charge").Number(0, 100);
    battery.temperature = place.Member("temperature").Number(MIN_TEMPERATURE, MAX_TEMPERATURE);
    return battery;
}

void ReadStorage(const CProfileReader& place, CDriveModels& models, CController& controller) {
    std::set<long> driveNumbers;
    std::set<long> slots;
    for (const CProfileReader& element : place.ElementsOf("drives")) {
        const CDrive& drive = controller.drives.emplace_back(ReadDrive(element, models));
        DemandNew(element, "drive number", drive.number, driveNumbers);
        DemandNew(element, "slot", drive.enclosure * (MAX_NUMBER + 1) + drive.slot, slots);
    }
    std::set<long> ldNumbers;
    for (const CProfileReader& element : place.ElementsOf("groups")) {
        controller.groups.push_back(ReadRaidGroup(element, driveNumbers, ldNumbers));
    }
    DemandCachedLds(place, controller, ldNumbers);
}

CController ReadController(const CProfileReader& place, const CPciDevices& devices,
                           CDriveModels& models) {
    place.DemandKeys({"product", "serial", "pci", "sasAddress", "memory", "ports", "firmware",
                      "rates", "battery", "groups", "drives"});
    CController controller;
    controller.product = place.Member("product").Text();
    controller.serial = place.Member("serial").Text();
    controller.pci = FindPciDevice(place.Member("pci"), devices);
    controller.sasAddress = place.Member("sasAddress").TextLike(HEX_16);
    controller.memory = place.Member("memory").Number(0, MAX_COUNT);
    controller.ports = place.Member("ports").Number(1, 64);
    controller.firmware = ReadFirmware(place.Member("firmware"));
    controller.rates = ReadRates(place.Member("rates"));
    if (place.Has("battery")) {
        controller.battery = ReadBattery(place.Member("battery"));
    }
    ReadStorage(place, models, controller);
    return controller;
}

CPcieSsd ReadPcieSsd(const CProfileReader& place, const CPciDevices& devices) {
    place.DemandKeys({"pci", "product", "serial", "firmware", "size", "status", "temperature",
                      "lifeUsed", "written"});
    CPcieSsd ssd;
    ssd.pci = FindPciDevice(place.Member("pci"), devices);
    ssd.product = place.Member("product").Text();
    ssd.serial = place.Member("serial").Text();
    ssd.firmware = place.Member("firmware").Text();
    ssd.size = place.Member("size").Text();
    ssd.status = place.Member("status").Text();
    ssd.temperature = place.Member("temperature").Number(MIN_TEMPERATURE, MAX_TEMPERATURE);
    ssd.lifeUsed = place.Member("lifeUsed").Number(0, 255);
    ssd.written = place.Member("written").Text();
    return ssd;
}

CHost ReadHost(const CProfileReader& place) {
    place.DemandKeys({"$schema", "description", "extends", "patch", "events", "tool", "pciDevices",
                      "driveModels", "controllers", "pcieSsds"});
    CHost host;
    host.description = place.TextOf("description", "");
    host.tool = ReadTool(place.Member("tool"));
    CPciDevices devices;
    for (const CProfileReader& element : place.ElementsOf("pciDevices")) {
        const CPciDevice& device = host.pciDevices.emplace_back(ReadPciDevice(element));
        devices.emplace(device.address, device);
    }
    CDriveModels models = ReadDriveModels(place);
    for (const CProfileReader& element : place.ElementsOf("controllers")) {
        host.controllers.push_back(ReadController(element, devices, models));
    }
    for (const CProfileReader& element : place.ElementsOf("pcieSsds")) {
        host.ssds.push_back(ReadPcieSsd(element, devices));
    }
    return host;
}

}  // namespace

std::optional<CHost> ReadHostProfile(const json& profile, std::string& error) {
    error.clear();
    CHost host = ReadHost(CProfileReader(profile, "", error));
    if (!error.empty()) {
        return std::nullopt;
    }
    return host;
}

}  // namespace qorsim
