#include "host/PluginRequest.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <optional>
#include <stdexcept>

#include "base/ServerPaths.h"
#include "host/Interrupt.h"
#include "host/PluginLibrary.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

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

void ReportTexts(const CResultTexts& texts) {
    for (const std::string& message : ExplainResult(texts, DetectTextStyle(STDERR_FILENO))) {
        Report(message);
    }
}

void AskObject(CMngSrv_QorLibIF& object, const CAsk& ask, const CUse& use, CRequestEnd& end) {
    CPluginItems items(object);
    if (!ask(object, items.Get(), end.texts)) {
        end.kind = EEnd::FAILED;
        end.problem = "the request failed";
        return;
    }
    end.kind = EEnd::ANSWERED;
    use(object, items.Get(), end.texts);
}

void UsePlugin(const CPluginLibrary& library, const CAsk& ask, const CUse& use, CRequestEnd& end) {
    const CPluginObject object(library);
    if (object.Get() == nullptr) {
        end.kind = EEnd::NO_OBJECT;
        end.problem = "the plug-in made no plug-in object";
        return;
    }
    AskObject(*object.Get(), ask, use, end);
}

}  // namespace

CItemRequest RaidRequest() {
    return {[](CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts) {
                return object.GetRAIDInfo(&items, &texts.errorCode, &texts.noticeCode,
                                          &texts.detail) != 0;
            },
            "no RAID controller with something to show was found on this server"};
}

CItemRequest StorageRequest() {
    return {[](CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts) {
                return object.GetStorageInfo(&items, &texts.errorCode, &texts.noticeCode,
                                             &texts.detail) != 0;
            },
            "no RAID controller or PCIe SSD with something to show was found on this server"};
}

CItemRequest DriveRequest(const CDriveAddress& address) {
    return {[address](CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts) {
                return object.GetPDInfo(address.controller, address.enclosure, address.slot, &items,
                                        &texts.errorCode, &texts.noticeCode, &texts.detail) != 0;
            },
            fmt::format("the RAID tool described no drive at [{}:{}] of controller {}",
                        address.enclosure, address.slot, address.controller)};
}

// Exceptions of the plug-in are caught while the library is loaded: their code lives in it.
CRequestEnd AskPlugin(const CPluginLibrary& library, const CAsk& ask, const CUse& use) {
    CRequestEnd end;
    try {
        UsePlugin(library, ask, use, end);
        return end;
    } catch (const std::out_of_range& error) {
        end.problem = std::string("the request ended with an exception: ") + error.what() +
                      "; a line of the RAID tool's report is too short";
    } catch (const std::exception& error) {
        end.problem = std::string("the request ended with an exception: ") + error.what();
    } catch (...) {
        end.problem = "the request ended with an exception of an unknown type";
    }
    end.kind = EEnd::EXCEPTION;
    return end;
}

int RunRequest(const std::string& pluginPath, const CAsk& ask, const CShow& show) {
    std::string problem;
    const std::optional<CPluginLibrary> library = CPluginLibrary::Load(pluginPath, problem);
    if (!library) {
        Report(problem);
        return EXIT_FAILURE;
    }
    const CInterruptGuard guard;
    int status = EXIT_FAILURE;
    const CRequestEnd end = AskPlugin(
        *library, ask, [&](CMngSrv_QorLibIF& object, CItemList& items, const CResultTexts& texts) {
            ReportTexts(texts);
            status = show(object, items);
        });
    if (end.kind == EEnd::ANSWERED) {
        return status;
    }
    if (end.kind == EEnd::FAILED) {
        ReportTexts(end.texts);
    }
    Report(end.problem);
    return EXIT_FAILURE;
}

std::string NothingToReport(const CItemRequest& request) {
    std::string text = "nothing to report: " + request.nothing;
    if (access(DEVICE_LIST_PATH, R_OK) != 0 && errno == EACCES) {
        text += fmt::format("; but this user may not read {}, run as root", DEVICE_LIST_PATH);
    }
    return text;
}

int RunItemRequest(const std::string& pluginPath, const CItemRequest& request, const CShow& show) {
    return RunRequest(pluginPath, request.ask, [&](CMngSrv_QorLibIF& object, CItemList& items) {
        if (items.empty()) {
            Report(NothingToReport(request));
            return EXIT_SUCCESS;
        }
        return show(object, items);
    });
}

}  // namespace qorctl
