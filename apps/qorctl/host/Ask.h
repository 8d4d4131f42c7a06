// A request to the plug-in, and the answer.
//
// Thread rule: one thread at a time; the process has no other.
#ifndef QORCTL_HOST_ASK_H
#define QORCTL_HOST_ASK_H

#include <string>

#include "host/Answer.h"
#include "host/Request.h"

namespace qorctl {

// Asks the plug-in in a process of its own and waits for the answer. Throws nothing.
//
// SIGINT, SIGTERM and SIGHUP, unless they are ignored (nohup), end the request, the tool included,
// and then the program, with 128 and the signal's number: 130 after Ctrl-C.
CAnswer Ask(const CPluginChoice& plugin, const CRequest& request,
            EProgress progress = EProgress::HIDDEN);

}  // namespace qorctl

#endif  // QORCTL_HOST_ASK_H
