// What the scripts of the package for monitoring ask of systemd: played, since none is started
// here.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "PackageFixture.h"
#include "Rights.h"

namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;
using testing::Not;

constexpr const char* RESTART = " try-restart qor-metrics.timer qor-watch.service\n";
constexpr const char* STOP = " stop qor-metrics.timer qor-metrics.service qor-watch.service\n";

class UnitScriptsTest : public qortest::CPackageFixture {
protected:
    void SetUp() override {
        CPackageFixture::SetUp();
        for (const char* program : {"systemctl", "deb-systemd-helper", "deb-systemd-invoke"}) {
            WriteProgram(program, "");
        }
    }
    // What it does when it has written down that it was called.
    void WriteProgram(const std::string& name, const std::string& text) const {
        const fs::path path = Folder() / "bin" / name;
        qortest::WriteFile(
            path, "#!/bin/sh\necho " + name + " \"$@\" >> '" + Asked().string() + "'\n" + text);
        fs::permissions(path, fs::perms::owner_all);
    }
    fs::path Asked() const { return Folder() / "asked"; }
    // What a script below `packaging` calls where systemd runs.
    std::string Asked(const std::string& script, const std::string& arguments,
                      const std::string& system = "/run/systemd/system") const {
        qortest::WriteFile(Asked(), "");
        // What the scripts remove below /var/lib is not this machine's.
        const std::string commands =
            "mount -t tmpfs none /run && mount -t tmpfs none /var/lib && mkdir -p " + system +
            " && PATH=\"$1:$PATH\" && exec sh -e " INSTALL_SOURCE_DIR "/packaging/" + script + " " +
            arguments;
        Out({"sh", "-c",
             "exec " + qortest::WithMounts() + "sh -c '" + commands + "' sh '" +
                 (Folder() / "bin").string() + "'"});
        return qortest::ReadFile(Asked());
    }
};

TEST_F(UnitScriptsTest, WhatRunsIsStartedAnew) {
    for (const char* version : {"\"\"", "0.1.0"}) {
        EXPECT_THAT(Asked("debian/qor-monitoring/postinst", std::string("configure ") + version),
                    HasSubstr(RESTART));
    }
    EXPECT_THAT(Asked("rpm/monitoring-post", "1"), HasSubstr(RESTART));
    EXPECT_THAT(Asked("rpm/monitoring-postun", "1"), HasSubstr(RESTART));
}

TEST_F(UnitScriptsTest, WhatWasEnabledStaysSo) {
    EXPECT_THAT(Asked("debian/qor-monitoring/postinst", "configure 0.1.0"),
                HasSubstr("deb-systemd-helper enable qor-watch.service\n"));
}

TEST_F(UnitScriptsTest, NothingElseIsEnabled) {
    WriteProgram("deb-systemd-helper", "[ \"$1\" != debian-installed ]\n");
    EXPECT_THAT(Asked("debian/qor-monitoring/postinst", "configure \"\""),
                Not(HasSubstr(" enable")));
    for (const char* installed : {"1", "2"}) {
        const std::string asked = Asked("rpm/monitoring-post", installed);
        EXPECT_THAT(asked, Not(HasSubstr(" enable")));
        EXPECT_THAT(asked, Not(HasSubstr(" preset")));
    }
}

TEST_F(UnitScriptsTest, RemovalStopsThemAndAnUpgradeDoesNot) {
    EXPECT_THAT(Asked("debian/qor-monitoring/prerm", "remove"), HasSubstr(STOP));
    EXPECT_EQ(Asked("debian/qor-monitoring/prerm", "upgrade 9.9"), "");
    EXPECT_EQ(Asked("rpm/monitoring-preun", "1"), "");
    EXPECT_THAT(Asked("rpm/monitoring-postun", "0"), Not(HasSubstr(RESTART)));
}

TEST_F(UnitScriptsTest, SystemWithoutSystemdIsAskedNothing) {
    EXPECT_THAT(Asked("debian/qor-monitoring/postinst", "configure \"\"", "/run/other"),
                Not(HasSubstr("systemctl")));
    EXPECT_EQ(Asked("debian/qor-monitoring/prerm", "remove", "/run/other"), "");
    for (const char* script : {"rpm/monitoring-post", "rpm/monitoring-postun"}) {
        EXPECT_EQ(Asked(script, "1", "/run/other"), "") << script;
    }
}

// Files that were made by hand before the package had them.
class MadeSettingsTest : public UnitScriptsTest {
protected:
    void SetUp() override {
        UnitScriptsTest::SetUp();
        qortest::WriteFile(Settings(), "QOR_METRICS_TIMEOUT=40\n");
        Run("preinst install");
        EXPECT_FALSE(fs::exists(Settings()));
    }
    fs::path Settings() const { return Folder() / "root/etc/default/qor"; }
    void Run(const std::string& call) const {
        Out({"env", "DPKG_ROOT=" + (Folder() / "root").string(),
             "PATH=" + (Folder() / "bin").string() + ":/usr/bin:/bin", "sh", "-c",
             "sh -e " INSTALL_SOURCE_DIR "/packaging/debian/qor-monitoring/" + call});
    }
    void ExpectKept() const {
        EXPECT_EQ(qortest::ReadFile(Settings()), "QOR_METRICS_TIMEOUT=40\n");
        EXPECT_EQ(std::distance(fs::directory_iterator(Settings().parent_path()), {}), 1);
    }
};

TEST_F(MadeSettingsTest, TheyAreKept) {
    qortest::WriteFile(Settings(), "what dpkg puts there\n");
    Run("postinst configure");
    ExpectKept();
}

TEST_F(MadeSettingsTest, TheyAreThereAgainWhenThePackageCannotBeUnpacked) {
    Run("postrm abort-install");
    ExpectKept();
}

// dpkg knows them then, and asks nothing.
TEST_F(MadeSettingsTest, ThoseOfThePackageStayWhereTheyAre) {
    qortest::WriteFile(Settings(), "of the package\n");
    Run("preinst upgrade 0.1.9");
    EXPECT_EQ(qortest::ReadFile(Settings()), "of the package\n");
}

}  // namespace
