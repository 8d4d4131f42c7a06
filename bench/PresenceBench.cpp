// The presence check of a host with many devices and a long list of supported ones, beside reading
// the two files once. In private mounts: the real server stays as it is.
#include <cstdio>
#include <fstream>
#include <string>

#include "Bench.h"
#include "PrivateMounts.h"
#include "ServerPaths.h"
#include "presence/CMSRAID_PCICard.h"

namespace {

constexpr unsigned DEVICES = 256;
constexpr unsigned SUPPORTED = 64;
constexpr const char* INI_FILE = "/opt/tarmica/qor/provider/RaidVCFac.ini";

std::string Hex(unsigned number) {
    char text[8] = {};
    std::snprintf(text, sizeof text, "%04x", number & 0xFFFFU);
    return text;
}

std::string Address(unsigned number) {
    char text[16] = {};
    std::snprintf(text, sizeof text, "%02x:%02x.0_", (number >> 5U) & 0xFFU, number & 0x1FU);
    return text;
}

// The last device is supported, by the last entry.
void LayOutServer() {
    std::string devices;
    for (unsigned i = 0; i < DEVICES; ++i) {
        devices += Address(i) + "1000:" + Hex(i + 0x8000 - DEVICES + 1) + "_0000_01\n";
    }
    std::string ini = "[SuportDevice]\nSuportDeviceNum=" + std::to_string(SUPPORTED) + "\n";
    for (unsigned i = 1; i <= SUPPORTED; ++i) {
        const std::string number = std::to_string(i);
        ini += "Vendor" + number + "=VEN_1000\nDevice" + number + "=DEV_" +
               Hex(0x8000 + SUPPORTED - i) + "\n";
    }
    qorbench::WriteFile(qorsim::DEVICE_LIST, devices);
    qorbench::WriteFile(INI_FILE, ini);
}

std::size_t ReadOnce(const char* path) {
    std::ifstream file(path);
    std::size_t bytes = 0;
    for (std::string line; std::getline(file, line);) {
        bytes += line.size();
    }
    return bytes;
}

template <class Work>
void RegisterWay(const std::string& name, Work work) {
    qorbench::Register(name, 50, 15, [=](benchmark::State& state) {
        qorbench::TimeEach(state, qorbench::CpuSeconds, work, [] {});
    });
}

}  // namespace

int main(int argc, char** argv) {
    qorsim::EnterPrivateMounts();
    LayOutServer();
    const std::string name = "presence/256 devices, 64 entries";
    RegisterWay(name + "/ours", [] {
        if (!CMSRAID_PCICard::IsPresentRAID(nullptr)) {
            std::exit(1);
        }
    });
    RegisterWay(name + "/floor", [] {
        benchmark::DoNotOptimize(ReadOnce(qorsim::DEVICE_LIST) + ReadOnce(INI_FILE));
    });
    return qorbench::RunAll(argc, argv);
}
