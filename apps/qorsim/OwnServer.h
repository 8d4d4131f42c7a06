// The simulated server that this program stands on when it plays a tool.
#ifndef QORSIM_OWNSERVER_H
#define QORSIM_OWNSERVER_H

#include <optional>
#include <string>

#include "Host.h"

namespace qorsim {

// The server as its profile says that it is by now. On failure returns nothing and `error` says
// why.
std::optional<CHost> LoadOwnServer(std::string& error);

}  // namespace qorsim

#endif  // QORSIM_OWNSERVER_H
