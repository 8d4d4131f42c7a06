#include <gmock/gmock.h>

#include <algorithm>
#include <regex>

#include "InstallFixture.h"

namespace {

namespace fs = std::filesystem;
using qortest::CEnd;
using testing::HasSubstr;
using testing::StartsWith;

class InstallTest : public qortest::CInstallFixture {};

TEST_F(InstallTest, EverythingIsWhereItBelongs) {
    for (const fs::path& file : {
             Bin() / "qorctl",
             Bin() / "qorsim",
             Lib() / "qor/libqor_MngSrv_QorLib.so",
             Lib() / "qor/libqor_ComLib.so",
             Lib() / "cmake/qor/qorConfig.cmake",
             Lib() / "cmake/qor/qorConfigVersion.cmake",
             Lib() / "cmake/qor/qorTargets.cmake",
             Lib() / "pkgconfig/qor.pc",
             Prefix() / "include/qor/ComLib.h",
             Prefix() / "include/qor/ItemDisp.h",
             Prefix() / "include/qor/MngSrv_QorLibIF.h",
             Share() / "man/man1/qorctl.1",
             Share() / "man/man1/qorsim.1",
             Share() / "man/man7/qor.7",
             Share() / "bash-completion/completions/qorctl",
             Share() / "bash-completion/completions/qorsim",
             Share() / "zsh/site-functions/_qorctl",
             Share() / "zsh/site-functions/_qorsim",
             Share() / "fish/vendor_completions.d/qorctl.fish",
             Share() / "fish/vendor_completions.d/qorsim.fish",
             Share() / "qor/RaidVCFac.ini",
             Share() / "qor/PciessdVCFac.ini",
             Share() / "qor/qorctl.schema.json",
             Share() / "qor/events/mail",
             Share() / "qor/events/journal",
             Share() / "qor/events/webhook",
             Prefix() / "lib/systemd/system/qor-watch.service",
             Share() / "qor/monitoring/qorctl.sudoers",
             Share() / "qor/monitoring/nagios-local.cfg",
             Share() / "qor/monitoring/nagios-nrpe.cfg",
             Share() / "qor/monitoring/nrpe.cfg",
             Share() / "qor/monitoring/icinga2.conf",
             Share() / "qor/prometheus/qor.rules.yml",
             Share() / "qor/grafana/qor.json",
             Share() / "qor/hosts/small.json",
         }) {
        EXPECT_TRUE(fs::is_regular_file(file)) << file;
    }
}

TEST_F(InstallTest, NothingNamesTheSourceTree) {
    const CEnd end = Shell("grep -rlI -e '" INSTALL_SOURCE_DIR "' '" + Prefix().string() + "'");
    EXPECT_EQ(end.out, "");
    EXPECT_EQ(end.status, 1);
}

TEST_F(InstallTest, NoTextOfAProgramNamesTheSourceTree) {
    const CEnd end = Shell("readelf --wide --string-dump=.rodata '" + Bin().string() + "'/* '" +
                           (Lib() / "qor").string() +
                           "'/* > texts; grep -c 'File: ' texts; "
                           "grep -F '" INSTALL_SOURCE_DIR "' texts");
    EXPECT_EQ(end.out, "4\n") << end.err;
}

TEST_F(InstallTest, InstalledProgramsFindEachOther) {
    const CEnd end = Shell("qorsim run --host small -- qorctl raid");
    EXPECT_EQ(end.status, 0) << end.err;
    EXPECT_EQ(end.err, "");
    EXPECT_THAT(end.out, StartsWith("Controller Information\n"));
}

TEST_F(InstallTest, DoctorFindsTheInstalledLibraries) {
    const CEnd end = Shell("qorsim run --host small -- qorctl doctor");
    EXPECT_EQ(end.status, 0) << end.out << end.err;
    EXPECT_THAT(end.out, HasSubstr((Lib() / "qor/libqor_MngSrv_QorLib.so").string()));
    EXPECT_THAT(end.out, HasSubstr((Lib() / "qor/libqor_ComLib.so").string()));
}

class ExampleTest : public qortest::CInstallFixture {
protected:
    // Configures and builds a project against the tree that is installed in a prefix.
    CEnd Build(const fs::path& source, const fs::path& build, const fs::path& prefix) const {
        return Shell("'" INSTALL_CMAKE "' -G Ninja -S '" + source.string() + "' -B '" +
                     build.string() + "' -DCMAKE_PREFIX_PATH='" + prefix.string() +
                     "' -DCMAKE_CXX_COMPILER='" INSTALL_COMPILER
                     "' -DCMAKE_CXX_FLAGS='-Wall -Wextra -Werror " INSTALL_HOST_FLAGS
                     "' && '" INSTALL_CMAKE "' --build '" +
                     build.string() + "'");
    }
};

TEST_F(ExampleTest, ExampleIsShort) {
    EXPECT_LT(qortest::Lines(qortest::ReadFile(INSTALL_SOURCE_DIR "/examples/host.cpp")).size(),
              60U);
}

TEST_F(ExampleTest, ExampleIsBuiltThroughFindPackageAndShowsTheStorage) {
    const fs::path build = Folder() / "build";
    const CEnd built = Build(Share() / "doc/qor-dev/examples/installed", build, Prefix());
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    const CEnd shown = Shell("qorsim run --host small -- '" + (build / "host").string() + "'");
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.err, "");
    EXPECT_THAT(shown.out, StartsWith(" | Controller Information | \n"));
    EXPECT_THAT(shown.out, HasSubstr("### General Information ### | Serial Number | TR45216823\n"));
}

// What package managers do to a host that runs: a file of the same name takes the place of the old
// one, or there is none any more. Neither changes what is loaded.
TEST_F(ExampleTest, HostKeepsThePluginWhileItsFilesAreReplacedAndRemoved) {
    const std::string example = qortest::ReadFile(INSTALL_SOURCE_DIR "/examples/host.cpp");
    const std::string ask = "ShowStorage(*static_cast<CMngSrv_QorLibIF*>(object))";
    ASSERT_NE(example.find(ask), std::string::npos);
    qortest::WriteFile(
        Folder() / "host/host.cpp",
        "#include <cstdlib>\n" + std::regex_replace(example, std::regex(R"(ShowStorage\(\*[^;]*)"),
                                                    ask + " || std::system(argv[2]) || " + ask +
                                                        " || std::system(argv[3]) || " + ask));
    fs::copy(INSTALL_SOURCE_DIR "/examples/installed", Folder() / "host/installed");
    const CEnd built = Build(Folder() / "host/installed", Folder() / "build", Prefix());
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    const std::string lib = (Lib() / "qor").string();
    const CEnd shown = Shell("qorsim run --host small -- build/host '" + lib +
                             "/libqor_MngSrv_QorLib.so' 'cd " + lib +
                             " && for file in *; do echo other > new && mv new $file; done' "
                             "'rm -r " +
                             lib + "'");
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.err, "");
    const std::string first = " | Controller Information | \n";
    size_t answers = 0;
    for (size_t at = shown.out.find(first); at != std::string::npos;
         at = shown.out.find(first, at + 1)) {
        ++answers;
    }
    EXPECT_EQ(answers, 3U) << shown.out;
    EXPECT_FALSE(fs::exists(lib));
}

class UserOfServicesTest : public ExampleTest {
protected:
    void SetUp() override {
        ExampleTest::SetUp();
        qortest::WriteFile(Folder() / "user/CMakeLists.txt",
                           "cmake_minimum_required(VERSION 3.13)\n"
                           "project(user LANGUAGES CXX)\n"
                           "find_package(qor " INSTALL_VERSION
                           " REQUIRED)\n"
                           "add_executable(user user.cpp)\n"
                           "target_link_libraries(user PRIVATE qor::ComLib)\n");
        qortest::WriteFile(
            Folder() / "user/user.cpp",
            "#include <qor/ComLib.h>\n"
            "int main() { return CStringUtil::NumberToTString(7) == \"7\" ? 0 : 1; }\n");
    }
};

TEST_F(UserOfServicesTest, CommonLibraryIsATarget) {
    const CEnd built = Build(Folder() / "user", Folder() / "build", Prefix());
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    EXPECT_EQ(Shell("build/user").status, 0);
}

// Where /lib is a link to /usr/lib, that is where CMake finds the package.
TEST_F(UserOfServicesTest, PackageIsFoundThroughALinkOfTheSystem) {
    const fs::path root = Folder() / "root";
    fs::create_directory(root);
    fs::create_directory_symlink(Prefix(), root / "usr");
    fs::create_directory_symlink(fs::path("usr") / Lib().filename(), root / Lib().filename());
    const CEnd built = Build(Folder() / "user", Folder() / "build", root);
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    EXPECT_EQ(Shell("build/user").status, 0);
}

}  // namespace
