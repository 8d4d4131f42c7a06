// A simulated server, as a host profile describes it. Plain values; texts are printed by the
// stand-in tools as they stand.
#ifndef QORSIM_HOST_H
#define QORSIM_HOST_H

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace qorsim {

struct CPciDevice {
    std::string address;  // "BB:DD.F", lower-case hexadecimal like all the texts here
    std::string vendor;
    std::string device;
    std::string subsystemVendor;
    std::string subsystem;
    std::string revision;
};

// What a tool prints beyond what this program knows, in the part of every device of a report.
struct CAddition {
    std::string report;   // "ctrlinfo", "ldpdinfo", "pdinfo", "pssdinfo"
    std::string section;  // the title without hash marks
    std::string after;    // the section that a new one follows; "" when `section` is an old one
    std::vector<std::pair<std::string, std::string>> keys;
};

struct CTool {
    std::string version;
    std::vector<CAddition> additions;
    std::set<std::string> missing;  // "krzcli", "MegaCli", "storcli"
};

// A row of a drive's SMART table. SATA drives have the whole row; SAS drives have a head, a name,
// a value and a threshold.
struct CSmartRow {
    long id = 0;
    std::string head;  // the group that a SAS row stands in, "" for none
    std::string name;
    long current = 0;
    long worst = 0;
    std::string value;
    std::string threshold;
};

struct CDriveModel {
    std::string interfaceType;  // "SAS" or "SATA"
    std::string mediaType;
    std::string vendor;
    std::string product;
    std::string firmware;
    std::string size;
    std::string linkSpeed;
    std::vector<CSmartRow> smart;
};

struct CDrive {
    long number = 0;
    std::string use;  // "LD0", "GHS", "DHS RG1", "RLD", "Unassigned"
    std::string status;
    CDriveModel model;
    long enclosure = 0;
    long slot = 0;
    std::string serial;
    std::string wwn;
    std::string power;
    std::optional<long> temperature;  // degrees Celsius
    std::optional<long> powerOnHours;
    long mediaErrors = 0;
    long otherErrors = 0;
    long predictiveFailures = 0;
    std::optional<long> progress;  // of a rebuild or a copy: per cent that is done
};

struct CLogicalDrive {
    long number = 0;
    std::string name;
    std::string capacity;
    std::string state;
    std::string stripeSize;
    std::string accessPolicy;
    std::string readPolicy;
    std::string writePolicy;
    std::vector<long> cachedLds;  // of a cache LD: the LDs that it speeds up
};

struct CRaidGroup {
    std::string name;  // "RG0"; "sRG0" for a spanned group, "scRG0" for a group of cache drives
    std::string level;
    std::string size;
    std::vector<long> drives;
    std::vector<CLogicalDrive> lds;
};

struct CBattery {
    std::string type;
    std::string status;
    long charge = 0;       // per cent
    long temperature = 0;  // degrees Celsius
};

struct CFirmware {
    std::string package;
    std::string version;
    std::string buildTime;
    std::string bios;
    std::string driver;
};

// Per cent of the controller's power that a background task may take.
struct CRates {
    long rebuild = 0;
    long backgroundInitialization = 0;
    long consistencyCheck = 0;
    long patrolRead = 0;
    long reconstruction = 0;
};

struct CController {
    std::string product;
    std::string serial;
    CPciDevice pci;
    std::string sasAddress;
    long memory = 0;  // MB
    long ports = 0;
    CFirmware firmware;
    CRates rates;
    std::optional<CBattery> battery;
    std::vector<CRaidGroup> groups;
    std::vector<CDrive> drives;
};

struct CPcieSsd {
    CPciDevice pci;
    std::string product;
    std::string serial;
    std::string firmware;
    std::string size;
    std::string status;
    long temperature = 0;  // degrees Celsius
    long lifeUsed = 0;     // per cent
    std::string written;
};

struct CHost {
    std::string description;
    CTool tool;
    std::vector<CPciDevice> pciDevices;
    std::vector<CController> controllers;
    std::vector<CPcieSsd> ssds;
};

}  // namespace qorsim

#endif  // QORSIM_HOST_H
