// One piece of work of a size: bench_growth KIND N. Its instructions are counted by bench/growth,
// those of Measured() alone. For "devices" and "entries" in private mounts.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <thread>

#include "Bench.h"
#include "GetterRun.h"
#include "ItemTrees.h"
#include "PrivateMounts.h"
#include "ServerPaths.h"
#include "plugin/SvpConversion.h"
#include "presence/CMSRAID_PCICard.h"
#include "svp/CSvpPdInfoForm.h"
#include "xml/MngSrv_QorLibMan.h"

namespace {

using CWork = std::function<void()>;
using CMake = CWork (*)(unsigned size);

constexpr unsigned FEW = 8;
constexpr unsigned DRIVES = 32;
constexpr const char* INI_FILE = "/opt/tarmica/qor/provider/RaidVCFac.ini";

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "bench_growth: %s\n", what);
    std::exit(1);
}

template <qorbench::EReport KIND>
CWork Getter(unsigned size) {
    constexpr std::size_t KIB = 1024;
    const std::string path = qorbench::ScratchDir() + "/report";
    qorbench::WriteFile(path, qorbench::MakeReport(KIND, size * KIB));
    return [path] {
        ItemList items;
        if (!QorBenchParse(KIND, path.c_str(), &items)) {
            Fail("the report was rejected");
        }
        QorBenchFree(&items);
    };
}

CWork Xml(unsigned size) {
    static CItemListOwner items;
    qorbench::AddDriveItems(items, size);
    return [] {
        CMngSrv_QorLibMan manager;
        ItemList* list = &items;
        char* text = nullptr;
        manager.XmlSerialize(CMngSrv_QorLibMan::TYPE_DISPDATA, "RAID", list, &text);
    };
}

CWork Form(unsigned size) {
    static CItemListOwner items;
    qorbench::AddServer(items, size, DRIVES);
    return [] {
        CSvpPdInfoForm form;
        std::string digits;
        CSvpConversion::Convert(&form, items);
        form.SetDataSize();
        form.DumpMe(&digits);
    };
}

std::string Hex(unsigned number) {
    char text[8] = {};
    std::snprintf(text, sizeof text, "%04x", number & 0xFFFFU);
    return text;
}

// No device is supported, so that all are held against all entries.
CWork Presence(unsigned devices, unsigned entries) {
    qorsim::EnterPrivateMounts();
    std::string list;
    for (unsigned i = 0; i < devices; ++i) {
        list += "00:00.0_1000:" + Hex(i) + "_0000_01\n";
    }
    std::string ini = "[SuportDevice]\nSuportDeviceNum=" + std::to_string(entries) + "\n";
    for (unsigned i = 1; i <= entries; ++i) {
        const std::string number = std::to_string(i);
        ini += "Vendor" + number + "=VEN_2000\nDevice" + number + "=DEV_" + Hex(i) + "\n";
    }
    qorbench::WriteFile(qorsim::DEVICE_LIST, list);
    qorbench::WriteFile(INI_FILE, ini);
    // A file that changed just now is read for every key, since it might change once more.
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    return [] {
        if (CMSRAID_PCICard::IsPresentRAID(nullptr)) {
            Fail("a device was found");
        }
    };
}

CWork Devices(unsigned size) {
    return Presence(size, FEW);
}

CWork Entries(unsigned size) {
    return Presence(FEW, size);
}

const std::map<std::string, CMake>& Kinds() {
    using qorbench::EReport;
    static const std::map<std::string, CMake> kinds = {
        {"ctrl", Getter<EReport::CONTROLLERS>},
        {"ld", Getter<EReport::LOGICAL_DRIVES>},
        {"pd", Getter<EReport::PHYSICAL_DRIVES>},
        {"smart", Getter<EReport::SMART>},
        {"pssd", Getter<EReport::PCIE_SSDS>},
        {"xml", Xml},
        {"form", Form},
        {"devices", Devices},
        {"entries", Entries},
    };
    return kinds;
}

}  // namespace

// By its name what is counted.
extern "C" __attribute__((noinline, visibility("default"))) void Measured(const CWork& work) {
    work();
}

int main(int argc, char** argv) {
    const auto kind = argc == 3 ? Kinds().find(argv[1]) : Kinds().end();
    const unsigned long size = argc == 3 ? std::strtoul(argv[2], nullptr, 10) : 0;
    if (kind == Kinds().end() || size == 0) {
        Fail("usage: bench_growth KIND N");
    }
    Measured(kind->second(static_cast<unsigned>(size)));
    return 0;
}
