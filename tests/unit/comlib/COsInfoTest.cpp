#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include "ComLibFixture.h"
#include "plugin/ComLib.h"

namespace {

namespace fs = std::filesystem;
using qortest::DEVICE_LIST;
using qortest::ReadFile;
using qortest::WriteFile;
using Traces = std::vector<std::string>;

constexpr const char* PCI_DEVICES = "/sys/bus/pci/devices";
constexpr const char* LIST_DIRECTORY = "/opt/tarmica/qor/kam/work";

// A PCI bus of the test's own over the kernel's, seen by this process only.
class COsInfoTest : public qortest::CComLibFixture {
protected:
    void SetUp() override {
        CComLibFixture::SetUp();
        fs::create_directory(Bus());
        ASSERT_EQ(mount(Bus().c_str(), PCI_DEVICES, "none", MS_BIND, nullptr), 0);
    }
    void TearDown() override {
        umount2(PCI_DEVICES, MNT_DETACH);
        CComLibFixture::TearDown();
    }

    fs::path Bus() const { return Scratch() / "bus"; }

    void AddDevice(const std::string& name, const std::string& vendor, const std::string& device,
                   const std::string& revision) const {
        WriteFile(Bus() / name / "vendor", vendor);
        WriteFile(Bus() / name / "device", device);
        WriteFile(Bus() / name / "revision", revision);
    }

    static bool Make() {
        COsInfo info;
        return info.makeDeviceInfo();
    }

    // Demands a failure that left nothing in the list's directory and was traced as `trace`.
    void ExpectFailure(const std::string& trace) const {
        EXPECT_FALSE(Make());
        EXPECT_TRUE(fs::is_empty(LIST_DIRECTORY));
        EXPECT_EQ(TakeTraces(), Traces{"ComLib FAILURE " + trace});
    }
};

TEST_F(COsInfoTest, DevicesAreListedInOrder) {
    AddDevice("0000:3b:00.0", "0x1000\n", "0x005d\n", "0x02\n");
    AddDevice("10000:01:00.0", "0x8086\n", "0x0a54\n", "0x00\n");
    AddDevice("ffff:00:00.0", "0x8086\n", "0x1237\n", "0x02\n");
    AddDevice("0000:00:1f.2", "0x8086\n", "0xa1d2\n", "0x09\n");
    AddDevice("0001:00:00.0", "0x1aed\n", "0x2001\n", "0xff\n");
    EXPECT_TRUE(Make());
    EXPECT_EQ(ReadFile(DEVICE_LIST),
              "00:1f.2_8086:a1d2_0000_09\n"
              "3b:00.0_1000:005d_0000_02\n"
              "00:00.0_1aed:2001_0001_ff\n"
              "00:00.0_8086:1237_ffff_02\n"
              "01:00.0_8086:0a54_10000_00\n");
    EXPECT_EQ(TakeTraces(), Traces{});
}

TEST_F(COsInfoTest, VendorAndDeviceStandWhereTheReaderLooks) {
    AddDevice("0000:3b:00.0", "0x1000\n", "0x005d\n", "0x02\n");
    ASSERT_TRUE(Make());
    const std::string word = qortest::Lines(ReadFile(DEVICE_LIST)).at(0);
    EXPECT_GT(word.size(), 16U);
    EXPECT_EQ(word.substr(8, 4), "1000");
    EXPECT_EQ(word.substr(13, 4), "005d");
    EXPECT_EQ(word.find_first_of(" \t"), std::string::npos);
}

TEST_F(COsInfoTest, HostWithoutDevicesHasAnEmptyList) {
    EXPECT_TRUE(Make());
    EXPECT_EQ(ReadFile(DEVICE_LIST), "");
}

TEST_F(COsInfoTest, OldListIsReplacedAndNothingElseIsLeft) {
    WriteFile(DEVICE_LIST, "old");
    EXPECT_TRUE(Make());
    EXPECT_EQ(ReadFile(DEVICE_LIST), "");
    EXPECT_EQ(std::distance(fs::directory_iterator(LIST_DIRECTORY), {}), 1);
}

mode_t ModeOf(const fs::path& path) {
    struct stat status = {};
    EXPECT_EQ(stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

TEST_F(COsInfoTest, ListIsTheServersOwn) {
    EXPECT_TRUE(Make());
    EXPECT_EQ(ModeOf(DEVICE_LIST), 0600U);
}

// The process's umask while the object lives.
class CUmask {
public:
    explicit CUmask(mode_t mask) : m_Before(umask(mask)) {}
    ~CUmask() { umask(m_Before); }
    CUmask(const CUmask&) = delete;
    CUmask& operator=(const CUmask&) = delete;

private:
    mode_t m_Before;
};

// What else is below /opt/tarmica is not locked away with the list.
TEST_F(COsInfoTest, FoldersAboveTheListsAreOpenToAll) {
    const CUmask usual(022);
    fs::remove_all("/opt/tarmica/qor");
    EXPECT_TRUE(Make());
    EXPECT_EQ(ReadFile(DEVICE_LIST), "");
    EXPECT_EQ(ModeOf("/opt/tarmica/qor"), 0755U);
    EXPECT_EQ(ModeOf("/opt/tarmica/qor/kam"), 0755U);
    EXPECT_EQ(ModeOf("/opt/tarmica/qor/kam/work"), 0700U);
}

TEST_F(COsInfoTest, UmaskAppliesToNewFolders) {
    const CUmask strict(027);
    fs::remove_all("/opt/tarmica/qor");
    EXPECT_TRUE(Make());
    EXPECT_EQ(ModeOf("/opt/tarmica/qor/kam"), 0750U);
    EXPECT_EQ(ModeOf("/opt/tarmica/qor/kam/work"), 0700U);
}

TEST_F(COsInfoTest, NobodyElseWritesIntoNewFoldersWhateverTheUmask) {
    const CUmask none(0);
    fs::remove_all("/opt/tarmica/qor");
    EXPECT_TRUE(Make());
    EXPECT_EQ(ModeOf("/opt/tarmica/qor/kam"), 0755U);
    EXPECT_EQ(ModeOf("/opt/tarmica/qor/kam/work"), 0700U);
    EXPECT_EQ(ModeOf(DEVICE_LIST), 0600U);
}

TEST_F(COsInfoTest, ModesOfFoldersThatAreThereStay) {
    fs::permissions("/opt/tarmica/qor/kam", fs::perms(0711));
    fs::permissions(LIST_DIRECTORY, fs::perms(0750));
    EXPECT_TRUE(Make());
    EXPECT_EQ(ModeOf("/opt/tarmica/qor/kam"), 0711U);
    EXPECT_EQ(ModeOf(LIST_DIRECTORY), 0750U);
}

TEST_F(COsInfoTest, HostWithoutPciBusFails) {
    ASSERT_EQ(mount("none", "/sys/bus/pci", "tmpfs", 0, nullptr), 0);
    ExpectFailure("cannot read \"/sys/bus/pci/devices\": No such file or directory");
    umount2("/sys/bus/pci", MNT_DETACH);
}

TEST_F(COsInfoTest, DeviceThatCannotBeReadFails) {
    AddDevice("0000:00:00.0", "0x8086\n", "0x1237\n", "0x02\n");
    AddDevice("0000:00:01.0", "0x8086\n", "0x1237\n", "0x02\n");
    fs::remove(Bus() / "0000:00:01.0" / "device");
    ExpectFailure(
        "cannot read \"/sys/bus/pci/devices/0000:00:01.0/device\": No such file or directory");
}

TEST_F(COsInfoTest, IdThatIsNoneFails) {
    for (const char* id : {"", "8086\n", "0x808\n", "0x80866\n", "0x80G6\n", "0x80A6\n"}) {
        AddDevice("0000:00:00.0", id, "0x1237\n", "0x02\n");
        ExpectFailure(
            "cannot understand \"/sys/bus/pci/devices/0000:00:00.0/vendor\": Invalid argument");
    }
}

TEST_F(COsInfoTest, NameThatIsNoneFails) {
    AddDevice("device0", "0x8086\n", "0x1237\n", "0x02\n");
    ExpectFailure(
        "cannot understand the name of \"/sys/bus/pci/devices/device0\": Invalid argument");
}

TEST_F(COsInfoTest, DirectoryThatCannotBeMadeFails) {
    fs::remove_all("/opt/tarmica/qor/kam");
    WriteFile("/opt/tarmica/qor/kam", "a file");
    EXPECT_FALSE(Make());
    EXPECT_EQ(TakeTraces(),
              Traces{"ComLib FAILURE cannot create directory \"/opt/tarmica/qor/kam/work\": Not a "
                     "directory"});
}

TEST_F(COsInfoTest, ListThatCannotTakeItsPlaceIsRemoved) {
    fs::create_directory(DEVICE_LIST);
    EXPECT_FALSE(Make());
    EXPECT_EQ(TakeTraces(), Traces{std::string("ComLib FAILURE cannot replace \"") + DEVICE_LIST +
                                   "\": Is a directory"});
    EXPECT_EQ(std::distance(fs::directory_iterator(LIST_DIRECTORY), {}), 1);
}

TEST_F(COsInfoTest, FullDiskLeavesNoList) {
    for (int i = 0; i < 500; ++i) {
        const std::string name =
            "0000:" + std::to_string(10 + i / 10) + ":00." + std::to_string(i % 10);
        AddDevice(name, "0x8086\n", "0x1237\n", "0x02\n");
    }
    ASSERT_EQ(mount("none", LIST_DIRECTORY, "tmpfs", 0, "size=4096"), 0);
    EXPECT_FALSE(Make());
    EXPECT_TRUE(fs::is_empty(LIST_DIRECTORY));
    umount2(LIST_DIRECTORY, MNT_DETACH);
    const Traces traces = TakeTraces();
    ASSERT_EQ(traces.size(), 1U);
    EXPECT_TRUE(traces[0].starts_with(
        "ComLib FAILURE cannot write \"/opt/tarmica/qor/kam/work/devices.tmp."));
    EXPECT_TRUE(traces[0].ends_with("\": No space left on device"));
}

}  // namespace
