#include "ServerWithoutTool.h"

#include <sys/mount.h>

#include <filesystem>

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr const char* KERNEL_BUS = "/sys/bus/pci/devices";
constexpr const char* BUS = "/opt/tarmica/bus";

}  // namespace

CServerWithoutTool::CServerWithoutTool() {
    fs::remove_all(TOOL_DIR);
    const fs::path utility = fs::path(INSTALL_DIR) / "RAID/tool/storcli";
    WriteFile(utility, "#!/bin/sh\necho Physical Drives = 4\n");
    fs::permissions(utility, fs::perms::owner_all);
    const fs::path card = fs::path(BUS) / "0000:02:00.0";
    WriteFile(card / "vendor", "0x1000\n");
    WriteFile(card / "device", "0x005d\n");
    WriteFile(card / "revision", "0x02\n");
    EXPECT_EQ(mount(BUS, KERNEL_BUS, "none", MS_BIND, nullptr), 0);
    fs::remove(DEVICE_LIST);
}

CServerWithoutTool::~CServerWithoutTool() {
    umount2(KERNEL_BUS, MNT_DETACH);
}

void CServerWithoutTool::ExpectAnswer(const CAnswer& answer) {
    EXPECT_EQ(answer.result, 0);
    EXPECT_EQ(answer.errorCode + "/" + answer.noticeCode + "/" + answer.errorDetail, "02//none");
    EXPECT_TRUE(answer.items.empty());
    EXPECT_EQ(ReadFile(DEVICE_LIST), "02:00.0_1000:005d_0000_02\n");
}

}  // namespace qortest
