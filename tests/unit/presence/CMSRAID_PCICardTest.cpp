#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <locale>
#include <stdexcept>
#include <string>
#include <vector>

#include "FakeComLib.h"
#include "PrivateServerFixture.h"
#include "TraceText.h"
#include "presence/CMSRAID_PCICard.h"

using namespace qortest;

namespace {

constexpr const char* RAID_INI = "/opt/tarmica/qor/provider/RaidVCFac.ini";
constexpr const char* SSD_INI = "/opt/tarmica/qor/provider/PciessdVCFac.ini";
constexpr const char* RAID_WORD = "02:00.0_1000:005d";
constexpr const char* SSD_WORD = "03:00.0_1aed:2001";

std::string Ini(const std::string& count, const std::string& lines) {
    return "[SuportDevice]\nSuportDeviceNum=" + count + "\n" + lines;
}

std::string Text(const std::list<DevicePCIID>& devices) {
    std::string text;
    for (const DevicePCIID& device : devices) {
        text += device.vendor + " " + device.device + "\n";
    }
    return text;
}

using Texts = std::list<std::string>;

class PCICard : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }

    static Texts Present(const std::string& deviceList) {
        WriteFile(DEVICE_LIST, deviceList);
        Texts list = {"left from before"};
        EXPECT_TRUE(CMSRAID_PCICard::GetPresentPCIList(&list));
        return list;
    }

    static std::string SupportedRAID(const std::string& ini) {
        WriteFile(RAID_INI, ini);
        std::list<DevicePCIID> list = {{"left", "before"}};
        EXPECT_TRUE(CMSRAID_PCICard::GetSupportRAIDList(&list));
        return Text(list);
    }
};

// --- what is no list ---

class PCICardOddList : public PCICard {
protected:
    static void ExpectNoDevice() {
        Texts list = {"left from before"};
        EXPECT_TRUE(CMSRAID_PCICard::GetPresentPCIList(&list));
        EXPECT_EQ(list, Texts{});
    }
};

TEST_F(PCICardOddList, PipeIsNotWaitedFor) {
    ASSERT_EQ(mkfifo(DEVICE_LIST, 0600), 0);
    ExpectNoDevice();
}

TEST_F(PCICardOddList, DeviceWithoutAnEndIsNotRead) {
    std::filesystem::create_symlink("/dev/zero", DEVICE_LIST);
    ExpectNoDevice();
}

TEST_F(PCICardOddList, SixteenMebibytesAreRead) {
    const std::string word = std::string(RAID_WORD) + " ";
    constexpr size_t LIMIT = size_t{16} << 20;
    WriteFile(DEVICE_LIST, word + std::string(LIMIT - word.size(), ' '));
    Texts list;
    EXPECT_TRUE(CMSRAID_PCICard::GetPresentPCIList(&list));
    EXPECT_EQ(list, Texts{"VEN_1000&DEV_005D"});
    WriteFile(DEVICE_LIST, word + std::string(LIMIT + 1 - word.size(), ' '));
    ExpectNoDevice();
}

// --- the identifier of a device word ---

TEST_F(PCICard, IdentifierIsMadeOfVendorAndDeviceInUpperCase) {
    std::string id = "left from before";
    GetWindowsDeviceID("02:00.0_1aed:20ff_0000_02", id);
    EXPECT_EQ(id, "VEN_1AED&DEV_20FF");
}

TEST_F(PCICard, OnlyTheTwoPositionsOfAWordCount) {
    std::string id;
    GetWindowsDeviceID("xxxxxxxxabcdyefghz", id);
    EXPECT_EQ(id, "VEN_ABCD&DEV_EFGH");
}

TEST_F(PCICard, WordThatIsTooShortIsOutOfRange) {
    std::string id;
    EXPECT_THROW(GetWindowsDeviceID("0000000", id), std::out_of_range);
    EXPECT_THROW(GetWindowsDeviceID("000000001000", id), std::out_of_range);
}

// --- the host's devices ---

TEST_F(PCICard, DeviceListIsReadWordByWord) {
    EXPECT_EQ(Present("02:00.0_1000:005d \t 03:00.0_1aed:2001_0000_02\n\n\r\n"
                      "04:00.0_8086:1234"),
              (Texts{"VEN_1000&DEV_005D", "VEN_1AED&DEV_2001", "VEN_8086&DEV_1234"}));
}

// Takes "_" for white space, as the locale of a host may take any character.
class CForeignSpace : public std::ctype<char> {
public:
    CForeignSpace() : std::ctype<char>(Table().data()) {}

private:
    static const std::array<mask, table_size>& Table() {
        static const std::array<mask, table_size> table = [] {
            std::array<mask, table_size> changed{};
            std::copy_n(classic_table(), table_size, changed.begin());
            changed['_'] |= space;
            return changed;
        }();
        return table;
    }
};

TEST_F(PCICard, LocaleOfTheHostDoesNotSayWhatAWordIs) {
    const std::locale before =
        std::locale::global(std::locale(std::locale::classic(), new CForeignSpace));
    const Texts present = Present("02:00.0_1000:005d_0000_02\n");
    std::locale::global(before);
    EXPECT_EQ(present, Texts{"VEN_1000&DEV_005D"});
}

TEST_F(PCICard, WordOfSixteenCharactersIsIgnored) {
    EXPECT_EQ(Present("02:00.0_1000:005 02:00.0_1000:005d\n"), Texts{"VEN_1000&DEV_005D"});
}

TEST_F(PCICard, DevicesListedTwiceAreKeptTwice) {
    EXPECT_EQ(Present("02:00.0_1000:005d\n03:00.0_1000:005d\n"),
              (Texts{"VEN_1000&DEV_005D", "VEN_1000&DEV_005D"}));
}

TEST_F(PCICard, EmptyDeviceListHasNoDevices) {
    EXPECT_EQ(Present(""), Texts());
    EXPECT_EQ(Present(" \n"), Texts());
    EXPECT_EQ(FakeComLib().deviceListsMade, 0);
}

TEST_F(PCICard, MissingDeviceListIsMade) {
    FakeComLib().deviceListToMake = "02:00.0_1000:005d\n";
    Texts list;
    EXPECT_TRUE(CMSRAID_PCICard::GetPresentPCIList(&list));
    EXPECT_EQ(list, Texts{"VEN_1000&DEV_005D"});
    EXPECT_EQ(FakeComLib().deviceListsMade, 1);
}

TEST_F(PCICard, DeviceListThatCannotBeMadeHasNoDevices) {
    Texts list = {"left from before"};
    EXPECT_TRUE(CMSRAID_PCICard::GetPresentPCIList(&list));
    EXPECT_EQ(list, Texts());
    EXPECT_EQ(FakeComLib().deviceListsMade, 1);
}

TEST_F(PCICard, NullDeviceListIsRefusedAndMakesNoFile) {
    EXPECT_FALSE(CMSRAID_PCICard::GetPresentPCIList(nullptr));
    EXPECT_EQ(FakeComLib().deviceListsMade, 0);
}

// --- the supported devices ---

TEST_F(PCICard, IniEntriesAreReadInOrder) {
    EXPECT_EQ(SupportedRAID(Ini("2",
                                "Vendor1=VEN_1000\nDevice1=DEV_005B\n"
                                "Vendor2=VEN_1000\nDevice2=DEV_0073\n")),
              "VEN_1000 DEV_005B\nVEN_1000 DEV_0073\n");
    EXPECT_EQ(TraceTextWithoutFlow(), "");
}

TEST_F(PCICard, IniEntryWithoutVendorOrDeviceIsSkippedSilently) {
    EXPECT_EQ(SupportedRAID(Ini("5",
                                "Vendor1=VEN_1\nDevice1=DEV_1\nVendor2=VEN_2\n"
                                "Vendor3=VEN_3\nDevice3=DEV_3\nDevice4=DEV_4\n"
                                "Vendor5=\nDevice5=DEV_5\n")),
              "VEN_1 DEV_1\nVEN_3 DEV_3\n");
    EXPECT_EQ(TraceTextWithoutFlow(), "");
}

TEST_F(PCICard, IniEntriesBeyondTheCountAreNotRead) {
    EXPECT_EQ(SupportedRAID(Ini("1",
                                "Vendor1=VEN_1\nDevice1=DEV_1\nVendor2=VEN_2\n"
                                "Device2=DEV_2\n")),
              "VEN_1 DEV_1\n");
}

TEST_F(PCICard, IniEntriesAreNumberedFromOne) {
    EXPECT_EQ(SupportedRAID(Ini("1",
                                "Vendor0=VEN_0\nDevice0=DEV_0\nVendor1=VEN_1\n"
                                "Device1=DEV_1\n")),
              "VEN_1 DEV_1\n");
}

TEST_F(PCICard, IniKeysHaveNoLeadingZeros) {
    EXPECT_EQ(SupportedRAID(Ini("10",
                                "Vendor01=VEN_1\nDevice01=DEV_1\nVendor10=VEN_A\n"
                                "Device10=DEV_A\n")),
              "VEN_A DEV_A\n");
}

TEST_F(PCICard, IniWithoutEntriesIsTraced) {
    for (const std::string& ini :
         {Ini("0", "Vendor1=VEN_1\nDevice1=DEV_1\n"), Ini("-1", "Vendor1=VEN_1\nDevice1=DEV_1\n"),
          Ini("2", ""), std::string("[SuportDevice]\nVendor1=VEN_1\nDevice1=DEV_1\n"),
          std::string("[SupportDevice]\nSuportDeviceNum=1\nVendor1=VEN_1\nDevice1=DEV_1\n"),
          std::string()}) {
        ResetFakeComLib();
        EXPECT_EQ(SupportedRAID(ini), "") << ini;
        EXPECT_EQ(TraceTextWithoutFlow(),
                  "16: CMSRAID_InterFace::GetSupportPCIListFromIniFile Support Device is empty. "
                  "iniFile=/opt/tarmica/qor/provider/RaidVCFac.ini\n")
            << ini;
    }
}

TEST_F(PCICard, MissingIniIsTraced) {
    std::list<DevicePCIID> list;
    EXPECT_TRUE(CMSRAID_PCICard::GetSupportRAIDList(&list));
    EXPECT_EQ(Text(list), "");
    EXPECT_EQ(TraceTextWithoutFlow(),
              "16: CMSRAID_InterFace::GetSupportPCIListFromIniFile Support Device is empty. "
              "iniFile=/opt/tarmica/qor/provider/RaidVCFac.ini\n");
}

TEST_F(PCICard, IniValueIsCutToItsBuffer) {
    const std::string longText(300, 'V');
    EXPECT_EQ(SupportedRAID(Ini("1", "Vendor1=" + longText + "\nDevice1=DEV_1\n")),
              longText.substr(0, 255) + " DEV_1\n");
}

TEST_F(PCICard, IniIsLookedForAtTheRootWithoutAnInstallPath) {
    FakeComLib().installPath = "";
    std::list<DevicePCIID> list;
    EXPECT_TRUE(CMSRAID_PCICard::GetSupportRAIDList(&list));
    EXPECT_TRUE(CMSRAID_PCICard::GetSupportPCIeSSDList(&list));
    const std::string text =
        "16: CMSRAID_InterFace::GetSupportPCIListFromIniFile Support Device is empty. iniFile=";
    EXPECT_EQ(TraceTextWithoutFlow(), text + "/RaidVCFac.ini\n" + text + "/PciessdVCFac.ini\n");
}

TEST_F(PCICard, BuiltInSSDIsAlwaysTheLastSupported) {
    std::list<DevicePCIID> list = {{"left", "before"}};
    EXPECT_TRUE(CMSRAID_PCICard::GetSupportPCIeSSDList(&list));
    EXPECT_EQ(Text(list), "VEN_1AED DEV_2001\n");
    EXPECT_EQ(TraceTextWithoutFlow(),
              "16: CMSRAID_InterFace::GetSupportPCIListFromIniFile Support Device is empty. "
              "iniFile=/opt/tarmica/qor/provider/PciessdVCFac.ini\n");

    WriteFile(SSD_INI, Ini("2",
                           "Vendor1=VEN_1AED\nDevice1=DEV_2001\nVendor2=VEN_8086\n"
                           "Device2=DEV_0953\n"));
    EXPECT_TRUE(CMSRAID_PCICard::GetSupportPCIeSSDList(&list));
    EXPECT_EQ(Text(list), "VEN_1AED DEV_2001\nVEN_8086 DEV_0953\nVEN_1AED DEV_2001\n");
}

// --- presence ---

struct CMatchRow {
    const char* name;
    DevicePCIID supported;
    bool present;
};

TEST_F(PCICard, SupportedTextsMatchAnywhereInTheIdentifier) {
    WriteFile(DEVICE_LIST, "02:00.0_1000:005d\n");
    const std::vector<CMatchRow> rows = {
        {"whole", {"VEN_1000", "DEV_005D"}, true},
        {"other device", {"VEN_1000", "DEV_005B"}, false},
        {"other vendor", {"VEN_8086", "DEV_005D"}, false},
        {"lower-case vendor", {"ven_1000", "DEV_005D"}, false},
        {"lower-case device", {"VEN_1000", "DEV_005d"}, false},
        {"part of an ID", {"1000", "005D"}, true},
        {"crossed halves", {"005D", "VEN_1000"}, true},
        {"one half twice", {"005D", "005D"}, true},
        {"across the halves", {"000&DEV", "0&D"}, true},
        {"longer than the identifier", {"VEN_1000", "DEV_005D0"}, false},
        {"empty", {"", ""}, true},
    };
    for (const CMatchRow& row : rows) {
        std::list<DevicePCIID> found = {{"left", "before"}};
        EXPECT_EQ(CMSRAID_PCICard::IsPresentSupportDevice({row.supported}, &found), row.present)
            << row.name;
        EXPECT_EQ(Text(found), row.present ? Text({row.supported}) : "") << row.name;
    }
}

TEST_F(PCICard, LowerCaseIniValueNeverMatches) {
    WriteFile(DEVICE_LIST, SSD_WORD);
    WriteFile(RAID_INI, Ini("1", "Vendor1=VEN_1aed\nDevice1=DEV_2001\n"));
    EXPECT_FALSE(CMSRAID_PCICard::IsPresentRAID(nullptr));
}

TEST_F(PCICard, EveryPairThatMatchesIsFoundAndTraced) {
    WriteFile(DEVICE_LIST, "02:00.0_1000:005d\n03:00.0_1000:0073\n04:00.0_1000:005d\n");
    const std::list<DevicePCIID> supported = {
        {"VEN_1000", "DEV_005D"}, {"VEN_1000", "DEV_0073"}, {"VEN_1000", "DEV_005D"}};
    std::list<DevicePCIID> found;
    EXPECT_TRUE(CMSRAID_PCICard::IsPresentSupportDevice(supported, &found));
    EXPECT_EQ(Text(found),
              "VEN_1000 DEV_005D\nVEN_1000 DEV_005D\nVEN_1000 DEV_0073\nVEN_1000 DEV_005D\n"
              "VEN_1000 DEV_005D\n");
    const std::string text = "1: Support PCI Device(RAID/SSD) found.(vendor=VEN_1000,device=DEV_";
    EXPECT_EQ(TraceTextWithoutFlow(), text + "005D)\n" + text + "005D)\n" + text + "0073)\n" +
                                          text + "005D)\n" + text + "005D)\n");
}

TEST_F(PCICard, FoundListMayBeNull) {
    WriteFile(DEVICE_LIST, RAID_WORD);
    EXPECT_TRUE(CMSRAID_PCICard::IsPresentSupportDevice({{"VEN_1000", "DEV_005D"}}, nullptr));
    EXPECT_FALSE(CMSRAID_PCICard::IsPresentSupportDevice({}, nullptr));
}

TEST_F(PCICard, NothingIsPresentWithoutSupportedOrPresentDevices) {
    std::list<DevicePCIID> found = {{"left", "before"}};
    EXPECT_FALSE(CMSRAID_PCICard::IsPresentSupportDevice({{"", ""}}, &found));
    EXPECT_EQ(Text(found), "");
    EXPECT_EQ(FakeComLib().deviceListsMade, 1);
    WriteFile(DEVICE_LIST, RAID_WORD);
    EXPECT_FALSE(CMSRAID_PCICard::IsPresentSupportDevice({}, &found));
}

TEST_F(PCICard, DeviceListIsMadeEvenIfNothingIsSupported) {
    EXPECT_FALSE(CMSRAID_PCICard::IsPresentSupportDevice({}, nullptr));
    EXPECT_EQ(FakeComLib().deviceListsMade, 1);
}

TEST_F(PCICard, PresentRAIDCardIsTracedInOrder) {
    WriteFile(DEVICE_LIST, RAID_WORD);
    WriteFile(RAID_INI, Ini("1", "Vendor1=VEN_1000\nDevice1=DEV_005D\n"));
    std::list<DevicePCIID> found;
    EXPECT_TRUE(CMSRAID_PCICard::IsPresentRAID(&found));
    EXPECT_EQ(Text(found), "VEN_1000 DEV_005D\n");
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_PCICard::IsPresentRAID [START]\n"
              "1: Support PCI Device(RAID/SSD) found.(vendor=VEN_1000,device=DEV_005D)\n"
              "4: CMSRAID_PCICard::IsPresentRAID [END]\n");
}

TEST_F(PCICard, AbsentRAIDCardIsTracedInOrder) {
    WriteFile(DEVICE_LIST, SSD_WORD);
    std::list<DevicePCIID> found = {{"left", "before"}};
    EXPECT_FALSE(CMSRAID_PCICard::IsPresentRAID(&found));
    EXPECT_EQ(Text(found), "");
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_PCICard::IsPresentRAID [START]\n"
              "16: CMSRAID_InterFace::GetSupportPCIListFromIniFile Support Device is empty. "
              "iniFile=/opt/tarmica/qor/provider/RaidVCFac.ini\n"
              "1: RAID Card is not present.\n"
              "4: CMSRAID_PCICard::IsPresentRAID [END]\n");
}

TEST_F(PCICard, PresentSSDIsTracedInOrder) {
    WriteFile(DEVICE_LIST, SSD_WORD);
    WriteFile(SSD_INI, Ini("1", "Vendor1=VEN_1AED\nDevice1=DEV_2001\n"));
    std::list<DevicePCIID> found;
    EXPECT_TRUE(CMSRAID_PCICard::IsPresentPCIeSSD(&found));
    EXPECT_EQ(Text(found), "VEN_1AED DEV_2001\nVEN_1AED DEV_2001\n");
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_PCICard::IsPresentPCIeSSD [START]\n"
              "1: Support PCI Device(RAID/SSD) found.(vendor=VEN_1AED,device=DEV_2001)\n"
              "1: Support PCI Device(RAID/SSD) found.(vendor=VEN_1AED,device=DEV_2001)\n"
              "4: CMSRAID_PCICard::IsPresentPCIeSSD [END]\n");
}

TEST_F(PCICard, AbsentSSDIsTracedInOrder) {
    WriteFile(DEVICE_LIST, RAID_WORD);
    EXPECT_FALSE(CMSRAID_PCICard::IsPresentPCIeSSD(nullptr));
    EXPECT_EQ(TraceText(),
              "4: CMSRAID_PCICard::IsPresentPCIeSSD [START]\n"
              "16: CMSRAID_InterFace::GetSupportPCIListFromIniFile Support Device is empty. "
              "iniFile=/opt/tarmica/qor/provider/PciessdVCFac.ini\n"
              "1: PCIe SSD is not present.\n"
              "4: CMSRAID_PCICard::IsPresentPCIeSSD [END]\n");
}

}  // namespace
