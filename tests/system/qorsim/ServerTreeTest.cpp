// The files of a simulated server.
#include <gmock/gmock.h>

#include <filesystem>
#include <regex>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

class CServerTreeTest : public CSimFixture {
protected:
    static std::string FileOn(const std::string& host, const std::string& path) {
        const CEnd end = RunOn(host, {"cat", path});
        EXPECT_EQ(end.status, 0) << end.err;
        return end.out;
    }
};

TEST_F(CServerTreeTest, SmallHostsTree) {
    EXPECT_EQ(RunShellOn("small", "cd / && find opt/tarmica etc/opt/tarmica | sort").out,
              "etc/opt/tarmica\n"
              "etc/opt/tarmica/qor\n"
              "opt/tarmica\n"
              "opt/tarmica/krz\n"
              "opt/tarmica/krz/cli\n"
              "opt/tarmica/krz/cli/krzcli\n"
              "opt/tarmica/krz/host.json\n"
              "opt/tarmica/krz/lib\n"
              "opt/tarmica/krz/qorsim\n"
              "opt/tarmica/krz/started\n"
              "opt/tarmica/qor\n"
              "opt/tarmica/qor/kam\n"
              "opt/tarmica/qor/kam/work\n"
              "opt/tarmica/qor/kam/work/devices.tmp\n"
              "opt/tarmica/qor/provider\n"
              "opt/tarmica/qor/provider/PciessdVCFac.ini\n"
              "opt/tarmica/qor/provider/RAID\n"
              "opt/tarmica/qor/provider/RAID/tool\n"
              "opt/tarmica/qor/provider/RAID/tool/MegaCli\n"
              "opt/tarmica/qor/provider/RAID/tool/storcli\n"
              "opt/tarmica/qor/provider/RaidVCFac.ini\n"
              "opt/tarmica/qor/provider/tmp\n");
}

TEST_F(CServerTreeTest, ToolsAreExecutable) {
    EXPECT_EQ(
        RunShellOn("small",
                   "test -x /opt/tarmica/krz/cli/krzcli && cd "
                   "/opt/tarmica/qor/provider/RAID/tool && test -x MegaCli && test -x storcli")
            .status,
        0);
}

TEST_F(CServerTreeTest, MissingToolsAreAbsent) {
    const std::pair<const char*, const char*> tools[] = {
        {"krzcli", "/opt/tarmica/krz/cli/krzcli"},
        {"MegaCli", "/opt/tarmica/qor/provider/RAID/tool/MegaCli"},
        {"storcli", "/opt/tarmica/qor/provider/RAID/tool/storcli"},
    };
    for (const auto& [missing, missingPath] : tools) {
        nlohmann::json profile = ShippedProfile("small");
        profile["tool"]["missing"] = {missing};
        const std::string host = WriteProfile(profile);
        for (const auto& [tool, path] : tools) {
            const int absent = std::string(tool) == missing ? 1 : 0;
            EXPECT_EQ(RunOn(host, {"test", "-e", path}).status, absent) << missing << " " << tool;
        }
    }
}

TEST_F(CServerTreeTest, DeviceListHasALinePerPciDevice) {
    EXPECT_EQ(FileOn("small", DEVICE_LIST),
              "00:1f.2_8086:8d02_7270_05\n"
              "03:00.0_1000:005d_9361_02\n"
              "05:00.0_8086:1521_0002_01\n");
}

TEST_F(CServerTreeTest, HostWithoutDevicesHasAnEmptyDeviceList) {
    EXPECT_EQ(FileOn(WriteProfile({{"tool", {{"version", "7.0"}}}}), DEVICE_LIST), "");
}

// Matching is a search for upper-case texts in VEN_xxxx&DEV_xxxx, so that a list's entry of
// another form would never be found.
TEST_F(CServerTreeTest, SupportedDeviceListsCountTheirUpperCaseEntries) {
    for (const std::string name : {"RaidVCFac.ini", "PciessdVCFac.ini"}) {
        const std::string text = FileOn("small", std::string(INSTALL_DIR) + "/" + name);
        EXPECT_EQ(text, ReadFile(fs::path(QORSIM_SOURCE_DATA_DIR) / name));
        CStrings entries;
        for (const std::string& line : Lines(text)) {
            if (!line.empty() && line.front() != ';') {
                entries.push_back(line);
            }
        }
        ASSERT_GE(entries.size(), 4U);
        EXPECT_EQ(entries[0], "[SuportDevice]");
        EXPECT_EQ(entries[1], "SuportDeviceNum=" + std::to_string((entries.size() - 2) / 2));
        for (size_t i = 2; i + 1 < entries.size(); i += 2) {
            const std::string number = std::to_string(i / 2);
            EXPECT_TRUE(
                std::regex_match(entries[i], std::regex("Vendor" + number + "=VEN_[0-9A-F]{4}")))
                << entries[i];
            EXPECT_TRUE(std::regex_match(entries[i + 1],
                                         std::regex("Device" + number + "=DEV_[0-9A-F]{4}")))
                << entries[i + 1];
        }
    }
}

// The controllers and SSDs of the shipped hosts must be found by their lists.
TEST_F(CServerTreeTest, ShippedHostsHaveSupportedDevices) {
    const std::string raid = ReadFile(fs::path(QORSIM_SOURCE_DATA_DIR) / "RaidVCFac.ini");
    for (const std::string name : {"small", "large"}) {
        const nlohmann::json profile = ShippedProfile(name);
        for (const nlohmann::json& controller : profile["controllers"]) {
            for (const nlohmann::json& device : profile["pciDevices"]) {
                if (device["address"] == controller["pci"]) {
                    std::string id = device["device"];
                    std::transform(id.begin(), id.end(), id.begin(), toupper);
                    EXPECT_EQ(device["vendor"], "1000");
                    EXPECT_THAT(raid, testing::HasSubstr("=DEV_" + id + "\n"));
                }
            }
        }
    }
}

}  // namespace
}  // namespace qortest
