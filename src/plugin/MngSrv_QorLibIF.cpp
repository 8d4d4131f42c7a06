#include "plugin/MngSrv_QorLibIF.h"

#include <pthread.h>

#include "base/ItemList.h"
#include "cli/CMSRAID_KRZ.h"
#include "orchestration/CMSRAID_InterFace.h"
#include "plugin/SvpConversion.h"
#include "svp/CSvpPdInfoForm.h"
#include "xml/MngSrv_QorLibMan.h"

namespace {

// A request ends before its thread is cancelled: the frames of a cancelled thread are not ours to
// unwind, and a child would stay unreaped.
class CUncancelled {
public:
    CUncancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_State); }
    ~CUncancelled() { pthread_setcancelstate(m_State, nullptr); }
    CUncancelled(const CUncancelled&) = delete;  // put back once
    CUncancelled& operator=(const CUncancelled&) = delete;

private:
    int m_State = PTHREAD_CANCEL_ENABLE;
};

// The rules that the information operations share: nothing is touched when a pointer is null, the
// caller's texts are reset before and filled after the request. `request` gets the orchestrator and
// three texts of its own.
template <class Request>
unsigned char Answer(const std::list<CItemDisp*>* items, std::string* errorCode,
                     std::string* noticeCode, std::string* errorDetail, Request request) {
    const CUncancelled uncancelled;
    CMSRAID_InterFace interFace;
    if (items == nullptr || errorCode == nullptr || noticeCode == nullptr ||
        errorDetail == nullptr) {
        return 0;
    }
    errorCode->clear();
    noticeCode->clear();
    *errorDetail = NO_DETAIL;
    std::string errCode;
    std::string notice;
    std::string detail;
    const unsigned char result = request(interFace, &errCode, &notice, &detail);
    // With room for both codes nothing can fail any more: an exception leaves the caller's texts as
    // they were reset. Two of them may be the same text.
    errorCode->reserve(errorCode->size() + errCode.size() + notice.size());
    noticeCode->reserve(noticeCode->size() + errCode.size() + notice.size());
    errorCode->insert(0, errCode);
    noticeCode->insert(0, notice);
    errorDetail->swap(detail);
    return result;
}

}  // namespace

CMngSrv_QorLibIF::CMngSrv_QorLibIF() : m_pLibMan(new CMngSrv_QorLibMan) {}

CMngSrv_QorLibIF::~CMngSrv_QorLibIF() {
    delete m_pLibMan;
    m_pLibMan = nullptr;
}

unsigned int CMngSrv_QorLibIF::XmlSerialize(unsigned int type, const char* component, void* data,
                                            char** out) {
    const CUncancelled uncancelled;
    if (component == nullptr || data == nullptr || *out != nullptr) {
        return CXmlSerializer::RESULT_INVALID_ARGUMENT;
    }
    return m_pLibMan->XmlSerialize(type, component, data, out);
}

unsigned char CMngSrv_QorLibIF::GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                            std::string* noticeCode) {
    std::string errorDetail;
    return GetRAIDInfo(items, errorCode, noticeCode, &errorDetail);
}

unsigned char CMngSrv_QorLibIF::GetRAIDInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                            std::string* noticeCode, std::string* errorDetail) {
    return Answer(items, errorCode, noticeCode, errorDetail,
                  [&](CMSRAID_InterFace& interFace, auto*... texts) {
                      return interFace.GetRAIDInfo(items, texts...);
                  });
}

unsigned char CMngSrv_QorLibIF::GetPDInfo(long ctrlNo, long enclosure, long slot,
                                          std::list<CItemDisp*>* items, std::string* errorCode,
                                          std::string* noticeCode) {
    std::string errorDetail;
    return GetPDInfo(ctrlNo, enclosure, slot, items, errorCode, noticeCode, &errorDetail);
}

unsigned char CMngSrv_QorLibIF::GetPDInfo(long ctrlNo, long enclosure, long slot,
                                          std::list<CItemDisp*>* items, std::string* errorCode,
                                          std::string* noticeCode, std::string* errorDetail) {
    return Answer(items, errorCode, noticeCode, errorDetail,
                  [&](CMSRAID_InterFace& interFace, auto*... texts) {
                      return interFace.GetPDInfo(ctrlNo, enclosure, slot, items, texts...);
                  });
}

unsigned char CMngSrv_QorLibIF::GetStorageInfo(std::list<CItemDisp*>* items, std::string* errorCode,
                                               std::string* noticeCode, std::string* errorDetail) {
    return Answer(items, errorCode, noticeCode, errorDetail,
                  [&](CMSRAID_InterFace& interFace, auto*... texts) {
                      return interFace.GetStorageInfo(items, texts...);
                  });
}

unsigned char CMngSrv_QorLibIF::GetCtrlPDInfoBinaryString(std::string* binary,
                                                          std::string* errorCode,
                                                          std::string* noticeCode) {
    const CUncancelled uncancelled;
    if (binary == nullptr || errorCode == nullptr || noticeCode == nullptr) {
        return 0;
    }
    binary->clear();
    errorCode->clear();
    noticeCode->clear();
    CSvpPdInfoForm form;
    CItemListOwner items;
    const bool result = GetRAIDInfo(&items, errorCode, noticeCode) != 0;
    if (result) {
        ChangeToSvpPdInfoForm(&form, &items);
    }
    form.SetDataSize();
    form.DumpMe(binary);
    form.OutPutMemberToDebugLog();
    if (result) {
        FreeItemList(&items);
    }
    return result ? 1 : 0;
}

void CMngSrv_QorLibIF::ChangeToSvpPdInfoForm(CSvpPdInfoForm* form, std::list<CItemDisp*>* items) {
    CSvpConversion::Convert(form, *items);
}

bool CMngSrv_QorLibIF::SerchStringList(const std::string& name, const std::string* table) {
    return CSvpConversion::SerchStringList(name, table);
}

void CMngSrv_QorLibIF::FreeItemList(std::list<CItemDisp*>* items) {
    const CUncancelled uncancelled;
    CMSRAID_InterFace interFace;
    if (items != nullptr) {
        interFace.FreeItemList(items);
    }
}

unsigned int CMngSrv_QorLibIF::KRZExecCli(const std::string& command, unsigned long* exitCode,
                                          const std::string& resultFile) {
    const CUncancelled uncancelled;
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
