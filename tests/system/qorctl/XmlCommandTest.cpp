// `qorctl xml` as a process, with a plug-in that answers as the test tells it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QorctlFixture.h"

namespace {

using qortest::CEnd;
using qortest::CRecord;
using testing::HasSubstr;

const CRecord ITEM = {"item", "", "A", "", "TRUE"};

class XmlCommandTest : public qortest::CQorctlFixture {
protected:
    CEnd RunXml(const std::vector<std::string>& options, const std::vector<CRecord>& answer) const {
        Answer(answer);
        std::vector<std::string> arguments = {"xml", "--plugin", STAND_IN_PLUGIN};
        arguments.insert(arguments.end(), options.begin(), options.end());
        return Run(arguments);
    }
};

TEST_F(XmlCommandTest, DocumentIsWrittenByteForByteAndALineFeed) {
    const std::string document = "<\x1b[1m>\r\n\xff&\t";
    const CEnd outcome = RunXml({}, {ITEM, {"document", document}});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, document + "\n");
    EXPECT_EQ(outcome.err, "");
    EXPECT_EQ(Log(),
              "create\nGetRAIDInfo 0\nXmlSerialize 0 '' 1\nFreeItemList 1\ndelete\nunload\n");
}

TEST_F(XmlCommandTest, EachRequestCanBeWritten) {
    const std::pair<std::vector<std::string>, const char*> cases[] = {
        {{"--of", "raid"}, "create\nGetRAIDInfo 0\n"},
        {{"--of", "storage"}, "create\nGetStorageInfo 0\n"},
        {{"--of", "drive", "1", "252", "010"}, "create\nof 1 [252:10]\nGetPDInfo 0\n"},
    };
    for (const auto& [options, calls] : cases) {
        std::filesystem::remove(m_Folder / "log");
        EXPECT_EQ(RunXml(options, {ITEM, {"document", "<x/>"}}).out, "<x/>\n");
        EXPECT_THAT(Log(), testing::StartsWith(calls));
    }
}

TEST_F(XmlCommandTest, ComponentIsHandedOver) {
    RunXml({"--of", "drive", "0", "0", "3", "--component", "a <b>"}, {ITEM, {"document", "<x/>"}});
    EXPECT_THAT(Log(), HasSubstr("\nXmlSerialize 0 'a <b>' 1\n"));
}

TEST_F(XmlCommandTest, NothingToReportIsASuccessWithoutADocument) {
    const CEnd outcome = RunXml({}, {});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, testing::StartsWith("qorctl: nothing to report: "));
    EXPECT_EQ(Log(), "create\nGetRAIDInfo 0\nFreeItemList 0\ndelete\nunload\n");
}

TEST_F(XmlCommandTest, DriveThatIsNotThereIsAFailure) {
    const CEnd outcome = RunXml({"--of", "drive", "0", "252", "3"}, {});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, testing::StartsWith("qorctl: the RAID tool described no drive at "));
}

TEST_F(XmlCommandTest, FailedRequestMakesNoDocument) {
    const CEnd outcome = RunXml({}, {ITEM, {"result", "0"}, {"error", "04"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_THAT(outcome.err, HasSubstr("error code 04"));
    EXPECT_EQ(Log(), "create\nGetRAIDInfo 0\nFreeItemList 1\ndelete\nunload\n");
}

TEST_F(XmlCommandTest, RefusedListIsExplained) {
    const CEnd outcome = RunXml({}, {ITEM, {"xml-result", "03300001"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_EQ(outcome.err,
              "qorctl: no XML document, result 0x03300001: item 1 has an enable flag that is "
              "neither \"TRUE\" nor \"FALSE\"\n");
}

TEST_F(XmlCommandTest, SuccessWithoutADocumentIsAFailure) {
    const CEnd outcome = RunXml({}, {ITEM});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "qorctl: the plug-in reported success but handed out no XML document\n");
}

TEST_F(XmlCommandTest, ExceptionIsReported) {
    const CEnd outcome = RunXml({}, {ITEM, {"throw", "XmlSerialize", "private"}});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "qorctl: the request ended with an exception: private to the plug-in\n");
    EXPECT_THAT(Log(), testing::EndsWith("\nFreeItemList 1\ndelete\nunload\n"));
}

TEST_F(XmlCommandTest, RequestThatIsNoneIsAUsageError) {
    const std::vector<std::vector<std::string>> wrong = {{"--of"},
                                                         {"--of", "disks"},
                                                         {"--of", "raid", "0"},
                                                         {"--of", "storage", "0", "0", "3"},
                                                         {"--of", "drive"},
                                                         {"--of", "drive", "0", "0"},
                                                         {"--of", "drive", "0", "0", "x"},
                                                         {"--of", "drive", "0", "0", "3", "4"},
                                                         {"raid"},
                                                         {"--component"}};
    for (const std::vector<std::string>& options : wrong) {
        const CEnd outcome = RunXml(options, {ITEM});
        EXPECT_GT(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_NE(outcome.err, "");
    }
    EXPECT_FALSE(std::filesystem::exists(m_Folder / "log"));
}

TEST_F(XmlCommandTest, HelpSaysWhatAnEmptyListGives) {
    EXPECT_THAT(Run({"xml", "--help"}).out, HasSubstr("no document of an empty list"));
}

}  // namespace
