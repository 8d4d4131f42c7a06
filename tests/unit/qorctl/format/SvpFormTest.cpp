#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "format/SvpForm.h"

namespace {

using qorctl::CSvpEntry;
using testing::HasSubstr;
using testing::StartsWith;

constexpr qorctl::CTextStyle ASCII = {.utf8 = false, .colour = false};

// The digits of a form of 39 bytes, field by field: a test replaces what it is about.
struct CFields {
    std::string signature = "0000000000";    // offset 0
    std::string revision = "00";             // 5
    std::string reserved = "0000";           // 6
    std::string totalSize = "27000000";      // 8: 39
    std::string controllers = "01";          // 12
    std::string drives = "01";               // 13
    std::string reservedToo = "0000";        // 14
    std::string number = "02";               // 16: controller 2
    std::string drivesOfController = "01";   // 17
    std::string sizeWithDrives = "1700";     // 18: 23
    std::string sizeWithoutDrives = "0e00";  // 20: 14
    std::string labelSize = "02";            // 22
    std::string label = "4100";              // 23: "A"
    std::string valueSize = "0300";          // 25
    std::string value = "787900";            // 27: "xy"
    std::string driveNumber = "07";          // 30
    std::string driveSize = "0900";          // 31: 9
    std::string driveItem = "024200010000";  // 33: "B" with an empty value
    std::string rest = "";                   // 39

    std::string Digits() const {
        return signature + revision + reserved + totalSize + controllers + drives + reservedToo +
               number + drivesOfController + sizeWithDrives + sizeWithoutDrives + labelSize +
               label + valueSize + value + driveNumber + driveSize + driveItem + rest;
    }
};

std::string Decode(const std::string& digits) {
    std::string problem;
    const auto form = qorctl::DecodeSvpForm(digits, problem);
    return form ? qorctl::FormatSvpForm(*form, ASCII) : problem;
}

std::string DecodeFields(const CFields& fields) {
    return Decode(fields.Digits());
}

constexpr const char* DECODED =
    "       0  header\n"
    "       0    signature                  : 0000000000\n"
    "       5    format revision            : 0\n"
    "       6    reserved                   : 0000\n"
    "       8    total size                 : 39 bytes\n"
    "      12    number of controllers      : 1\n"
    "      13    number of drives           : 1\n"
    "      14    reserved                   : 0000\n"
    "      16  controller 2\n"
    "      17    number of drives           : 1\n"
    "      18    size with drives           : 23 bytes\n"
    "      20    size without drives        : 14 bytes\n"
    "      22    A                          : xy\n"
    "      30    drive 7\n"
    "      31      size                     : 9 bytes\n"
    "      33      B                        :\n";

TEST(SvpFormTest, FormIsShownInTheOrderOfItsBytesWithOffsets) {
    EXPECT_EQ(DecodeFields({}), DECODED);
}

// Entries take many times the bytes that they stand in.
TEST(SvpFormTest, NumberOfEntriesIsBounded) {
    std::string drive = "01bbff";  // 65,467 bytes: 3 and 9,352 times 7
    for (int i = 0; i < 9352; ++i) {
        drive += "0200020000";  // 7 bytes, each text without one of its own
    }
    CFields fields;
    fields.drives = "ff";
    fields.drivesOfController = "ff";
    fields.driveNumber = "";
    fields.driveSize = "";
    fields.driveItem = "";
    for (int i = 0; i < 255; ++i) {
        fields.rest += drive;
    }
    EXPECT_THAT(DecodeFields(fields), HasSubstr(": there are more than 1000000 entries"));
}

TEST(SvpFormTest, FormWithoutControllersIsItsHeader) {
    EXPECT_EQ(Decode("00000000000000001000000000000000"),
              "       0  header\n"
              "       0    signature                  : 0000000000\n"
              "       5    format revision            : 0\n"
              "       6    reserved                   : 0000\n"
              "       8    total size                 : 16 bytes\n"
              "      12    number of controllers      : 0\n"
              "      13    number of drives           : 0\n"
              "      14    reserved                   : 0000\n");
}

TEST(SvpFormTest, WhiteSpaceAndCaseDoNotMatter) {
    std::string spaced;
    for (const char digit : CFields().Digits()) {
        spaced += digit;
        spaced += " \t\r\n\v\f";
    }
    EXPECT_EQ(Decode(spaced), DECODED);
    EXPECT_EQ(DecodeFields({.sizeWithoutDrives = "0E00"}), DECODED);
}

TEST(SvpFormTest, BytesOfTheTextsAreMadeVisible) {
    EXPECT_THAT(DecodeFields({.value = "1be900"}),
                HasSubstr("A                          : \\x1b\\xe9\n"));
}

struct CCase {
    const char* what;
    CFields fields;
    std::string problem;
};

TEST(SvpFormTest, MalformedFormsAreRejectedWithOffsetAndReason) {
    const CCase cases[] = {
        {"odd number of digits",
         {.rest = "0"},
         "79 digits, an odd number: the last byte lacks one"},
        {"no digit", {.rest = " 0g"}, "offset 80 of the text: 'g' is not a hexadecimal digit"},
        {"zero byte",
         {.rest = std::string(1, '\0')},
         std::string("offset 78 of the text: '\0' is not a hexadecimal digit", 53)},
        {"unknown revision", {.revision = "01"}, "offset 5: format revision 1 is not known"},
        {"bytes behind the form",
         {.rest = "00"},
         "offset 39: 1 byte beyond the 1 controllers that the header counts"},
        {"controllers not counted",
         {.controllers = "00"},
         "offset 16: 23 bytes beyond the 0 controllers that the header counts"},
        {"too many controllers counted",
         {.controllers = "02"},
         "offset 39: the form ends here, but the number of a controller takes 1 byte from offset "
         "39 on"},
        {"wrong number of drives in the header",
         {.drives = "02"},
         "offset 13: the header's number of drives is 2, but what it counts adds up to 1"},
        {"wrong total size",
         {.totalSize = "28000000"},
         "offset 8: the header's total size is 40, but what it counts adds up to 39"},
        {"total size beyond 16 bits",
         {.totalSize = "27000100"},
         "offset 8: the header's total size is 65575, but what it counts adds up to 39"},
        {"wrong size with drives",
         {.sizeWithDrives = "1800"},
         "offset 18: the size with drives is 24, but what it counts adds up to 23"},
        {"drives not counted",
         {.drivesOfController = "00"},
         "offset 18: the size with drives is 23, but what it counts adds up to 14"},
        {"too many drives counted",
         {.drivesOfController = "02"},
         "offset 39: the form ends here, but the number of a drive takes 1 byte from offset 39 on"},
        {"size without drives below its header",
         {.sizeWithoutDrives = "0500"},
         "offset 20: the size without drives is 5, less than the 6 bytes that it stands in"},
        {"size without drives too small",
         {.sizeWithoutDrives = "0d00"},
         "offset 22: the item's sizes add up to 8 bytes, but its section's size leaves 7"},
        {"size without drives too large",
         {.sizeWithoutDrives = "0f00"},
         "offset 30: the item's sizes add up to 16908 bytes, but its section's size leaves 1"},
        {"size of a drive below its header",
         {.driveSize = "0200"},
         "offset 31: the size of a drive is 2, less than the 3 bytes that it stands in"},
        {"size of a drive too small",
         {.driveSize = "0800"},
         "offset 33: the item's sizes add up to 6 bytes, but its section's size leaves 5"},
        {"size of a drive too large",
         {.driveSize = "0a00"},
         "offset 39: the form ends here, but the size of a label takes 1 byte from offset 39 on"},
        {"label without zero byte",
         {.labelSize = "01"},
         "offset 23: the label has no zero byte within its 1 byte"},
        {"label of size 0",
         {.labelSize = "00"},
         "offset 23: the label has no zero byte within its 0 bytes"},
        {"label much shorter than its size",
         {.labelSize = "ff"},
         "offset 22: the item's sizes add up to 261 bytes, but its section's size leaves 8"},
        {"value without zero byte",
         {.valueSize = "0200"},
         "offset 27: the value has no zero byte within its 2 bytes"},
        {"last value without zero byte",
         {.driveItem = "024200010041"},
         "offset 38: the value has no zero byte within its 1 byte"},
    };
    for (const CCase& row : cases) {
        EXPECT_EQ(DecodeFields(row.fields), row.problem) << row.what;
    }
}

TEST(SvpFormTest, FormCutOffAnywhereSaysWhereItEnds) {
    const std::string digits = CFields().Digits();
    for (size_t bytes = 0; bytes < digits.size() / 2; ++bytes) {
        EXPECT_THAT(
            Decode(digits.substr(0, 2 * bytes)),
            StartsWith("offset " + std::to_string(bytes) + ": the form ends here, but the "));
    }
    EXPECT_EQ(Decode(std::string()),
              "offset 0: the form ends here, but the signature takes 5 bytes from offset 0 on");
    EXPECT_EQ(Decode(digits.substr(0, 2 * 28)),
              "offset 28: the form ends here, but the value takes 3 bytes from offset 27 on");
}

TEST(SvpFormTest, EveryByteChangedIsShownOrRejectedWithAnOffset) {
    const std::string digits = CFields().Digits();
    for (size_t position = 0; position < digits.size(); position += 2) {
        for (const char* byte : {"00", "01", "03", "7f", "80", "ff"}) {
            std::string changed = digits;
            changed.replace(position, 2, byte);
            EXPECT_THAT(Decode(changed),
                        testing::AnyOf(StartsWith("offset "), StartsWith("       0  header\n")));
        }
    }
}

TEST(SvpFormTest, SignatureAndReservedBytesThatAreNotZeroAreNoted) {
    const std::string text =
        DecodeFields({.signature = "5356500000", .reserved = "0001", .reservedToo = "0100"});
    EXPECT_THAT(text, HasSubstr("    signature                  : 5356500000\n"
                                "              note: these bytes should be zero\n"
                                "       5  "));
    EXPECT_THAT(text, HasSubstr("       6    reserved                   : 0001\n"
                                "              note: these bytes should be zero\n"));
    EXPECT_THAT(text, HasSubstr("      14    reserved                   : 0100\n"
                                "              note: these bytes should be zero\n"));
}

// Forms of any size, made by the rules of the format alone.

struct CSection {
    std::string digits = "";
    uint64_t size = 0;  // as the form states it: characters that are left out count
};

std::string Number(uint64_t number, size_t width) {
    static constexpr char DIGITS[] = "0123456789abcdef";
    std::string digits;
    for (; width > 0; --width, number /= 256) {
        digits += DIGITS[number / 16 % 16];
        digits += DIGITS[number % 16];
    }
    return digits;
}

std::string Text(const std::string& text) {
    std::string digits;
    for (const char character : text + '\0') {
        const auto byte = static_cast<unsigned char>(character);
        digits += byte < 0x80 ? Number(byte, 1) : "";
    }
    return digits;
}

CSection Item(const std::string& label, const std::string& value) {
    return {Number(label.size() + 1, 1) + Text(label) + Number(value.size() + 1, 2) + Text(value),
            label.size() + value.size() + 5};
}

CSection Join(const std::vector<CSection>& sections) {
    CSection all;
    for (const CSection& section : sections) {
        all.digits += section.digits;
        all.size += section.size;
    }
    return all;
}

CSection Drive(uint64_t number, const std::vector<CSection>& items) {
    const CSection all = Join(items);
    return {Number(number, 1) + Number(all.size + 3, 2) + all.digits, all.size + 3};
}

CSection Controller(uint64_t number, const std::vector<CSection>& items,
                    const std::vector<CSection>& drives) {
    const CSection own = Join(items);
    const CSection all = Join(drives);
    const uint64_t size = (own.size + 6 + all.size) % 65536;
    return {Number(number, 1) + Number(drives.size(), 1) + Number(size, 2) +
                Number(own.size + 6, 2) + own.digits + all.digits,
            size};
}

std::string Form(const std::vector<CSection>& controllers, uint64_t drives) {
    const CSection all = Join(controllers);
    return Number(0, 8) + Number(all.size + 16, 4) + Number(controllers.size(), 1) +
           Number(drives, 1) + Number(0, 2) + all.digits;
}

TEST(SvpFormTest, EveryItemComesBackFromTheOffsetWhereItStands) {
    std::vector<std::pair<std::string, std::string>> pairs;
    std::vector<CSection> controllers;
    for (uint64_t number = 0; number < 3; ++number) {
        std::vector<CSection> drives;
        pairs.emplace_back("Product Name", "card " + std::to_string(number));
        const CSection name = Item(pairs.back().first, pairs.back().second);
        for (uint64_t drive = 0; drive < 5 * number; ++drive) {
            std::vector<CSection> items;
            for (size_t length = 0; length <= drive; ++length) {
                pairs.emplace_back(std::string(length * 3, 'l'), std::string(length * 25, 'v'));
                items.push_back(Item(pairs.back().first, pairs.back().second));
            }
            drives.push_back(Drive(drive, items));
        }
        controllers.push_back(Controller(number, {name}, drives));
    }
    const std::string digits = Form(controllers, 15);
    std::string problem;
    const auto form = qorctl::DecodeSvpForm(digits, problem);
    ASSERT_TRUE(form) << problem;
    size_t found = 0;
    for (const CSvpEntry& entry : *form) {
        if (found < pairs.size() && entry.kind == CSvpEntry::EKind::FIELD &&
            entry.name == pairs[found].first && entry.value == pairs[found].second) {
            const std::string item = Item(entry.name, entry.value).digits;
            EXPECT_EQ(digits.substr(2 * entry.offset, item.size()), item);
            ++found;
        }
    }
    EXPECT_EQ(found, pairs.size());
}

TEST(SvpFormTest, TextsShorterThanTheirSizesAreNotedForEverySectionAroundThem) {
    const CSection drive = Drive(1, {Item("Serial \xE9", "\xC2\xB0 C\xFF"), Item("next", "one")});
    const std::string text = Decode(Form({Controller(0, {Item("Product Name", "X")}, {drive}),
                                          Controller(1, {Item("Product Name", "Y")}, {})},
                                         1));
    const std::string because =
        " of the bytes that its size counts: characters beyond ASCII are left out\n";
    EXPECT_THAT(text, HasSubstr("    Serial                   :  C\n"
                                "                note: the label lacks 1" +
                                because + "                note: the value lacks 3" + because));
    EXPECT_THAT(text, HasSubstr("      next                     : one\n"
                                "              note: the drive lacks 4" +
                                because + "            note: the controller lacks 4" + because));
    EXPECT_THAT(text, testing::EndsWith("    Product Name               : Y\n"
                                        "          note: the form lacks 4" +
                                        because));
}

TEST(SvpFormTest, SizeOfAControllerThatWrappedIsNoted) {
    std::vector<CSection> drives;
    for (uint64_t i = 0; i < 250; ++i) {
        drives.push_back(Drive(i, {Item("l", std::string(255, 'v'))}));
    }
    const std::string text = Decode(Form({Controller(0, {Item("l", "v")}, drives)}, 250));
    EXPECT_THAT(text, HasSubstr("      18    size with drives           : 477 bytes\n"));
    EXPECT_THAT(text,
                HasSubstr("note: the size with drives wrapped: what it counts adds up to 66013\n"));
}

TEST(SvpFormTest, NumberOfDrivesThatWrappedIsNoted) {
    const std::vector<CSection> drives(130, Drive(0, {}));
    const CSection controller = Controller(0, {Item("l", "v")}, drives);
    const std::string text = Decode(Form({controller, controller}, 260));
    EXPECT_THAT(
        text,
        HasSubstr("note: the header's number of drives wrapped: what it counts adds up to 260\n"));
}

}  // namespace
