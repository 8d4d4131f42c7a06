// A host may have closed its standard descriptors, speak another language, have loaded another
// version of the plug-in, or be short of descriptors.
#include <dlfcn.h>
#include <fcntl.h>
#include <langinfo.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <locale>
#include <string>
#include <utility>
#include <vector>

#include "Footprint.h"
#include "ItemText.h"
#include "LoadedPluginFixture.h"
#include "Process.h"
#include "RepeatingTool.h"
#include "ServerWithoutTool.h"

namespace {

namespace fs = std::filesystem;
using qortest::CAnswer;
using qortest::CLoadedPlugin;

// Marks every digit's place, and takes "0" and "e" for white space: a text or number that was read
// or written through the locale would show it.
class CForeignPunct : public std::numpunct<char> {
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};

class CForeignCtype : public std::ctype<char> {
public:
    CForeignCtype() : std::ctype<char>(Table().data()) {}

private:
    static const std::array<mask, table_size>& Table() {
        static const std::array<mask, table_size> table = [] {
            std::array<mask, table_size> changed{};
            std::copy_n(classic_table(), table_size, changed.begin());
            changed['e'] |= space;
            changed['0'] |= space;
            return changed;
        }();
        return table;
    }
};

struct CLanguage {
    const char* name;
    const char* territory;
    const char* onePointFive;  // as printf writes it
    const char* digitOne;      // where the language's own digits are asked for
};
constexpr const char* LOCALE_DIR = "/opt/tarmica/locales";
constexpr std::array<CLanguage, 2> LANGUAGES = {
    {{"de_DE.UTF-8", "de_DE", "1,5", "1"}, {"fa_IR.UTF-8", "fa_IR", "1.5", "\u06f1"}}};

// The C library's locales are made for the test: a machine need not have them.
void MakeLocales() {
    fs::create_directories(LOCALE_DIR);
    for (const CLanguage& language : LANGUAGES) {
        const qortest::CEnd end = qortest::RunProgram(
            {"localedef", "--no-archive", "-f", "UTF-8", "-i", language.territory,
             LOCALE_DIR + std::string("/") + language.name});
        ASSERT_EQ(end.status, 0) << end.err;
    }
}

class CForeignLocale {
public:
    explicit CForeignLocale(const CLanguage& language)
        : m_Before(std::locale::global(std::locale(
              std::locale(std::locale::classic(), new CForeignPunct), new CForeignCtype))) {
        setenv("LOCPATH", LOCALE_DIR, 1);
        EXPECT_STREQ(setlocale(LC_ALL, language.name), language.name);
        unsetenv("LOCPATH");
        std::array<char, 16> text = {};
        std::snprintf(text.data(), text.size(), "%.1f", 1.5);
        EXPECT_STREQ(text.data(), language.onePointFive);
        EXPECT_STREQ(nl_langinfo(_NL_CTYPE_OUTDIGIT1_MB), language.digitOne);
    }
    ~CForeignLocale() {
        std::locale::global(m_Before);
        setlocale(LC_ALL, "C");
    }
    CForeignLocale(const CForeignLocale&) = delete;  // stands for the process's state
    CForeignLocale& operator=(const CForeignLocale&) = delete;

private:
    std::locale m_Before;
};

// Closes some of the descriptors 0, 1 and 2; opens them again on the way out.
class CClosedDescriptors {
public:
    explicit CClosedDescriptors(const std::vector<int>& descriptors) {
        for (const int fd : descriptors) {
            m_Saved.emplace_back(fd, fcntl(fd, F_DUPFD_CLOEXEC, 100));
            close(fd);
        }
    }
    ~CClosedDescriptors() {
        for (const auto& [fd, copy] : m_Saved) {
            if (copy >= 0) {
                dup2(copy, fd);
                close(copy);
            }
        }
    }
    CClosedDescriptors(const CClosedDescriptors&) = delete;  // stands for the process's state
    CClosedDescriptors& operator=(const CClosedDescriptors&) = delete;

    bool AreClosed() const {
        return std::all_of(m_Saved.begin(), m_Saved.end(),
                           [](const auto& saved) { return fcntl(saved.first, F_GETFD) == -1; });
    }

private:
    std::vector<std::pair<int, int>> m_Saved;
};

// A host that has its trace on standard error.
class CTraceOnStandardError {
public:
    CTraceOnStandardError() { setenv("QOR_TRACE", "stderr:31", 1); }
    ~CTraceOnStandardError() { unsetenv("QOR_TRACE"); }
    CTraceOnStandardError(const CTraceOnStandardError&) = delete;  // stands for the environment
    CTraceOnStandardError& operator=(const CTraceOnStandardError&) = delete;
};

// Every line of trace names the plug-in or libqor_ComLib.
bool IsTraceIn(const fs::path& file) {
    const std::string text = qortest::ReadFile(file);
    return text.find(" Lib_MngSrv ") != std::string::npos ||
           text.find(" ComLib ") != std::string::npos;
}

void ExpectNoTraceInAnyFile() {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator("/opt/tarmica")) {
        EXPECT_FALSE(entry.is_regular_file() && IsTraceIn(entry.path())) << entry.path();
    }
}

class HostLimits : public qortest::CLoadedPluginFixture {
protected:
    void SetUp() override {
        CLoadedPluginFixture::SetUp();
        qortest::WriteRepeatingTool();
    }

    // The items of GetRAIDInfo, or the error code.
    static std::string Ask(const CLoadedPlugin& plugin) {
        CAnswer answer = GetRAIDInfo(plugin);
        std::string text = qortest::ItemText(answer.items);
        EXPECT_TRUE(answer.result == 1 || text.empty());
        plugin->FreeItemList(&answer.items);
        return answer.result == 1 ? text : answer.errorCode;
    }

    static std::string NoticeCode(const CLoadedPlugin& plugin) {
        CAnswer answer = GetRAIDInfo(plugin);
        plugin->FreeItemList(&answer.items);
        return answer.noticeCode;
    }

    static std::string AskForDrive(const CLoadedPlugin& plugin) {
        CAnswer answer = GetPDInfo(plugin);
        EXPECT_EQ(answer.result, 1);
        std::string text = qortest::ItemText(answer.items);
        plugin->FreeItemList(&answer.items);
        return text;
    }

    static std::string AskForForm(const CLoadedPlugin& plugin) {
        std::string digits;
        std::string errorCode;
        std::string noticeCode;
        EXPECT_EQ(plugin->GetCtrlPDInfoBinaryString(&digits, &errorCode, &noticeCode), 1);
        return digits;
    }

    static std::string AskForAll(const CLoadedPlugin& plugin) {
        return Ask(plugin) + NoticeCode(plugin) + AskForDrive(plugin) + AskForForm(plugin);
    }
};

// What is opened meanwhile gets the closed descriptors' numbers.
const std::vector<std::vector<int>> CLOSED = {{0, 1, 2}, {2}, {0, 2}};

TEST_F(HostLimits, ClosedStandardDescriptorsStayClosed) {
    const CLoadedPlugin plugin;
    const std::string expected = Ask(plugin);
    EXPECT_NE(expected, "");
    for (const std::vector<int>& descriptors : CLOSED) {
        std::string answer;
        bool stayClosed = false;
        {
            const CClosedDescriptors closed(descriptors);
            answer = Ask(plugin);
            stayClosed = closed.AreClosed();
        }
        EXPECT_EQ(answer, expected);
        EXPECT_TRUE(stayClosed);
    }
}

TEST_F(HostLimits, ClosedStandardDescriptorsOfAServerWithoutToolStayClosed) {
    const qortest::CServerWithoutTool server;
    const CLoadedPlugin plugin;
    for (const std::vector<int>& descriptors : CLOSED) {
        fs::remove(qortest::DEVICE_LIST);
        CAnswer answer;
        bool stayClosed = false;
        {
            const CClosedDescriptors closed(descriptors);
            answer = GetRAIDInfo(plugin);
            stayClosed = closed.AreClosed();
        }
        qortest::CServerWithoutTool::ExpectAnswer(answer);
        EXPECT_TRUE(stayClosed);
    }
}

// A file that was opened meanwhile and got descriptor 2 is not standard error.
TEST_F(HostLimits, TraceForAClosedStandardErrorGetsIntoNoFile) {
    const CTraceOnStandardError trace;
    for (const std::vector<int>& descriptors : CLOSED) {
        CLoadedPluginFixture::SetUp();
        qortest::WriteRepeatingTool();
        const CLoadedPlugin plugin;
        std::string items;
        CAnswer withoutTool;
        {
            const CClosedDescriptors closed(descriptors);
            items = Ask(plugin);
        }
        EXPECT_NE(items, "");
        const qortest::CServerWithoutTool server;
        {
            const CClosedDescriptors closed(descriptors);
            withoutTool = GetRAIDInfo(plugin);
        }
        qortest::CServerWithoutTool::ExpectAnswer(withoutTool);
        ExpectNoTraceInAnyFile();
    }
}

TEST_F(HostLimits, TraceGoesToAnOpenStandardError) {
    const CTraceOnStandardError trace;
    const CLoadedPlugin plugin;
    const std::string log = "/opt/tarmica/stderr.log";
    const int saved = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 100);
    const int file = open(log.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    dup2(file, STDERR_FILENO);
    close(file);
    Ask(plugin);
    dup2(saved, STDERR_FILENO);
    close(saved);
    EXPECT_TRUE(IsTraceIn(log));
}

TEST_F(HostLimits, ForeignLocaleChangesNoAnswer) {
    MakeLocales();
    const CLoadedPlugin plugin;
    const std::string items = AskForAll(plugin);
    for (const CLanguage& language : LANGUAGES) {
        std::string foreignItems;
        {
            const CForeignLocale locale(language);
            foreignItems = AskForAll(plugin);
        }
        EXPECT_EQ(foreignItems, items) << language.name;
    }
}

// Both stay what they are: the other one takes every RAID tool for an old one, says so in the
// notice code, and asks it for drives in the old way.
//
// The two share libqor_ComLib, which the loader knows by its name. A separate name space
// (dlmopen) is no choice for a host: it would bring a second C library, and memory that one
// allocates cannot be freed by the other.
TEST_F(HostLimits, TwoVersionsSideBySideAnswerEachForItself) {
    const fs::path folder = "/opt/tarmica/other";
    fs::create_directories(folder);
    fs::copy(fs::path(QOR_PLUGIN_PATH).parent_path() / "libqor_ComLib.so", folder);
    const fs::path otherPath = folder / "libqor_MngSrv_QorLib.so";
    fs::copy(QOR_OTHER_PLUGIN_PATH, otherPath);
    qortest::WriteFile("/opt/tarmica/reports/-pdinfo -a0",
                       "PD7(LD0)\n### General Information ###\nPD Status : OLD WAY\n");
    for (const int visibility : {RTLD_LOCAL, RTLD_GLOBAL}) {
        const CLoadedPlugin ours(QOR_PLUGIN_PATH, visibility);
        const std::string expected = Ask(ours);
        {
            const CLoadedPlugin other(otherPath.c_str(), visibility);
            const std::string answerOfOther = Ask(other);
            EXPECT_NE(answerOfOther.find("OLD WAY"), std::string::npos);
            EXPECT_EQ(NoticeCode(other), "01");
            EXPECT_EQ(Ask(ours), expected);
            EXPECT_EQ(NoticeCode(ours), "");
            EXPECT_EQ(Ask(other), answerOfOther);
            const std::string maps = qortest::ReadFile("/proc/self/maps");
            EXPECT_NE(maps.find(otherPath), std::string::npos);
            EXPECT_EQ(maps.find(folder / "libqor_ComLib.so"), std::string::npos);
        }
        EXPECT_EQ(qortest::ReadFile("/proc/self/maps").find(folder), std::string::npos);
        EXPECT_EQ(Ask(ours), expected);
        EXPECT_EQ(expected.find("OLD WAY"), std::string::npos);
    }
}

// From no descriptor that is left to enough for the tool's own shell.
TEST_F(HostLimits, LackOfDescriptorsIsToldAndPasses) {
    const CLoadedPlugin plugin;
    const std::string expected = Ask(plugin);
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &before), 0);
    std::string answer;
    for (const rlim_t limit : {3U, 6U, 9U, 24U}) {
        const rlimit low = {limit, before.rlim_max};
        setrlimit(RLIMIT_NOFILE, &low);
        answer = Ask(plugin);
        setrlimit(RLIMIT_NOFILE, &before);
        EXPECT_TRUE(answer == "" || answer == "01" || answer == "03" || answer == expected)
            << limit << ": " << answer;
    }
    EXPECT_EQ(answer, expected);
    EXPECT_EQ(Ask(plugin), expected);
}

TEST_F(HostLimits, AskedBetweenLoadAndUnloadAgainAndAgainLeavesNothing) {
    const std::string expected = Ask(CLoadedPlugin());
    EXPECT_NE(expected, "");
    qortest::ExpectVisitsLeaveNothing([&] { EXPECT_EQ(Ask(CLoadedPlugin()), expected); }, 20);
}

}  // namespace
