// The Debian packages: who holds what, and who needs whom.
#include <gmock/gmock.h>
#include <sys/mount.h>

#include "PackageFixture.h"

namespace {

namespace fs = std::filesystem;
using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsSupersetOf;
using testing::MatchesRegex;
using testing::Not;

class PackageTest : public qortest::CPackageFixture {
protected:
    std::string Package(const std::string& name) const {
        return PathOf(name + "_" INSTALL_VERSION, ".deb");
    }
    // "-rw-r--r-- root/root ... ./usr/bin/qorctl" and so on, one a line.
    std::string Listing(const std::string& package) const {
        return Out({"dpkg-deb", "--contents", Package(package)});
    }
    // "./usr/bin/qorctl" and so on, one a line.
    std::string Files(const std::string& package) const {
        return std::regex_replace(Listing(package), std::regex("[^\n]* \\./"), "./");
    }
    std::string Field(const std::string& package, const std::string& field) const {
        return Out({"dpkg-deb", "--field", Package(package), field});
    }
    // What the package's own scripts and lists hold; "" for one that it does not have.
    std::string Control(const std::string& package, const std::string& file) const {
        return qortest::RunProgram({"dpkg-deb", "--info", Package(package), file}).out;
    }
    fs::path Unpack(const std::string& package) const {
        fs::create_directories(Folder() / "unpacked");
        Out({"dpkg-deb", "--extract", Package(package), Folder() / "unpacked" / package});
        return Folder() / "unpacked" / package;
    }
};

TEST_F(PackageTest, PackageOfTheLibrariesHoldsWhatAServerNeeds) {
    Make("DEB", "qor");
    const std::string files = Files("qor");
    for (const char* file :
         {"./usr/bin/qorctl\n", "/qor/libqor_MngSrv_QorLib.so\n", "/qor/libqor_ComLib.so\n",
          "./usr/share/qor/RaidVCFac.ini\n", "./usr/share/qor/PciessdVCFac.ini\n",
          "./usr/share/qor/qorctl.schema.json\n", "./usr/share/man/man1/qorctl.1.gz\n",
          "./usr/share/man/man7/qor.7.gz\n", "./usr/share/bash-completion/completions/qorctl\n",
          "./usr/share/zsh/vendor-completions/_qorctl\n",
          "./usr/share/fish/vendor_completions.d/qorctl.fish\n",
          "./usr/share/doc/qor/docs/install.md\n", "./usr/share/doc/qor/copyright\n",
          "./usr/share/doc/qor/changelog.gz\n"}) {
        EXPECT_THAT(files, HasSubstr(file));
    }
    for (const char* file : {"qorsim\n", "include", "hosts", "cmake", "systemd", "prometheus",
                             "sudoers", "events/", "./etc", "./var"}) {
        EXPECT_THAT(files, Not(HasSubstr(file)));
    }
}

TEST_F(PackageTest, PackageForMonitoringHoldsUnitsAndExamples) {
    Make("DEB", "qor-monitoring");
    const std::string files = Files("qor-monitoring");
    for (const char* file : {"./usr/lib/systemd/system/qor-watch.service\n",
                             "./usr/lib/systemd/system/qor-metrics.service\n",
                             "./usr/lib/systemd/system/qor-metrics.timer\n",
                             "./usr/share/qor/monitoring/qorctl.sudoers\n",
                             "./usr/share/qor/prometheus/qor.rules.yml\n",
                             "./usr/share/qor/grafana/qor.json\n", "./usr/share/qor/events/mail\n",
                             "./etc/default/qor\n", "./etc/qor/event\n", "./var/lib/qor/\n"}) {
        EXPECT_THAT(files, HasSubstr(file));
    }
    for (const char* file : {".so\n", "/bin/", "qor.default"}) {
        EXPECT_THAT(files, Not(HasSubstr(file)));
    }
    EXPECT_EQ(Control("qor-monitoring", "conffiles"), "/etc/default/qor\n/etc/qor/event\n");
    EXPECT_THAT(Listing("qor-monitoring"),
                ContainsRegex("drwx------ root/root +0 [^\n]* \\./var/lib/qor/\n"));
    EXPECT_THAT(Listing("qor-monitoring"), ContainsRegex("-rwxr-xr-x [^\n]* \\./etc/qor/event\n"));
    EXPECT_EQ(Field("qor-monitoring", "Depends"), "qor (>= " INSTALL_VERSION ")\n");
    EXPECT_EQ(Field("qor-monitoring", "Architecture"), "all\n");
    EXPECT_THAT(Field("qor-monitoring", "Description"), Not(HasSubstr("\n  ")));
    const fs::path units = Unpack("qor-monitoring") / "usr/lib/systemd/system";
    for (const char* unit : {"qor-watch.service", "qor-metrics.service"}) {
        EXPECT_THAT(qortest::ReadFile(units / unit), HasSubstr("\nExecStart=/usr/bin/qorctl "));
    }
}

TEST_F(PackageTest, PackageOfTheSimulatorHoldsItsServers) {
    Make("DEB", "qorsim");
    const std::string files = Files("qorsim");
    for (const char* file : {"./usr/bin/qorsim\n", "./usr/share/qor/hosts/small.json\n",
                             "./usr/share/man/man1/qorsim.1.gz\n"}) {
        EXPECT_THAT(files, HasSubstr(file));
    }
    for (const char* file : {".so\n", "qorctl", "include", ".ini\n"}) {
        EXPECT_THAT(files, Not(HasSubstr(file)));
    }
    EXPECT_THAT(Field("qorsim", "Depends"), HasSubstr("qor (= " INSTALL_VERSION ")"));
}

TEST_F(PackageTest, PackageForDevelopersHoldsHeadersAndPackageFiles) {
    Make("DEB", "qor-dev");
    const std::string files = Files("qor-dev");
    for (const char* file :
         {"./usr/include/qor/MngSrv_QorLibIF.h\n", "./usr/include/qor/ItemDisp.h\n",
          "./usr/include/qor/ComLib.h\n", "/cmake/qor/qorConfig.cmake\n", "/pkgconfig/qor.pc\n",
          "/examples/host.cpp\n"}) {
        EXPECT_THAT(files, HasSubstr(file));
    }
    for (const char* file : {".so\n", "/bin/"}) {
        EXPECT_THAT(files, Not(HasSubstr(file)));
    }
    EXPECT_EQ(Field("qor-dev", "Depends"), "qor (= " INSTALL_VERSION ")\n");
}

TEST_F(PackageTest, DebugSymbolsAreFoundByTheirBuildIds) {
    Make("DEB", "qor;qorsim");
    const fs::path symbols = Unpack("qor-dbgsym") / "usr/lib/debug/.build-id";
    size_t found = 0;
    for (const char* package : {"qor", "qorsim"}) {
        for (const auto& entry : fs::recursive_directory_iterator(Unpack(package) / "usr")) {
            const std::string name = entry.path().filename();
            if (name != "qorctl" && name != "qorsim" && entry.path().extension() != ".so") {
                continue;
            }
            if (!entry.is_regular_file() ||
                entry.path().string().find("/share/") != std::string::npos) {
                continue;
            }
            const std::string sections =
                Out({"readelf", "--wide", "--sections", "--notes", entry.path()});
            EXPECT_THAT(sections, Not(HasSubstr(".debug_info"))) << entry.path();
            std::smatch id;
            ASSERT_TRUE(std::regex_search(sections, id, std::regex("Build ID: (..)([0-9a-f]+)")));
            const fs::path file = symbols / id[1].str() / (id[2].str() + ".debug");
            EXPECT_THAT(Out({"readelf", "--wide", "--sections", file}), HasSubstr(".debug_info"))
                << entry.path();
            ++found;
        }
    }
    EXPECT_EQ(found, 4U);
}

TEST_F(PackageTest, LibrariesNeedTheSystemsOwnOnly) {
    Make("DEB", "qor");
    const std::string depends = Field("qor", "Depends");
    EXPECT_THAT(depends, HasSubstr("libc6"));
    EXPECT_THAT(depends, HasSubstr("libstdc++6"));
    EXPECT_THAT(depends, Not(HasSubstr("qor")));
    for (const char* linkedIn : {"utf8proc", "ncurses", "tinfo"}) {
        EXPECT_THAT(depends, Not(HasSubstr(linkedIn)));
    }
}

TEST_F(PackageTest, LicenceStandsInOnePlace) {
    Make("DEB", qortest::CPackageFixture::ALL);
    const std::string licence = qortest::ReadFile(INSTALL_SOURCE_DIR "/packaging/licence.txt");
    for (const char* package : {"qor", "qor-monitoring", "qorsim", "qor-dev", "qor-dbgsym"}) {
        EXPECT_THAT(qortest::ReadFile(Unpack(package) / "usr/share/doc" / package / "copyright"),
                    HasSubstr(licence))
            << package;
    }
}

// Whoever makes them, where, with which umask and time of the day. A file system in memory has its
// files in another order.
TEST_F(PackageTest, MadeTwiceTheyAreTheSame) {
    Make("DEB", ALL);
    fs::create_directories(Folder() / "other");
    ASSERT_EQ(mount("none", (Folder() / "other").c_str(), "tmpfs", 0, nullptr), 0);
    Make("DEB", ALL, "other/folder/of packages", "umask 077; export TZ=Asia/Tokyo;");
    size_t compared = 0;
    for (const auto& entry : fs::directory_iterator(Packages())) {
        if (entry.path().extension() == ".deb") {
            const fs::path other = Folder() / "other/folder/of packages" / entry.path().filename();
            EXPECT_TRUE(qortest::ReadFile(entry.path()) == qortest::ReadFile(other)) << entry;
            const std::string listing = Out({"dpkg-deb", "--contents", entry.path()});
            EXPECT_THAT(listing, Not(ContainsRegex("[^\n] root/[^r]|\n[^ ]+ [^r][^ ]*/")));
            EXPECT_THAT(listing, Not(ContainsRegex("(^|\n)[^l].....(w|...w)")));
            ++compared;
        }
    }
    EXPECT_EQ(compared, 5U);
    EXPECT_EQ(umount((Folder() / "other").c_str()), 0);
}

}  // namespace
