// `qorctl storage` as a process, with a plug-in that answers as the test tells it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QorctlFixture.h"

namespace {

using qortest::CEnd;

class StorageCommandTest : public qortest::CQorctlFixture {
protected:
    CEnd RunStorage(const std::vector<qortest::CRecord>& answer) const {
        Answer(answer);
        return Run({"storage", "--plugin", STAND_IN_PLUGIN});
    }
};

TEST_F(StorageCommandTest, ItemsAreShownAsATree) {
    const CEnd outcome =
        RunStorage({{"item", "", "PCIe SSD Information", "", "TRUE"},
                    {"item", "PCIe SSD Information", "### General Information ###", "", "TRUE"},
                    {"item", "### General Information ###", "Bus No.", "178", "TRUE"}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out,
              "PCIe SSD Information\n"
              "└─ [General Information]\n"
              "   └─ Bus No. : 178\n"
              "\n"
              "PCIe SSD 178: the tool reports no state.\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(Log(), "create\nGetStorageInfo 0\nFreeItemList 3\ndelete\nunload\n");
}

TEST_F(StorageCommandTest, NothingToReportIsASuccessThatSaysSo) {
    const CEnd outcome = RunStorage({});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: nothing to report: no RAID controller or PCIe SSD with something to show "
              "was found on this server\n");
}

TEST_F(StorageCommandTest, FailedRequestIsExplained) {
    const CEnd outcome =
        RunStorage({{"result", "0"}, {"error", "05"}, {"detail", "krzcli -pssdinfo -aAll"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err,
                testing::AllOf(testing::StartsWith("qorctl: error code 05: "),
                               testing::HasSubstr("\nqorctl: the command that failed: krzcli "
                                                  "-pssdinfo -aAll\n"),
                               testing::EndsWith("\nqorctl: the request failed\n")));
}

}  // namespace
