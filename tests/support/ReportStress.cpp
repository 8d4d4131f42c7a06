#include "ReportStress.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <vector>

#include "ItemText.h"
#include "PrivateServerFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr const char* REPORT_PATH = "/opt/tarmica/krz/report.txt";
constexpr long CTRL_NO = 0;

size_t Pick(CRandom& random, size_t count) {
    return std::uniform_int_distribution<size_t>(0, count - 1)(random);
}

// Every line with the line feed that ends it.
std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    for (size_t begin = 0; begin < text.size();) {
        const size_t end = std::min(text.find('\n', begin), text.size() - 1) + 1;
        lines.push_back(text.substr(begin, end - begin));
        begin = end;
    }
    return lines;
}

std::string Joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        text += line;
    }
    return text;
}

std::string WithDamagedLine(const std::string& report, CRandom& random) {
    std::vector<std::string> lines = LinesOf(report);
    if (lines.empty()) {
        return report;
    }
    const size_t victim = Pick(random, lines.size());
    switch (Pick(random, 3)) {
        case 0:
            lines.erase(lines.begin() + static_cast<std::ptrdiff_t>(victim));
            break;
        case 1:
            lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(victim), lines[victim]);
            break;
        default:
            std::swap(lines[victim], lines[Pick(random, lines.size())]);
            break;
    }
    return Joined(lines);
}

// Bytes that mean something to a parser are likelier than the rest.
std::string WithDamagedByte(std::string report, CRandom& random) {
    static const std::string TELLING("\n\r\t\0 :#>(),R", 12);
    if (!report.empty()) {
        report[Pick(random, report.size())] =
            Pick(random, 2) == 0 ? TELLING[Pick(random, TELLING.size())]
                                 : static_cast<char>(static_cast<unsigned char>(Pick(random, 256)));
    }
    return report;
}

void ExpectWellFormed(const std::list<CItemDisp*>& items) {
    std::set<std::string> names = {""};
    for (const CItemDisp* item : items) {
        EXPECT_TRUE(names.contains(item->ParentName())) << "no parent before " << ItemText(*item);
        EXPECT_EQ(item->Enable(), item->Enable() == "FALSE" ? "FALSE" : "TRUE");
        EXPECT_TRUE(item->Enable() == "TRUE" || item->ItemValue().empty()) << ItemText(*item);
        names.insert(item->ItemName());
    }
}

std::string ItemsOf(CMSRAID_InfoGetter& getter, const std::string& report) {
    CItems items;
    LetToolPrint(report);
    EXPECT_TRUE(getter.GetInfo(CTRL_NO, items));
    return items.Text();
}

}  // namespace

void LetToolPrint(const std::string& report) {
    const std::string tool = std::string(TOOL_DIR) + "/krzcli";
    if (!fs::exists(REPORT_PATH)) {
        WriteFile(tool, "#!/bin/sh\nexec cat " + std::string(REPORT_PATH) + "\n");
        fs::permissions(tool, fs::perms::owner_all);
    }
    WriteFile(REPORT_PATH, report);
}

std::string DamagedReport(const std::string& report, CRandom& random) {
    std::string damaged = report;
    for (size_t left = 1 + Pick(random, 3); left > 0; --left) {
        damaged = Pick(random, 2) == 0 ? WithDamagedLine(damaged, random)
                                       : WithDamagedByte(damaged, random);
    }
    return damaged;
}

void ExpectItemsOrCleanFailure(CMSRAID_InfoGetter& getter, const std::string& report) {
    const std::string codesBefore = getter.ErrCode();
    CItems items;
    LetToolPrint(report);
    if (getter.GetInfo(CTRL_NO, items)) {
        EXPECT_EQ(getter.ErrCode(), codesBefore);
        ExpectWellFormed(items);
    } else {
        EXPECT_EQ(getter.ErrCode(), "04" + codesBefore);
        EXPECT_EQ(items.Text(), "");
    }
    EXPECT_EQ(getter.ErrDetail(), "");
}

void ExpectEveryBeginningIsHandled(const CGetterFactory& makeGetter, const std::string& report) {
    for (size_t size = 0; size <= report.size() && !testing::Test::HasFailure(); ++size) {
        SCOPED_TRACE("cut at byte " + std::to_string(size));
        ExpectItemsOrCleanFailure(*makeGetter(), report.substr(0, size));
    }
}

void ExpectDamageIsHandled(CMSRAID_InfoGetter& getter, const std::string& report, unsigned int seed,
                           int rounds) {
    const std::string expected = ItemsOf(getter, report);
    CRandom random(seed);
    for (int round = 0; round < rounds && !testing::Test::HasFailure(); ++round) {
        const std::string damaged = DamagedReport(report, random);
        SCOPED_TRACE("round " + std::to_string(round) + ", report:\n" + damaged);
        ExpectItemsOrCleanFailure(getter, damaged);
    }
    EXPECT_EQ(ItemsOf(getter, report), expected) << "something of a damaged report was kept";
}

}  // namespace qortest
