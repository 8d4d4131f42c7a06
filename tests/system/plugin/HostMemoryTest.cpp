// A host may be short of memory, or ask from a thread with next to no stack. Not for builds with
// sanitizers, which need much of both.
#include <pthread.h>
#include <sys/resource.h>

#include <filesystem>
#include <new>
#include <sstream>
#include <string>

#include "LoadedPluginTest.h"
#include "RepeatingTool.h"

namespace {

using qortest::CAnswer;
using qortest::CLoadedPlugin;

class HostMemory : public qortest::LoadedPluginTest {
protected:
    void SetUp() override {
        LoadedPluginTest::SetUp();
        qortest::WriteRepeatingTool();
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
    for (int i = 0; i < 5000; ++i) {
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
    EXPECT_GT(again.items.size(), 5000U);
    plugin->FreeItemList(&again.items);
}

struct CTask {
    const CLoadedPlugin* plugin;
    unsigned char result;
};

void* AskInThread(void* argument) {
    auto* task = static_cast<CTask*>(argument);
    std::list<CItemDisp*> items;
    std::string errorCode;
    std::string noticeCode;
    std::string errorDetail;
    task->result = (*task->plugin)->GetStorageInfo(&items, &errorCode, &noticeCode, &errorDetail);
    char* text = nullptr;
    task->result =
        task->result != 0 && (*task->plugin)->XmlSerialize(0, "component", &items, &text) == 0;
    (*task->plugin)->FreeItemList(&items);
    std::string digits;
    task->result =
        task->result != 0 &&
        (*task->plugin)->GetCtrlPDInfoBinaryString(&digits, &errorCode, &noticeCode) != 0;
    return nullptr;
}

TEST_F(HostMemory, ThreadWithSmallStackIsServed) {
    constexpr size_t SMALL_STACK = 64UL << 10;
    const CLoadedPlugin plugin;
    CTask task = {&plugin, 0};
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, SMALL_STACK), 0);
    pthread_t thread = {};
    ASSERT_EQ(pthread_create(&thread, &attributes, AskInThread, &task), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(task.result, 1);
}

}  // namespace
