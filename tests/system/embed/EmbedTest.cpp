// Hosts that have qor in them, or find it installed: the examples, and what must not happen to a
// host's own project. Of the source tree there is only what the libraries are made of.
#include <gmock/gmock.h>

#include <regex>

#include "SimFixture.h"

namespace qortest {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// CMake breaks what it says into lines.
std::string OnOneLine(const std::string& text) {
    return std::regex_replace(text, std::regex("\\s+"), " ");
}

class EmbedTest : public CSimFixture {
protected:
    void SetUp() override {
        CSimFixture::SetUp();
        for (const char* name : {"CMakeLists.txt", "cmake", "src"}) {
            fs::create_directories(Source());
            fs::copy(fs::path(EMBED_SOURCE_DIR) / name, Source() / name,
                     fs::copy_options::recursive);
        }
        fs::copy(fs::path(EMBED_SOURCE_DIR) / "examples", Top() / "examples",
                 fs::copy_options::recursive);
    }

    fs::path Top() const { return Folder() / "a server's maker"; }
    fs::path Source() const { return Top() / "qor"; }
    fs::path Build() const { return Top() / "build"; }

    // The compiler, a cache of it if there is one, and nothing of the programs to be found.
    CStrings Settings() const {
        return {"-G",
                "Ninja",
                "-DCMAKE_MAKE_PROGRAM=" EMBED_NINJA,
                "-DCMAKE_CXX_COMPILER=" EMBED_COMPILER,
                "-DCMAKE_CXX_COMPILER_LAUNCHER=" EMBED_LAUNCHER,
                "-DCMAKE_DISABLE_FIND_PACKAGE_CLI11=ON",
                "-DCMAKE_DISABLE_FIND_PACKAGE_fmt=ON",
                "-DCMAKE_DISABLE_FIND_PACKAGE_nlohmann_json=ON",
                "-DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON",
                "-Werror=dev"};
    }

    CEnd CMake(const CStrings& arguments) const {
        CStrings words = {"env", "CCACHE_BASEDIR=" + Folder().string(), "CCACHE_NOHASHDIR=1",
                          EMBED_CMAKE};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return RunProgram(words);
    }

    CEnd Configure(const fs::path& project, const CStrings& options = {}) const {
        CStrings words = {"-S", project, "-B", Build()};
        const CStrings settings = Settings();
        words.insert(words.end(), settings.begin(), settings.end());
        words.insert(words.end(), options.begin(), options.end());
        return CMake(words);
    }

    void BuildExample(const std::string& name, const CStrings& options = {}) const {
        const CEnd configured = Configure(Top() / "examples" / name, options);
        ASSERT_EQ(configured.status, 0) << configured.out << configured.err;
        const CEnd built = CMake({"--build", Build()});
        ASSERT_EQ(built.status, 0) << built.out << built.err;
    }

    // What the host says on a simulated server is what qorctl's plug-in says there.
    void ExpectStorage(const CEnd& shown) const {
        EXPECT_EQ(shown.status, 0) << shown.err;
        EXPECT_THAT(shown.out, StartsWith(" | Controller Information | \n"));
        EXPECT_THAT(shown.out,
                    HasSubstr("### General Information ### | Serial Number | TR45216823\n"));
    }

    CEnd RunHost() const { return RunOn("small", {Build() / "host"}); }
};

// Without the programs, for a host that takes the libraries from a folder.
TEST_F(EmbedTest, LibrariesAloneAreInstalledAndFound) {
    for (const char* name : {"examples", "packaging"}) {
        fs::copy(fs::path(EMBED_SOURCE_DIR) / name, Source() / name, fs::copy_options::recursive);
    }
    const fs::path prefix = Top() / "installed";
    const CEnd configured =
        Configure(Source(), {"-DQOR_BUILD_APPS=OFF", "-DQOR_WERROR=OFF", "-DCMAKE_UNITY_BUILD=ON"});
    ASSERT_EQ(configured.status, 0) << configured.out << configured.err;
    const CEnd built = CMake({"--build", Build()});
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    const CEnd installed = CMake({"--install", Build(), "--prefix", prefix});
    ASSERT_EQ(installed.status, 0) << installed.err;
    fs::remove_all(Build());
    fs::remove_all(Source());
    BuildExample("installed", {"-DCMAKE_PREFIX_PATH=" + prefix.string()});
    const CEnd shown = RunHost();
    ExpectStorage(shown);
    EXPECT_EQ(shown.err, "");
}

TEST_F(EmbedTest, SubdirectoryIsBuiltWithTheHost) {
    BuildExample("subdirectory", {"-DQOR_SOURCE=" + Source().string(), "-DCMAKE_UNITY_BUILD=ON"});
    const CEnd shown = RunHost();
    ExpectStorage(shown);
    EXPECT_EQ(shown.err, "");
    // The host's rules install, and no others.
    const fs::path prefix = Top() / "installed";
    const CEnd installed = CMake({"--install", Build(), "--prefix", prefix});
    ASSERT_EQ(installed.status, 0) << installed.err;
    CStrings files;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(prefix)) {
        if (!entry.is_directory()) {
            files.push_back(fs::relative(entry.path(), prefix));
        }
    }
    EXPECT_THAT(files, testing::UnorderedElementsAre("bin/host", "lib/host/libqor_ComLib.so",
                                                     "lib/host/libqor_MngSrv_QorLib.so"));
    ExpectStorage(
        RunOn("small", {prefix / "bin/host", prefix / "lib/host/libqor_MngSrv_QorLib.so"}));
}

TEST_F(EmbedTest, ArchiveIsFetchedAndBuiltWithTheHost) {
    const fs::path archive = Top() / "qor.tar.gz";
    const CEnd packed = RunProgram(
        {"env", "-C", Top(), EMBED_CMAKE, "-E", "tar", "czf", archive, "--format=gnutar", "qor"});
    ASSERT_EQ(packed.status, 0) << packed.err;
    fs::remove_all(Source());
    BuildExample("fetched", {"-DQOR_ARCHIVE=" + archive.string(), "-DCMAKE_UNITY_BUILD=ON"});
    const CEnd shown = RunHost();
    ExpectStorage(shown);
    EXPECT_EQ(shown.err, "");
}

TEST_F(EmbedTest, FolderIsTakenInsteadOfTheArchive) {
    const CEnd end = Configure(Top() / "examples/fetched",
                               {"-DFETCHCONTENT_SOURCE_DIR_QOR=" + Source().string()});
    EXPECT_EQ(end.status, 0) << end.out << end.err;
}

TEST_F(EmbedTest, HostBringsItsOwnServices) {
    // Nothing that only our library is made of is looked for.
    BuildExample("own_comlib", {"-DQOR_SOURCE=" + Source().string(), "-DCMAKE_UNITY_BUILD=ON",
                                "-DCMAKE_FIND_USE_CMAKE_SYSTEM_PATH=OFF",
                                "-DCMAKE_FIND_USE_SYSTEM_ENVIRONMENT_PATH=OFF"});
    const CEnd shown = RunOn("small", {"env", "HOST_TRACE=1", Build() / "host"});
    ExpectStorage(shown);
    EXPECT_THAT(shown.err,
                HasSubstr("host: Lib_MngSrv: CMSRAID_InterFace::GetStorageInfo [START]\n"));
}

TEST_F(EmbedTest, ServicesThatAreNoTargetAreRefused) {
    WriteFile(Top() / "CMakeLists.txt",
              "cmake_minimum_required(VERSION 3.25)\n"
              "project(server LANGUAGES CXX)\n"
              "add_library(server_static STATIC server.cpp)\n"
              "set(QOR_BUILD_COMLIB OFF)\n"
              "set(QOR_COMLIB_TARGET ${NAMED})\n"
              "add_subdirectory(qor)\n");
    WriteFile(Top() / "server.cpp", "");
    const CEnd none = Configure(Top(), {"-DNAMED=server::ComLib"});
    EXPECT_NE(none.status, 0);
    EXPECT_THAT(OnOneLine(none.err), HasSubstr("there is no target \"server::ComLib\""));
    const CEnd other = Configure(Top(), {"-DNAMED=server_static"});
    EXPECT_NE(other.status, 0);
    EXPECT_THAT(OnOneLine(other.err),
                HasSubstr("QOR_COMLIB_TARGET: server_static is no shared library"));
}

// Where the host has its programs together, their data are its own business.
TEST_F(EmbedTest, NothingIsPutBesideTheHostsOutput) {
    for (const char* name : {"apps", "data"}) {
        fs::copy(fs::path(EMBED_SOURCE_DIR) / name, Source() / name, fs::copy_options::recursive);
    }
    WriteFile(Top() / "CMakeLists.txt",
              "cmake_minimum_required(VERSION 3.25)\n"
              "project(server LANGUAGES CXX)\n"
              "set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR})\n"
              "add_subdirectory(qor)\n");
    CStrings options = {"-DQOR_BUILD_APPS=ON"};
    for (const char* library : {"CLI11", "fmt", "nlohmann_json"}) {
        options.push_back(std::string("-DCMAKE_DISABLE_FIND_PACKAGE_") + library + "=OFF");
    }
    const CEnd configured = Configure(Top(), options);
    EXPECT_EQ(configured.status, 0) << configured.out << configured.err;
    EXPECT_FALSE(fs::exists(Top() / "share"));
}

// A project with rules of its own, which hold for its own files, before and behind.
TEST_F(EmbedTest, NothingOfTheHostsProjectChanges) {
    WriteFile(Top() / "CMakeLists.txt", R"cmake(
cmake_minimum_required(VERSION 3.25)
project(server VERSION 5.6 LANGUAGES CXX)
include(CTest)
set(CMAKE_CXX_STANDARD 14)
set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
set(CMAKE_DEBUG_POSTFIX -debug)
add_compile_options(-Werror -Wpadded)

function(keep_settings name)
  get_cmake_property(variables VARIABLES)
  get_cmake_property(cached CACHE_VARIABLES)
  list(FILTER variables EXCLUDE REGEX "^(ARG|_)|^(variables|cached|text|variable|name)$")
  set(text "")
  foreach(variable IN LISTS variables cached)
    string(APPEND text "${variable}=${${variable}}\n")
  endforeach()
  foreach(property COMPILE_OPTIONS COMPILE_DEFINITIONS INCLUDE_DIRECTORIES LINK_OPTIONS TESTS)
    get_directory_property(value ${property})
    string(APPEND text "${property}: ${value}\n")
  endforeach()
  file(WRITE ${CMAKE_BINARY_DIR}/${name} "${text}")
endfunction()

keep_settings(before)
add_subdirectory(qor)
keep_settings(after)

# All targets of a folder and those below.
function(list_targets folder)
  get_directory_property(targets DIRECTORY ${folder} BUILDSYSTEM_TARGETS)
  get_directory_property(tests DIRECTORY ${folder} TESTS)
  file(APPEND ${CMAKE_BINARY_DIR}/targets "${targets}\n")
  file(APPEND ${CMAKE_BINARY_DIR}/tests "${tests}")
  get_directory_property(folders DIRECTORY ${folder} SUBDIRECTORIES)
  foreach(folder IN LISTS folders)
    list_targets(${folder})
  endforeach()
endfunction()
list_targets(${CMAKE_CURRENT_SOURCE_DIR}/qor)
)cmake");
    const CEnd end = Configure(Top(), {"-DCMAKE_BUILD_TYPE=Debug"});
    ASSERT_EQ(end.status, 0) << end.out << end.err;

    const CEnd changes = RunProgram({"sh", "-c",
                                     "cd \"$1\" && sort -u before >1; sort -u after >2; "
                                     "comm -3 1 2 | grep -vi '^[[:space:]]*qor_'",
                                     "sh", Build()});
    EXPECT_EQ(changes.out, "");
    EXPECT_EQ(ReadFile(Build() / "tests"), "");
    EXPECT_FALSE(fs::exists(Build() / "CPackConfig.cmake"));
    const std::string targets = ReadFile(Build() / "targets");
    EXPECT_THAT(targets, HasSubstr("qor_MngSrv_QorLib"));
    EXPECT_THAT(targets, AllOf(Not(HasSubstr("qorctl")), Not(HasSubstr("qorsim"))));
    EXPECT_THAT(targets, testing::ContainsRegex("^((qor_[A-Za-z_]+)[;\n]+)+$"));

    // The warnings that the host asks for come, and are no errors; its names are for its own files.
    const CEnd built = CMake({"--build", Build(), "--target", "qor_ComLib"});
    EXPECT_EQ(built.status, 0) << built.out << built.err;
    EXPECT_THAT(built.out, HasSubstr("[-Wpadded]"));
    EXPECT_TRUE(fs::exists(Build() / "qor/lib/libqor_ComLib.so"));
}

}  // namespace
}  // namespace qortest
