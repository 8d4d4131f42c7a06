// Fixture: everything installed into a prefix of the test's own.
#ifndef QORTEST_INSTALLFIXTURE_H
#define QORTEST_INSTALLFIXTURE_H

#include <filesystem>
#include <string>

#include "SimFixture.h"

namespace qortest {

class CInstallFixture : public CSimFixture {
protected:
    void SetUp() override {
        CSimFixture::SetUp();
        const CEnd end = RunProgram(
            {INSTALL_CMAKE, "--install", INSTALL_BUILD_DIR, "--prefix", Prefix().string()});
        ASSERT_EQ(end.status, 0) << end.out << end.err;
    }

    std::filesystem::path Prefix() const { return Folder() / "prefix"; }
    std::filesystem::path Bin() const { return Prefix() / "bin"; }
    std::filesystem::path Lib() const { return Prefix() / INSTALL_LIBDIR; }
    std::filesystem::path Share() const { return Prefix() / "share"; }

    // Runs a text of the shell with the installed programs in its path.
    CEnd Shell(const std::string& text) const {
        return RunProgram({"env", "-C", Folder().string(),
                           "PATH=" + Bin().string() + ":/usr/bin:/bin", "LC_ALL=C.UTF-8",
                           "QOR_TRACE=none", "sh", "-c", text});
    }
};

}  // namespace qortest

#endif  // QORTEST_INSTALLFIXTURE_H
