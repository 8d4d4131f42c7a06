#include <gtest/gtest.h>
#include <libintl.h>
#include <locale.h>
#include <string.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "ComLibFixture.h"
#include "Process.h"
#include "comlib/ErrorText.h"

namespace {

using comlib::ErrorText;

// The last one that the oldest C library has a text for; newer ones may have more.
constexpr int LAST_OF_ALL = EHWPOISON;

TEST(ErrorText, IsTheCLibrarysForEveryNumberThatAllKnow) {
    for (int error = 0; error <= LAST_OF_ALL; ++error) {
        const char* const known = strerrordesc_np(error);
        EXPECT_STREQ(ErrorText(error), known != nullptr ? known : "unknown error") << error;
    }
}

TEST(ErrorText, OfANumberThatNotAllKnowIsUnknown) {
    for (int error = -200; error < 5000; error = error == -1 ? LAST_OF_ALL + 1 : error + 1) {
        EXPECT_STREQ(ErrorText(error), "unknown error") << error;
    }
}

TEST(ErrorText, OfAnotherNumberIsAConstant) {
    EXPECT_EQ(ErrorText(-1), ErrorText(4095));
    EXPECT_EQ(ErrorText(41), ErrorText(58));
    EXPECT_STREQ(ErrorText(41), "unknown error");
}

TEST(ErrorText, LeavesTheErrorNumber) {
    errno = EDOM;
    ErrorText(ENOENT);
    ErrorText(-1);
    EXPECT_EQ(errno, EDOM);
}

// A catalogue of translations with one text.
std::string Catalogue(const std::string& english, const std::string& translation) {
    constexpr uint32_t HEAD = 28, ENTRY = 8, TEXTS = HEAD + 2 * ENTRY;
    const auto length = [](const std::string& text) { return static_cast<uint32_t>(text.size()); };
    const std::array<uint32_t, 11> numbers = {0x950412de,
                                              0,
                                              1,
                                              HEAD,
                                              HEAD + ENTRY,
                                              0,
                                              0,
                                              length(english),
                                              TEXTS,
                                              length(translation),
                                              TEXTS + length(english) + 1};
    std::string content(reinterpret_cast<const char*>(numbers.data()), sizeof(numbers));
    content.append(english).push_back('\0');
    content.append(translation).push_back('\0');
    return content;
}

// The test's processor may be one that is emulated, and localedef the machine's own.
constexpr const char* BYTE_ORDER_OPTION =
    __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? "--big-endian" : "--little-endian";

// A language of the test's own: the machine may have none, and the C library translates nothing in
// the locales that it has built in.
class ErrorTextTest : public qortest::CComLibFixture {
protected:
    void SetUp() override {
        CComLibFixture::SetUp();
        const qortest::CEnd end =
            qortest::RunProgram({"localedef", "--no-archive", BYTE_ORDER_OPTION, "-f", "UTF-8",
                                 "-i", "de_DE", Scratch() / "de_DE.UTF-8"});
        ASSERT_EQ(end.status, 0) << end.err;
        setenv("LOCPATH", Scratch().c_str(), 1);
        setenv("LANGUAGE", "de", 1);
        ASSERT_STREQ(setlocale(LC_ALL, "de_DE.UTF-8"), "de_DE.UTF-8");
    }

    void TearDown() override {
        setlocale(LC_ALL, "C");
        unsetenv("LANGUAGE");
        unsetenv("LOCPATH");
        CComLibFixture::TearDown();
    }
};

TEST_F(ErrorTextTest, IsEnglishWhateverTheHostsLanguage) {
    qortest::WriteFile(Scratch() / "de/LC_MESSAGES/libc.mo",
                       Catalogue("No such file or directory", "Datei oder Verzeichnis fehlt"));
    ASSERT_NE(bindtextdomain("libc", Scratch().c_str()), nullptr);
    EXPECT_STREQ(strerror(ENOENT), "Datei oder Verzeichnis fehlt");
    EXPECT_STREQ(ErrorText(ENOENT), "No such file or directory");
    EXPECT_STREQ(strerror(ENOENT), "Datei oder Verzeichnis fehlt") << "the host's stays";
}

}  // namespace
