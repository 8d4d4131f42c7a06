#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "ItemList.h"
#include "plugin/SvpConversion.h"
#include "svp/SvpNameTables.h"

namespace {

using qortest::CItemList;
using CPairs = std::vector<std::pair<std::string, std::string>>;

const char* const GENERAL = "### General Information ###";
const char* const FIRMWARE = "### Firmware/BIOS/Driver Information ###";
const char* const SETTINGS = "### Settings Information ###";

const CPairs CTRL_GENERAL = {
    {"Controller No.", "1"}, {"Product Name", "P"}, {"PCI Bus/Dev/Func", "0x1/0x0/0x0"}};
const CPairs CTRL_FIRMWARE = {{"Firmware Package Version", "24.0"}, {"Firmware Version", "4.6"}};
const CPairs PD_GENERAL = {
    {"PD No.", "PD12"},       {"Raw Capacity", "931 GB"}, {"Interface Type", "SAS"},
    {"Media Type", "HDD"},    {"Product ID", "P1"},       {"Serial Number", "S1"},
    {"Vendor ID", "V1"},      {"PD Status", "Online"},    {"PD Status(Detail)", "O"},
    {"Drive Speed", "10500"}, {"Revision Level", "0001"},
};

void AddBlock(CItemList& list, const char* root, const char* title, const CPairs& pairs) {
    list.Add(root, title);
    for (const auto& [name, value] : pairs) {
        list.Add(title, name, value);
    }
}

void AddCtrl(CItemList& list, const CPairs& general = CTRL_GENERAL,
             const CPairs& firmware = CTRL_FIRMWARE) {
    list.Add("", "Controller Information");
    AddBlock(list, "Controller Information", GENERAL, general);
    AddBlock(list, "Controller Information", FIRMWARE, firmware);
}

void AddPD(CItemList& list, const CPairs& general = PD_GENERAL) {
    list.Add("", "Physical Drive Information");
    AddBlock(list, "Physical Drive Information", GENERAL, general);
}

CSvpPdInfoForm Convert(const CItemList& list) {
    CSvpPdInfoForm form;
    CSvpConversion::Convert(&form, list.items);
    return form;
}

template <typename Record>
CPairs ItemsOf(const Record& record) {
    CPairs pairs;
    for (const CSvpCtrlPdItem& item : record.Items()) {
        pairs.emplace_back(item.Lavel(), item.Value());
    }
    return pairs;
}

CPairs WithoutFirst(CPairs pairs) {
    pairs.erase(pairs.begin());
    return pairs;
}

// The drive number that a "PD No." value gives.
int PDNoOf(const std::string& value) {
    CItemList list;
    AddCtrl(list);
    CPairs general = PD_GENERAL;
    general[0].second = value;
    AddPD(list, general);
    return Convert(list).Ctrls().front().PDs().front().PDNo();
}

// The controller number that a "Controller No." value gives.
int CtrlNoOf(const std::string& value) {
    CItemList list;
    CPairs general = CTRL_GENERAL;
    general[0].second = value;
    AddCtrl(list, general);
    return Convert(list).Ctrls().front().CtrlNo();
}

TEST(SvpConversion, PicksTheListedItemsOfControllersAndDrives) {
    CItemList list;
    CPairs general = CTRL_GENERAL;
    general.insert(general.begin() + 1, {"Vendor", "not listed"});
    CPairs firmware = CTRL_FIRMWARE;
    firmware.insert(firmware.begin(), {"BIOS Version", "not listed"});
    AddCtrl(list, general, firmware);
    CPairs drive = PD_GENERAL;
    drive.insert(drive.begin() + 3, {"Slot", "not listed"});
    AddPD(list, drive);
    AddPD(list);
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().size(), 1U);
    const CSvpCtrlPdInfo& ctrl = form.Ctrls().front();
    EXPECT_EQ(ctrl.CtrlNo(), 1);
    EXPECT_EQ(ItemsOf(ctrl),
              (CPairs{CTRL_GENERAL[1], CTRL_GENERAL[2], CTRL_FIRMWARE[0], CTRL_FIRMWARE[1]}));
    ASSERT_EQ(ctrl.PDs().size(), 2U);
    for (const CSvpPdInfo& pd : ctrl.PDs()) {
        EXPECT_EQ(pd.PDNo(), 12);
        EXPECT_EQ(ItemsOf(pd), WithoutFirst(PD_GENERAL));
    }
}

TEST(SvpConversion, DrivesBelongToTheControllerBeforeThem) {
    CItemList list;
    for (const int drives : {2, 0, 1}) {
        AddCtrl(list);
        for (int i = 0; i < drives; ++i) {
            AddPD(list);
        }
    }
    const CSvpPdInfoForm form = Convert(list);
    std::vector<std::size_t> counts;
    for (const CSvpCtrlPdInfo& ctrl : form.Ctrls()) {
        counts.push_back(ctrl.PDs().size());
    }
    EXPECT_EQ(counts, (std::vector<std::size_t>{2, 0, 1}));
}

TEST(SvpConversion, NothingOfOneRecordLeaksIntoTheNext) {
    CItemList list;
    AddCtrl(list);
    AddPD(list);
    AddCtrl(list, WithoutFirst(CTRL_GENERAL));
    AddPD(list, WithoutFirst(PD_GENERAL));
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().size(), 2U);
    EXPECT_EQ(form.Ctrls().back().CtrlNo(), 0);
    EXPECT_EQ(form.Ctrls().back().Items().size(), 4U);
    EXPECT_EQ(form.Ctrls().back().PDs().front().PDNo(), 0);
}

TEST(SvpConversion, ListWithoutControllersGivesAnEmptyForm) {
    CItemList list;
    EXPECT_TRUE(Convert(list).Ctrls().empty());
    list.Add("", "Logical Drive Information");
    AddBlock(list, "Logical Drive Information", GENERAL, CTRL_GENERAL);
    AddPD(list);
    CSvpPdInfoForm form = Convert(list);
    form.SetDataSize();
    EXPECT_TRUE(form.Ctrls().empty());
    EXPECT_EQ(form.TotalDataSize(), 16U);
}

TEST(SvpConversion, DrivesBeforeAnyControllerAreDropped) {
    CItemList list;
    AddPD(list);
    AddCtrl(list);
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().size(), 1U);
    EXPECT_TRUE(form.Ctrls().front().PDs().empty());
}

TEST(SvpConversion, ControllerWithNothingButItsNumberIsDroppedWithItsDrives) {
    CItemList list;
    AddCtrl(list, {{"Controller No.", "7"}}, {});
    AddPD(list);
    AddCtrl(list);
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().size(), 1U);
    EXPECT_EQ(form.Ctrls().front().CtrlNo(), 1);
    EXPECT_TRUE(form.Ctrls().front().PDs().empty());
}

TEST(SvpConversion, DriveWithNothingButItsNumberIsDropped) {
    CItemList list;
    AddCtrl(list);
    AddPD(list, {{"PD No.", "PD3"}});
    AddPD(list);
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().front().PDs().size(), 1U);
    EXPECT_EQ(form.Ctrls().front().PDs().front().PDNo(), 12);
}

TEST(SvpConversion, IncompleteDriveKeepsItsHeaderOnly) {
    CItemList list;
    AddCtrl(list);
    CPairs general = PD_GENERAL;
    general.erase(general.begin() + 5);  // "Serial Number"
    AddPD(list, general);
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().front().PDs().size(), 1U);
    EXPECT_EQ(form.Ctrls().front().PDs().front().PDNo(), 12);
    EXPECT_TRUE(form.Ctrls().front().PDs().front().Items().empty());
}

TEST(SvpConversion, NothingCountsBehindTheFirmwareBlock) {
    CItemList list;
    AddCtrl(list, {{"Product Name", "first"}});
    AddBlock(list, "Controller Information", SETTINGS, {{"Product Name", "other block"}});
    AddBlock(list, "Controller Information", GENERAL, {{"Product Name", "too late"}});
    const CSvpPdInfoForm form = Convert(list);
    EXPECT_EQ(ItemsOf(form.Ctrls().front()),
              (CPairs{{"Product Name", "first"}, CTRL_FIRMWARE[0], CTRL_FIRMWARE[1]}));
}

TEST(SvpConversion, GeneralBlockOfAControllerMayGoOnBehindAnother) {
    CItemList list;
    list.Add("", "Controller Information");
    AddBlock(list, "Controller Information", GENERAL, {{"Product Name", "P"}});
    AddBlock(list, "Controller Information", SETTINGS, {{"PCI Bus/Dev/Func", "wrong block"}});
    AddBlock(list, "Controller Information", GENERAL, {{"PCI Bus/Dev/Func", "0"}});
    EXPECT_EQ(ItemsOf(Convert(list).Ctrls().front()),
              (CPairs{{"Product Name", "P"}, {"PCI Bus/Dev/Func", "0"}}));
}

TEST(SvpConversion, ItemOfAnUnlistedNameEndsTheFirmwareBlockToo) {
    CItemList list;
    AddCtrl(list, {{"Product Name", "P"}}, {{"Driver Version", "1"}});
    AddBlock(list, "Controller Information", GENERAL, {{"PCI Bus/Dev/Func", "0"}});
    EXPECT_EQ(ItemsOf(Convert(list).Ctrls().front()), (CPairs{{"Product Name", "P"}}));
}

TEST(SvpConversion, NothingCountsBehindTheGeneralBlockOfADrive) {
    CItemList list;
    AddCtrl(list);
    AddPD(list);
    AddBlock(list, "Physical Drive Information", SETTINGS, {{"Raw Capacity", "other block"}});
    AddBlock(list, "Physical Drive Information", GENERAL, {{"Raw Capacity", "too late"}});
    const CSvpPdInfoForm form = Convert(list);
    EXPECT_EQ(ItemsOf(form.Ctrls().front().PDs().front()), WithoutFirst(PD_GENERAL));
}

TEST(SvpConversion, BlocksBeforeTheGeneralOneOfADriveAreSkipped) {
    CItemList list;
    AddCtrl(list);
    list.Add("", "Physical Drive Information");
    AddBlock(list, "Physical Drive Information", SETTINGS, {{"Raw Capacity", "other block"}});
    AddBlock(list, "Physical Drive Information", GENERAL, PD_GENERAL);
    const CSvpPdInfoForm form = Convert(list);
    EXPECT_EQ(ItemsOf(form.Ctrls().front().PDs().front()), WithoutFirst(PD_GENERAL));
}

TEST(SvpConversion, FirmwareBlockOfADriveIsNotRead) {
    CItemList list;
    AddCtrl(list, CTRL_GENERAL, {});
    AddPD(list);
    AddBlock(list, "Physical Drive Information", FIRMWARE, CTRL_FIRMWARE);
    const CSvpPdInfoForm form = Convert(list);
    EXPECT_EQ(ItemsOf(form.Ctrls().front()), WithoutFirst(CTRL_GENERAL));
}

TEST(SvpConversion, RootsAreKnownByTheirNamesAlone) {
    CItemList list;
    list.Add("some parent", "Controller Information", "some value");
    AddBlock(list, "Controller Information", GENERAL, CTRL_GENERAL);
    list.Add(GENERAL, "Physical Drive Information", "some value");
    AddBlock(list, "Physical Drive Information", GENERAL, PD_GENERAL);
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().size(), 1U);
    EXPECT_EQ(form.Ctrls().front().CtrlNo(), 1);
    ASSERT_EQ(form.Ctrls().front().PDs().size(), 1U);
    EXPECT_EQ(form.Ctrls().front().PDs().front().PDNo(), 12);
}

TEST(SvpConversion, OtherRootsEndNothing) {
    CItemList list;
    list.Add("", "Controller Information");
    list.Add("", "Logical Drive Information");
    AddBlock(list, "Logical Drive Information", GENERAL, CTRL_GENERAL);
    AddPD(list, {});
    list.Add("", "Logical Drive Information");
    AddBlock(list, "Logical Drive Information", GENERAL, PD_GENERAL);
    const CSvpPdInfoForm form = Convert(list);
    ASSERT_EQ(form.Ctrls().size(), 1U);
    EXPECT_EQ(ItemsOf(form.Ctrls().front()), WithoutFirst(CTRL_GENERAL));
    ASSERT_EQ(form.Ctrls().front().PDs().size(), 1U);
    EXPECT_EQ(form.Ctrls().front().PDs().front().PDNo(), 12);
}

TEST(SvpConversion, ItemOfAnUnlistedNameEndsTheGeneralBlockOfADriveToo) {
    CItemList list;
    AddCtrl(list);
    CPairs general = PD_GENERAL;
    general.emplace_back("Temperature", "31C");
    AddPD(list, general);
    AddBlock(list, "Physical Drive Information", SETTINGS, {{"Write Cache", "on"}});
    AddBlock(list, "Physical Drive Information", GENERAL, {{"Raw Capacity", "too late"}});
    const CSvpPdInfoForm form = Convert(list);
    EXPECT_EQ(ItemsOf(form.Ctrls().front().PDs().front()), WithoutFirst(PD_GENERAL));
}

TEST(SvpConversion, EnableFlagPlaysNoPart) {
    CItemList list;
    list.Add("", "Controller Information", "", "FALSE");
    list.Add(GENERAL, "Product Name", "", "FALSE");
    EXPECT_EQ(ItemsOf(Convert(list).Ctrls().front()), (CPairs{{"Product Name", ""}}));
}

TEST(SvpConversion, ControllerNumberIsTheLowByteOfADecimalNumber) {
    const struct {
        const char* value;
        int number;
    } rows[] = {
        {"0", 0},
        {"7", 7},
        {"255", 255},
        {"256", 0},
        {"300", 44},
        {" \t\n\v\f\r+9", 9},
        {"-1", 255},
        {"12 and more", 12},
        {"3.9", 3},
        {"", 0},
        {"x1", 0},
        {"+-1", 0},
        {"- 1", 0},
        {"0x10", 0},
        {"007", 7},
        {"99999999999999999999999", 255},  // 99999999999999999999999 mod 256
        {"-300", 212},
        {"\xA0"
         "5",
         0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(CtrlNoOf(row.value), row.number) << "'" << row.value << "'";
    }
}

TEST(SvpConversion, DriveNumberStandsBehindTwoCharacters) {
    const struct {
        const char* value;
        int number;
    } rows[] = {
        {"PD12", 12}, {"12", 0},   {"x PD5", 0}, {"PD", 0},      {"PD300", 44}, {"PD 7", 7},
        {"", 0},      {"pd12", 0}, {"P", 0},     {"1234PD", 34}, {"PD-1", 255}, {"PDPD1", 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(PDNoOf(row.value), row.number) << "'" << row.value << "'";
    }
}

TEST(SvpConversion, NumberWithoutPDLeavesTheOneBefore) {
    CItemList list;
    AddCtrl(list);
    CPairs general = PD_GENERAL;
    general.insert(general.begin() + 1, {"PD No.", "99"});
    AddPD(list, general);
    EXPECT_EQ(Convert(list).Ctrls().front().PDs().front().PDNo(), 12);
}

TEST(SvpConversion, NumberOfNothingButPDIsZero) {
    CItemList list;
    AddCtrl(list);
    CPairs general = PD_GENERAL;
    general.insert(general.begin() + 1, {"PD No.", "PD"});
    AddPD(list, general);
    EXPECT_EQ(Convert(list).Ctrls().front().PDs().front().PDNo(), 0);
}

TEST(SvpConversion, ControllersAreAppendedBehindThoseOfTheForm) {
    CItemList list;
    AddCtrl(list);
    CSvpPdInfoForm form;
    CSvpConversion::Convert(&form, list.items);
    CSvpConversion::Convert(&form, list.items);
    EXPECT_EQ(form.Ctrls().size(), 2U);
}

TEST(SvpConversion, LongTextsAreCut) {
    CItemList list;
    AddCtrl(list, {{"Product Name", std::string(300, 'p')}});
    EXPECT_EQ(Convert(list).Ctrls().front().Items().front().Value(), std::string(255, 'p'));
}

TEST(SvpConversion, SearchIsExactAndStopsAtTheEndMark) {
    const std::string table[] = {"one", "two", "", "behind the end"};
    const std::string empty[] = {"", "behind the end"};
    EXPECT_TRUE(CSvpConversion::SerchStringList("one", table));
    EXPECT_TRUE(CSvpConversion::SerchStringList("two", table));
    EXPECT_FALSE(CSvpConversion::SerchStringList("Two", table));
    EXPECT_FALSE(CSvpConversion::SerchStringList("two ", table));
    EXPECT_FALSE(CSvpConversion::SerchStringList("tw", table));
    EXPECT_FALSE(CSvpConversion::SerchStringList(std::string("two\0", 4), table));
    EXPECT_FALSE(CSvpConversion::SerchStringList("", table));
    EXPECT_FALSE(CSvpConversion::SerchStringList("behind the end", table));
    EXPECT_FALSE(CSvpConversion::SerchStringList("behind the end", empty));
}

// The end mark included.
std::vector<std::string> Texts(const std::string* table) {
    std::vector<std::string> texts;
    do {
        texts.push_back(*table);
    } while (!(table++)->empty());
    return texts;
}

TEST(SvpConversion, NameTables) {
    EXPECT_EQ(Texts(tsCtrlGenList),
              (std::vector<std::string>{"Controller No.", "Product Name", "PCI Bus/Dev/Func", ""}));
    EXPECT_EQ(Texts(tsCtrlVerList),
              (std::vector<std::string>{"Firmware Package Version", "Firmware Version", ""}));
    EXPECT_EQ(Texts(tsPdGenList),
              (std::vector<std::string>{"PD No.", "Raw Capacity", "Interface Type", "Media Type",
                                        "Product ID", "Serial Number", "Vendor ID", "PD Status",
                                        "PD Status(Detail)", "Drive Speed", "Revision Level", ""}));
}

TEST(SvpConversion, ManyControllersAndDrives) {
    CItemList list;
    for (int ctrl = 0; ctrl < 300; ++ctrl) {
        AddCtrl(list);
        for (int pd = 0; pd < 20; ++pd) {
            AddPD(list);
        }
    }
    CSvpPdInfoForm form = Convert(list);
    form.SetDataSize();
    EXPECT_EQ(form.Ctrls().size(), 300U);
    EXPECT_EQ(form.CtrlCount(), 300 % 256);
    EXPECT_EQ(form.PDCount(), 6000 % 256);
}

}  // namespace
