// What the plug-in can be asked.
#ifndef QORCTL_HOST_REQUEST_H
#define QORCTL_HOST_REQUEST_H

#include <chrono>
#include <functional>
#include <list>
#include <optional>
#include <string>

#include "host/Reply.h"
#include "model/DriveAddress.h"
#include "model/Inventory.h"
#include "plugin/ItemDisp.h"
#include "plugin/MngSrv_QorLibIF.h"

namespace qorctl {

using CItemList = std::list<CItemDisp*>;

// Whom to ask, and for how long.
struct CPluginChoice {
    std::string path;                                  // as CPluginLibrary::Load() takes it
    std::optional<std::chrono::seconds> timeout = {};  // for the whole of a request; none: no limit
};

// What an answer without items is about, and so what it means.
enum class ESubject {
    RAID,     // no hardware; none of a controller while the server has a card is no answer
    STORAGE,  // the same, and of PCIe SSDs
    DRIVE,    // no such drive
    NOTHING,  // an operation without items
};

struct CRequest {
    // Calls operations of the object, in the process that holds the plug-in: appends items to the
    // list (empty before, freed after the request) and fills the reply's texts and what else is
    // returned. True on success. What it captures, it cannot change.
    std::function<bool(CMngSrv_QorLibIF& object, CItemList& items, CReply& reply)> operation;
    ESubject subject = ESubject::NOTHING;
    std::string nothing = {};  // what an empty list means; empty for an operation without items
    CNumber controller = {};   // that the request names
};

// Whether a standard error that is a terminal shows which command runs.
enum class EProgress { HIDDEN, SHOWN };

CRequest RaidRequest();
CRequest StorageRequest();
CRequest DriveRequest(const CDriveAddress& address);

}  // namespace qorctl

#endif  // QORCTL_HOST_REQUEST_H
