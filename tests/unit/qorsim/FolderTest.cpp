// What is opened beneath a folder, whatever a caller has looked at before.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "Folder.h"
#include "OtherKernel.h"
#include "PrivateServerFixture.h"

namespace {

using qorsim::CNewFolder;
using qorsim::ReadBeneath;
using qortest::EKernel;

namespace fs = std::filesystem;

class CFolderTest : public qortest::CPrivateServerFixture,
                    public testing::WithParamInterface<EKernel> {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        qortest::WriteFile(Inside() / "deep/file", "inside");
        qortest::WriteFile(Secret(), "outside");
    }

    static fs::path Folder() { return "/opt/tarmica/folder"; }
    static fs::path Inside() { return Folder() / "inside"; }
    static fs::path Secret() { return Folder() / "secret"; }

    static bool IsRead(const std::string& name) {
        std::string error;
        return ReadBeneath(Inside(), name, error).has_value();
    }
};

INSTANTIATE_TEST_SUITE_P(Kernels, CFolderTest,
                         testing::Values(EKernel::WHOLE, EKernel::WITHOUT_OPENAT2,
                                         EKernel::FORBIDS_OPENAT2));

// In a process of its own that stays on that kernel.
TEST_P(CFolderTest, NothingOutsideIsRead) {
    EXPECT_EXIT(
        {
            const bool isBeneath = qortest::Enter(GetParam()) && IsRead("deep/file") &&
                                   !IsRead("../secret") && !IsRead("deep/../../secret") &&
                                   !IsRead(Secret());
            _exit(isBeneath ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_P(CFolderTest, NothingOutsideIsMade) {
    EXPECT_EXIT(
        {
            std::string error;
            const auto folder = CNewFolder::Make(Folder() / "new", error);
            const bool isBeneath = qortest::Enter(GetParam()) && folder &&
                                   folder->Write("deep/file", "", error) &&
                                   !folder->Write("../other", "", error) &&
                                   !folder->Write(Folder() / "other", "", error);
            _exit(isBeneath ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
    EXPECT_FALSE(fs::exists(Folder() / "other"));
}

TEST_P(CFolderTest, LinkIsNoNewFolder) {
    std::string error;
    fs::create_directory(Folder() / "target");
    fs::create_directory_symlink(Folder() / "target", Folder() / "link");
    EXPECT_FALSE(CNewFolder::Make(Folder() / "link", error));
    EXPECT_TRUE(error.starts_with("cannot open ")) << error;
}

}  // namespace
