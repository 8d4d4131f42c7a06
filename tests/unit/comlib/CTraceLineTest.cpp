#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <regex>
#include <thread>

#include "ComLibFixture.h"
#include "comlib/CTraceLine.h"
#include "util/UniqueFd.h"

namespace {

using comlib::CTraceLine;
using qortest::ReadFile;
using util::CUniqueFd;

class CTraceLineTest : public qortest::CComLibFixture {
protected:
    std::string Path() const { return Scratch() / "t.log"; }

    // The line as it reaches a file, without its time and ids.
    __attribute__((format(printf, 3, 4))) std::string Written(CTraceUtility::TRACE_DBG_LEVEL level,
                                                              const char* format, ...) const {
        CTraceLine line("Module", level);
        va_list arguments;
        va_start(arguments, format);
        line.Format(format, arguments);
        va_end(arguments);
        line.WriteToFile(Path().c_str());
        std::string text = ReadFile(Path());
        std::filesystem::remove(Path());
        return text.substr(text.find(" Module ") + 1);
    }
};

TEST_F(CTraceLineTest, HasItsLayout) {
    CTraceLine line("Lib_MngSrv", CTraceUtility::TRACE_DBG_FAILURE);
    line.WriteToFile(Path().c_str());
    const std::string ids = std::to_string(getpid()) + "/" + std::to_string(gettid());
    const std::regex layout(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}Z )" + ids +
                            " Lib_MngSrv FAILURE \n");
    EXPECT_TRUE(std::regex_match(ReadFile(Path()), layout)) << ReadFile(Path());
}

TEST_F(CTraceLineTest, TimeIsTheCurrentTimeInUtc) {
    const time_t before = time(nullptr);
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    const time_t after = time(nullptr);
    tm fields = {};
    ASSERT_NE(strptime(ReadFile(Path()).c_str(), "%Y-%m-%dT%H:%M:%S", &fields), nullptr);
    EXPECT_GE(timegm(&fields), before);
    EXPECT_LE(timegm(&fields), after);
}

TEST_F(CTraceLineTest, LevelsHaveNames) {
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_RESULT, "x"), "Module RESULT x\n");
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FAILURE, "x"), "Module FAILURE x\n");
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "x"), "Module FLOW x\n");
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_DETAIL, "x"), "Module DETAIL x\n");
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_SKIP, "x"), "Module SKIP x\n");
    EXPECT_EQ(Written(static_cast<CTraceUtility::TRACE_DBG_LEVEL>(12), "x"), "Module OTHER x\n");
}

TEST_F(CTraceLineTest, IsFormattedAsPrintfDoes) {
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "%s is FAILED (ret=%08x). 100%%", "Parse", 31),
              "Module FLOW Parse is FAILED (ret=0000001f). 100%\n");
}

TEST_F(CTraceLineTest, MessageThatCannotBeFormattedShowsItsFormat) {
    const wchar_t unknown[] = {0x7fffffff, 0};
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "name %ls", unknown),
              "Module FLOW name %ls\n");
}

TEST_F(CTraceLineTest, ControlCharactersAreMadeVisible) {
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "a\nb\tc\rd\x1b[0m\x7f\x01%c", 0),
              "Module FLOW a\\nb\\tc\\rd\\x1b[0m\\x7f\\x01\\x00\n");
}

// U+0080 to U+009F, and such a byte alone: some terminals take both for controls.
TEST_F(CTraceLineTest, HighControlCharactersAreMadeVisible) {
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW,
                      "\xc2\x9b"
                      "2J \xc2\x80\xc2\x9f \x9b \x80."),
              "Module FLOW \\xc2\\x9b2J \\xc2\\x80\\xc2\\x9f \\x9b \\x80.\n");
}

// Those that turn the direction of what follows, or show as nothing.
TEST_F(CTraceLineTest, CharactersThatHideWhatIsThereAreMadeVisible) {
    EXPECT_EQ(
        Written(CTraceUtility::TRACE_DBG_FLOW,
                "\u061c \u200b \u200e\u200f \u2028\u2029\u202a\u202e \u2060\u2066\u2069 \ufeff"),
        "Module FLOW \\xd8\\x9c \\xe2\\x80\\x8b \\xe2\\x80\\x8e\\xe2\\x80\\x8f "
        "\\xe2\\x80\\xa8\\xe2\\x80\\xa9\\xe2\\x80\\xaa\\xe2\\x80\\xae "
        "\\xe2\\x81\\xa0\\xe2\\x81\\xa6\\xe2\\x81\\xa9 \\xef\\xbb\\xbf\n");
    EXPECT_EQ(
        Written(CTraceUtility::TRACE_DBG_FLOW, "\u00ad \u180e \u3164 \ufe0f \uffa0 \U000e0041"),
        "Module FLOW \\xc2\\xad \\xe1\\xa0\\x8e \\xe3\\x85\\xa4 \\xef\\xb8\\x8f "
        "\\xef\\xbe\\xa0 \\xf3\\xa0\\x81\\x81\n");
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW,
                      "\u00ad \u180b\u180f \u206f \ufff9\ufffb \U000e0000\U000e0041\U000e0fff"),
              "Module FLOW \\xc2\\xad \\xe1\\xa0\\x8b\\xe1\\xa0\\x8f \\xe2\\x81\\xaf "
              "\\xef\\xbf\\xb9\\xef\\xbf\\xbb "
              "\\xf3\\xa0\\x80\\x80\\xf3\\xa0\\x81\\x81\\xf3\\xa0\\xbf\\xbf\n");
}

TEST_F(CTraceLineTest, OtherBytesPass) {
    for (const std::string text :
         {"~ \\n \xa0\xff\xc3", "\u00a0\u00e4\u00c2\u061b\u200a\u2010\u2027",
          "\u202f\u205f\u2070\u5185\ufefe\uff1a\U0001f5b4",
          "\u00ac\u00ae\u180a\u1810\uffef\ufffc\U0002f800\U0003fffd"}) {
        EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "%s", text.c_str()),
                  "Module FLOW " + text + "\n");
    }
}

TEST_F(CTraceLineTest, CharacterThatIsCutIsNoneThatHides) {
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "\xe2\x80"), "Module FLOW \xe2\\x80\n");
    EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "\xf0\x9f\x96 "),
              "Module FLOW \xf0\\x9f\\x96 \n");
}

TEST_F(CTraceLineTest, LongMessageIsNotCut) {
    for (const size_t size : {900U, 1000U, 1023U, 1024U, 1025U, 65536U, 1'000'000U}) {
        const std::string message(size, 'x');
        EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "%s", message.c_str()),
                  "Module FLOW " + message + "\n");
        const std::string controls(size, '\x1b');
        EXPECT_EQ(Written(CTraceUtility::TRACE_DBG_FLOW, "%s", controls.c_str()).size(),
                  sizeof("Module FLOW ") + 4 * size);
    }
}

TEST_F(CTraceLineTest, LongModuleNameIsCut) {
    const std::string module(1000, 'm');
    CTraceLine line(module.c_str(), CTraceUtility::TRACE_DBG_FLOW);
    line.WriteToFile(Path().c_str());
    EXPECT_NE(ReadFile(Path()).find(" " + std::string(64, 'm') + " FLOW \n"), std::string::npos);
}

TEST_F(CTraceLineTest, FileIsAppendedToAndNotForOthers) {
    qortest::WriteFile(Path(), "before\n");
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    EXPECT_TRUE(ReadFile(Path()).starts_with("before\n2"));
    std::filesystem::remove(Path());
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    struct stat status = {};
    ASSERT_EQ(stat(Path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777 & ~0640U, 0U);
}

TEST_F(CTraceLineTest, ModeOfTheFileIsNotLeftToTheUmask) {
    const mode_t before = umask(0);
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    umask(before);
    struct stat status = {};
    ASSERT_EQ(stat(Path().c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777, 0640U);
}

// ---- a file that somebody else could have prepared ----

TEST_F(CTraceLineTest, SymbolicLinkIsNotFollowed) {
    const std::string victim = Scratch() / "victim";
    qortest::WriteFile(victim, "kept\n");
    std::filesystem::create_symlink(victim, Path());
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    EXPECT_EQ(ReadFile(victim), "kept\n");
}

TEST_F(CTraceLineTest, FileWithASecondNameIsNotWrittenTo) {
    const std::string victim = Scratch() / "victim";
    qortest::WriteFile(victim, "kept\n");
    std::filesystem::create_hard_link(victim, Path());
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    EXPECT_EQ(ReadFile(victim), "kept\n");
}

TEST_F(CTraceLineTest, FileOfAnotherUserIsNotWrittenTo) {
    if (geteuid() != 0) {
        GTEST_SKIP() << "only root can give a file away";
    }
    qortest::WriteFile(Path(), "his\n");
    ASSERT_EQ(chown(Path().c_str(), 12345, 12345), 0);
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    EXPECT_EQ(ReadFile(Path()), "his\n");
}

TEST_F(CTraceLineTest, PipeOfTheHostsUserIsWrittenTo) {
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    const CUniqueFd reader(open(Path().c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    char first = 0;
    EXPECT_EQ(read(reader.Get(), &first, 1), 1);
    EXPECT_EQ(first, '2');
}

TEST_F(CTraceLineTest, PipeWithoutReaderDropsTheLine) {
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
}

// True if `number` is neither blocked in this thread nor pending.
bool IsUntouched(int number) {
    sigset_t blocked;
    sigset_t pending;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    sigpending(&pending);
    return sigismember(&blocked, number) == 0 && sigismember(&pending, number) == 0;
}

TEST_F(CTraceLineTest, BrokenPipeDoesNotKill) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const CUniqueFd writer(ends[1]);
    close(ends[0]);
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToDescriptor(writer.Get());
    EXPECT_TRUE(IsUntouched(SIGPIPE));
}

TEST_F(CTraceLineTest, PendingSignalOfTheHostStaysPending) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const CUniqueFd writer(ends[1]);
    close(ends[0]);
    std::thread([&writer] {
        sigset_t sigpipe;
        sigemptyset(&sigpipe);
        sigaddset(&sigpipe, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &sigpipe, nullptr);
        pthread_kill(pthread_self(), SIGPIPE);
        CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToDescriptor(writer.Get());
        const timespec atOnce = {};
        EXPECT_EQ(sigtimedwait(&sigpipe, nullptr, &atOnce), SIGPIPE);
    }).join();
}

TEST_F(CTraceLineTest, FileSizeLimitDoesNotKill) {
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const rlimit nothing = {0, before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &nothing), 0);
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToFile(Path().c_str());
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    EXPECT_TRUE(IsUntouched(SIGXFSZ));
    EXPECT_EQ(ReadFile(Path()), "");
}

TEST_F(CTraceLineTest, ClosedDescriptorHarmsNothing) {
    CTraceLine("M", CTraceUtility::TRACE_DBG_FLOW).WriteToDescriptor(-1);
}

void* TraceLongLine(void* path) {
    CTraceLine line("M", CTraceUtility::TRACE_DBG_FLOW);
    line.WriteToFile(static_cast<const char*>(path));
    CTraceUtility::WriteDebug("M", CTraceUtility::TRACE_DBG_FLOW, "%s",
                              std::string(200'000, 'x').c_str());
    return nullptr;
}

TEST_F(CTraceLineTest, SmallStackIsEnough) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    // Or the smallest that the processor allows: 128 KiB on 64-bit ARM.
    const auto smallest = static_cast<size_t>(sysconf(_SC_THREAD_STACK_MIN));
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::max<size_t>(65536, smallest)), 0);
    pthread_t thread;
    std::string path = Path();
    ASSERT_EQ(pthread_create(&thread, &attributes, TraceLongLine, path.data()), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(TakeTraces(), std::vector<std::string>{"M FLOW " + std::string(200'000, 'x')});
}

}  // namespace
