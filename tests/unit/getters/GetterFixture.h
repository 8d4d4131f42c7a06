// What the tests of the getters share: a getter whose parser and list are in reach, one that
// rejects lines, and a server whose tool prints what the test says.
#ifndef QORTEST_GETTERFIXTURE_H
#define QORTEST_GETTERFIXTURE_H

#include <gtest/gtest.h>

#include <fstream>
#include <list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "FakeComLib.h"
#include "ItemText.h"
#include "PrivateServerFixture.h"
#include "StandInTool.h"
#include "getters/CMSRAID_InfoGetter.h"
#include "plugin/ComLib.h"

namespace qortest {

// A step of the tool after which no result file is there.
inline constexpr const char* REMOVE_RESULT_FILES = "rm -f /opt/tarmica/qor/provider/tmp/MSRAID/*";

inline std::ifstream StreamOf(const std::string& text) {
    const std::string path = "/opt/tarmica/report.txt";
    WriteFile(path, text);
    return std::ifstream(path);
}

inline std::string WithCarriageReturns(const std::string& text) {
    std::string result;
    for (const char c : text) {
        result += c == '\n' ? "\r\n" : std::string(1, c);
    }
    return result;
}

// The getter's parser without the tool.
template <class GETTER>
class CParserOf : public GETTER {
public:
    using GETTER::AddPlaceholder;
    using GETTER::GETTER;
    using GETTER::NoteRunFailure;
    ~CParserOf() override { DeleteItems(this->m_RaidList); }

    std::list<CItemDisp*>& Items() { return this->m_RaidList; }

    bool ParseText(const std::string& text) {
        std::ifstream stream = StreamOf(text);
        return this->Parse(stream, "");
    }
};

// Rejects keys and titles that begin with "BAD" and counts its roots.
template <class GETTER>
class CRejectingParserOf : public CParserOf<GETTER> {
public:
    using CParserOf<GETTER>::CParserOf;
    bool ParseKeyValue(std::ifstream& stream, std::string line,
                       std::list<CItemDisp*>& list) override {
        return !line.starts_with("BAD") && GETTER::ParseKeyValue(stream, line, list);
    }
    bool ParseTitle(std::ifstream& stream, std::string line) override {
        return !line.starts_with("### BAD") && GETTER::ParseTitle(stream, line);
    }
    void AddRootItem() override {
        ++rootCalls;
        GETTER::AddRootItem();
    }

    int rootCalls = 0;
};

// What one request brought.
struct CRead {
    bool result;
    std::string items;
    std::string errCode;
    std::string errDetail;
};

// One request about controller 0, with the steps of the tool that are already played.
inline CRead ReadWith(CMSRAID_InfoGetter& getter) {
    CItems items;
    const bool result = getter.GetInfo(0, items);
    return {result, items.Text(), getter.ErrCode(), getter.ErrDetail()};
}

class CGetterFixture : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        ResetFakeComLib();
    }
};

// For a getter that makes its items of one command's report: the tool is asked as the test plays
// it.
template <class GETTER>
class COneReportFixture : public CGetterFixture {
protected:
    // `command` is the one about controller 0.
    explicit COneReportFixture(std::string command) : m_Command(std::move(command)) {}

    void SetUp() override {
        CGetterFixture::SetUp();
        m_Tool.emplace();
    }
    void TearDown() override {
        m_Tool.reset();
        CGetterFixture::TearDown();
    }

    // One run of `getter`; only its own traces are left.
    CRead Read(const std::string& report, GETTER& getter) {
        m_Tool->Play(m_Command, {.out = report});
        ResetFakeComLib();
        return ReadWith(getter);
    }
    // The items of a report that must be accepted.
    std::string Items(const std::string& report) {
        GETTER getter;
        const CRead read = Read(report, getter);
        EXPECT_TRUE(read.result);
        EXPECT_EQ(read.errCode, "");
        EXPECT_EQ(read.errDetail, "");
        EXPECT_EQ(FailureTraces(), std::vector<std::string>());
        return read.items;
    }
    // A report that must be rejected: nothing in the list, and these failure traces.
    void ExpectRejected(const std::string& report, std::vector<std::string> failures) {
        SCOPED_TRACE(report);
        CRejectingParserOf<GETTER> getter;
        const CRead read = Read(report, getter);
        EXPECT_FALSE(read.result);
        EXPECT_EQ(read.items, "");
        EXPECT_EQ(read.errCode, "04");
        EXPECT_EQ(read.errDetail, "");
        failures.insert(failures.end(), {"CreateRAIDItem is FAILED (ret=00000000).",
                                         "Failed to parse RAID Information ret=00000000."});
        EXPECT_EQ(FailureTraces(), failures);
    }

    static std::vector<std::string> FailureTraces() {
        return FakeComLib().Traces(CTraceUtility::TRACE_DBG_FAILURE);
    }

    std::optional<CStandInTool> m_Tool;

private:
    std::string m_Command;
};

}  // namespace qortest

#endif  // QORTEST_GETTERFIXTURE_H
