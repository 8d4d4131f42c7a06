#include "LoadedPluginFixture.h"

#include <filesystem>
#include <stdexcept>

namespace qortest {

CLoadedPlugin::CLoadedPlugin(const char* path, int visibility)
    : m_Library(dlopen(path, RTLD_NOW | visibility)) {
    if (m_Library == nullptr) {
        throw std::runtime_error(dlerror());
    }
    m_Object =
        static_cast<CMngSrv_QorLibIF*>(reinterpret_cast<void* (*)()>(Function("CreateLibIF"))());
}

CLoadedPlugin::~CLoadedPlugin() {
    reinterpret_cast<void (*)(void*)>(Function("DeleteLibIF"))(m_Object);
    dlclose(m_Library);
}

void* CLoadedPlugin::Function(const char* name) const {
    return dlsym(m_Library, name);
}

void CLoadedPluginFixture::SetUp() {
    CPrivateServerFixture::SetUp();
    WriteFile(std::string(INSTALL_DIR) + "/RaidVCFac.ini",
              "[SuportDevice]\nSuportDeviceNum=1\nVendor1=VEN_1000\nDevice1=DEV_005D\n");
    WriteFile(DEVICE_LIST, "02:00.0_1000:005d_0000_02\n");
    WriteFile("/etc/opt/tarmica/qor/comlib.ini",
              std::string("[Trace]\nSink=file\nLevels=31\nFile=") + TRACE_FILE + "\n");
}

CAnswer CLoadedPluginFixture::GetRAIDInfo(const CLoadedPlugin& plugin) {
    CAnswer answer;
    answer.result = plugin->GetRAIDInfo(&answer.items, &answer.errorCode, &answer.noticeCode,
                                        &answer.errorDetail);
    return answer;
}

CAnswer CLoadedPluginFixture::GetStorageInfo(const CLoadedPlugin& plugin) {
    CAnswer answer;
    answer.result = plugin->GetStorageInfo(&answer.items, &answer.errorCode, &answer.noticeCode,
                                           &answer.errorDetail);
    return answer;
}

CAnswer CLoadedPluginFixture::GetPDInfo(const CLoadedPlugin& plugin) {
    CAnswer answer;
    answer.result = plugin->GetPDInfo(0, 252, 5, &answer.items, &answer.errorCode,
                                      &answer.noticeCode, &answer.errorDetail);
    return answer;
}

void CLoadedPluginFixture::PlayOneController(CStandInTool& tool) {
    tool.Play("-v", {.out = "Product Version : 7.0\n"});
    tool.Play("-ctrlinfo -aAll", {.out = "RAID Controller : 0\n"});
    tool.Play("-ctrlinfo -a0", {.out = "RAID Controller : 0\n\n### General Information ###\n"
                                       "Product Name : X\n"});
    tool.Play("-ldpdinfo -a0", {.out = "RG0\nRG No. : RG0\n\n>>PD0 (a)\nSlot : 0\n"});
    tool.Play("-ldpdinfo -a0", {.out = "RG0\nRG No. : RG0\n\n>>PD0 (a)\nSlot : 0\n"});
    tool.Play("-pdinfo -nosmart -a0",
              {.out = "PD0(LD0)\n### General Information ###\nPD Status : ONLINE\n"});
}

bool CLoadedPluginFixture::Traced(const std::string& text) {
    return std::filesystem::exists(TRACE_FILE) &&
           ReadFile(TRACE_FILE).find(text) != std::string::npos;
}

}  // namespace qortest
