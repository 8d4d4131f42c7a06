// The Debian packages: who holds what, and who needs whom.
#include <gmock/gmock.h>

#include <regex>

#include "SimFixture.h"

namespace {

namespace fs = std::filesystem;
using qortest::CEnd;
using testing::HasSubstr;
using testing::Not;

class PackageTest : public qortest::CSimFixture {
protected:
    void SetUp() override {
        CSimFixture::SetUp();
        const CEnd end = qortest::RunProgram(
            {"env", "-C", Folder().string(), INSTALL_CPACK, "-G", "DEB", "--config",
             INSTALL_BUILD_DIR "/CPackConfig.cmake", "-B", (Folder() / "packages").string()});
        ASSERT_EQ(end.status, 0) << end.out << end.err;
    }

    std::string PathOf(const std::string& package) const {
        for (const fs::directory_entry& entry : fs::directory_iterator(Folder() / "packages")) {
            const std::string name = entry.path().filename();
            if (name.starts_with(package + "_" INSTALL_VERSION) && name.ends_with(".deb")) {
                return entry.path();
            }
        }
        ADD_FAILURE() << "no package " << package;
        return "";
    }
    // "./usr/bin/qorctl" and so on, one a line.
    std::string Files(const std::string& package) const {
        const CEnd end = qortest::RunProgram({"dpkg-deb", "--contents", PathOf(package)});
        EXPECT_EQ(end.status, 0) << end.err;
        return std::regex_replace(end.out, std::regex("[^\n]* \\./"), "./");
    }
    std::string Field(const std::string& package, const std::string& field) const {
        return qortest::RunProgram({"dpkg-deb", "--field", PathOf(package), field}).out;
    }
};

TEST_F(PackageTest, PackageOfTheLibrariesHoldsWhatAServerNeeds) {
    const std::string files = Files("qor");
    for (const char* file :
         {"./usr/bin/qorctl\n", "/libqor_MngSrv_QorLib.so\n", "/libqor_ComLib.so\n",
          "./usr/share/qor/RaidVCFac.ini\n", "./usr/share/qor/PciessdVCFac.ini\n",
          "./usr/share/qor/qorctl.schema.json\n", "./usr/share/qor/monitoring/qorctl.sudoers\n",
          "./usr/share/qor/prometheus/qor.rules.yml\n", "./usr/share/qor/grafana/qor.json\n",
          "./usr/share/qor/events/mail\n", "./usr/lib/systemd/system/qor-watch.service\n",
          "./usr/share/man/man1/qorctl.1\n", "./usr/share/man/man7/qor.7\n",
          "./usr/share/bash-completion/completions/qorctl\n"}) {
        EXPECT_THAT(files, HasSubstr(file));
    }
    for (const char* file : {"qorsim", "include", "hosts", "cmake"}) {
        EXPECT_THAT(files, Not(HasSubstr(file)));
    }
}

TEST_F(PackageTest, PackageOfTheSimulatorHoldsItsServers) {
    const std::string files = Files("qorsim");
    for (const char* file : {"./usr/bin/qorsim\n", "./usr/share/qor/hosts/small.json\n",
                             "./usr/share/man/man1/qorsim.1\n"}) {
        EXPECT_THAT(files, HasSubstr(file));
    }
    for (const char* file : {".so\n", "qorctl", "include", ".ini\n"}) {
        EXPECT_THAT(files, Not(HasSubstr(file)));
    }
    EXPECT_THAT(Field("qorsim", "Depends"), HasSubstr("qor (= " INSTALL_VERSION ")"));
}

TEST_F(PackageTest, PackageForDevelopersHoldsHeadersAndPackageFiles) {
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

TEST_F(PackageTest, LibrariesNeedTheSystemsOwnOnly) {
    const std::string depends = Field("qor", "Depends");
    EXPECT_THAT(depends, HasSubstr("libc6"));
    EXPECT_THAT(depends, HasSubstr("libstdc++6"));
    EXPECT_THAT(depends, Not(HasSubstr("qor")));
    for (const char* linkedIn : {"utf8proc", "ncurses", "tinfo"}) {
        EXPECT_THAT(depends, Not(HasSubstr(linkedIn)));
    }
}

}  // namespace
