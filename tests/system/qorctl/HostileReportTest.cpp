// Reports that were made to wear the program out, on every output: deep, long, or of one name many
// times. Each runs with a small stack, so that what recurses with its input crashes; what grows
// with the square of its input is too long.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "QorctlFixture.h"

namespace {

using qortest::CEnd;
using qortest::CRecord;
using testing::HasSubstr;
using CRecords = std::vector<CRecord>;

const char* const DRIVE_ROOT = "Physical Drive Information";
const char* const DRIVE_TITLE = "### General Information ###";
constexpr int MANY = MANY_NAMES;
constexpr size_t LONG = LONG_TEXT_SIZE;

const std::vector<std::vector<std::string>> OUTPUTS = {
    {"raid"},
    {"raid", "--format", "table"},
    {"raid", "--format", "json"},
    {"raid", "--format", "csv"},
    {"raid", "--format", "xml"},
    {"drive", "0", "252", "0"},
    {"drive", "0", "252", "0", "--format", "json"},
    {"xml"},
    {"check"},
    {"check", "--perfdata", "all"},
    {"check", "--format", "json"},
    {"check", "--state", "/opt/tarmica/ctl/health.json"},
    {"metrics"},
    {"metrics", "--smart"},
    {"watch", "--count", "1"},
    {"watch", "--count", "1", "--format", "json"},
};

void AddKey(CRecords& records, const std::string& key, const std::string& value) {
    records.push_back({"item", DRIVE_TITLE, key, value, "TRUE"});
}

CRecords Drive() {
    return {{"item", "", DRIVE_ROOT, "", "TRUE"}, {"item", DRIVE_ROOT, DRIVE_TITLE, "", "TRUE"}};
}

// Every item below the one before.
CRecords Deep() {
    CRecords records = Drive();
    std::string parent = DRIVE_TITLE;
    for (int level = 0; level < MANY; ++level) {
        const std::string name = std::to_string(level);
        records.push_back({"item", parent, name, "", "TRUE"});
        parent = name;
    }
    return records;
}

CRecords Equal() {
    CRecords records = Drive();
    for (int i = 0; i < MANY; ++i) {
        AddKey(records, "A", "");
    }
    return records;
}

CRecords Taken() {
    CRecords records = Drive();
    for (int number = 2; number <= MANY; ++number) {
        AddKey(records, "A (" + std::to_string(number) + ")", "");
    }
    AddKey(records, "A", "");
    AddKey(records, "A", "");
    return records;
}

CRecords Long() {
    const std::string text(LONG, 'x');
    CRecords records = Drive();
    for (const char* key : {"PD No.", "RG No.", "LD No.", "Serial Number", "Product ID",
                            "PD Status", "PD Status(Detail)", "Temperature", "Media Error Count"}) {
        AddKey(records, key, text);
    }
    AddKey(records, text, text);
    records.push_back({"item", "", text, text, "TRUE"});
    return records;
}

class HostileReportTest : public qortest::CQorctlFixture {
protected:
    CEnd RunSmall(std::vector<std::string> arguments, bool terminal = false) const {
        arguments.insert(arguments.begin() + 1, {"--plugin", STAND_IN_PLUGIN});
        std::vector<std::string> words = {"-c", "ulimit -s 512; exec \"$0\" \"$@\"",
                                          QORCTL_PROGRAM};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return qortest::RunCommand({.program = "/bin/sh",
                                    .arguments = words,
                                    .environment = m_Environment,
                                    .terminal = terminal,
                                    .terminalWidth = 80});
    }

    // An answer's bytes.
    size_t Size() const { return qortest::ReadFile(m_Folder / "answer").size(); }

    void RunAll(const CRecords& answer) const {
        Answer(answer);
        for (const std::vector<std::string>& arguments : OUTPUTS) {
            const CEnd outcome = RunSmall(arguments);
            const std::string what = testing::PrintToString(arguments);
            EXPECT_LE(outcome.status, 3) << what << outcome.err;
            EXPECT_LE(outcome.out.size(), 10 * Size()) << what;
        }
    }
};

TEST_F(HostileReportTest, DeepNesting) {
    RunAll(Deep());
}

TEST_F(HostileReportTest, ManyEqualNames) {
    RunAll(Equal());
}

TEST_F(HostileReportTest, NamesThatTakeEachOthersNumbers) {
    RunAll(Taken());
}

TEST_F(HostileReportTest, LongTexts) {
    RunAll(Long());
}

// A value goes on below itself: not behind as many blanks as its name is long.
TEST_F(HostileReportTest, LongNameAndLongValueOnATerminal) {
    CRecords records = Drive();
    AddKey(records, std::string(20'000, 'n'), std::string(20'000, 'v'));
    Answer(records);
    EXPECT_LE(RunSmall({"raid"}, true).out.size(), 200'000U);
}

// A table is as wide as its widest cell.
TEST_F(HostileReportTest, LongCellDoesNotWidenEveryRow) {
    CRecords records;
    for (int number = 0; number < 500; ++number) {
        const CRecords drive = Drive();
        records.insert(records.end(), drive.begin(), drive.end());
        AddKey(records, "PD No.", "PD" + std::to_string(number));
        AddKey(records, "PD Status(Detail)", number == 0 ? std::string(100'000, 'x') : "ONLINE");
        AddKey(records, "Product ID", "x");
    }
    Answer(records);
    const CEnd outcome = RunSmall({"raid", "--format", "table"});
    EXPECT_THAT(outcome.out, HasSubstr("499"));
    EXPECT_THAT(outcome.out, HasSubstr("xxx…"));
    EXPECT_LE(outcome.out.size(), 300'000U);
}

// The first line of a check

TEST_F(HostileReportTest, FirstLineOfACheckIsShort) {
    const std::string odd(LONG, '\xff');
    CRecords records = Drive();
    for (const char* key : {"PD Status(Detail)", "Temperature", "Media Error Count"}) {
        AddKey(records, key, odd);
    }
    Answer(records);
    const CEnd outcome = RunSmall({"check"});
    EXPECT_EQ(outcome.status, 3);
    const std::string first = outcome.out.substr(0, outcome.out.find('|'));
    EXPECT_LE(first.size(), 1024U);
    EXPECT_THAT(first, HasSubstr("... ("));
    EXPECT_LE(outcome.out.size(), 10'000U);
    const auto json = nlohmann::json::parse(RunSmall({"check", "--format", "json"}).out);
    EXPECT_LE(json["message"].get<std::string>().size(), 1024U);
}

TEST_F(HostileReportTest, FailureThatIsLongIsCutInTheFirstLine) {
    Answer(
        {{"result", "0"}, {"error", std::string(LONG, 'e')}, {"detail", std::string(LONG, 'd')}});
    const CEnd outcome = RunSmall({"check"});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_LE(outcome.out.size(), 1100U);
    EXPECT_THAT(outcome.out, HasSubstr("the request failed with the unknown code eee"));
}

TEST_F(HostileReportTest, PerformanceDataEndWhereTheyWouldBeTooLong) {
    CRecords records;
    for (int number = 0; number < 10'000; ++number) {
        const CRecords drive = Drive();
        records.insert(records.end(), drive.begin(), drive.end());
        AddKey(records, "PD No.", "PD" + std::to_string(number));
        AddKey(records, "PD Status(Detail)", "ONLINE");
        for (const char* key : {"Temperature", "Media Error Count", "Other Error Count",
                                "Predictive Failure Count"}) {
            AddKey(records, key, "0");
        }
        records.back()[3] = "0";
        (records.end() - 4)->at(3) = "31C";
    }
    Answer(records);
    const CEnd outcome = RunSmall({"check", "--perfdata", "all"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_LE(outcome.out.find('\n'), 257U * 1024);
    EXPECT_THAT(outcome.out, HasSubstr("note: too long, performance data left out: "));
    EXPECT_EQ(outcome.out[outcome.out.find('\n') - 1], ';');  // no value is half there
}

// A service-processor form of a file

TEST_F(HostileReportTest, LongFormIsRefused) {
    qortest::WriteFile(m_Folder / "form", std::string(LONG, '0'));
    const CEnd outcome = Run({"svp", "--decode", (m_Folder / "form").string()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_LE(outcome.err.size(), 1000U);
    const CEnd endless = Run({"svp", "--decode", "/dev/zero"});
    EXPECT_EQ(endless.status, 1);
    EXPECT_EQ(endless.err, "qorctl: /dev/zero could not be read: File too large\n");
}

}  // namespace
