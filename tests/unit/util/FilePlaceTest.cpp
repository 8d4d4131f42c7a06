#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

#include "PrivateServerFixture.h"
#include "util/FilePlace.h"

namespace fs = std::filesystem;

namespace {

using util::CFilePlace;
using util::ELastLink;

class FilePlaceTest : public qortest::CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        fs::create_directories(m_Folder / "a/b");
    }

    // The file's path by the place that was found; the problem when there is none.
    static std::string Found(const fs::path& path, ELastLink lastLink = ELastLink::FOLLOWED) {
        std::string problem;
        const auto place = CFilePlace::Find(path, lastLink, problem);
        return place ? (fs::read_symlink("/proc/self/fd/" + std::to_string(place->Directory())) /
                        place->Name())
                           .string()
                     : problem;
    }

    std::string Danger() const {
        std::string problem;
        return CFilePlace::Find(m_Folder / "file", ELastLink::FOLLOWED, problem)->Danger();
    }

    // Whether `isTrue` says so to an ordinary user in a namespace of its own, as that of a
    // simulated server, in which all others look like one.
    static bool IsTrueAmongStrangers(const std::function<bool()>& isTrue) {
        const pid_t child = fork();
        if (child == 0) {
            const std::string map =
                std::to_string(ORDINARY_USER) + " " + std::to_string(ORDINARY_USER) + " 1";
            const bool entered = setresuid(ORDINARY_USER, ORDINARY_USER, ORDINARY_USER) == 0 &&
                                 unshare(CLONE_NEWUSER) == 0 &&
                                 prctl(PR_SET_DUMPABLE, 1) == 0;  // who may write the map
            qortest::WriteFile("/proc/self/uid_map", map);
            _exit(!entered || geteuid() != ORDINARY_USER ? NOT_ENTERED : isTrue() ? 0 : 1);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != NOT_ENTERED);
        return status == 0;
    }

    static constexpr uid_t ORDINARY_USER = 12346;
    static constexpr int NOT_ENTERED = 2;
    const fs::path m_Folder = "/opt/tarmica/place";
};

TEST_F(FilePlaceTest, PathEndsInADirectoryAndAName) {
    qortest::WriteFile(m_Folder / "file", "");
    const struct {
        const char* path;
        const char* found;
    } rows[] = {
        {"file", "/opt/tarmica/place/file"},
        {"missing", "/opt/tarmica/place/missing"},
        {"a/b/missing", "/opt/tarmica/place/a/b/missing"},
        {"a//b/../.././file", "/opt/tarmica/place/file"},
        {"a", "/opt/tarmica/place/a"},
        {"a/", "Is a directory"},
        {"a/..", "Is a directory"},
        {"a/.", "Is a directory"},
        {"none/missing", "No such file or directory"},
        {"file/missing", "Not a directory"},
        {"missing/", "No such file or directory"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(Found(m_Folder.string() + "/" + row.path), row.found) << row.path;
    }
    EXPECT_EQ(Found(""), "No such file or directory");
    EXPECT_EQ(Found("/"), "Is a directory");
}

TEST_F(FilePlaceTest, RelativePathBeginsInTheWorkingDirectory) {
    const fs::path before = fs::current_path();
    fs::current_path(m_Folder);
    EXPECT_EQ(Found("file"), "/opt/tarmica/place/file");
    EXPECT_EQ(Found("a/file"), "/opt/tarmica/place/a/file");
    fs::current_path(before);
}

TEST_F(FilePlaceTest, LinksOfTheCallerAreFollowed) {
    fs::create_symlink("a", m_Folder / "relative");
    fs::create_symlink(m_Folder / "a/b", m_Folder / "absolute");
    fs::create_symlink("../absolute/file", m_Folder / "a/file");
    EXPECT_EQ(Found(m_Folder / "relative/x"), "/opt/tarmica/place/a/x");
    EXPECT_EQ(Found(m_Folder / "absolute/x"), "/opt/tarmica/place/a/b/x");
    EXPECT_EQ(Found(m_Folder / "relative/file"), "/opt/tarmica/place/a/b/file");
    EXPECT_EQ(Found(m_Folder / "relative/file", ELastLink::KEPT), "/opt/tarmica/place/a/file");
    fs::create_symlink("circle", m_Folder / "circle");
    EXPECT_EQ(Found(m_Folder / "circle"), "Too many levels of symbolic links");
}

// An ordinary user cannot make a link another's.
TEST_F(FilePlaceTest, LinkOfAnotherUserIsNotFollowedAnywhereInThePath) {
    fs::create_symlink("a", m_Folder / "link");
    const bool given = geteuid() == 0;
    ASSERT_TRUE(!given || lchown((m_Folder / "link").c_str(), 12345, 12345) == 0);
    const std::string refused = "link is a symbolic link of another user";
    EXPECT_EQ(Found(m_Folder / "link/file"), given ? refused : "/opt/tarmica/place/a/file");
    EXPECT_EQ(Found(m_Folder / "link"), given ? refused : "/opt/tarmica/place/a");
    EXPECT_EQ(Found(m_Folder / "link", ELastLink::KEPT), "/opt/tarmica/place/link");
}

// Only root can make a link another's and be an ordinary user.
TEST_F(FilePlaceTest, LinkOfAnotherUserIsNotTakenForRootsWhereTheyLookAlike) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can make links of several users";
    }
    fs::create_symlink("a", m_Folder / "link");
    const auto isFollowed = [this] { return Found(m_Folder / "link/x") == m_Folder / "a/x"; };
    EXPECT_TRUE(IsTrueAmongStrangers(isFollowed));  // root's, in root's directory
    ASSERT_EQ(lchown((m_Folder / "link").c_str(), 12345, 12345), 0);
    for (const auto mode : {01777, 0777, 0775}) {
        fs::permissions(m_Folder, fs::perms(mode));
        EXPECT_FALSE(IsTrueAmongStrangers(isFollowed)) << mode;
    }
}

TEST_F(FilePlaceTest, OwnerThatMayBeAnybodyIsNotTrusted) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can become an ordinary user";
    }
    const auto isTrusted = [](const char* path) {
        struct stat status = {};
        return stat(path, &status) == 0 && util::IsTrustedOwner(status.st_uid);
    };
    EXPECT_FALSE(IsTrueAmongStrangers([&] { return isTrusted("/"); }));
    EXPECT_TRUE(isTrusted("/"));
}

TEST_F(FilePlaceTest, LinksOfTheSystemAreFollowedByEverybody) {
    EXPECT_EQ(Found("/proc/self/file"), "/proc/" + std::to_string(getpid()) + "/file");
}

TEST_F(FilePlaceTest, DirectoryThatOthersMayWriteIntoIsADanger) {
    EXPECT_EQ(Danger(), "");
    for (const int mode : {01777, 0775, 0702}) {
        fs::permissions(m_Folder, fs::perms(mode));
        EXPECT_EQ(Danger(), "its directory is not safe: other users may write in it");
    }
}

}  // namespace
