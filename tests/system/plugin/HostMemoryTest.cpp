// A host may be short of memory, or ask from a thread with next to no stack. Not for builds with
// sanitizers, which need much of both.
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <new>
#include <sstream>
#include <stdexcept>
#include <string>

#include "ItemText.h"
#include "LoadedPluginFixture.h"
#include "RepeatingTool.h"
#include "ServerWithoutTool.h"

namespace {

using qortest::CAnswer;
using qortest::CLoadedPlugin;

class HostMemory : public qortest::CLoadedPluginFixture {
protected:
    void SetUp() override {
        CLoadedPluginFixture::SetUp();
        qortest::WriteRepeatingTool();
    }

    void TearDown() override {
        unsetenv("QOR_TRACE");
        CLoadedPluginFixture::TearDown();
    }

    static rlim_t AddressSpaceInUse() {
        rlim_t pages = 0;
        std::istringstream(qortest::ReadFile("/proc/self/statm")) >> pages;
        return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
    }
};

// The report does not fit into what is left.
TEST_F(HostMemory, LackOfMemoryIsToldAndPasses) {
    std::string report = qortest::ReadFile("/opt/tarmica/reports/-ctrlinfo -a0");
    const std::string line = "Key : " + std::string(4000, 'v') + "\n";
    for (int i = 0; i < 4000; ++i) {
        report += line;
    }
    qortest::WriteFile("/opt/tarmica/reports/-ctrlinfo -a0", report);
    const CLoadedPlugin plugin;
    rlimit before = {};
    ASSERT_EQ(getrlimit(RLIMIT_AS, &before), 0);
    CAnswer answer;
    bool thrown = false;
    const rlimit low = {AddressSpaceInUse() + (8UL << 20), before.rlim_max};
    setrlimit(RLIMIT_AS, &low);
    try {
        answer.result = plugin->GetRAIDInfo(&answer.items, &answer.errorCode, &answer.noticeCode,
                                            &answer.errorDetail);
    } catch (const std::bad_alloc&) {
        thrown = true;
    }
    setrlimit(RLIMIT_AS, &before);
    EXPECT_TRUE(thrown || (answer.result == 0 && answer.errorCode == "03")) << answer.errorCode;
    EXPECT_TRUE(answer.items.empty());
    CAnswer again = GetRAIDInfo(plugin);
    EXPECT_EQ(again.result, 1);
    EXPECT_GT(again.items.size(), 4000U);
    plugin->FreeItemList(&again.items);
}

// What GetStorageInfo does with no more than `room` bytes.
class CAnswerInRoom {
public:
    CAnswerInRoom(const CLoadedPlugin& plugin, rlim_t room, rlim_t inUse) {
        rlimit before = {};
        getrlimit(RLIMIT_AS, &before);
        const rlimit low = {inUse + room, before.rlim_max};
        setrlimit(RLIMIT_AS, &low);
        try {
            m_Answer.result = plugin->GetStorageInfo(&m_Answer.items, &m_Answer.errorCode,
                                                     &m_Answer.noticeCode, &m_Answer.errorDetail);
        } catch (const std::bad_alloc&) {
            m_Thrown = true;
        }
        setrlimit(RLIMIT_AS, &before);
        m_Items = m_Answer.items.size();
        plugin->FreeItemList(&m_Answer.items);
    }

    bool m_Thrown = false;
    size_t m_Items = 0;
    CAnswer m_Answer;
};

// A report of `lines` lines, most of them as short as those that become items can be.
void WriteReportOfLines(size_t lines, const std::string& arguments = "-ctrlinfo -a0") {
    const std::string path = "/opt/tarmica/reports/" + arguments;
    std::string report = qortest::ReadFile(path);
    const auto there = static_cast<size_t>(std::count(report.begin(), report.end(), '\n'));
    for (size_t i = there; i < lines; ++i) {
        report += "a:\n";
    }
    qortest::WriteFile(path, report);
}

TEST_F(HostMemory, ReportBeyondTheLimitTakesNone) {
    WriteReportOfLines(7'000'000);
    const CLoadedPlugin plugin;
    const CAnswerInRoom answer(plugin, 16UL << 20, AddressSpaceInUse());
    EXPECT_FALSE(answer.m_Thrown);
    EXPECT_EQ(answer.m_Answer.errorCode, "04");
}

TEST_F(HostMemory, LargestReportTakesHalfAGigabyte) {
    WriteReportOfLines(2'000'000);
    setenv("QOR_TRACE", "none", 1);
    const CLoadedPlugin plugin;
    const CAnswerInRoom answer(plugin, 640UL << 20, AddressSpaceInUse());
    EXPECT_FALSE(answer.m_Thrown);
    EXPECT_EQ(answer.m_Answer.result, 1) << answer.m_Answer.errorCode;
    EXPECT_GT(answer.m_Items, 2'000'000U);
}

TEST_F(HostMemory, ReportOfMoreItemsTakesNoMore) {
    WriteReportOfLines(5'000'000);
    setenv("QOR_TRACE", "none", 1);
    const CLoadedPlugin plugin;
    const CAnswerInRoom answer(plugin, 640UL << 20, AddressSpaceInUse());
    EXPECT_FALSE(answer.m_Thrown);
    EXPECT_EQ(answer.m_Answer.errorCode, "04");
}

TEST_F(HostMemory, AllReportsOfARequestTakeNoMoreTogether) {
    WriteReportOfLines(900'000, "-ctrlinfo -a0");
    WriteReportOfLines(900'000, "-ldpdinfo -a0");
    WriteReportOfLines(900'000, "-pdinfo -nosmart -a0");
    setenv("QOR_TRACE", "none", 1);
    const CLoadedPlugin plugin;
    const CAnswerInRoom answer(plugin, 640UL << 20, AddressSpaceInUse());
    EXPECT_FALSE(answer.m_Thrown);
    EXPECT_EQ(answer.m_Answer.errorCode, "04");
}

TEST_F(HostMemory, ReportOnSsdsTakesWhatTheOthersLeft) {
    qortest::WriteFile(qortest::DEVICE_LIST,
                       "02:00.0_1000:005d_0000_02\n03:00.0_1aed:2001_0000_00\n");
    WriteReportOfLines(1'400'000, "-ctrlinfo -a0");
    WriteReportOfLines(1'400'000, "-pssdinfo -aAll");
    setenv("QOR_TRACE", "none", 1);
    const CLoadedPlugin plugin;
    const CAnswerInRoom answer(plugin, 640UL << 20, AddressSpaceInUse());
    EXPECT_FALSE(answer.m_Thrown);
    EXPECT_EQ(answer.m_Answer.errorCode, "04");
}

// The plug-in's operations in a thread whose stack has 64 KiB. What came back is judged outside:
// that may need more.
class SmallStack : public HostMemory {
protected:
    void SetUp() override {
        HostMemory::SetUp();
        qortest::WriteFile(qortest::DEVICE_LIST,
                           "02:00.0_1000:005d_0000_02\n03:00.0_1aed:2001_0000_00\n");
    }

    static void Run(std::function<void()> task) {
        constexpr size_t SMALL_STACK = 64UL << 10;
        pthread_attr_t attributes;
        pthread_attr_init(&attributes);
        // Or the smallest that the processor allows: 128 KiB on 64-bit ARM.
        const auto smallest = static_cast<size_t>(sysconf(_SC_THREAD_STACK_MIN));
        ASSERT_EQ(pthread_attr_setstacksize(&attributes, std::max(SMALL_STACK, smallest)), 0);
        pthread_t thread = {};
        ASSERT_EQ(pthread_create(&thread, &attributes, Call, &task), 0);
        pthread_join(thread, nullptr);
        pthread_attr_destroy(&attributes);
    }

    // Runs a request that has to end with the exception.
    static void ExpectOutOfRange(CAnswer (*ask)(const CLoadedPlugin&)) {
        const CLoadedPlugin plugin;
        bool thrown = false;
        Run([&] {
            try {
                ask(plugin);
            } catch (const std::out_of_range&) {
                thrown = true;
            }
        });
        EXPECT_TRUE(thrown);
    }

private:
    static void* Call(void* task) {
        (*static_cast<const std::function<void()>*>(task))();
        return nullptr;
    }
};

TEST_F(SmallStack, StorageXmlAndFormAreServed) {
    const CLoadedPlugin plugin;
    CAnswer answer;
    unsigned int xml = 1;
    unsigned char form = 0;
    std::string digits;
    Run([&] {
        answer.result = plugin->GetStorageInfo(&answer.items, &answer.errorCode, &answer.noticeCode,
                                               &answer.errorDetail);
        char* text = nullptr;
        xml = plugin->XmlSerialize(0, "component", &answer.items, &text);
        std::string errorCode;
        std::string noticeCode;
        form = plugin->GetCtrlPDInfoBinaryString(&digits, &errorCode, &noticeCode);
    });
    EXPECT_EQ(answer.result, 1) << answer.errorCode;
    EXPECT_NE(qortest::ItemText(answer.items).find("| PCIe SSD Information |"), std::string::npos);
    EXPECT_EQ(xml, 0U);
    EXPECT_EQ(form, 1);
    EXPECT_GT(digits.size(), 32U);
    plugin->FreeItemList(&answer.items);
}

TEST_F(SmallStack, DriveWithItsSmartTableIsServed) {
    const CLoadedPlugin plugin;
    CAnswer answer;
    Run([&] { answer = GetPDInfo(plugin); });
    EXPECT_EQ(answer.result, 1) << answer.errorCode;
    EXPECT_NE(qortest::ItemText(answer.items).find("| Attribute | Read Error Rate |"),
              std::string::npos);
    plugin->FreeItemList(&answer.items);
}

TEST_F(SmallStack, ToolCommandIsRun) {
    const CLoadedPlugin plugin;
    const std::string file = "/opt/tarmica/result";
    unsigned int result = 99;
    unsigned long status = 99;
    Run([&] { result = plugin->KRZExecCli("krzcli -v", &status, file); });
    EXPECT_EQ(result, 0U);
    EXPECT_EQ(status, 0U);
    EXPECT_EQ(qortest::ReadFile(file), "Product Version : 7.0\n");
}

TEST_F(SmallStack, ServerWithoutToolAndDeviceListIsServed) {
    const qortest::CServerWithoutTool server;
    const CLoadedPlugin plugin;
    CAnswer answer;
    Run([&] { answer = GetRAIDInfo(plugin); });
    qortest::CServerWithoutTool::ExpectAnswer(answer);
}

// Unwinding needs stack, too.
TEST_F(SmallStack, ExceptionOfADamagedReportReachesTheThread) {
    qortest::WriteFile("/opt/tarmica/reports/-pdinfo -pd[252:5] -a0",
                       qortest::GoldenBad("smart/sata_row_ends_in_name.txt"));
    ExpectOutOfRange(GetPDInfo);
    qortest::WriteFile("/opt/tarmica/reports/-v", "Product Version :");
    ExpectOutOfRange(GetRAIDInfo);
}

}  // namespace
