// What the plug-in can be asked.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_HOST_REQUEST_H
#define QORCTL_HOST_REQUEST_H

#include <functional>
#include <list>
#include <string>

#include "host/Answer.h"
#include "host/PluginLibrary.h"
#include "model/DriveAddress.h"
#include "plugin/ItemDisp.h"
#include "plugin/MngSrv_QorLibIF.h"

namespace qorctl {

using CItemList = std::list<CItemDisp*>;

struct CRequest {
    // Calls one operation of the object: appends what it returns to the list (empty before, freed
    // after the request) and fills the texts. True on success.
    std::function<bool(CMngSrv_QorLibIF& object, CItemList& items, CResultTexts& texts)> operation;
    std::string nothing = {};  // what an empty list means; empty for an operation without items
    CNumber controller = {};   // that the request names
};

CRequest RaidRequest();
CRequest StorageRequest();
CRequest DriveRequest(const CDriveAddress& address);

// What is made of the object and the items while they are there.
using CUse = std::function<void(CMngSrv_QorLibIF& object, CItemList& items)>;

// Makes a plug-in object, asks it and, after success, hands object and items to `use`, if there is
// one. Writes nothing, and throws nothing of the plug-in's. The tool's version is not told.
CAnswer Ask(const CPluginLibrary& library, const CRequest& request, const CUse& use = nullptr);

// Whether a standard error that is a terminal shows which command runs.
enum class EProgress { HIDDEN, SHOWN };

// Loads the plug-in (`pluginPath`, or where CPluginLibrary looks when it is empty) and asks; with
// progress, the tool's version is told. An interrupted request ends the process; see Interrupt.h.
CAnswer AskOnce(const std::string& pluginPath, const CRequest& request,
                EProgress progress = EProgress::HIDDEN, const CUse& use = nullptr);

}  // namespace qorctl

#endif  // QORCTL_HOST_REQUEST_H
