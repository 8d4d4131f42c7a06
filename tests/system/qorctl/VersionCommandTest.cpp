// `qorctl version` with the shipped libraries.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "QorctlFixture.h"
#include "StandInTool.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using qortest::CEnd;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::StartsWith;

class VersionCommandTest : public qortest::CQorctlFixture {
protected:
    void SetUp() override {
        CQorctlFixture::SetUp();
        m_Environment["QOR_TRACE"] = "none";
        m_Environment["PATH"] = "/usr/bin:/bin";
        m_Environment["QOR_PLUGIN"] = REAL_PLUGIN;
    }
};

TEST_F(VersionCommandTest, EachPartIsShownWithItsVersion) {
    qortest::CStandInTool tool;
    tool.Play("-v", {.out = "RAID tool\nProduct Version : 7.0\r\n"});
    const CEnd outcome = Run({"version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_THAT(outcome.out, StartsWith("qorctl         : " QORCTL_VERSION "  " QORCTL_PROGRAM));
    EXPECT_THAT(outcome.out, HasSubstr("\nplug-in        : " QORCTL_VERSION "  " REAL_PLUGIN));
    EXPECT_THAT(outcome.out, ContainsRegex("\ncommon library : " QORCTL_VERSION
                                           "  [^ ]*/libqor_ComLib.so  build [0-9a-f]{40}\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\nRAID tool      : 7.0\n"));
}

TEST_F(VersionCommandTest, JsonHoldsTheSame) {
    qortest::CStandInTool tool;
    tool.Play("-v", {.out = "Product Version : 4.5\n"});
    const json versions = json::parse(Run({"version", "--format", "json"}).out);
    EXPECT_EQ(versions["qorctl"]["version"], QORCTL_VERSION);
    EXPECT_EQ(versions["plugin"]["path"], REAL_PLUGIN);
    EXPECT_EQ(versions["plugin"]["version"], QORCTL_VERSION);
    EXPECT_THAT(versions["plugin"]["build_id"].get<std::string>(), MatchesRegex("[0-9a-f]{40}"));
    EXPECT_EQ(versions["common_library"]["version"], QORCTL_VERSION);
    EXPECT_NE(versions["common_library"]["build_id"], versions["plugin"]["build_id"]);
    EXPECT_EQ(versions["tool"]["version"], "4.5");
    EXPECT_EQ(versions["tool"]["problem"], nullptr);
}

TEST_F(VersionCommandTest, MissingToolIsStated) {
    const CEnd outcome = Run({"version"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.out,
                HasSubstr("\nRAID tool      : unknown (the RAID tool is not installed "));
}

TEST_F(VersionCommandTest, ForeignPluginIsOfUnknownVersion) {
    m_Environment["QOR_PLUGIN"] = STAND_IN_PLUGIN;
    const json versions = json::parse(Run({"version", "--format", "json"}).out);
    EXPECT_EQ(versions["plugin"]["version"], nullptr);
    EXPECT_EQ(versions["common_library"], nullptr);
}

TEST_F(VersionCommandTest, WithoutAPluginTheProgramsVersionIsShown) {
    m_Environment["QOR_PLUGIN"] = "/opt/tarmica/nothing.so";
    const CEnd outcome = Run({"version"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.err, HasSubstr("the plug-in could not be loaded"));
    EXPECT_THAT(outcome.out, StartsWith("qorctl         : " QORCTL_VERSION));
    EXPECT_THAT(outcome.out, HasSubstr("\nplug-in        : not loaded\n"));
}

}  // namespace
