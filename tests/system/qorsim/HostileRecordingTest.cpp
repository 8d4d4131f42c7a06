// Recordings that somebody else made: nothing in them is believed.
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

#include "SimFixture.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

using nlohmann::json;
using testing::EndsWith;
using testing::StartsWith;

constexpr const char* TOOL_PATH = "/opt/tarmica/krz/cli/krzcli";
constexpr const char* SECRET = "what nobody gave away";

class CHostileRecordingTest : public CSimFixture, public testing::WithParamInterface<EKernel> {
protected:
    fs::path Recording() const { return Folder() / "recording"; }
    fs::path Outside() const { return Folder() / "outside"; }

    void SetUp() override {
        CSimFixture::SetUp();
        WriteFile(Outside(), SECRET);
        WriteFile(Recording() / "calls/1.out", "out\n");
        WriteFile(Recording() / "calls/1.err", "");
    }

    static json Call(const json& out) {
        return {{"commandLine", {"krzcli"}}, {"status", 0}, {"out", out}, {"err", "calls/1.err"}};
    }
    static json Index(const json& call) {
        return {{"version", 1},
                {"tools", {"krzcli"}},
                {"files", json::array()},
                {"calls", json::array({call})}};
    }

    CEnd Replay(const json& index, const CStrings& command = {TOOL_PATH}) const {
        WriteFile(Recording() / "index.json", index.dump());
        return ReplayWhatIsThere(command);
    }
    CEnd ReplayWhatIsThere(const CStrings& command = {TOOL_PATH}) const {
        CStrings whole = {"timeout", "-k", "1", "20", QORSIM_PROGRAM, "replay", Recording(), "--"};
        whole.insert(whole.end(), command.begin(), command.end());
        return RunProgram(whole, GetParam());
    }

    void ExpectRefused(const json& index, const std::string& problem) const {
        const CEnd end = Replay(index, {"true"});
        EXPECT_EQ(end.status, 125) << index;
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err,
                  "qorsim: " + (Recording() / "index.json").string() + ": " + problem + "\n");
    }

    // The tool fails, says why, and prints nothing of the file.
    void ExpectNoReport(const std::string& file, const std::string& reason) const {
        const CEnd end = ReplayWhatIsThere();
        EXPECT_EQ(end.status, 96) << file;
        EXPECT_EQ(end.out, "") << file;
        EXPECT_EQ(end.err, "qorsim: cannot play back: cannot read " +
                               (Recording() / file).string() + ": " + reason + "\n");
    }
};

INSTANTIATE_TEST_SUITE_P(Kernels, CHostileRecordingTest,
                         testing::Values(EKernel::WHOLE, EKernel::WITHOUT_OPENAT2,
                                         EKernel::FORBIDS_OPENAT2),
                         [](const auto& row) {
                             switch (row.param) {
                                 case EKernel::WHOLE:
                                     return "Whole";
                                 case EKernel::WITHOUT_OPENAT2:
                                     return "WithoutOpenat2";
                                 default:
                                     return "ForbidsOpenat2";
                             }
                         });

TEST_P(CHostileRecordingTest, HarmlessOneIsPlayed) {
    const CEnd end = Replay(Index(Call("calls/1.out")));
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.out, "out\n");
    EXPECT_EQ(end.err, "");
}

TEST_P(CHostileRecordingTest, ToolIsNoPath) {
    const std::string up = "../../../../../..";
    for (const std::string& tool : {up + Outside().string(), std::string("../krzcli"),
                                    std::string("krzcli/x"), std::string("sh"), std::string()}) {
        json index = Index(Call("calls/1.out"));
        index["tools"] = {"krzcli", tool};
        ExpectRefused(index,
                      "/tools/1: the tools are krzcli, MegaCli and storcli, is \"" + tool + "\"");
        EXPECT_EQ(ReadFile(Outside()), SECRET);
    }
}

TEST_P(CHostileRecordingTest, ReportsAreFilesOfTheRecording) {
    for (const json& name :
         {json("../outside"), json(Outside()), json("calls/../../outside"), json("/etc/hostname"),
          json("/dev/zero"), json(""), json("."), json("calls/"), json("calls//1.out"),
          json("./calls/1.out"), json(std::string("calls/1.out\0.x", 13))}) {
        const std::string problem = "/calls/0: \"out\" and \"err\" are paths below the recording";
        ExpectRefused(Index(Call(name)), problem);
        json call = Call("calls/1.out");
        call["err"] = name;
        ExpectRefused(Index(call), problem);
    }
}

TEST_P(CHostileRecordingTest, LinksAreNotFollowed) {
    const std::string reason = "it is a symbolic link, or behind one";
    fs::create_symlink(Outside(), Recording() / "calls/link");
    fs::create_symlink(Folder(), Recording() / "folder");
    fs::create_symlink("calls", Recording() / "inside");
    for (const std::string name : {"calls/link", "folder/outside", "inside/1.out"}) {
        WriteFile(Recording() / "index.json", Index(Call(name)).dump());
        ExpectNoReport(name, reason);
    }
    fs::rename(Recording() / "index.json", Folder() / "index.json");
    fs::create_symlink("../index.json", Recording() / "index.json");
    const CEnd end = ReplayWhatIsThere({"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err, "qorsim: cannot read " + (Recording() / "index.json").string() + ": " +
                           reason + "\n");
}

TEST_P(CHostileRecordingTest, WhatIsNoFileIsNotWaitedFor) {
    ASSERT_EQ(mkfifo((Recording() / "calls/fifo").c_str(), 0666), 0);
    fs::create_directory(Recording() / "calls/folder");
    for (const auto& [name, reason] : {std::pair("calls/fifo", "it is no regular file"),
                                       std::pair("calls/folder", "it is a directory"),
                                       std::pair("calls/none", "No such file or directory"),
                                       std::pair("calls/1.out/x", "Not a directory")}) {
        WriteFile(Recording() / "index.json", Index(Call(name)).dump());
        ExpectNoReport(name, reason);
    }
}

TEST_P(CHostileRecordingTest, SizesAreBounded) {
    WriteFile(Recording() / "calls/large", "");
    fs::resize_file(Recording() / "calls/large", 1U << 30);
    WriteFile(Recording() / "index.json", Index(Call("calls/large")).dump());
    ExpectNoReport("calls/large", "it is larger than 64 MiB");
    fs::resize_file(Recording() / "calls/large", (64U << 20) + 1);
    json call = Call("calls/1.out");
    call["err"] = "calls/large";
    WriteFile(Recording() / "index.json", Index(call).dump());
    ExpectNoReport("calls/large", "it is larger than 64 MiB");
    fs::resize_file(Recording() / "index.json", 1U << 30);
    const CEnd end = ReplayWhatIsThere({"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.err, "qorsim: cannot read " + (Recording() / "index.json").string() +
                           ": it is larger than 16 MiB\n");
}

TEST_P(CHostileRecordingTest, ListOfDevicesIsAFileOfTheRecording) {
    json index = Index(Call("calls/1.out"));
    index["files"] = {"devices.tmp", "../outside"};  // what is no server's file is not looked at
    fs::create_directory(Recording() / "files");
    const fs::path list = Recording() / "files/devices.tmp";
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"it is a symbolic link, or behind one", [&] { fs::create_symlink(Outside(), list); }},
        {"it is no regular file", [&] { ASSERT_EQ(mkfifo(list.c_str(), 0666), 0); }},
        {"it is larger than 16 MiB",
         [&] {
             WriteFile(list, "");
             fs::resize_file(list, 1U << 30);
         }},
    };
    for (const auto& [reason, make] : rows) {
        fs::remove(list);
        make();
        const CEnd end = Replay(index, {"true"});
        EXPECT_EQ(end.status, 125) << reason;
        EXPECT_EQ(end.err, "qorsim: cannot read " + list.string() + ": " + reason + "\n");
    }
}

TEST_P(CHostileRecordingTest, NumbersAreThoseOfACall) {
    const std::string problem =
        "/calls/0: \"status\" is 0 to 255, \"signal\" a deadly one, \"milliseconds\" 0 to "
        "4294967295";
    const std::pair<const char*, json> rows[] = {{"status", -1},
                                                 {"status", 256},
                                                 {"status", 4294967296},
                                                 {"status", 1U << 31},
                                                 {"signal", 0},
                                                 {"signal", -9},
                                                 {"signal", 19},
                                                 {"signal", 17},
                                                 {"signal", 65},
                                                 {"signal", 4294967305},
                                                 {"milliseconds", -1},
                                                 {"milliseconds", 18446744073709551615U},
                                                 {"milliseconds", 4294967296}};
    for (const auto& [key, value] : rows) {
        json call = Call("calls/1.out");
        call[key] = value;
        ExpectRefused(Index(call), problem);
    }
}

// Nobody waits as long as the recorded call took.
TEST_P(CHostileRecordingTest, DelayIsNotRepeated) {
    json call = Call("calls/1.out");
    call["milliseconds"] = 4294967295;
    EXPECT_EQ(Replay(Index(call)).status, 0);
}

TEST_P(CHostileRecordingTest, DepthAndNumberOfValuesAreBounded) {
    const std::string head = R"({"version":1,"tools":["krzcli"],"files":[],"calls":)";
    const auto expect = [&](const std::string& calls, const std::string& problem) {
        WriteFile(Recording() / "index.json", head + calls + "}");
        const CEnd end = ReplayWhatIsThere({"true"});
        EXPECT_EQ(end.status, 125);
        EXPECT_EQ(end.err,
                  "qorsim: " + (Recording() / "index.json").string() + ": " + problem + "\n");
    };
    expect(std::string(1000000, '[') + std::string(1000000, ']'),
           "must not be nested deeper than 64 levels");
    std::string many = "[0";
    for (size_t i = 0; i < 1000000; ++i) {
        many += ",0";
    }
    expect(many + "]", "must not hold more than 1000000 values");
}

TEST_P(CHostileRecordingTest, NamesAreMadeVisible) {
    json index = Index(Call("calls/1.out"));
    index["tools"] = {"\x1b[2J\n\x7f\u009b\u202e\u00e4"};
    ExpectRefused(index,
                  "/tools/0: the tools are krzcli, MegaCli and storcli, is "
                  "\"\\x1b[2J\\n\\x7f\\xc2\\x9b\\xe2\\x80\\xae\u00e4\"");
    const CEnd end = Replay(Index(Call("calls/1.\x1b[2J")));
    EXPECT_EQ(end.err, "qorsim: cannot play back: cannot read " +
                           (Recording() / "calls/1.").string() +
                           "\\x1b[2J: No such file or directory\n");
    const CEnd unrecorded = Replay(Index(Call("calls/1.out")), {TOOL_PATH, "\x1b[2J"});
    EXPECT_EQ(unrecorded.err,
              "krzcli: this command line was not recorded: krzcli \\x1b[2J\n"
              "qorsim: these command lines were not recorded:\nkrzcli \\x1b[2J\n");
}

TEST_P(CHostileRecordingTest, LongNameIsCutInAMessage) {
    json index = Index(Call("calls/1.out"));
    index["tools"] = {std::string(1000000, 'x')};
    const CEnd end = Replay(index, {"true"});
    EXPECT_EQ(end.status, 125);
    EXPECT_LT(end.err.size(), 3000U);
    EXPECT_THAT(end.err, EndsWith("xxx...\n"));
}

class CPreparedFolderTest : public CSimFixture {
protected:
    std::string Recording() const { return Folder() / "recording"; }

    CEnd Record(const std::string& command) const {
        return RunProgram({"timeout", "-k", "1", "20", QORSIM_PROGRAM, "record", "--host", "small",
                           Recording(), "--", "sh", "-c", command});
    }
};

TEST_F(CPreparedFolderTest, FolderThatOthersMayWriteIntoIsRefused) {
    for (const auto mode : {0777, 0775, 01777}) {
        fs::create_directory(Recording());
        fs::permissions(Recording(), fs::perms(mode));
        const CEnd end = Record("echo was run");
        EXPECT_EQ(end.status, 125);
        EXPECT_EQ(end.out, "");
        EXPECT_EQ(end.err,
                  "qorsim: others may write into " + Recording() + ": name a new directory\n");
        EXPECT_TRUE(fs::is_empty(Recording()));
    }
}

TEST_F(CPreparedFolderTest, FolderOfAnotherUserIsRefused) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a folder away";
    }
    fs::create_directory(Recording());
    ASSERT_EQ(chown(Recording().c_str(), 65534, 65534), 0);
    const CEnd end = Record("echo was run");
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err,
              "qorsim: " + Recording() + " belongs to another user: name a new directory\n");
}

// With a umask that lets everybody write, too.
TEST_F(CPreparedFolderTest, NewFolderIsItsMakersOnly) {
    const CEnd end = RunProgram(
        {"sh", "-c",
         "umask 0; exec " QORSIM_PROGRAM " record --host small " + Recording() + " -- true"});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(fs::status(Recording()).permissions() & fs::perms(022), fs::perms::none);
}

TEST_F(CPreparedFolderTest, FolderMayBeInTheCurrentOne) {
    const CEnd end = RunProgram(
        {"sh", "-c", "cd \"$0\" && exec " QORSIM_PROGRAM " record --host small recording -- true",
         Folder().string()});
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_TRUE(fs::exists(fs::path(Recording()) / "index.json"));
}

// Whoever can write into the folder after all does it while the command runs.
TEST_F(CPreparedFolderTest, WhatAppearsInTheFolderIsNotWrittenThrough) {
    const fs::path outside = Folder() / "outside";
    const std::pair<std::string, std::string> rows[] = {
        {"ln -s " + outside.string() + " index.json", "index.json: File exists"},
        {"mkfifo index.json", "index.json: File exists"},
        {"mkdir files; ln -s " + outside.string() + " files/devices.tmp",
         "files/devices.tmp: File exists"},
        {"mkdir ../elsewhere; ln -s ../elsewhere files",
         "files/PciessdVCFac.ini: it is a symbolic link, or behind one"},
    };
    for (const auto& [prepare, message] : rows) {
        fs::remove_all(Recording());
        WriteFile(outside, SECRET);
        const CEnd end = Record("cd " + Recording() + "; " + prepare);
        EXPECT_EQ(end.status, 125) << prepare;
        EXPECT_EQ(end.err, "qorsim: cannot write " + Recording() + "/" + message + "\n");
        EXPECT_EQ(ReadFile(outside), SECRET);
    }
    EXPECT_TRUE(fs::is_empty(Folder() / "elsewhere"));
}

// The folder's name leads elsewhere when the command has ended; what is written is not.
TEST_F(CPreparedFolderTest, FolderIsTheOneOfTheStart) {
    const fs::path moved = Folder() / "moved";
    const fs::path elsewhere = Folder() / "elsewhere";
    fs::create_directory(elsewhere);
    const CEnd end = Record("mv " + Recording() + " " + moved.string() + "; ln -s " +
                            elsewhere.string() + " " + Recording());
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_TRUE(fs::is_empty(elsewhere));
    EXPECT_TRUE(fs::exists(moved / "index.json"));
}

TEST_F(CPreparedFolderTest, FullDiskIsTold) {
    fs::create_directory(Recording());
    ASSERT_EQ(mount("none", Recording().c_str(), "tmpfs", 0, "size=4k,mode=0755"), 0);
    const CEnd end = Record("true");
    ASSERT_EQ(umount(Recording().c_str()), 0);
    EXPECT_EQ(end.status, 125);
    EXPECT_THAT(end.err, StartsWith("qorsim: cannot write " + Recording() + "/"));
    EXPECT_THAT(end.err, EndsWith(": No space left on device\n"));
}

TEST_F(CPreparedFolderTest, ReadOnlyFolderIsToldBeforeTheCommandIsRun) {
    const std::string parent = Folder() / "parent";
    fs::create_directory(parent);
    ASSERT_EQ(mount("none", parent.c_str(), "tmpfs", MS_RDONLY, "mode=0755"), 0);
    const CEnd end = RunProgram({QORSIM_PROGRAM, "record", "--host", "small", parent + "/recording",
                                 "--", "echo", "was run"});
    ASSERT_EQ(umount(parent.c_str()), 0);
    EXPECT_EQ(end.status, 125);
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.err, "qorsim: cannot create " + parent + "/recording: Read-only file system\n");
}

}  // namespace
}  // namespace qortest
