#include <gmock/gmock.h>

#include "InstallFixture.h"

namespace {

using qortest::CEnd;
using testing::HasSubstr;

class PkgConfigTest : public qortest::CInstallFixture {
protected:
    CEnd PkgShell(const std::string& text) const {
        return Shell("export PKG_CONFIG_PATH='" + (Lib() / "pkgconfig").string() + "'; " + text);
    }
};

TEST_F(PkgConfigTest, ExampleIsBuiltAndShowsTheStorage) {
    const CEnd built = PkgShell(
        "'" INSTALL_COMPILER "' -std=c++11 " INSTALL_HOST_FLAGS
        " -DQOR_PLUGIN=\"\\\"$(pkg-config --variable=plugin qor)\\\"\" '" INSTALL_SOURCE_DIR
        "/examples/host.cpp' $(pkg-config --cflags qor) -ldl -o host");
    ASSERT_EQ(built.status, 0) << built.out << built.err;
    const CEnd shown = Shell("qorsim run --host small -- ./host");
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_EQ(shown.err, "");
    EXPECT_THAT(shown.out, HasSubstr(" | Serial Number | TR45216823\n"));
}

TEST_F(PkgConfigTest, CommonLibraryIsLinked) {
    qortest::WriteFile(Folder() / "user.cpp",
                       "#include <qor/ComLib.h>\n"
                       "int main() { return CStringUtil::NumberToTString(7) == \"7\" ? 0 : 1; }\n");
    const CEnd end =
        PkgShell("'" INSTALL_COMPILER "' " INSTALL_HOST_FLAGS
                 " user.cpp $(pkg-config --cflags --libs qor) -Wl,-rpath,\"$(pkg-config "
                 "--variable=libdir qor)\" -o user && ./user");
    EXPECT_EQ(end.status, 0) << end.out << end.err;
}

TEST_F(PkgConfigTest, VersionIsTheProjects) {
    EXPECT_EQ(PkgShell("pkg-config --modversion qor").out, INSTALL_VERSION "\n");
}

}  // namespace
