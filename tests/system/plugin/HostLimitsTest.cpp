// A host may have closed its standard descriptors, speak another language, have loaded another
// version of the plug-in, or be short of descriptors.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <clocale>
#include <filesystem>
#include <locale>
#include <string>

#include "ItemText.h"
#include "LoadedPluginTest.h"
#include "RepeatingTool.h"

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

class CForeignLocale {
public:
    CForeignLocale()
        : m_Before(std::locale::global(std::locale(
              std::locale(std::locale::classic(), new CForeignPunct), new CForeignCtype))) {
        // Where the machine has one, the C library's locale is another too.
        for (const char* name : {"de_DE.UTF-8", "tr_TR.UTF-8", "fa_IR.UTF-8", "C.UTF-8"}) {
            if (setlocale(LC_ALL, name) != nullptr) {
                break;
            }
        }
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

class HostLimits : public qortest::LoadedPluginTest {
protected:
    void SetUp() override {
        LoadedPluginTest::SetUp();
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

    static std::string AskForForm(const CLoadedPlugin& plugin) {
        std::string digits;
        std::string errorCode;
        std::string noticeCode;
        EXPECT_EQ(plugin->GetCtrlPDInfoBinaryString(&digits, &errorCode, &noticeCode), 1);
        return digits;
    }
};

TEST_F(HostLimits, ClosedStandardDescriptorsStayClosed) {
    const CLoadedPlugin plugin;
    const std::string expected = Ask(plugin);
    EXPECT_NE(expected, "");
    std::array<int, 3> saved = {};
    for (int fd = 0; fd < 3; ++fd) {
        saved[static_cast<size_t>(fd)] = fcntl(fd, F_DUPFD_CLOEXEC, 100);
        close(fd);
    }
    const std::string answer = Ask(plugin);
    const bool stayClosed =
        fcntl(0, F_GETFD) == -1 && fcntl(1, F_GETFD) == -1 && fcntl(2, F_GETFD) == -1;
    for (int fd = 0; fd < 3; ++fd) {
        if (saved[static_cast<size_t>(fd)] >= 0) {
            dup2(saved[static_cast<size_t>(fd)], fd);
            close(saved[static_cast<size_t>(fd)]);
        }
    }
    EXPECT_EQ(answer, expected);
    EXPECT_TRUE(stayClosed);
}

TEST_F(HostLimits, ForeignLocaleChangesNoAnswer) {
    const CLoadedPlugin plugin;
    const std::string items = Ask(plugin);
    const std::string form = AskForForm(plugin);
    std::string foreignItems;
    std::string foreignForm;
    {
        const CForeignLocale locale;
        foreignItems = Ask(plugin);
        foreignForm = AskForForm(plugin);
    }
    EXPECT_EQ(foreignItems, items);
    EXPECT_EQ(foreignForm, form);
}

// The two share libqor_ComLib, which the loader knows by its name. A separate name space
// (dlmopen) is no choice for a host: it would bring a second C library, and memory that one
// allocates cannot be freed by the other.
TEST_F(HostLimits, TwoVersionsSideBySideAnswerAlike) {
    const fs::path folder = "/opt/tarmica/other";
    fs::create_directories(folder);
    fs::copy(fs::path(QOR_PLUGIN_PATH).parent_path() / "libqor_ComLib.so", folder);
    const fs::path other = folder / "libqor_MngSrv_QorLib.so";
    fs::copy(QOR_PLUGIN_PATH, other);
    const CLoadedPlugin second;
    std::string expected;
    {
        const CLoadedPlugin first(other.c_str());
        EXPECT_NE(qortest::ReadFile("/proc/self/maps").find(other), std::string::npos);
        expected = Ask(first);
        EXPECT_NE(expected, "");
        EXPECT_EQ(Ask(second), expected);
        EXPECT_EQ(Ask(first), expected);
    }
    EXPECT_EQ(qortest::ReadFile("/proc/self/maps").find(other), std::string::npos);
    EXPECT_EQ(Ask(second), expected);
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
    for (int i = 0; i < 20; ++i) {
        const CLoadedPlugin plugin;
        EXPECT_NE(Ask(plugin), "");
    }
    const std::string maps = qortest::ReadFile("/proc/self/maps");
    EXPECT_EQ(maps.find("libqor_"), std::string::npos);
}

}  // namespace
