// The installed pages: a reader gets wherever they point.
#include <gmock/gmock.h>

#include <cctype>
#include <regex>
#include <set>

#include "InstallFixture.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class PagesTest : public qortest::CInstallFixture {
protected:
    fs::path Top() const { return Share() / "doc/qor"; }

    std::vector<fs::path> Pages() const {
        std::vector<fs::path> pages;
        for (const fs::directory_entry& entry : fs::recursive_directory_iterator(Top())) {
            if (entry.path().extension() == ".md") {
                pages.push_back(entry.path());
            }
        }
        return pages;
    }
};

// The text without blocks and pieces of code, where brackets are no links.
std::string WithoutCode(const std::string& page) {
    std::string text;
    bool fenced = false;
    for (const std::string& line : qortest::Lines(page)) {
        if (line.starts_with("```")) {
            fenced = !fenced;
        } else if (!fenced && !line.starts_with("    ")) {
            text += line + "\n";
        }
    }
    return std::regex_replace(text, std::regex("`[^`]*`"), "CODE");
}

std::vector<std::string> Links(const std::string& page) {
    static const std::regex LINK(R"(\]\(([^()\s]+)\))");
    const std::string text = WithoutCode(page);
    std::vector<std::string> links;
    for (std::sregex_iterator at(text.begin(), text.end(), LINK), end; at != end; ++at) {
        links.push_back((*at)[1]);
    }
    return links;
}

// What a title is called in a link to it: its words in small letters, joined by hyphens.
std::string Anchor(const std::string& title) {
    std::string anchor;
    for (const char character : title) {
        if (character == ' ') {
            anchor += '-';
        } else if (character == '-' || character == '_' ||
                   std::isalnum(static_cast<unsigned char>(character)) != 0) {
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
        }
    }
    return anchor;
}

std::set<std::string> Anchors(const fs::path& page) {
    static const std::regex TITLE("#+ +(.*)");
    std::set<std::string> anchors;
    for (const std::string& line : qortest::Lines(qortest::ReadFile(page))) {
        std::smatch match;
        if (std::regex_match(line, match, TITLE)) {
            anchors.insert(Anchor(match[1]));
        }
    }
    return anchors;
}

TEST_F(PagesTest, EveryLinkLeadsSomewhere) {
    size_t followed = 0;
    for (const fs::path& page : Pages()) {
        for (const std::string& link : Links(qortest::ReadFile(page))) {
            if (link.starts_with("https://")) {
                continue;
            }
            const size_t hash = link.find('#');
            const std::string file = link.substr(0, hash);
            const fs::path target = file.empty() ? page : page.parent_path() / file;
            EXPECT_TRUE(fs::exists(target)) << page << ": " << link;
            if (hash != std::string::npos && fs::exists(target)) {
                EXPECT_TRUE(Anchors(target).contains(link.substr(hash + 1)))
                    << page << ": " << link;
            }
            ++followed;
        }
    }
    EXPECT_GT(followed, 100U);
}

// What links to sources becomes is words.
TEST_F(PagesTest, LinksToSourcesAreWords) {
    const std::string readme = qortest::ReadFile(Top() / "README.md");
    EXPECT_THAT(readme, HasSubstr("- CONTRIBUTING.md: building"));
    EXPECT_THAT(readme, HasSubstr("](docs/health.md)"));
    EXPECT_THAT(readme, Not(HasSubstr("](CONTRIBUTING.md)")));
}

// Apart from the links, a page is what it is in the tree, to the byte.
TEST_F(PagesTest, PagesAreThoseOfTheTree) {
    for (const fs::path& page : Pages()) {
        const fs::path source = fs::path(INSTALL_SOURCE_DIR) / fs::relative(page, Top());
        const auto bare = [](const std::string& text) {
            return std::regex_replace(text, std::regex(R"(\[([^\]]*)\]\([^()\s]*\))"), "$1");
        };
        EXPECT_EQ(bare(qortest::ReadFile(page)), bare(qortest::ReadFile(source))) << page;
    }
}

}  // namespace
