#include "host/Request.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <optional>
#include <stdexcept>
#include <utility>

#include "base/ServerPaths.h"
#include "host/Interrupt.h"
#include "host/Progress.h"
#include "terminal/Output.h"

namespace qorctl {
namespace {

// The plug-in object, which goes back to its library.
class CPluginObject {
public:
    explicit CPluginObject(const CPluginLibrary& library)
        : m_Library(library), m_Object(library.Create()) {}
    ~CPluginObject() { m_Library.Delete(m_Object); }
    CPluginObject(const CPluginObject&) = delete;  // one owner of the object
    CPluginObject& operator=(const CPluginObject&) = delete;

    CMngSrv_QorLibIF* Get() const { return m_Object; }

private:
    const CPluginLibrary& m_Library;
    CMngSrv_QorLibIF* m_Object;
};

// The items of one request, which go back to the plug-in object.
class CPluginItems {
public:
    explicit CPluginItems(CMngSrv_QorLibIF& object) : m_Object(object) {}
    ~CPluginItems();
    CPluginItems(const CPluginItems&) = delete;  // one owner of the items
    CPluginItems& operator=(const CPluginItems&) = delete;

    CItemList& Get() { return m_Items; }

private:
    CMngSrv_QorLibIF& m_Object;
    CItemList m_Items;
};

// May run while an exception of the plug-in is on its way: a second one must not end the process.
CPluginItems::~CPluginItems() {
    try {
        m_Object.FreeItemList(&m_Items);
    } catch (...) {
        Report("the plug-in could not free its items: it threw an exception");
    }
}

// A user who may not read the device list has no device at all, and is told so.
std::string NothingToReport(const CRequest& request) {
    std::string text = "nothing to report: " + request.nothing;
    if (access(DEVICE_LIST_PATH, R_OK) != 0 && errno == EACCES) {
        text += fmt::format("; but this user may not read {}, run as root", DEVICE_LIST_PATH);
    }
    return text;
}

// One request on its way.
class CQuestion {
public:
    CQuestion(const CRequest& request, const CUse& use) : m_Request(request), m_Use(use) {}

    CAnswer Ask(const CPluginLibrary& library);

private:
    std::string AskSafely(const CPluginLibrary& library);
    std::string AskPlugin(const CPluginLibrary& library);
    void AskObject(CMngSrv_QorLibIF& object);

    const CRequest& m_Request;
    const CUse& m_Use;
    CAnswer m_Answer;
    bool m_IsEmpty = false;
};

CAnswer CQuestion::Ask(const CPluginLibrary& library) {
    m_Answer.outcome = EOutcome::PLUGIN_FAILED;
    ExplainAnswer(m_Answer, AskSafely(library));
    if (m_Answer.IsAnswered() && m_IsEmpty && !m_Request.nothing.empty()) {
        ExplainEmptiness(m_Answer, NothingToReport(m_Request));
    }
    return std::move(m_Answer);
}

// Returns the problem, if the plug-in or what uses its answer failed. Exceptions of the plug-in are
// caught while the library is loaded: their code lives in it.
std::string CQuestion::AskSafely(const CPluginLibrary& library) {
    std::string what;
    try {
        return AskPlugin(library);
    } catch (const std::out_of_range& error) {
        what = std::string(": ") + error.what() + "; a line of the RAID tool's report is too short";
    } catch (const std::exception& error) {
        what = std::string(": ") + error.what();
    } catch (...) {
        what = " of an unknown type";
    }
    m_Answer.outcome = EOutcome::PLUGIN_FAILED;
    m_Answer.inventory = {};
    return "the request ended with an exception" + what;
}

std::string CQuestion::AskPlugin(const CPluginLibrary& library) {
    const CPluginObject object(library);
    if (object.Get() == nullptr) {
        return "the plug-in made no plug-in object";
    }
    AskObject(*object.Get());
    return "";
}

void CQuestion::AskObject(CMngSrv_QorLibIF& object) {
    CPluginItems items(object);
    if (!m_Request.operation(object, items.Get(), m_Answer.texts)) {
        m_Answer.outcome = EOutcome::FAILED;
        return;
    }
    m_Answer.outcome = EOutcome::ANSWERED;
    m_Answer.inventory = BuildInventory(CItemTree(items.Get()), m_Request.controller);
    m_IsEmpty = items.Get().empty();
    if (m_Use != nullptr) {
        m_Use(object, items.Get());
    }
}

}  // namespace

CRequest RaidRequest() {
    return {.operation =
                [](CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts) {
                    return object.GetRAIDInfo(&items, &texts.errorCode, &texts.noticeCode,
                                              &texts.detail) != 0;
                },
            .nothing = "no RAID controller with something to show was found on this server"};
}

CRequest StorageRequest() {
    return {.operation =
                [](CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts) {
                    return object.GetStorageInfo(&items, &texts.errorCode, &texts.noticeCode,
                                                 &texts.detail) != 0;
                },
            .nothing =
                "no RAID controller or PCIe SSD with something to show was found on this server"};
}

CRequest DriveRequest(const CDriveAddress& address) {
    return {.operation =
                [address](CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts) {
                    return object.GetPDInfo(address.controller, address.enclosure, address.slot,
                                            &items, &texts.errorCode, &texts.noticeCode,
                                            &texts.detail) != 0;
                },
            .nothing = fmt::format("the RAID tool described no drive at [{}:{}] of controller {}",
                                   address.enclosure, address.slot, address.controller),
            .controller = address.controller};
}

CAnswer Ask(const CPluginLibrary& library, const CRequest& request, const CUse& use) {
    return CQuestion(request, use).Ask(library);
}

CAnswer AskOnce(const std::string& pluginPath, const CRequest& request, EProgress progress,
                const CUse& use) {
    std::string problem;
    const std::optional<CPluginLibrary> library = CPluginLibrary::Load(pluginPath, problem);
    if (!library) {
        return NotAsked(REASON_PLUGIN_NOT_LOADED, problem);
    }
    const CInterruptGuard guard;
    if (progress == EProgress::HIDDEN) {
        return Ask(*library, request, use);
    }
    const CProgress shown(*library);
    CAnswer answer = Ask(*library, request, use);
    answer.toolVersion = shown.ToolVersion();
    return answer;
}

}  // namespace qorctl
