// One request to the plug-in: load it, ask, explain its three texts, show what it returned.
//
// Every sub-command that needs the plug-in goes this way; they differ in what they ask and in how
// they show it.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_HOST_PLUGINREQUEST_H
#define QORCTL_HOST_PLUGINREQUEST_H

#include <functional>
#include <list>
#include <string>

#include "host/PluginLibrary.h"
#include "model/DriveAddress.h"
#include "model/ResultTexts.h"
#include "plugin/ItemDisp.h"
#include "plugin/MngSrv_QorLibIF.h"

namespace qorctl {

using CItemList = std::list<CItemDisp*>;

// Calls one information operation of the object: appends what it returns to the list (empty
// before, freed after the request) and fills the texts. True on success.
using CAsk = std::function<bool(CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts)>;

// Shows the answer of a request that succeeded, while the object and the items are there. Returns
// the exit status.
using CShow = std::function<int(CMngSrv_QorLibIF& object, CItemList& items)>;

// The same for callers that take the answer as a value; the texts may hold a notice.
using CUse =
    std::function<void(CMngSrv_QorLibIF& object, CItemList& items, const CResultTexts& texts)>;

// How a request ended.
enum class EEnd {
    ANSWERED,   // the items were handed to the caller
    FAILED,     // the plug-in said so; its texts say why
    NO_OBJECT,  // the plug-in made no plug-in object
    EXCEPTION,  // the plug-in, or what used its answer, threw
};

struct CRequestEnd {
    EEnd kind = EEnd::EXCEPTION;
    CResultTexts texts;
    std::string problem;  // in words; empty when it was answered
};

// A request whose answer is a list of items.
struct CItemRequest {
    CAsk ask;
    std::string nothing;  // what an empty list means
};

CItemRequest RaidRequest();
CItemRequest StorageRequest();
CItemRequest DriveRequest(const CDriveAddress& address);

// The sentence for an empty list. A user who may not read the device list has no device at all, and
// is told so.
std::string NothingToReport(const CItemRequest& request);

// Makes a plug-in object, asks it and, after success, hands the answer to `use` while the object
// and the items are there. Writes nothing, and throws nothing of the plug-in's.
CRequestEnd AskPlugin(const CPluginLibrary& library, const CAsk& ask, const CUse& use);

// Loads the plug-in (`pluginPath`, or where CPluginLibrary looks when it is empty), asks, writes
// codes in words and failures to standard error and, after success, shows. Returns the exit status:
// that of `show`, or 1 when the request failed or the plug-in could not be loaded or threw.
int RunRequest(const std::string& pluginPath, const CAsk& ask, const CShow& show);

// The same for items; an empty list is not shown but stated on standard error, with exit status 0.
int RunItemRequest(const std::string& pluginPath, const CItemRequest& request, const CShow& show);

}  // namespace qorctl

#endif  // QORCTL_HOST_PLUGINREQUEST_H
