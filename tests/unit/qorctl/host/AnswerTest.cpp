#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/Answer.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr qorctl::CTextStyle ASCII = {.utf8 = false, .colour = false};

// The messages of an answer with these texts.
std::vector<std::string> Explain(const qorctl::CResultTexts& texts) {
    qorctl::CReply reply;
    reply.outcome = qorctl::EOutcome::ANSWERED;
    reply.texts = texts;
    const qorctl::CAnswer answer =
        qorctl::MakeAnswer({}, std::move(reply), std::make_shared<CItemListOwner>());
    std::vector<std::string> explained;
    for (const qorctl::CMessage& message : answer.messages) {
        explained.push_back(qorctl::MessageText(message, ASCII));
    }
    return explained;
}

TEST(AnswerTest, NoTextsSayNothing) {
    EXPECT_THAT(Explain({"", "", "none"}), IsEmpty());
    EXPECT_THAT(Explain({"", "", ""}), IsEmpty());
}

struct CCase {
    const char* code;
    const char* meaning;
    const char* remedy;
};

TEST(AnswerTest, EveryErrorCodeHasAMeaningAndARemedy) {
    const CCase cases[] = {
        {"01", "the RAID tool reported an error, or could not be run", "Run the command below"},
        {"02", "the RAID tool is not installed",
         "Install the RAID management tool: there is no /opt/tarmica"},
        {"03", "report could not be read", "Check that the directory tmp/MSRAID"},
        {"04", "report was not understood", "Check that the RAID tool is a supported version"},
        {"05", "did not answer in time", "Try again when the server is less busy"},
    };
    for (const CCase& row : cases) {
        const std::vector<std::string> messages = Explain({row.code, "", "none"});
        ASSERT_THAT(messages, SizeIs(1)) << row.code;
        EXPECT_TRUE(messages[0].starts_with(std::string("error code ") + row.code + ": "));
        EXPECT_LT(messages[0].find(row.meaning), messages[0].find('\n')) << messages[0];
        EXPECT_NE(messages[0].find(std::string("\n  ") + row.remedy), std::string::npos)
            << messages[0];
    }
}

TEST(AnswerTest, EveryNoticeCodeHasAMeaningAndARemedy) {
    const CCase cases[] = {
        {"01", "version is older than 4.4, or could not be read",
         "If it is older, update the RAID tool."},
        {"02", "no physical drive is attached", "Nothing needs to be done"},
    };
    for (const CCase& row : cases) {
        const std::vector<std::string> messages = Explain({"", row.code, "none"});
        ASSERT_THAT(messages, SizeIs(1)) << row.code;
        EXPECT_TRUE(messages[0].starts_with(std::string("notice code ") + row.code + ": "));
        EXPECT_LT(messages[0].find(row.meaning), messages[0].find('\n')) << messages[0];
        EXPECT_NE(messages[0].find(std::string("\n  ") + row.remedy), std::string::npos)
            << messages[0];
    }
}

// A version that was read is old, or of a form that nobody knows: nothing was lost.
TEST(AnswerTest, RemedyOfAVersionFitsWhatIsKnownOfIt) {
    const auto remedy = [](std::optional<std::string> version) {
        qorctl::CReply reply;
        reply.outcome = qorctl::EOutcome::ANSWERED;
        reply.texts.noticeCode = "01";
        reply.toolVersion = std::move(version);
        return qorctl::MakeAnswer({}, std::move(reply), std::make_shared<CItemListOwner>())
            .messages.at(0)
            .remedy;
    };
    EXPECT_EQ(remedy("4.3"), "It is version 4.3. Update the RAID tool.");
    EXPECT_EQ(
        remedy(std::nullopt),
        "If it is older, update the RAID tool. If it could not be read, run \"qorctl doctor\":\n"
        "the tool may fail, or the disk of its reports be full.");
}

TEST(AnswerTest, UnknownCodesAreStatedAsTheyAre) {
    EXPECT_THAT(Explain({"0104", "X\n", ""}),
                ElementsAre("error code 0104: no meaning is known for this code",
                            "notice code X\\n: no meaning is known for this code"));
}

TEST(AnswerTest, FailingCommandIsGivenAsALineToRun) {
    EXPECT_THAT(Explain({"", "", "krzcli -ctrlinfo -a0"}),
                ElementsAre("the command that failed: krzcli -ctrlinfo -a0\n"
                            "  By hand: LD_LIBRARY_PATH=/opt/tarmica/krz/lib "
                            "/opt/tarmica/krz/cli/krzcli -ctrlinfo -a0"));
}

TEST(AnswerTest, NoLineIsTooLongForATerminal) {
    for (const char* code : {"01", "02", "03", "04", "05"}) {
        for (const std::string& message : Explain({code, code, "krzcli -pdinfo -nosmart -a0"})) {
            size_t begin = 0;
            while (begin < message.size()) {
                const size_t end = std::min(message.find('\n', begin), message.size());
                EXPECT_LE(end - begin, 100U) << message;
                begin = end + 1;
            }
        }
    }
}

}  // namespace
