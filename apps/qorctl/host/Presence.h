// What devices the server has, by the plug-in's own rules: what an answer is held against.
#ifndef QORCTL_HOST_PRESENCE_H
#define QORCTL_HOST_PRESENCE_H

#include <cstddef>
#include <string>

namespace qorctl {

struct CPresence {
    bool IsKnown() const { return reason.empty(); }

    std::string reason;    // what is in the way of knowing; empty: nothing
    std::string remedy;    // what to do about that
    size_t raidCards = 0;  // supported ones
    size_t pcieSsds = 0;   // likewise
};

// By the device list, or by the bus where there is no list. Changes nothing.
CPresence LookForDevices();

}  // namespace qorctl

#endif  // QORCTL_HOST_PRESENCE_H
