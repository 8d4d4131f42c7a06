// A host that knows only what its makers were told: four exported names, the positions of the
// operations in the object's table, and a record of four strings. No header of ours is included.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <list>
#include <string>

#include "PrivateServerFixture.h"
#include "StandInTool.h"

namespace {

using qortest::CStandInTool;

struct CRecord {
    std::string parent;
    std::string name;
    std::string value;
    std::string enable;
};

#ifdef QOR_OLD_STRING_ABI
static_assert(sizeof(std::string) == sizeof(void*), "the std::string of before C++11");
#endif

using Records = std::list<CRecord*>;

// The operation at `slot` of the object's table.
template <class Operation>
Operation Slot(void* object, size_t slot) {
    void** table = *static_cast<void***>(object);
    return reinterpret_cast<Operation>(table[slot]);
}

using GetInfoShort = unsigned char (*)(void*, Records*, std::string*, std::string*);
using GetInfoLong = unsigned char (*)(void*, Records*, std::string*, std::string*, std::string*);
using FreeList = void (*)(void*, Records*);
using ExecCli = unsigned int (*)(void*, const std::string&, unsigned long*, const std::string&);
using Destroy = void (*)(void*);

class SlotHost : public qortest::CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        m_Library = dlopen(QOR_PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(m_Library, nullptr) << dlerror();
        m_Object = Function<void* (*)()>("CreateLibIF")();
        qortest::WriteFile(
            std::string(qortest::INSTALL_DIR) + "/RaidVCFac.ini",
            "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_1000\nDevice1=DEV_005D\n");
        qortest::WriteFile(qortest::DEVICE_LIST, "02:00.0_1000:005d\n");
    }

    void TearDown() override {
        Function<void (*)(void*)>("DeleteLibIF")(m_Object);
        dlclose(m_Library);
        CPrivateServerFixture::TearDown();
    }

    template <class Pointer>
    Pointer Function(const char* name) {
        return reinterpret_cast<Pointer>(dlsym(m_Library, name));
    }

    static void PlayOneController(CStandInTool& tool) {
        tool.Play("-v", {.out = "Product Version : 7.0\n"});
        tool.Play("-ctrlinfo -aAll", {.out = "RAID Controller : 0\n"});
        tool.Play("-ctrlinfo -a0", {.out = "RAID Controller : 0\n\n### General Information ###\n"
                                           "Product Name : X\n"});
        tool.Play("-ldpdinfo -a0", {});
        tool.Play("-ldpdinfo -a0", {});
        tool.Play("-pdinfo -nosmart -a0", {});
    }

    void* m_Library = nullptr;
    void* m_Object = nullptr;
};

TEST_F(SlotHost, Slot4GivesRecordsThatSlot9Frees) {
    CStandInTool tool;
    PlayOneController(tool);
    Records records;
    std::string error = "old";
    std::string notice = "old";
    std::string detail = "old";
    ASSERT_EQ(Slot<GetInfoLong>(m_Object, 4)(m_Object, &records, &error, &notice, &detail), 1);
    EXPECT_EQ(error, "");
    EXPECT_EQ(notice, "");
    EXPECT_EQ(detail, "none");
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records.front()->name, "Controller Information");
    EXPECT_EQ(records.back()->parent, "### General Information ###");
    EXPECT_EQ(records.back()->name, "Product Name");
    EXPECT_EQ(records.back()->value, "X");
    EXPECT_EQ(records.back()->enable, "TRUE");
    Slot<FreeList>(m_Object, 9)(m_Object, &records);
    EXPECT_TRUE(records.empty());
}

TEST_F(SlotHost, Slot3GivesTheSameWithoutTheDetail) {
    CStandInTool tool;
    PlayOneController(tool);
    Records records;
    std::string error;
    std::string notice;
    EXPECT_EQ(Slot<GetInfoShort>(m_Object, 3)(m_Object, &records, &error, &notice), 1);
    EXPECT_EQ(records.size(), 4U);
    Slot<FreeList>(m_Object, 9)(m_Object, &records);
}

TEST_F(SlotHost, RecordsCanBeFreedOneByOne) {
    const auto create = Function<CRecord* (*)(const char*, const char*, const char*, const char*)>(
        "CreateItemDisp");
    CRecord* record = create("a", "b", "c", "TRUE");
    EXPECT_EQ(record->parent + record->name + record->value + record->enable, "abcTRUE");
    Function<void (*)(CRecord*)>("DeleteItemDisp")(record);
}

TEST_F(SlotHost, Slot10RunsAToolCommandIntoAFile) {
    CStandInTool tool;
    tool.Play("-v", {.out = "hello\n"});
    unsigned long exitCode = 99;
    const std::string file = "/opt/tarmica/result";
    EXPECT_EQ(Slot<ExecCli>(m_Object, 10)(m_Object, "krzcli -v", &exitCode, file), 0U);
    EXPECT_EQ(exitCode, 0U);
    EXPECT_EQ(qortest::ReadFile(file), "hello\n");
}

TEST_F(SlotHost, Slot1DestroysTheObject) {
    void* other = Function<void* (*)()>("CreateLibIF")();
    Slot<Destroy>(other, 1)(other);
}

}  // namespace
