#include <gtest/gtest.h>

#include <ostream>

#include "comlib/CTraceSettings.h"

namespace comlib {

void PrintTo(const CTraceSettings& settings, std::ostream* out) {
    *out << static_cast<int>(settings.m_Sink) << ':' << settings.m_File << ':' << settings.m_Levels;
}

}  // namespace comlib

namespace {

using comlib::CTraceSettings;
using comlib::ETraceSink;
using Text = std::optional<std::string>;

constexpr const char* DEFAULT_FILE = "/var/opt/tarmica/qor/log/trace.log";

CTraceSettings FromIni(const Text& sink, const Text& levels, const Text& file) {
    CTraceSettings settings;
    settings.ApplyIni(sink, levels, file);
    return settings;
}

TEST(CTraceSettings, DefaultIsSyslogWithResultsAndFailures) {
    EXPECT_EQ(FromIni({}, {}, {}), (CTraceSettings{ETraceSink::SYSLOG, 3, DEFAULT_FILE}));
}

TEST(CTraceSettings, SinkIsReadFromTheIniFile) {
    EXPECT_EQ(FromIni("syslog", {}, {}).m_Sink, ETraceSink::SYSLOG);
    EXPECT_EQ(FromIni("file", {}, {}).m_Sink, ETraceSink::FILE);
    EXPECT_EQ(FromIni("stderr", {}, {}).m_Sink, ETraceSink::STDERR);
    EXPECT_EQ(FromIni("none", {}, {}).m_Sink, ETraceSink::NONE);
    EXPECT_EQ(FromIni("File", {}, {}).m_Sink, ETraceSink::FILE);
}

TEST(CTraceSettings, UnknownSinkIsSyslog) {
    for (const char* sink : {"", "files", "fil", "stdout", "none "}) {
        EXPECT_EQ(FromIni(sink, {}, {}).m_Sink, ETraceSink::SYSLOG) << sink;
    }
}

TEST(CTraceSettings, LevelsAreReadFromTheIniFile) {
    EXPECT_EQ(FromIni({}, "0", {}).m_Levels, 0U);
    EXPECT_EQ(FromIni({}, "31", {}).m_Levels, 31U);
    EXPECT_EQ(FromIni({}, "2147483647", {}).m_Levels, 2147483647U);
}

TEST(CTraceSettings, LevelsThatAreNoMaskAreTheDefault) {
    for (const char* levels : {"", "all", "-1", "+7", "7 ", "0x1f", "2147483648", "99999999999"}) {
        EXPECT_EQ(FromIni({}, levels, {}).m_Levels, 3U) << levels;
    }
}

TEST(CTraceSettings, FileIsReadFromTheIniFile) {
    EXPECT_EQ(FromIni({}, {}, "/tmp/t.log").m_File, "/tmp/t.log");
}

TEST(CTraceSettings, FileThatIsNoAbsolutePathIsTheDefault) {
    EXPECT_EQ(FromIni({}, {}, "").m_File, DEFAULT_FILE);
    EXPECT_EQ(FromIni({}, {}, "t.log").m_File, DEFAULT_FILE);
    EXPECT_EQ(FromIni({}, {}, "/" + std::string(4095, 'x')).m_File, DEFAULT_FILE) << "too long";
}

const CTraceSettings FROM_INI = {ETraceSink::STDERR, 5, "/tmp/ini.log"};

TEST(CTraceSettings, EnvironmentOverridesTheIniFile) {
    struct CCase {
        const char* text;
        CTraceSettings settings;
    };
    const CCase CASES[] = {
        {"stderr:31", {ETraceSink::STDERR, 31, "/tmp/ini.log"}},
        {"stderr", {ETraceSink::STDERR, 5, "/tmp/ini.log"}},
        {"file:/tmp/t.log:7", {ETraceSink::FILE, 7, "/tmp/t.log"}},
        {"file:/tmp/t.log", {ETraceSink::FILE, 5, "/tmp/t.log"}},
        {"file:/tmp/a:b:7", {ETraceSink::FILE, 7, "/tmp/a:b"}},
        {"file:/tmp/a:b", {ETraceSink::FILE, 5, "/tmp/a:b"}},
        {"file:/tmp/12:30:7", {ETraceSink::FILE, 7, "/tmp/12:30"}},
        {"file", {ETraceSink::FILE, 5, "/tmp/ini.log"}},
        {"file:31", {ETraceSink::FILE, 31, "/tmp/ini.log"}},
        {"none", {ETraceSink::NONE, 5, "/tmp/ini.log"}},
        {"none:31", {ETraceSink::NONE, 31, "/tmp/ini.log"}},
        {"syslog:7", {ETraceSink::SYSLOG, 7, "/tmp/ini.log"}},
        {"Syslog:0", {ETraceSink::SYSLOG, 0, "/tmp/ini.log"}},
    };
    for (const CCase& row : CASES) {
        CTraceSettings settings = FROM_INI;
        settings.ApplyEnvironment(row.text);
        EXPECT_EQ(settings, row.settings) << row.text;
    }
}

TEST(CTraceSettings, MalformedEnvironmentIsIgnoredAsAWhole) {
    for (const char* text :
         {"", ":", ":7", "7", "stdout:7", "syslog:", "syslog:all", "syslog:-1", "stderr:2147483648",
          "stderr:7:7", "stderr:/tmp/t.log:7", "file:", "file::7", "file:t.log:7", "none:x"}) {
        CTraceSettings settings = FROM_INI;
        settings.ApplyEnvironment(text);
        EXPECT_EQ(settings, FROM_INI) << text;
    }
}

}  // namespace
