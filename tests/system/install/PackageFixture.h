// Fixture: packages of this build in a folder of the test's own.
#ifndef QORTEST_PACKAGEFIXTURE_H
#define QORTEST_PACKAGEFIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <string>

#include "SimFixture.h"

namespace qortest {

class CPackageFixture : public CSimFixture {
protected:
    static constexpr const char* ALL = "qor;qor-monitoring;qorsim;qor-dev";

    std::filesystem::path Packages() const { return Folder() / "packages"; }

    // Makes the packages of these components for a family, "DEB" or "RPM", in a folder below the
    // test's. `before` are words of the shell. Compressing would take most of the time.
    void Make(const std::string& family, const std::string& components,
              const std::string& folder = "packages", const std::string& before = "") const {
        const std::string path = (Folder() / folder).string();
        const CEnd end = RunProgram(
            {"sh", "-c",
             before + " mkdir -p '" + path + "' && cd '" + path + "' && '" INSTALL_CPACK "' -G " +
                 family + " --config '" INSTALL_BUILD_DIR "/CPackConfig.cmake' -B '" + path +
                 "' -D 'CPACK_COMPONENTS_ALL=" + components +
                 "' -D CPACK_DEBIAN_COMPRESSION_TYPE=none"});
        ASSERT_EQ(end.status, 0) << end.out << end.err;
    }

    // The one file that begins and ends so.
    std::string PathOf(const std::string& begin, const std::string& end) const {
        for (const auto& entry : std::filesystem::directory_iterator(Packages())) {
            const std::string name = entry.path().filename();
            if (name.starts_with(begin) && name.ends_with(end)) {
                return entry.path();
            }
        }
        ADD_FAILURE() << "no package " << begin << "..." << end;
        return "";
    }

    // What a program that has to end well prints.
    static std::string Out(const CStrings& words) {
        const CEnd end = RunProgram(words);
        EXPECT_EQ(end.status, 0) << Joined(words, " ") << "\n" << end.err;
        return end.out;
    }
};

}  // namespace qortest

#endif  // QORTEST_PACKAGEFIXTURE_H
