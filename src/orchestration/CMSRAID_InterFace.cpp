#include "orchestration/CMSRAID_InterFace.h"

#include <optional>

#include "base/ItemList.h"
#include "base/Trace.h"
#include "cli/CMSRAID_KRZ.h"
#include "cli/KRZVersion.h"
#include "getters/CMSRAID_CtrlInfoGetter.h"
#include "getters/CMSRAID_LDInfoGetter.h"
#include "getters/CMSRAID_PCIeSSDInfoGetter.h"
#include "getters/CMSRAID_PDInfoGetter.h"
#include "getters/CMSRAID_PDSMInfoGetter.h"
#include "presence/CMSRAID_MegaStorCLI.h"
#include "presence/CMSRAID_PCICard.h"

namespace {

constexpr const char* ERR_NOT_INSTALLED = "02";
constexpr const char* NOTICE_OLD_VERSION = "01";
constexpr const char* NOTICE_NO_DISK = "02";

// The caller's three result texts.
struct CResultTexts {
    std::string& errCode;
    std::string& notice;
    std::string& detail;

    void Reset() {
        errCode.clear();
        notice.clear();
        detail = NO_DETAIL;
    }
    void TakeFrom(const CMSRAID_InfoGetter& getter) {
        errCode.insert(0, getter.ErrCode());
        detail = getter.ErrDetail();
    }
};

// An old tool is asked all the same: the notice only informs.
void CheckVersion(const std::string& version, std::string& notice) {
    const std::optional<CKRZVersion> parsed = CKRZVersion::Parse(version);
    if (!parsed) {
        QOR_TRACE(FAILURE, "KRZ CLI Version is invalid.(tsKRZver=%s)", version.c_str());
        notice.insert(0, NOTICE_OLD_VERSION);
    } else if (parsed->IsOldForRAID()) {
        QOR_TRACE(SKIP, "KRZ CLI Version is old.(tsKRZver=%s)", version.c_str());
        notice.insert(0, NOTICE_OLD_VERSION);
    }
}

// Without the tool, a host with disks cannot be answered for; a host without has nothing to report.
bool AnswerWithoutTool(const std::list<DevicePCIID>& controllers, CResultTexts& texts) {
    QOR_TRACE(SKIP, "KRZ is not installed.");
    texts.errCode.insert(0, ERR_NOT_INSTALLED);
    if (CMSRAID_MegaStorCLI::IsPresentRAIDPhysDisk(controllers)) {
        return false;
    }
    texts.notice.insert(0, NOTICE_NO_DISK);
    return true;
}

// Runs one getter for one controller and appends its items to `list`.
bool CollectFrom(CMSRAID_InfoGetter& getter, const char* operation, long ctrlNo, ItemList& holding,
                 ItemList& list, CResultTexts& texts) {
    if (!getter.GetInfo(ctrlNo, holding)) {
        QOR_TRACE(FAILURE, "%s is FAILED (ret=%08x).", operation, 0U);
        texts.TakeFrom(getter);
        return false;
    }
    list.splice(list.end(), holding);
    return true;
}

std::string ToolVersion() {
    return CMSRAID_KRZ::GetKRZVersion(CMSRAID_InfoGetter::GetRsltFilePath());
}

bool CollectControllers(ItemList& holding, ItemList& list, CResultTexts& texts) {
    const std::string version = ToolVersion();
    CMSRAID_CtrlInfoGetter ctrlGetter;
    CMSRAID_LDInfoGetter ldGetter;
    CMSRAID_PDInfoGetter pdGetter(version);
    ldGetter.CountTogetherWith(ctrlGetter);
    pdGetter.CountTogetherWith(ctrlGetter);
    CheckVersion(version, texts.notice);

    char countByte = 0;
    if (!ctrlGetter.GetCtrlNum(&countByte)) {
        QOR_TRACE(FAILURE, "CMSRAID_InterFace::GetCtrlNum is FAILED (ret=%08x).", 0U);
        texts.TakeFrom(ctrlGetter);
        return false;
    }
    const auto count = static_cast<signed char>(countByte);
    for (long i = 0; i < count; ++i) {
        if (!CollectFrom(ctrlGetter, "CMSRAID_CtrlInfoGetter::GetInfo", i, holding, list, texts) ||
            !CollectFrom(ldGetter, "CMSRAID_LDInfoGetter::GetInfo", i, holding, list, texts) ||
            !CollectFrom(pdGetter, "CMSRAID_PDInfoGetter::GetInfo", i, holding, list, texts)) {
            return false;
        }
    }
    return true;
}

bool CollectRAIDInfo(ItemList& holding, ItemList& list, CResultTexts& texts) {
    std::list<DevicePCIID> controllers;
    if (!CMSRAID_PCICard::IsPresentRAID(&controllers)) {
        return true;
    }
    if (!CMSRAID_KRZ::IsKRZInstalled()) {
        return AnswerWithoutTool(controllers, texts);
    }
    return CollectControllers(holding, list, texts);
}

// Whether the SSDs could be answered for; nothing if there are none or they are not asked for.
std::optional<bool> CollectPCIeSSDs(ItemList& holding, ItemList& list, CResultTexts& texts) {
    if (!CMSRAID_PCICard::IsPresentPCIeSSD(nullptr)) {
        return std::nullopt;
    }
    if (!CMSRAID_KRZ::IsKRZInstalled()) {
        texts.errCode = ERR_NOT_INSTALLED;
        QOR_TRACE(FAILURE, "KRZ is not installed.");
        return false;
    }
    const std::optional<CKRZVersion> version = CKRZVersion::Parse(ToolVersion());
    CMSRAID_PCIeSSDInfoGetter getter;
    if (!version) {
        return std::nullopt;
    }
    if (version->IsOldForSSD()) {
        QOR_TRACE(SKIP, "Skip getting PCIe SSD Information because KRZ is old.");
        return std::nullopt;
    }
    getter.CountAlso(list);
    if (!getter.GetInfo(holding)) {
        QOR_TRACE(FAILURE, "CMSRAID_PCIeSSDInfoGetter::GetInfo is FAILED (ret=%08x).", 0U);
        texts.TakeFrom(getter);
        return false;
    }
    list.splice(list.end(), holding);
    return true;
}

bool CollectPD(long ctrlNo, long enclosure, long slot, ItemList& list, CResultTexts& texts) {
    if (!CMSRAID_KRZ::IsKRZInstalled()) {
        QOR_TRACE(FAILURE, "KRZ is not installed.");
        texts.errCode.insert(0, ERR_NOT_INSTALLED);
        return false;
    }
    CMSRAID_PDSMInfoGetter getter;
    if (!getter.GetInfo(ctrlNo, enclosure, slot, list)) {
        QOR_TRACE(FAILURE, "CMSRAID_PDInfoGetter::GetInfo is FAILED (ret=%08x).", 0U);
        texts.TakeFrom(getter);
        return false;
    }
    return true;
}

}  // namespace

CMSRAID_InterFace::CMSRAID_InterFace() {
    const CTraceScope trace("CMSRAID_InterFace::CMSRAID_InterFace");
}

CMSRAID_InterFace::~CMSRAID_InterFace() {
    const CTraceScope trace("CMSRAID_InterFace::~CMSRAID_InterFace");
}

unsigned char CMSRAID_InterFace::GetRAIDInfo(std::list<CItemDisp*>* list, std::string* errCode,
                                             std::string* notice, std::string* detail) {
    const CTraceScope trace("CMSRAID_InterFace::GetRAIDInfo");
    CResultTexts texts = {*errCode, *notice, *detail};
    texts.Reset();
    CItemListOwner holding;
    CItemListGuard guard(*list);
    const bool result = CollectRAIDInfo(holding, *list, texts);
    guard.Dismiss();
    FreeItemList(&holding);
    if (!result) {
        FreeItemList(list);
    }
    return result ? 1 : 0;
}

unsigned char CMSRAID_InterFace::GetPDInfo(long ctrlNo, long enclosure, long slot,
                                           std::list<CItemDisp*>* list, std::string* errCode,
                                           std::string* notice, std::string* detail) {
    const CTraceScope trace("CMSRAID_InterFace::GetPDInfo");
    CResultTexts texts = {*errCode, *notice, *detail};
    texts.Reset();
    CItemListGuard guard(*list);
    const bool result = CollectPD(ctrlNo, enclosure, slot, *list, texts);
    guard.Dismiss();
    if (!result) {
        FreeItemList(list);
    }
    return result ? 1 : 0;
}

unsigned char CMSRAID_InterFace::GetStorageInfo(std::list<CItemDisp*>* list, std::string* errCode,
                                                std::string* notice, std::string* detail) {
    const CTraceScope trace("CMSRAID_InterFace::GetStorageInfo");
    CItemListOwner holding;
    CItemListGuard guard(*list);
    CResultTexts texts = {*errCode, *notice, *detail};
    unsigned char result = GetRAIDInfo(list, errCode, notice, detail);
    if (result != 0) {
        if (const std::optional<bool> ssds = CollectPCIeSSDs(holding, *list, texts)) {
            result = *ssds ? 1 : 0;
        }
    }
    guard.Dismiss();
    FreeItemList(&holding);
    if (result == 0) {
        FreeItemList(list);
    }
    return result;
}

void CMSRAID_InterFace::FreeItemList(std::list<CItemDisp*>* list) {
    const CTraceScope trace("CMSRAID_InterFace::FreeItemList");
    DeleteItems(*list);
}
