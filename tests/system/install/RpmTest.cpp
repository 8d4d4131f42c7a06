// The packages for the family of Red Hat: who holds what, who needs whom, and what rpm itself makes
// of them in a folder of the test's own.
#include <gmock/gmock.h>

#include "PackageFixture.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

class RpmTest : public qortest::CPackageFixture {
protected:
    std::string Package(const std::string& name) const {
        return PathOf(name + "-" INSTALL_VERSION, ".rpm");
    }
    std::string Query(const std::string& package, const std::string& what) const {
        return Out({"rpm", "--query", "--package", what, Package(package)});
    }
};

TEST_F(RpmTest, PackagesHoldWhatTheDebianOnesHold) {
    Make("RPM", ALL);
    const std::string files = Query("qor", "--list");
    for (const char* file :
         {"/usr/bin/qorctl\n", "/usr/lib64/qor/libqor_MngSrv_QorLib.so\n",
          "/usr/lib64/qor/libqor_ComLib.so\n", "/usr/share/qor/RaidVCFac.ini\n",
          "/usr/share/man/man1/qorctl.1.gz\n", "/usr/share/zsh/site-functions/_qorctl\n",
          "/usr/share/licenses/qor/copyright\n"}) {
        EXPECT_THAT(files, HasSubstr(file));
    }
    EXPECT_THAT(files, Not(HasSubstr("qorsim\n")));
    EXPECT_THAT(files, Not(HasSubstr("/include/")));
    EXPECT_THAT(Query("qor-simulator", "--list"), HasSubstr("/usr/share/qor/hosts/small.json\n"));
    EXPECT_THAT(Query("qor-devel", "--list"), HasSubstr("/usr/lib64/pkgconfig/qor.pc\n"));
    EXPECT_THAT(Query("qor-devel", "--list"), HasSubstr("/usr/lib64/cmake/qor/qorConfig.cmake\n"));
    EXPECT_THAT(Query("qor-monitoring", "--list"),
                HasSubstr("/usr/lib/systemd/system/qor-watch.service\n"));
    EXPECT_EQ(Out({"sh", "-c",
                   "rpm2cpio '" + Package("qor-monitoring") +
                       "' | cpio --quiet --extract --to-stdout '*.service' | grep -c "
                       "'^ExecStart=/usr/bin/qorctl '"}),
              "2\n");
    EXPECT_THAT(Query("qor-debuginfo", "--list"), HasSubstr("/usr/lib/debug/.build-id/"));
}

// Folders of the system's would be shared with other packages, whose rights then differ.
TEST_F(RpmTest, FoldersAreTheirOwn) {
    Make("RPM", ALL);
    for (const char* package :
         {"qor", "qor-monitoring", "qor-simulator", "qor-devel", "qor-debuginfo"}) {
        const std::string folders = Out({"rpm", "--query", "--package", "--queryformat",
                                         "[%{FILEMODES:perms} %{FILENAMES}\\n]", Package(package)});
        for (const std::string& line : qortest::Lines(folders)) {
            if (line.starts_with("d") && line.find("/debug/.build-id/") == std::string::npos) {
                EXPECT_THAT(line, HasSubstr("qor"));
            }
        }
    }
    EXPECT_THAT(
        Out({"rpm", "--query", "--package", "--queryformat",
             "[%{FILEMODES:perms} %{FILEUSERNAME} %{FILENAMES}\\n]", Package("qor-monitoring")}),
        HasSubstr("drwx------ root /var/lib/qor\n"));
}

TEST_F(RpmTest, NobodyIsOfferedThePrivateLibraries) {
    Make("RPM", "qor;qorsim;qor-monitoring");
    EXPECT_THAT(Query("qor", "--provides"), Not(HasSubstr(".so")));
    EXPECT_THAT(Query("qor", "--requires"), Not(HasSubstr("libqor")));
    EXPECT_THAT(Query("qor", "--requires"), HasSubstr("libstdc++.so.6"));
    EXPECT_THAT(Query("qor-simulator", "--requires"), HasSubstr("qor = " INSTALL_VERSION "-1\n"));
    EXPECT_EQ(Query("qor-monitoring", "--configfiles"), "/etc/default/qor\n/etc/qor/event\n");
    EXPECT_EQ(
        Out({"rpm", "--query", "--package", "--queryformat", "%{LICENSE}\n", Package("qor")}),
        qortest::Lines(qortest::ReadFile(INSTALL_SOURCE_DIR "/packaging/licence.txt"))[0] + "\n");
}

TEST_F(RpmTest, LicenceIsInEachAndMarked) {
    Make("RPM", ALL);
    for (const char* package :
         {"qor", "qor-monitoring", "qor-simulator", "qor-devel", "qor-debuginfo"}) {
        EXPECT_EQ(Query(package, "--licensefiles"),
                  std::string("/usr/share/licenses/") + package + "/copyright\n");
    }
}

TEST_F(RpmTest, MadeTwiceTheyAreTheSame) {
    Make("RPM", ALL);
    Make("RPM", ALL, "other", "umask 077; export TZ=Asia/Tokyo;");
    size_t compared = 0;
    for (const auto& entry : fs::directory_iterator(Packages())) {
        if (entry.path().extension() == ".rpm") {
            EXPECT_TRUE(qortest::ReadFile(entry.path()) ==
                        qortest::ReadFile(Folder() / "other" / entry.path().filename()))
                << entry;
            ++compared;
        }
    }
    EXPECT_EQ(compared, 5U);
}

}  // namespace
