#include "plugin/MngSrv_QorLibIF.h"

#include "cli/CMSRAID_KRZ.h"
#include "orchestration/CMSRAID_InterFace.h"
#include "plugin/ItemDisp.h"

namespace {

constexpr unsigned int XML_INVALID_ARGUMENT = 0x01000000;
constexpr unsigned int XML_NO_SERIALIZER = 0x04000000;

}  // namespace

CMngSrv_QorLibIF::CMngSrv_QorLibIF() : m_pLibMan(nullptr) {}

CMngSrv_QorLibIF::~CMngSrv_QorLibIF() = default;

unsigned int CMngSrv_QorLibIF::XmlSerialize(unsigned int, const char* component, void* data,
                                            char** out) {
    if (component == nullptr || data == nullptr || *out != nullptr) {
        return XML_INVALID_ARGUMENT;
    }
    return XML_NO_SERIALIZER;
}

unsigned char CMngSrv_QorLibIF::GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                            std::string* noticeCode) {
    std::string errorDetail;
    return GetRAIDInfo(items, errorCode, noticeCode, &errorDetail);
}

unsigned char CMngSrv_QorLibIF::GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                            std::string* noticeCode, std::string* errorDetail) {
    CMSRAID_InterFace interFace;
    if (items == nullptr || errorCode == nullptr || noticeCode == nullptr ||
        errorDetail == nullptr) {
        return 0;
    }
    errorCode->clear();
    noticeCode->clear();
    *errorDetail = "none";
    std::string errCode;
    std::string notice;
    std::string detail;
    const unsigned char result = interFace.GetRAIDInfo(items, &errCode, &notice, &detail);
    errorCode->insert(0, errCode);
    noticeCode->insert(0, notice);
    *errorDetail = detail;
    return result;
}

unsigned char CMngSrv_QorLibIF::GetPDInfo(long ctrlNo, long enclosure, long slot,
                                          std::list<CItemDisp*>* items, std::string* errorCode,
                                          std::string* noticeCode) {
    std::string errorDetail;
    return GetPDInfo(ctrlNo, enclosure, slot, items, errorCode, noticeCode, &errorDetail);
}

unsigned char CMngSrv_QorLibIF::GetPDInfo(long, long, long, std::list<CItemDisp*>*, std::string*,
                                          std::string*, std::string*) {
    return 0;
}

unsigned char CMngSrv_QorLibIF::GetCtrlPDInfoBinaryString(std::string*, std::string*,
                                                          std::string*) {
    return 0;
}

unsigned char CMngSrv_QorLibIF::GetStorageInfo(std::list<CItemDisp*>*, std::string*, std::string*,
                                               std::string*) {
    return 0;
}

void CMngSrv_QorLibIF::FreeItemList(std::list<CItemDisp*>* items) {
    CMSRAID_InterFace interFace;
    if (items != nullptr) {
        interFace.FreeItemList(items);
    }
}

unsigned int CMngSrv_QorLibIF::KRZExecCli(const std::string& command, unsigned long* exitCode,
                                          const std::string& resultFile) {
    if (exitCode == nullptr) {
        return KRZ_RUN_FAILED;
    }
    // Texts end at an embedded NUL.
    const std::string commandText = command.c_str();
    const std::string path = resultFile.c_str();
    return CMSRAID_KRZ::ExecCli(commandText, exitCode, path);
}

void* CreateLibIF() {
    return new CMngSrv_QorLibIF;
}

void DeleteLibIF(void* object) {
    delete static_cast<CMngSrv_QorLibIF*>(object);
}
