// "qorsim install": a simulated server on disk.
#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

class CInstallTest : public CSimFixture {
protected:
    static CEnd Install(const fs::path& directory, const std::string& host) {
        return Qorsim({"install", directory, "--host", host});
    }

    static std::string Tree(const std::string& shell) {
        return RunProgram({"sh", "-c", shell + " && find . | sort"}).out;
    }

    static void ExpectRefused(const CEnd& end, const std::string& message) {
        EXPECT_EQ(end.status, 1);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err, "qorsim: " + message + "\n");
    }
};

TEST_F(CInstallTest, TreeIsThatOfARun) {
    const fs::path root = Folder() / "root";
    const CEnd end = Install(root, "degraded");
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, "");
    const std::string listing = "find opt/tarmica etc/opt/tarmica | sort";
    EXPECT_EQ(RunProgram({"sh", "-c", "cd " + root.string() + " && " + listing}).out,
              RunShellOn("degraded", "cd / && " + listing).out);
    for (const std::string file :
         {"opt/tarmica/krz/host.json", "opt/tarmica/qor/kam/work/devices.tmp",
          "opt/tarmica/qor/provider/RaidVCFac.ini"}) {
        EXPECT_EQ(ReadFile(root / file), RunOn("degraded", {"cat", "/" + file}).out);
    }
}

// As in a container: the tree stands at the places that programs know.
TEST_F(CInstallTest, InstalledServerWorksAtItsPlace) {
    const fs::path root = Folder() / "root";
    EXPECT_EQ(Qorsim({"install", root, "--host", "lifecycle", "--start-at", "100000"}).status, 0);
    const CEnd end = RunProgram(
        {"sh", "-c",
         "cp -a " + (root / "opt/tarmica/.").string() +
             " /opt/tarmica && /opt/tarmica/krz/cli/krzcli -pdinfo -nosmart -a0 | grep -A 9 "
             "'^PD3(' | grep 'PD Status'"});
    EXPECT_EQ(end.out, "PD Status : FAILED\n") << end.err;
}

TEST_F(CInstallTest, EmptyDirectoryIsTaken) {
    fs::create_directory(Folder() / "root");
    EXPECT_EQ(Install(Folder() / "root", "small").status, 0);
    EXPECT_TRUE(fs::exists(Folder() / "root/opt/tarmica/krz/cli/krzcli"));
}

TEST_F(CInstallTest, MissingToolsAreAbsent) {
    EXPECT_EQ(Install(Folder() / "root", "no-tool-megacli").status, 0);
    EXPECT_FALSE(fs::exists(Folder() / "root/opt/tarmica/krz/cli/krzcli"));
    EXPECT_TRUE(fs::exists(Folder() / "root/opt/tarmica/qor/provider/RAID/tool/MegaCli"));
}

TEST_F(CInstallTest, TargetThatIsNotEmptyIsLeftAlone) {
    const fs::path root = Folder() / "root";
    WriteFile(root / "opt" / "mine", "text");
    ExpectRefused(Install(root, "small"), root.string() + " is not empty: name a new directory");
    EXPECT_EQ(Tree("cd " + root.string()), ".\n./opt\n./opt/mine\n");
}

TEST_F(CInstallTest, FileAsTargetIsRefused) {
    WriteFile(Folder() / "file", "");
    const CEnd end = Install(Folder() / "file", "small");
    ExpectRefused(end, "cannot open " + (Folder() / "file").string() + ": Not a directory");
}

TEST_F(CInstallTest, TargetInAMissingDirectoryIsRefused) {
    ExpectRefused(
        Install(Folder() / "none" / "root", "small"),
        "cannot create " + (Folder() / "none/root").string() + ": No such file or directory");
    EXPECT_FALSE(fs::exists(Folder() / "none"));
}

TEST_F(CInstallTest, DirectoryThatOthersMayWriteIntoIsRefused) {
    const fs::path root = Folder() / "root";
    for (const auto mode : {0777, 0775, 01777}) {
        fs::create_directory(root);
        fs::permissions(root, fs::perms(mode));
        ExpectRefused(Install(root, "small"),
                      "others may write into " + root.string() + ": name a new directory");
        EXPECT_TRUE(fs::is_empty(root));
    }
}

// Who owns it could lead what is written elsewhere.
TEST_F(CInstallTest, DirectoryOfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a folder away";
    }
    const fs::path root = Folder() / "root";
    fs::create_directory(root);
    ASSERT_EQ(chown(root.c_str(), 65534, 65534), 0);
    ExpectRefused(Install(root, "small"),
                  root.string() + " belongs to another user: name a new directory");
    EXPECT_TRUE(fs::is_empty(root));
}

TEST_F(CInstallTest, LinkIsNotFollowed) {
    fs::create_directory(Folder() / "elsewhere");
    fs::create_symlink("elsewhere", Folder() / "root");
    ExpectRefused(Install(Folder() / "root", "small"),
                  "cannot open " + (Folder() / "root").string() + ": Not a directory");
    EXPECT_TRUE(fs::is_empty(Folder() / "elsewhere"));
}

TEST_F(CInstallTest, DirectoryMayBeInTheCurrentOne) {
    const CEnd end =
        RunProgram({"sh", "-c", "cd \"$0\" && " QORSIM_PROGRAM " install root --host small",
                    Folder().string()});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_TRUE(fs::exists(Folder() / "root/opt/tarmica/krz/cli/krzcli"));
}

TEST_F(CInstallTest, MistakeInTheProfileMakesNothing) {
    const std::string host = WriteProfile({{"tool", 7}});
    ExpectRefused(Install(Folder() / "root", host), host + ": /tool: must be an object, is number");
    EXPECT_FALSE(fs::exists(Folder() / "root"));
}

// A file-size limit that the program's copy exceeds ends the installation half-way.
TEST_F(CInstallTest, FailureHalfWayLeavesNothing) {
    const fs::path root = Folder() / "root";
    const std::string limited = "ulimit -f 16; trap '' XFSZ; exec " QORSIM_PROGRAM " install " +
                                root.string() + " --host small";
    const CEnd made = RunProgram({"sh", "-c", limited});
    EXPECT_EQ(made.status, 1);
    EXPECT_THAT(made.err, testing::StartsWith("qorsim: " + root.string() +
                                              ": cannot copy this program to "
                                              "./opt/tarmica/krz/qorsim: "));
    EXPECT_FALSE(fs::exists(root));
    fs::create_directory(root);
    EXPECT_EQ(RunProgram({"sh", "-c", limited}).status, 1);
    EXPECT_EQ(Tree("cd " + root.string()), ".\n");
}

}  // namespace
}  // namespace qortest
