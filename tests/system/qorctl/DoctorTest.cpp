// Every check of the doctor with its three verdicts, on a server that is healthy but for one thing.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <chrono>
#include <nlohmann/json.hpp>

#include "QorctlFixture.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using qortest::CEnd;
using qortest::DEVICE_LIST;
using qortest::INSTALL_DIR;
using qortest::RESULT_DIR;
using qortest::WriteFile;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* PCI_DEVICES = "/sys/bus/pci/devices";
constexpr const char* TOOL = "/opt/tarmica/krz/cli/krzcli";
constexpr const char* CONFIGURATION = "/etc/opt/tarmica/qor/comlib.ini";
constexpr const char* RAID_LIST = "/opt/tarmica/qor/provider/RaidVCFac.ini";
constexpr const char* SSD_LIST = "/opt/tarmica/qor/provider/PciessdVCFac.ini";
constexpr const char* STORCLI = "/opt/tarmica/qor/provider/RAID/tool/storcli";
constexpr const char* MEGACLI = "/opt/tarmica/qor/provider/RAID/tool/MegaCli";
constexpr const char* MAKE_AGAIN =
    "delete /opt/tarmica/qor/kam/work/devices.tmp: the next request makes it again";
constexpr const char* CARD = "02:00.0_1000:005d_0000_02\n";
constexpr const char* SSD = "04:00.0_1aed:2001_0000_00\n";

void WriteProgram(const std::string& path, const std::string& text) {
    WriteFile(path, "#!/bin/sh\n" + text);
    fs::permissions(path, fs::perms(0755));
}

void WriteTool(const std::string& version) {
    WriteProgram(TOOL, "echo 'Product Version : " + version + "'\n");
}

std::string List(const std::string& entries, int count) {
    return "[SuportDevice]\nSuportDeviceNum=" + std::to_string(count) + "\n" + entries;
}

class DoctorTest : public qortest::CQorctlFixture {
protected:
    void SetUp() override {
        CQorctlFixture::SetUp();
        m_Environment = {{"LC_ALL", "C.UTF-8"},
                         {"PATH", "/usr/bin:/bin"},
                         {"QOR_TRACE", "stderr:2"},
                         {"QOR_PLUGIN", REAL_PLUGIN}};
        fs::create_directories(m_Folder / "bus");
        ASSERT_EQ(mount((m_Folder / "bus").c_str(), PCI_DEVICES, "none", MS_BIND, nullptr), 0);
        AddDevice("0000:02:00.0", "0x1000", "0x005d", "0x02");
        WriteFile(DEVICE_LIST, CARD);
        WriteFile(RAID_LIST, List("Vendor1=VEN_1000\nDevice1=DEV_005D\n", 1));
        WriteFile(SSD_LIST, List("Vendor1=VEN_8086\nDevice1=DEV_0953\n", 1));
        WriteTool("7.0");
        WriteProgram(STORCLI, "");
        fs::create_directories(RESULT_DIR);
        fs::permissions(RESULT_DIR, fs::perms(0700));
    }
    void TearDown() override {
        umount2(PCI_DEVICES, MNT_DETACH);
        CQorctlFixture::TearDown();
    }

    void AddDevice(const std::string& name, const std::string& vendor, const std::string& device,
                   const std::string& revision) const {
        const fs::path folder = m_Folder / "bus" / name;
        WriteFile(folder / "vendor", vendor + "\n");
        WriteFile(folder / "device", device + "\n");
        WriteFile(folder / "revision", revision + "\n");
    }

    json Report(const std::vector<std::string>& options = {}) const {
        std::vector<std::string> arguments = {"doctor", "--format", "json"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const CEnd outcome = Run(arguments);
        json report = json::parse(outcome.out, nullptr, false);
        EXPECT_FALSE(report.is_discarded()) << outcome.out << outcome.err;
        EXPECT_EQ(outcome.status, report["verdict"] == "FAIL" ? 1 : 0);
        return report;
    }

    // As an ordinary user, who has no rights to give up.
    json ReportWithoutRootsRights() const {
        std::vector<std::string> words = {"doctor", "--format", "json"};
        std::string program = QORCTL_PROGRAM;
        if (geteuid() == 0) {
            words.insert(words.begin(),
                         {"--bounding-set", "-dac_override,-dac_read_search", "--inh-caps",
                          "-dac_override,-dac_read_search", QORCTL_PROGRAM});
            program = "/usr/bin/setpriv";
        }
        return json::parse(
            qortest::RunCommand(
                {.program = program, .arguments = words, .environment = m_Environment})
                .out,
            nullptr, false);
    }

    static json CheckIn(const json& report, const std::string& group, const std::string& name) {
        for (const json& check : report["checks"]) {
            if (check["group"] == group && check["name"] == name) {
                return check;
            }
        }
        ADD_FAILURE() << "no check " << group << ", " << name;
        return {{"verdict", ""}, {"reason", ""}, {"remedy", ""}};
    }
    // "VERDICT reason" of one check, which has a remedy unless it is OK.
    static std::string FindingIn(const json& report, const std::string& group,
                                 const std::string& name) {
        const json check = CheckIn(report, group, name);
        EXPECT_EQ(check["remedy"] == "", check["verdict"] == "OK");
        return check["verdict"].get<std::string>() + " " + check["reason"].get<std::string>();
    }
    static unsigned long FreeFiles() {
        struct statvfs status = {};
        EXPECT_EQ(statvfs(RESULT_DIR, &status), 0);
        return status.f_favail;
    }
    std::string Finding(const std::string& group, const std::string& name) const {
        return FindingIn(Report(), group, name);
    }
};

TEST_F(DoctorTest, HealthyServerIsOkThroughout) {
    const json report = Report();
    EXPECT_EQ(report["verdict"], "OK");
    EXPECT_EQ(report["checks"].size(), 20U);
    for (const json& check : report["checks"]) {
        EXPECT_EQ(check["verdict"], "OK") << check;
    }
}

TEST_F(DoctorTest, TreeShowsEachGroupWithReasonsAndRemedies) {
    fs::permissions(RESULT_DIR, fs::perms(0755));
    const CEnd outcome = Run({"doctor"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("libraries\n├─ OK   plug-in: version "));
    EXPECT_THAT(outcome.out, HasSubstr("\nresult files\n"
                                       "├─ OK   directory: /opt/tarmica/qor/provider/tmp/MSRAID\n"
                                       "├─ OK   space: written and read back; "));
    EXPECT_THAT(outcome.out,
                HasSubstr("├─ WARN mode: mode 0755: others may read along\n"
                          "│       remedy: chmod 0700 /opt/tarmica/qor/provider/tmp/MSRAID\n"));
}

TEST_F(DoctorTest, TreeIsPlainWithoutUtf8) {
    m_Environment["LC_ALL"] = "C";
    EXPECT_THAT(Run({"doctor"}).out, StartsWith("libraries\n|- OK   plug-in: version "));
}

TEST_F(DoctorTest, ControlCharactersOfAFileDoNotReachTheTerminal) {
    WriteFile(RAID_LIST, List("Vendor1=VEN_1000\x1b[2J\nDevice1=DEV_005D\n", 1));
    const CEnd outcome = Run({"doctor"});
    EXPECT_THAT(outcome.out, HasSubstr("VEN_1000\\x1b[2J"));
    EXPECT_THAT(outcome.out, Not(HasSubstr("\x1b")));
}

TEST_F(DoctorTest, UnknownFormatIsRefused) {
    const CEnd outcome = Run({"doctor", "--format", "xml"});
    EXPECT_GT(outcome.status, 100);
    EXPECT_THAT(outcome.err, HasSubstr("--format"));
}

TEST_F(DoctorTest, PluginOfUnknownVersionIsAWarning) {
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    EXPECT_THAT(Finding("libraries", "plug-in"), StartsWith("WARN of an unknown version: "));
}

TEST_F(DoctorTest, PluginThatIsMissingIsAFailureAndTheRestIsExamined) {
    const json report = Report({"--plugin", "/opt/tarmica/nothing.so"});
    EXPECT_THAT(FindingIn(report, "libraries", "plug-in"),
                HasSubstr("/opt/tarmica/nothing.so: cannot open shared object file"));
    EXPECT_THAT(FindingIn(report, "libraries", "plug-in"), StartsWith("FAIL "));
    EXPECT_THAT(FindingIn(report, "libraries", "exports"), StartsWith("WARN not examined: "));
    EXPECT_THAT(FindingIn(report, "libraries", "common library"),
                StartsWith("WARN not examined: "));
    EXPECT_THAT(FindingIn(report, "RAID tool", "version for RAID"),
                StartsWith("WARN not examined: "));
    EXPECT_THAT(FindingIn(report, "supported devices", "RAID list"), StartsWith("OK "));
}

TEST_F(DoctorTest, MissingExportIsAFailure) {
    m_Environment["QOR_PLUGIN"] = UNFIT_PLUGIN;
    EXPECT_EQ(Finding("libraries", "exports"), "FAIL missing: DeleteItemDisp");
}

TEST_F(DoctorTest, ExportOfAnotherLibraryIsAWarning) {
    m_Environment["QOR_PLUGIN"] = SPLIT_PLUGIN;
    EXPECT_THAT(Finding("libraries", "exports"),
                StartsWith("WARN not in the plug-in itself: DeleteItemDisp in "));
}

TEST_F(DoctorTest, ForeignCommonLibraryIsAWarning) {
    m_Environment["LD_LIBRARY_PATH"] = FOREIGN_COMLIB_DIR;
    EXPECT_THAT(Finding("libraries", "common library"),
                StartsWith(std::string("WARN of an unknown version: ") + FOREIGN_COMLIB_DIR +
                           "/libqor_ComLib.so, build "));
}

TEST_F(DoctorTest, CommonLibraryThatIsNotFoundIsAFailure) {
    fs::copy_file(REAL_PLUGIN, m_Folder / "lonely.so");
    m_Environment["QOR_PLUGIN"] = m_Folder / "lonely.so";
    const json report = Report();
    EXPECT_THAT(FindingIn(report, "libraries", "plug-in"), HasSubstr("libqor_ComLib.so"));
    EXPECT_EQ(FindingIn(report, "libraries", "common library"),
              "FAIL the plug-in does not find it, or something is missing in it");
}

TEST_F(DoctorTest, PluginWithoutACommonLibraryIsAFailure) {
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    EXPECT_EQ(Finding("libraries", "common library"),
              "FAIL the plug-in brings no libqor_ComLib.so");
}

TEST_F(DoctorTest, InstallPathOpenToOthersIsAWarning) {
    fs::permissions(INSTALL_DIR, fs::perms(0775));
    EXPECT_EQ(Finding("installation", "install path"),
              "WARN /opt/tarmica/qor/provider, mode 0775: others may write into it");
}

TEST_F(DoctorTest, InstallPathThatIsNoDirectoryIsAFailure) {
    WriteFile(CONFIGURATION, "[Install]\nINSTALLPATH_CIM=/opt/tarmica/elsewhere\n");
    EXPECT_THAT(Finding("installation", "install path"), StartsWith("FAIL not known: "));
}

TEST_F(DoctorTest, InstallPathOfTheConfigurationIsTaken) {
    fs::create_directories("/opt/tarmica/elsewhere");
    WriteFile(CONFIGURATION, "[Install]\nINSTALLPATH_CIM=/opt/tarmica/elsewhere/\n");
    EXPECT_EQ(Finding("installation", "install path"), "OK /opt/tarmica/elsewhere, mode 0755");
}

struct CListCase {
    std::string text;
    std::string finding;  // its beginning
};

TEST_F(DoctorTest, OddListEntriesAreWarnings) {
    const std::string good = "Vendor1=VEN_1000\nDevice1=DEV_005D\n";
    const std::string head = "WARN /opt/tarmica/qor/provider/RaidVCFac.ini, 1 entries: ";
    const std::vector<CListCase> cases = {
        {List(good + "Vendor2=VEN_1aed\nDevice2=DEV_2001\n", 2),
         head + "Vendor2=VEN_1aed never matches: it holds lower-case letters"},
        {List(good + "Vendor2=VEN_1000\n", 2), head + "entry 2 is skipped: Device2 is missing"},
        {List(good + "Device2=DEV_005F\n", 2), head + "entry 2 is skipped: Vendor2 is missing"},
        {List(good + "Vendor2=VEN_1000\nDevice2=DEV_005F\n", 1),
         head + "entry 2 stands behind the count of 1 and is not read"},
        {List("Vendor1=1000\nDevice1=DEV_005D\n", 1),
         head + "Vendor1=1000 is not VEN_ and four upper-case hexadecimal digits"},
    };
    for (const CListCase& one : cases) {
        WriteFile(RAID_LIST, one.text);
        EXPECT_EQ(Finding("supported devices", "RAID list"), one.finding);
    }
}

TEST_F(DoctorTest, RaidListWithoutAUsableEntryIsAFailure) {
    WriteFile(RAID_LIST, List("", 0));
    EXPECT_THAT(Finding("supported devices", "RAID list"),
                HasSubstr("FAIL /opt/tarmica/qor/provider/RaidVCFac.ini has no entry that can"));
    WriteFile(RAID_LIST, List("Vendor1=ven_1000\nDevice1=DEV_005D\n", 1));
    EXPECT_THAT(Finding("supported devices", "RAID list"), HasSubstr("ven_1000 never matches"));
    fs::remove(RAID_LIST);
    EXPECT_EQ(Finding("supported devices", "RAID list"),
              "FAIL /opt/tarmica/qor/provider/RaidVCFac.ini is missing: no RAID controller is ever "
              "found");
}

TEST_F(DoctorTest, SsdListThatIsMissingIsAWarning) {
    fs::remove(SSD_LIST);
    EXPECT_EQ(Finding("supported devices", "PCIe SSD list"),
              "WARN /opt/tarmica/qor/provider/PciessdVCFac.ini is missing: only "
              "VEN_1AED/DEV_2001 is supported");
}

TEST_F(DoctorTest, SsdListThatIsNoFileIsAFailure) {
    fs::remove(SSD_LIST);
    fs::create_directory(SSD_LIST);
    EXPECT_EQ(Finding("supported devices", "PCIe SSD list"),
              "FAIL /opt/tarmica/qor/provider/PciessdVCFac.ini is no regular file");
}

TEST_F(DoctorTest, DeviceListThatIsMissingIsAWarning) {
    fs::remove(DEVICE_LIST);
    const json report = Report();
    EXPECT_THAT(FindingIn(report, "devices", "device list"), HasSubstr("WARN /opt/tarmica"));
    EXPECT_EQ(FindingIn(report, "devices", "live PCI bus"),
              "WARN not examined: there is no device list that can be read");
}

TEST_F(DoctorTest, DeviceListOlderThanTheStartIsAWarning) {
    const timespec longAgo[2] = {{1, 0}, {1, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, DEVICE_LIST, longAgo, 0), 0);
    EXPECT_EQ(Finding("devices", "device list"),
              "WARN /opt/tarmica/qor/kam/work/devices.tmp, 1 devices, is older than the start of "
              "the machine");
}

TEST_F(DoctorTest, DeviceListWithoutDevicesIsAFailure) {
    WriteFile(DEVICE_LIST, "02:00.0_1000:005\n");
    EXPECT_EQ(Finding("devices", "device list"),
              "FAIL /opt/tarmica/qor/kam/work/devices.tmp holds no device");
}

TEST_F(DoctorTest, DeviceListThatIsADirectoryIsAFailure) {
    fs::remove(DEVICE_LIST);
    fs::create_directory(DEVICE_LIST);
    const json report = Report();
    EXPECT_EQ(FindingIn(report, "devices", "device list"),
              "FAIL /opt/tarmica/qor/kam/work/devices.tmp is no regular file");
    EXPECT_EQ(FindingIn(report, "devices", "live PCI bus"),
              "WARN not examined: there is no device list that can be read");
}

TEST_F(DoctorTest, DeviceListThatIsAPipeIsNotWaitedFor) {
    fs::remove(DEVICE_LIST);
    ASSERT_EQ(mkfifo(DEVICE_LIST, 0600), 0);
    EXPECT_EQ(Finding("devices", "device list"),
              "FAIL /opt/tarmica/qor/kam/work/devices.tmp is no regular file");
}

TEST_F(DoctorTest, DeviceListThatIsNotTrueIsToBeMadeAgain) {
    WriteFile(DEVICE_LIST, std::string(CARD) + "06:00.0_8086:1522_0000_01\n");
    EXPECT_EQ(CheckIn(Report(), "devices", "live PCI bus")["remedy"], MAKE_AGAIN);
    AddDevice("0000:04:00.0", "0x1aed", "0x2001", "0x00");
    EXPECT_EQ(CheckIn(Report(), "devices", "live PCI bus")["remedy"], MAKE_AGAIN);
    const timespec longAgo[2] = {{1, 0}, {1, 0}};
    ASSERT_EQ(utimensat(AT_FDCWD, DEVICE_LIST, longAgo, 0), 0);
    EXPECT_EQ(CheckIn(Report(), "devices", "device list")["remedy"], MAKE_AGAIN);
    WriteFile(DEVICE_LIST, "");
    EXPECT_EQ(CheckIn(Report(), "devices", "device list")["remedy"], MAKE_AGAIN);
    fs::remove(DEVICE_LIST);
    EXPECT_EQ(CheckIn(Report(), "devices", "device list")["remedy"],
              "nothing: the next request makes it");
}

TEST_F(DoctorTest, SupportedDeviceThatIsNotListedIsAFailure) {
    AddDevice("0000:04:00.0", "0x1aed", "0x2001", "0x00");
    EXPECT_EQ(Finding("devices", "live PCI bus"),
              "FAIL a supported device of the server is not in the list: 04:00.0_1AED:2001");
}

TEST_F(DoctorTest, OtherDifferencesToTheBusAreWarnings) {
    AddDevice("0000:05:00.0", "0x8086", "0x1521", "0x01");
    WriteFile(DEVICE_LIST, std::string(CARD) + "06:00.0_8086:1522_0000_01\n");
    EXPECT_EQ(Finding("devices", "live PCI bus"),
              "WARN devices that are only in the list: 1 (06:00.0_8086:1522); only on the bus: 1 "
              "(05:00.0_8086:1521)");
}

TEST_F(DoctorTest, BusThatCannotBeReadIsAWarning) {
    WriteFile(m_Folder / "bus/0000:07:00.0/vendor", "garbage\n");
    EXPECT_EQ(Finding("devices", "live PCI bus"),
              "WARN the devices of /sys/bus/pci/devices cannot be read");
}

TEST_F(DoctorTest, MissingToolIsAFailureOnlyWithASupportedDevice) {
    fs::remove(TOOL);
    const json report = Report();
    EXPECT_EQ(FindingIn(report, "RAID tool", "presence"),
              "FAIL /opt/tarmica/krz/cli/krzcli is missing, and a supported device is present");
    EXPECT_EQ(FindingIn(report, "RAID tool", "permissions"),
              "WARN not examined: the RAID tool is not installed");
    EXPECT_EQ(FindingIn(report, "RAID tool", "version for RAID"),
              "WARN not examined: the RAID tool is not installed");
    WriteFile(DEVICE_LIST, "05:00.0_8086:1521_0000_01\n");
    EXPECT_EQ(Finding("RAID tool", "presence"),
              "WARN /opt/tarmica/krz/cli/krzcli is missing; there is no supported device either");
}

TEST_F(DoctorTest, ToolThatOthersMayReplaceIsAWarning) {
    fs::permissions(TOOL, fs::perms(0757));
    EXPECT_EQ(Finding("RAID tool", "permissions"),
              "WARN mode 0757: others may replace what the server runs");
}

TEST_F(DoctorTest, ToolThatIsNotExecutableIsAFailure) {
    fs::permissions(TOOL, fs::perms(0644));
    const json report = Report();
    EXPECT_EQ(FindingIn(report, "RAID tool", "permissions"),
              "FAIL mode 0644: /opt/tarmica/krz/cli/krzcli may not be executed by this user");
    EXPECT_EQ(FindingIn(report, "RAID tool", "version for RAID"),
              "FAIL krzcli -v: the RAID tool failed, exit status 126");
}

TEST_F(DoctorTest, OldToolIsAWarning) {
    for (const char* version : {"3.9", "4.3", "4.0"}) {
        WriteTool(version);
        EXPECT_EQ(Finding("RAID tool", "version for RAID"),
                  std::string("WARN ") + version + " is older than 4.4: reports lack items");
    }
    for (const char* version : {"4.4", "4.10", "5.0"}) {
        WriteTool(version);
        EXPECT_EQ(Finding("RAID tool", "version for RAID"), std::string("OK ") + version);
    }
}

TEST_F(DoctorTest, VersionOfAnotherFormIsAWarning) {
    for (const char* version : {"7", "7.0.1", ""}) {
        WriteTool(version);
        EXPECT_EQ(Finding("RAID tool", "version for RAID"),
                  std::string("WARN \"") + version + "\" is not of the form major.minor");
    }
}

TEST_F(DoctorTest, RemedyOfAVersionFitsItsCause) {
    const auto remedy = [this] {
        return CheckIn(Report(), "RAID tool", "version for RAID")["remedy"].get<std::string>();
    };
    WriteTool("4.3");
    EXPECT_EQ(remedy(), "update the RAID tool");
    WriteTool("7");
    EXPECT_EQ(remedy(), "update the RAID tool, or the plug-in if the tool is the newer one");
    WriteTool("");
    EXPECT_EQ(remedy(),
              "run krzcli -v by hand: a tool that says nothing has to be installed again; if it "
              "tells a version there, free the file system of /var/tmp");
}

TEST_F(DoctorTest, ToolThatReportsAnErrorIsAFailure) {
    WriteProgram(TOOL, "echo 'Error - no'\n");
    EXPECT_EQ(Finding("RAID tool", "version for RAID"),
              "FAIL krzcli -v: the RAID tool reported an error, with exit status 0");
}

TEST_F(DoctorTest, ToolForSsdsIsExaminedOnlyWhereThereIsOne) {
    EXPECT_EQ(Finding("RAID tool", "version for PCIe SSDs"),
              "OK not needed, there is no supported PCIe SSD");
    WriteFile(DEVICE_LIST, std::string(CARD) + SSD);
    EXPECT_EQ(Finding("RAID tool", "version for PCIe SSDs"), "OK 7.0");
    WriteTool("6.9");
    EXPECT_EQ(Finding("RAID tool", "version for PCIe SSDs"),
              "WARN 6.9 is older than 7: PCIe SSDs are not reported");
    WriteProgram(TOOL, "echo 'Error - no'\n");
    EXPECT_THAT(Finding("RAID tool", "version for PCIe SSDs"), StartsWith("FAIL krzcli -v: "));
}

TEST_F(DoctorTest, LsiUtilityIsTheOneThatThePluginWouldAsk) {
    EXPECT_EQ(Finding("RAID tool", "LSI utility"), std::string("OK ") + STORCLI);
    WriteFile(RAID_LIST, List("Vendor1=VEN_1000\nDevice1=DEV_0079\n", 1));
    WriteFile(DEVICE_LIST, "02:00.0_1000:0079_0000_02\n");
    EXPECT_EQ(Finding("RAID tool", "LSI utility"), "OK not needed, the RAID tool is installed");
    WriteProgram(MEGACLI, "");
    EXPECT_EQ(Finding("RAID tool", "LSI utility"), std::string("OK ") + MEGACLI);
}

TEST_F(DoctorTest, LsiUtilityThatCannotBeRunIsAFailureOnlyWithoutTheTool) {
    fs::permissions(STORCLI, fs::perms(0644));
    const std::string reason = std::string(STORCLI) + " may not be executed by this user";
    EXPECT_EQ(Finding("RAID tool", "LSI utility"),
              "WARN " + reason + "; needed only where the RAID tool is missing");
    fs::remove(TOOL);
    EXPECT_EQ(Finding("RAID tool", "LSI utility"),
              "FAIL " + reason + ", and the RAID tool is missing");
    fs::remove(STORCLI);
    EXPECT_EQ(Finding("RAID tool", "LSI utility"),
              std::string("FAIL ") + STORCLI + " is missing, and the RAID tool is missing");
    WriteFile(DEVICE_LIST, "05:00.0_8086:1521_0000_01\n");
    EXPECT_EQ(Finding("RAID tool", "LSI utility"),
              "OK not needed, there is no supported RAID controller");
}

TEST_F(DoctorTest, ResultDirectoryThatIsMissingIsAWarning) {
    fs::remove(RESULT_DIR);
    const json report = Report();
    EXPECT_EQ(FindingIn(report, "result files", "directory"),
              std::string("WARN ") + RESULT_DIR + " is missing");
    for (const char* name : {"mode", "owner"}) {
        EXPECT_EQ(FindingIn(report, "result files", name), "OK there is no result directory yet");
    }
}

TEST_F(DoctorTest, ResultDirectoryThatIsNoDirectoryIsAFailure) {
    fs::remove(RESULT_DIR);
    WriteFile(RESULT_DIR, "");
    EXPECT_EQ(Finding("result files", "directory"),
              std::string("FAIL ") + RESULT_DIR + " is no directory");
    fs::remove(RESULT_DIR);
}

TEST_F(DoctorTest, ResultDirectoryThatIsALinkIsAFailure) {
    const fs::path target = m_Folder / "elsewhere";
    fs::rename(RESULT_DIR, target);
    fs::create_directory_symlink(target, RESULT_DIR);
    EXPECT_EQ(
        Finding("result files", "directory"),
        std::string("FAIL ") + RESULT_DIR + " is a symbolic link: reports would go elsewhere");
    fs::remove(RESULT_DIR);
    fs::rename(target, RESULT_DIR);
}

TEST_F(DoctorTest, FullDiskOfTheResultFilesIsAFailure) {
    ASSERT_EQ(mount("none", RESULT_DIR, "tmpfs", 0, "size=16k,mode=0700"), 0);
    EXPECT_EQ(Finding("result files", "space"),
              "FAIL a file of 64 KiB cannot be written: No space left on device; 16 KiB free, " +
                  std::to_string(FreeFiles()) + " inodes: reports come back short or empty");
    EXPECT_TRUE(fs::is_empty(RESULT_DIR));
    umount2(RESULT_DIR, MNT_DETACH);
}

TEST_F(DoctorTest, LittleSpaceForResultFilesIsAWarning) {
    ASSERT_EQ(mount("none", RESULT_DIR, "tmpfs", 0, "size=1m,nr_inodes=20,mode=0700"), 0);
    EXPECT_EQ(Finding("result files", "space"),
              "WARN written and read back; 1024 KiB free, 19 inodes: less than a large report "
              "needs");
    EXPECT_TRUE(fs::is_empty(RESULT_DIR));
    umount2(RESULT_DIR, MNT_DETACH);
    ASSERT_EQ(mount("none", RESULT_DIR, "tmpfs", 0, "size=100m,nr_inodes=1,mode=0700"), 0);
    EXPECT_THAT(Finding("result files", "space"),
                StartsWith("FAIL no file can be made: No space left on device; 102400 KiB free, 0 "
                           "inodes"));
    umount2(RESULT_DIR, MNT_DETACH);
}

TEST_F(DoctorTest, ResultDirectoryOpenToOthersIsAFailure) {
    fs::permissions(RESULT_DIR, fs::perms(0755));
    EXPECT_EQ(Finding("result files", "mode"), "WARN mode 0755: others may read along");
    fs::permissions(RESULT_DIR, fs::perms(0730));
    EXPECT_EQ(Finding("result files", "mode"),
              "FAIL mode 0730: others may put reports there that the plug-in takes for true");
}

TEST_F(DoctorTest, OldResultFilesAreWarnings) {
    const fs::path file = fs::path(RESULT_DIR) / "0000000100000001_MngSrvRaid.txt";
    WriteFile(file, "");
    EXPECT_EQ(Finding("result files", "leftovers"), "OK none");  // a request may be at work
    fs::last_write_time(file, fs::file_time_type::clock::now() - std::chrono::hours(1));
    EXPECT_EQ(Finding("result files", "leftovers"),
              "WARN 1 result files of requests that were cut short");
    fs::remove(file);
}

TEST_F(DoctorTest, ForeignFileAmongTheResultFilesIsAFailure) {
    const fs::path link = fs::path(RESULT_DIR) / "0000000100000001_MngSrvRaid.txt";
    fs::create_symlink("/etc/passwd", link);
    EXPECT_EQ(Finding("result files", "leftovers"),
              "FAIL " + link.string() + " is no result file: who put it there?");
    fs::remove(link);
}

struct CHiddenCase {
    const char* closed;  // a folder, or a file
    const char* group;
    const char* name;
    std::string reason;
};

// What a user has no right to see is not missing, and to make or install it would not help.
TEST_F(DoctorTest, WhatThisUserMayNotSeeIsNotMissing) {
    WriteFile(CONFIGURATION, "[Trace]\n");
    const std::string closed = " is out of reach: this user may not search ";
    const CHiddenCase cases[] = {
        {DEVICE_LIST, "devices", "device list",
         std::string(DEVICE_LIST) + " may not be read by this user"},
        {"/opt/tarmica/qor/kam", "devices", "device list",
         DEVICE_LIST + closed + "/opt/tarmica/qor/kam"},
        {RAID_LIST, "supported devices", "RAID list",
         std::string(RAID_LIST) +
             " may not be read by this user: no RAID controller is ever found"},
        {SSD_LIST, "supported devices", "PCIe SSD list",
         std::string(SSD_LIST) + " may not be read by this user"},
        {"/opt/tarmica/krz/cli", "RAID tool", "presence", TOOL + closed + "/opt/tarmica/krz/cli"},
        {RESULT_DIR, "result files", "directory",
         std::string(RESULT_DIR) + " may not be written into by this user"},
        {"/opt/tarmica/qor/provider/tmp", "result files", "directory",
         RESULT_DIR + closed + "/opt/tarmica/qor/provider/tmp"},
        {CONFIGURATION, "trace", "settings",
         std::string(CONFIGURATION) + " may not be read by this user"},
    };
    for (const CHiddenCase& one : cases) {
        const fs::perms before = fs::status(one.closed).permissions();
        fs::permissions(one.closed, fs::perms::none);
        const json report = ReportWithoutRootsRights();
        fs::permissions(one.closed, before);
        EXPECT_EQ(FindingIn(report, one.group, one.name), "FAIL " + one.reason) << one.closed;
        EXPECT_EQ(CheckIn(report, one.group, one.name)["remedy"],
                  "run it as root, or as the user of the server")
            << one.closed;
    }
}

TEST_F(DoctorTest, FileInPlaceOfAFolderIsNamed) {
    fs::remove_all("/opt/tarmica/qor/kam");
    WriteFile("/opt/tarmica/qor/kam", "");
    EXPECT_EQ(
        Finding("devices", "device list"),
        std::string("FAIL ") + DEVICE_LIST + " cannot be: /opt/tarmica/qor/kam is no directory");
}

TEST_F(DoctorTest, TraceSettingThatIsNotUnderstoodIsAWarning) {
    m_Environment.erase("QOR_TRACE");
    for (const char* setting : {"Sink=printer", "Levels=all", "Levels=3x", "File=trace.log"}) {
        WriteFile(CONFIGURATION, std::string("[Trace]\n") + setting + "\n");
        EXPECT_EQ(Finding("trace", "settings"),
                  std::string("WARN not understood, ignored: ") + setting);
    }
    for (const char* setting : {"Sink=SYSLOG", "Sink=none", "Levels=03", "Levels=31",
                                "File=/var/opt/tarmica/qor/log/trace.log"}) {
        WriteFile(CONFIGURATION, std::string("[Trace]\n") + setting + "\n");
        EXPECT_THAT(Finding("trace", "settings"), StartsWith("OK levels "));
    }
}

TEST_F(DoctorTest, TraceVariableThatIsNotUnderstoodIsAWarning) {
    m_Environment["QOR_TRACE"] = "printer:3";
    EXPECT_EQ(Finding("trace", "settings"), "WARN not understood, ignored: QOR_TRACE=printer:3");
}

TEST_F(DoctorTest, ConfigurationThatIsNoFileIsAFailure) {
    fs::create_directories(CONFIGURATION);
    EXPECT_EQ(Finding("trace", "settings"),
              std::string("FAIL ") + CONFIGURATION + " is no regular file");
}

TEST_F(DoctorTest, TraceFileHasToBeWritable) {
    m_Environment["QOR_TRACE"] = "file:/opt/tarmica/log/trace.log:2";
    EXPECT_EQ(Finding("trace", "sink"),
              "FAIL the file /opt/tarmica/log/trace.log cannot be written: No such file or "
              "directory");
    fs::create_directories("/opt/tarmica/log");
    EXPECT_EQ(Finding("trace", "sink"), "OK file /opt/tarmica/log/trace.log");
    EXPECT_FALSE(fs::exists("/opt/tarmica/log/trace.log"));
    fs::create_directories("/opt/tarmica/log/trace.log");
    EXPECT_EQ(Finding("trace", "sink"),
              "FAIL the file /opt/tarmica/log/trace.log cannot be written: Is a directory");
}

TEST_F(DoctorTest, TraceThatIsOffIsAWarning) {
    for (const char* setting : {"none", "stderr:0"}) {
        m_Environment["QOR_TRACE"] = setting;
        EXPECT_THAT(Finding("trace", "sink"), StartsWith("WARN the trace is switched off"));
    }
}

}  // namespace
