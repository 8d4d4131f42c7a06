#include <sys/fsuid.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "ComLibFixture.h"
#include "plugin/ComLib.h"

namespace {

namespace fs = std::filesystem;
using qortest::WriteFile;
using Traces = std::vector<std::string>;

class CFileUtilityTest : public qortest::CComLibFixture {
protected:
    static std::string InstallPathFor(const std::string& value) {
        WriteFile(qortest::CONFIGURATION_FILE, "[Install]\nINSTALLPATH_CIM=" + value + "\n");
        return CFileUtility::GetInstallPath(0);
    }
};

TEST_F(CFileUtilityTest, InstallPathHasADefault) {
    EXPECT_EQ(CFileUtility::GetInstallPath(0), "/opt/tarmica/qor/provider");
    WriteFile(qortest::CONFIGURATION_FILE, "[Trace]\nSink=none\n");
    EXPECT_EQ(CFileUtility::GetInstallPath(0), "/opt/tarmica/qor/provider");
}

TEST_F(CFileUtilityTest, DefaultInstallPathHasToExistToo) {
    fs::remove_all(qortest::INSTALL_DIR);
    EXPECT_EQ(CFileUtility::GetInstallPath(0), "");
}

TEST_F(CFileUtilityTest, InstallPathComesFromTheConfiguration) {
    const std::string path = Scratch();
    EXPECT_EQ(InstallPathFor(path), path);
    EXPECT_EQ(InstallPathFor("\"" + path + "\""), path);
    EXPECT_EQ(InstallPathFor(path + "/"), path);
    EXPECT_EQ(InstallPathFor(path + "///"), path);
    fs::create_directory_symlink(path, Scratch() / "link");
    EXPECT_EQ(InstallPathFor(path + "/link"), path + "/link");
}

TEST_F(CFileUtilityTest, InstallPathOf300BytesIsNotCut) {
    const fs::path path = Scratch() / std::string(150, 'a') / std::string(150, 'b');
    fs::create_directories(path);
    EXPECT_EQ(InstallPathFor(path), path);
}

TEST_F(CFileUtilityTest, UnusableInstallPathIsEmpty) {
    WriteFile(Scratch() / "file", "");
    fs::current_path(Scratch().parent_path());
    EXPECT_EQ(InstallPathFor(""), "");
    EXPECT_EQ(InstallPathFor("/"), "");
    EXPECT_EQ(InstallPathFor(Scratch() / "missing"), "");
    EXPECT_EQ(InstallPathFor(Scratch() / "file"), "");
    EXPECT_EQ(InstallPathFor(Scratch().filename()), "");  // exists, but is not absolute
    fs::current_path("/");
}

TEST_F(CFileUtilityTest, WhatExistsIsFound) {
    const fs::path file = Scratch() / "file";
    const fs::path link = Scratch() / "link";
    EXPECT_FALSE(CFileUtility::IsFileExist(file));
    EXPECT_FALSE(CFileUtility::IsFileExist(""));
    EXPECT_TRUE(CFileUtility::IsFileExist(Scratch()));
    fs::create_symlink(file, link);
    EXPECT_FALSE(CFileUtility::IsFileExist(link)) << "leads nowhere";
    WriteFile(file, "");
    EXPECT_TRUE(CFileUtility::IsFileExist(file));
    EXPECT_TRUE(CFileUtility::IsFileExist(link));
}

TEST_F(CFileUtilityTest, FileIsDeleted) {
    const fs::path file = Scratch() / "file";
    WriteFile(file, "");
    EXPECT_NE(DeleteFileA(file.c_str()), 0);
    EXPECT_FALSE(fs::exists(file));
    EXPECT_EQ(TakeTraces(), Traces{});
}

TEST_F(CFileUtilityTest, FailedDeletionIsTracedAndKeepsItsReason) {
    const std::string file = Scratch() / "missing";
    errno = 0;
    EXPECT_EQ(DeleteFileA(file.c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<unsigned long>(ENOENT));
    EXPECT_EQ(TakeTraces(),
              Traces{"ComLib FAILURE cannot delete \"" + file + "\": No such file or directory"});
    EXPECT_EQ(DeleteFileA(Scratch().c_str()), 0);
    EXPECT_EQ(GetLastError(), static_cast<unsigned long>(EISDIR));
    EXPECT_EQ(TakeTraces(), Traces{"ComLib FAILURE cannot delete \"" + Scratch().string() +
                                   "\": Is a directory"});
}

TEST_F(CFileUtilityTest, DirectoryIsMadeForItsOwnerOnly) {
    const std::string directory = Scratch() / "MSRAID";
    EXPECT_EQ(_mkdir(directory.c_str()), 0);
    struct stat status = {};
    ASSERT_EQ(stat(directory.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, static_cast<mode_t>(S_IFDIR | 0700));
    EXPECT_EQ(TakeTraces(), Traces{});
}

TEST_F(CFileUtilityTest, ExistingDirectoryIsAQuietFailure) {
    errno = 0;
    EXPECT_EQ(_mkdir(Scratch().c_str()), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(TakeTraces(), Traces{});
}

TEST_F(CFileUtilityTest, ExistingPathThatAnotherUserCouldFillIsTraced) {
    const std::string path = Scratch() / "MSRAID";
    const auto doubt = [&path](const std::string& reason) {
        errno = 0;
        EXPECT_EQ(_mkdir(path.c_str()), -1);
        EXPECT_EQ(errno, EEXIST);
        EXPECT_EQ(TakeTraces(),
                  Traces{"ComLib FAILURE directory \"" + path + "\" is not safe: " + reason})
            << reason;
    };
    fs::create_directory_symlink(Scratch(), path);
    doubt("it is a symbolic link");
    fs::remove(path);
    WriteFile(path, "");
    doubt("it is no directory");
    fs::remove(path);
    fs::create_directory(path);
    fs::permissions(path, fs::perms(0770));
    doubt("other users may write in it");
    fs::permissions(path, fs::perms(0702));
    doubt("other users may write in it");
}

TEST_F(CFileUtilityTest, DirectoryWhoseFilesOnlyTheirOwnersReplaceIsSafe) {
    const std::string path = Scratch() / "tmp";
    fs::create_directory(path);
    fs::permissions(path, fs::perms(01777));
    EXPECT_EQ(_mkdir(path.c_str()), -1);
    EXPECT_EQ(TakeTraces(), Traces{});
}

// Root gives one away. Nobody else can; but the tests of an ordinary user run in a user namespace
// of that user alone, where root's folders are another's.
std::string FolderOfAnotherUser(const fs::path& scratch) {
    if (geteuid() != 0) {
        return "/usr";
    }
    const std::string path = scratch / "MSRAID";
    fs::create_directory(path);
    EXPECT_EQ(chown(path.c_str(), 12345, 12345), 0);
    return path;
}

TEST_F(CFileUtilityTest, DirectoryOfAnotherUserIsTraced) {
    const std::string path = FolderOfAnotherUser(Scratch());
    EXPECT_EQ(_mkdir(path.c_str()), -1);
    EXPECT_EQ(TakeTraces(), Traces{"ComLib FAILURE directory \"" + path +
                                   "\" is not safe: it belongs to another user"});
}

// Becomes an ordinary user, who still writes the test's trace as root.
class COrdinaryUser {
public:
    COrdinaryUser() {
        constexpr uid_t NOBODY = 65534;
        const uid_t root = geteuid();
        EXPECT_TRUE(root != 0 || seteuid(NOBODY) == 0);
        setfsuid(root);
    }
    ~COrdinaryUser() { EXPECT_EQ(seteuid(getuid()), 0); }
    COrdinaryUser(const COrdinaryUser&) = delete;
    COrdinaryUser& operator=(const COrdinaryUser&) = delete;
};

TEST_F(CFileUtilityTest, DirectoryOfRootIsSafeForAnOrdinaryUser) {
    const COrdinaryUser user;
    errno = 0;
    EXPECT_EQ(_mkdir(Scratch().c_str()), -1);
    EXPECT_EQ(errno, EEXIST);
    EXPECT_EQ(TakeTraces(), Traces{});
}

TEST_F(CFileUtilityTest, FailedCreationIsTracedAndKeepsItsReason) {
    const std::string directory = Scratch() / "a" / "b";
    errno = 0;
    EXPECT_EQ(_mkdir(directory.c_str()), -1);
    EXPECT_EQ(errno, ENOENT);
    EXPECT_EQ(TakeTraces(), Traces{"ComLib FAILURE cannot create directory \"" + directory +
                                   "\": No such file or directory"});
}

}  // namespace
