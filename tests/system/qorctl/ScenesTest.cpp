// The scenes of docs/scenes.md, each on a terminal of 80 columns and 24 lines: what the page shows
// is what comes. scripts/accept renews them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "GoldenFile.h"
#include "Rights.h"
#include "TerminalFixture.h"

namespace {

using testing::Le;

struct CScene {
    const char* name;
    const char* server;   // options of the simulated server
    const char* command;  // as the page shows it
    std::string before;   // what a shell does first
};

const CScene SCENES[] = {
    {"failed-drive", "--host failed-drive", "qorctl", ""},
    {"rebuild", "--host rebuilding", "qorctl", ""},
    {"hanging-tool", "--host small --fault hang@-pdinfo", "qorctl status --timeout 2", ""},
    {"full-disk", "--host failed-drive --fault result-dir-full", "qorctl", ""},
    {"no-rights", "--host failed-drive", "qorctl",
     "chmod 0 /opt/tarmica/qor/kam/work/devices.tmp; " + qortest::WithoutRights()},
};

constexpr int COLUMNS = 80;
constexpr int ROWS = 24;

class ScenesTest : public qortest::CTerminalFixture, public testing::WithParamInterface<CScene> {
protected:
    // The command and all that the terminal shows of it.
    std::string Transcript() const {
        const CScene& scene = GetParam();
        std::string command = scene.command;
        command.replace(0, std::string("qorctl").size(), QORCTL_PROGRAM);
        StartProgram(scene.server,
                     std::string("env LC_ALL=C.UTF-8 sh -c \"") + scene.before + command + "\"",
                     COLUMNS, ROWS);
        const std::string shown = Await("status=");
        std::string text = std::string("$ ") + scene.command + "\n";
        for (std::string line : qortest::Lines(shown.substr(0, shown.find("status=")))) {
            line.erase(line.find_last_not_of(' ') + 1);
            text += line + '\n';
        }
        return text;
    }
};

// The block of the page that stands behind the scene's mark: where it begins and how long it is.
std::pair<size_t, size_t> BlockOf(const std::string& page, const std::string& name) {
    constexpr std::string_view FENCE = "```terminal\n";
    const size_t mark = page.find("<!-- scene " + name + " -->\n");
    const size_t begin = page.find(FENCE, mark);
    const size_t end = page.find("```\n", begin + FENCE.size());
    if (mark == std::string::npos || begin == std::string::npos || end == std::string::npos) {
        ADD_FAILURE() << SCENES_PAGE << " has no scene " << name;
        return {page.size(), 0};
    }
    return {begin + FENCE.size(), end - begin - FENCE.size()};
}

TEST_P(ScenesTest, PageShowsWhatComes) {
    std::string page = qortest::ReadFile(SCENES_PAGE);
    const auto [begin, size] = BlockOf(page, GetParam().name);
    const std::string transcript = Transcript();
    EXPECT_THAT(qortest::Lines(transcript).size(), Le(size_t{ROWS}));
    if (qortest::AcceptsGolden()) {
        qortest::WriteFile(SCENES_PAGE, page.replace(begin, size, transcript));
    } else {
        EXPECT_EQ(page.substr(begin, size), transcript);
    }
}

std::string TestName(const testing::TestParamInfo<CScene>& scene) {
    std::string name = scene.param.name;
    std::replace(name.begin(), name.end(), '-', '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Scene, ScenesTest, testing::ValuesIn(SCENES), TestName);

}  // namespace
