#include <sys/stat.h>

#include <array>
#include <chrono>
#include <climits>
#include <cstring>
#include <fstream>
#include <sstream>
#include <thread>

#include "ComLibFixture.h"
#include "comlib/CIniCache.h"
#include "plugin/ComLib.h"

namespace {

using comlib::CIniCache;
using qortest::WriteFile;

constexpr const char* MISSING = "(missing)";

class PrivateProfile : public qortest::CComLibFixture {
protected:
    void TearDown() override {
        CIniCache::Clear();
        CComLibFixture::TearDown();
    }

    std::string Path() const { return Scratch() / "test.ini"; }

    void WriteIni(const std::string& text) const { WriteFile(Path(), text); }

    std::string Text(const char* section, const char* key) const {
        std::array<char, 256> buffer;
        const unsigned long length = GetPrivateProfileStringA(section, key, MISSING, buffer.data(),
                                                              buffer.size(), Path().c_str());
        EXPECT_EQ(length, std::strlen(buffer.data()));
        return buffer.data();
    }

    int Number(const char* section, const char* key, int defaultValue) const {
        return GetPrivateProfileIntA(section, key, defaultValue, Path().c_str());
    }
};

TEST_F(PrivateProfile, SampleOfTheSupportedDevicesIsRead) {
    WriteIni(
        "[SuportDevice]\nSuportDeviceNum=2\nVendor1=VEN_1000\nDevice1=DEV_005B\n"
        "Vendor2=VEN_1000\nDevice2=DEV_0073\n");
    EXPECT_EQ(Number("SuportDevice", "SuportDeviceNum", 0), 2);
    EXPECT_EQ(Text("SuportDevice", "Vendor1"), "VEN_1000");
    EXPECT_EQ(Text("SuportDevice", "Device1"), "DEV_005B");
    EXPECT_EQ(Text("SuportDevice", "Device2"), "DEV_0073");
    EXPECT_EQ(Text("SuportDevice", "Device3"), MISSING);
}

TEST_F(PrivateProfile, MissingFileSectionOrKeyGivesTheDefault) {
    EXPECT_EQ(Number("S", "K", 0), 0);
    EXPECT_EQ(Number("S", "K", -7), -7);
    EXPECT_EQ(Text("S", "K"), MISSING);
    WriteIni("[S]\nk=1\n");
    EXPECT_EQ(Number("Other", "k", 5), 5);
    EXPECT_EQ(Number("S", "other", 5), 5);
    EXPECT_EQ(Text("Other", "k"), MISSING);
    EXPECT_EQ(Text("S", "other"), MISSING);
}

TEST_F(PrivateProfile, WhatIsNoRegularFileGivesTheDefault) {
    std::filesystem::create_directory(Path());
    EXPECT_EQ(Number("S", "K", 3), 3);
    std::filesystem::remove(Path());
    ASSERT_EQ(mkfifo(Path().c_str(), 0600), 0);
    EXPECT_EQ(Number("S", "K", 3), 3);
    EXPECT_EQ(GetPrivateProfileIntA("S", "K", 4, "/dev/zero"), 4);
}

TEST_F(PrivateProfile, GrammarIsAccepted) {
    struct CCase {
        const char* ini;
        const char* value;  // of K in S
    };
    const CCase CASES[] = {
        {"[S]\nK=v", "v"},                        // no line end
        {"[S]\r\nK=v\r\n", "v"},                  // CRLF
        {"\xef\xbb\xbf[S]\nK=v\n", "v"},          // byte order mark
        {"[s]\nk=v\n", "v"},                      // any case
        {" [ S ] \n\t K \t=\t v w \t\n", "v w"},  // blanks
        {"; c\n# c\n[S]\n;K=1\n#K=2\n  ; K=3\nK=v\n;", "v"},
        {"[S]\nK=v ; no comment\n", "v ; no comment"},  // only a whole line is one
        {"[S]\nK=\"v\"\n", "v"},
        {"[S]\nK='v'\n", "v"},
        {"[S]\nK=\" v \"\n", " v "},
        {"[S]\nK=\"\"v\"\"\n", "\"v\""},  // one pair only
        {"[S]\nK=\"v\n", "\"v"},
        {"[S]\nK=\"v'\n", "\"v'"},
        {"[S]\nK=\"\"\n", ""},
        {"[S]\nK=\"\n", "\""},
        {"[S]\nK=\n", ""},
        {"[S]\nK=a=b\n", "a=b"},
        {"[S]\nK=1\nK=2\n", "2"},                 // the last one counts
        {"[S]\nK=1\n[T]\nK=3\n[S]\nL=2\n", "1"},  // a section in two pieces
        {"[S]\nno value\n=no key\nK=v\n", "v"},
        {"[S]\nK=<<<END\nx\nEND\n", "<<<END"},      // no texts of several lines
        {"[S]\nK=\xe4\xc3\xa4\n", "\xe4\xc3\xa4"},  // bytes pass
        {"K=v\n", "(missing)"},
        {"[S\nK=v\n", "(missing)"},
        {"[S]\nK\n", "(missing)"},
        {"", "(missing)"},
        {"\xef\xbb\xbf", "(missing)"},
        {"[", "(missing)"},
    };
    for (const CCase& row : CASES) {
        WriteIni(row.ini);
        EXPECT_EQ(Text("S", "K"), row.value) << row.ini;
    }
}

TEST_F(PrivateProfile, NamesAreComparedWithoutRegardToCase) {
    WriteIni("[SuportDevice]\nVendor1=VEN_1aed\n");
    EXPECT_EQ(Text("SUPORTDEVICE", "vENDOR1"), "VEN_1aed");
}

TEST_F(PrivateProfile, NumberIsReadLikeAnyNumberAndClamped) {
    struct CCase {
        const char* text;
        int number;
    };
    const CCase CASES[] = {
        {"3", 3},
        {" 3 ", 3},
        {"\"3\"", 3},
        {"-3", -3},
        {"+3", 3},
        {"3 devices", 3},
        {"abc", 0},
        {"", 0},
        {"0x10", 0},
        {"2147483647", INT_MAX},
        {"2147483648", INT_MAX},
        {"99999999999999999999", INT_MAX},
        {"-2147483648", INT_MIN},
        {"-2147483649", INT_MIN},
        {"-99999999999999999999", INT_MIN},
    };
    for (const CCase& row : CASES) {
        WriteIni(std::string("[S]\nK=") + row.text + "\n");
        EXPECT_EQ(Number("S", "K", 77), row.number) << row.text;
    }
}

TEST_F(PrivateProfile, TextIsCutToTheBufferAndTerminated) {
    WriteIni("[S]\nK=abcdef\n");
    std::array<char, 8> buffer;
    struct CCase {
        unsigned long size;
        const char* text;
    };
    for (const CCase& row :
         {CCase{8, "abcdef"}, CCase{7, "abcdef"}, CCase{6, "abcde"}, CCase{2, "a"}, CCase{1, ""}}) {
        buffer.fill('#');
        EXPECT_EQ(GetPrivateProfileStringA("S", "K", "", buffer.data(), row.size, Path().c_str()),
                  std::strlen(row.text));
        EXPECT_STREQ(buffer.data(), row.text);
        for (size_t i = row.size; i < buffer.size(); ++i) {
            EXPECT_EQ(buffer[i], '#') << "byte behind a buffer of " << row.size;
        }
    }
}

TEST_F(PrivateProfile, DefaultTextIsCutToo) {
    std::array<char, 4> buffer;
    EXPECT_EQ(
        GetPrivateProfileStringA("S", "K", "default", buffer.data(), buffer.size(), Path().c_str()),
        3U);
    EXPECT_STREQ(buffer.data(), "def");
}

TEST_F(PrivateProfile, BufferOfSizeZeroIsLeftAlone) {
    char byte = '#';
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "default", &byte, 0, Path().c_str()), 0U);
    EXPECT_EQ(byte, '#');
}

TEST_F(PrivateProfile, ChangedFileIsReadAgain) {
    for (int i = 100; i < 300; ++i) {  // one size, and within a tick of the clock
        WriteIni("[S]\nK=" + std::to_string(i) + "\n");
        ASSERT_EQ(Number("S", "K", 0), i);
    }
    std::filesystem::remove(Path());
    EXPECT_EQ(Number("S", "K", -1), -1);
}

TEST_F(PrivateProfile, ReplacedFileIsReadAgain) {
    WriteIni("[S]\nK=1\n");
    EXPECT_EQ(Number("S", "K", 0), 1);
    WriteFile(Path() + ".new", "[S]\nK=2\n");
    std::filesystem::rename(Path() + ".new", Path());
    EXPECT_EQ(Number("S", "K", 0), 2);
}

// Whatever way a program changes a file, it reads back what it wrote: in place without a change of
// size, from an empty file on, by another file under the name. Every tenth time the file is old
// enough for the cache to keep it.
TEST_F(PrivateProfile, WhatWasWrittenIsReadBackHoweverOften) {
    constexpr int FIRST = 100'000;
    constexpr int CHANGES = 1000;
    constexpr auto OLD_ENOUGH = std::chrono::milliseconds(21);
    const auto text = [](int i) { return "[S]\nK=" + std::to_string(i) + "\n"; };
    WriteIni(text(0));
    for (int i = FIRST; i < FIRST + CHANGES; ++i) {
        switch (i % 3) {
            case 0:
                std::fstream(Path(), std::ios::in | std::ios::out | std::ios::binary) << text(i);
                break;
            case 1:
                WriteIni(text(i));
                break;
            default:
                WriteFile(Path() + ".new", text(i));
                std::filesystem::rename(Path() + ".new", Path());
                break;
        }
        ASSERT_EQ(Number("S", "K", 0), i);
        if (i % 10 == 0) {
            std::this_thread::sleep_for(OLD_ENOUGH);
        }
        ASSERT_EQ(Number("S", "K", 0), i);
    }
}

TEST_F(PrivateProfile, MoreFilesThanTheCacheHoldsAreAllAnswered) {
    constexpr size_t FILES = CIniCache::CAPACITY + 3;
    const auto path = [this](size_t i) { return (Scratch() / std::to_string(i)).string(); };
    for (size_t i = 0; i < FILES; ++i) {
        WriteFile(path(i), "[S]\nK=" + std::to_string(i + 1) + "\n");
    }
    for (int round = 0; round < 3; ++round) {
        for (size_t i = 0; i < FILES; ++i) {
            ASSERT_EQ(GetPrivateProfileIntA("S", "K", 0, path(i).c_str()), static_cast<int>(i + 1));
        }
    }
}

unsigned long BytesReadByThisProcess() {
    std::istringstream io(qortest::ReadFile("/proc/self/io"));
    std::string name;
    unsigned long count = 0;
    io >> name >> count;
    EXPECT_EQ(name, "rchar:");
    return count;
}

TEST_F(PrivateProfile, FileOfTenThousandEntriesIsNotReadForEveryKey) {
    constexpr int ENTRIES = 10'000;
    std::string ini = "[SuportDevice]\nSuportDeviceNum=10000\n";
    for (int i = 1; i <= ENTRIES; ++i) {
        ini += "Vendor" + std::to_string(i) + "=VEN_" + std::to_string(i) + "\n";
    }
    WriteIni(ini);
    const unsigned long before = BytesReadByThisProcess();
    for (int i = 1; i <= ENTRIES; ++i) {
        ASSERT_EQ(Text("SuportDevice", ("Vendor" + std::to_string(i)).c_str()),
                  "VEN_" + std::to_string(i));
    }
    // A file that has just been written is read again until its time stamp can be relied on.
    EXPECT_LT(BytesReadByThisProcess() - before, ENTRIES / 20 * ini.size());
}

TEST_F(PrivateProfile, ThreadsMayAskAtOnce) {
    constexpr int THREADS = 4;
    const auto path = [this](int i) { return (Scratch() / std::to_string(i)).string(); };
    for (int i = 0; i < THREADS; ++i) {
        WriteFile(path(i), "[S]\nK=" + std::to_string(i) + "\n");
    }
    std::vector<std::thread> threads;
    std::array<int, THREADS> wrong = {};
    for (int t = 0; t < THREADS; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 500; ++i) {
                const int file = (i + t) % THREADS;
                wrong[static_cast<size_t>(t)] +=
                    GetPrivateProfileIntA("S", "K", -1, path(file).c_str()) != file;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, (std::array<int, THREADS>{}));
}

}  // namespace
