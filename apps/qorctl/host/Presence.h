// Whether the server has a RAID card, by the plug-in's own rules: what an answer without a
// controller is held against.
#ifndef QORCTL_HOST_PRESENCE_H
#define QORCTL_HOST_PRESENCE_H

#include <string>

namespace qorctl {

enum class EPresence { ABSENT, PRESENT, NOT_KNOWN };

struct CPresence {
    EPresence card = EPresence::ABSENT;
    std::string reason;  // of NOT_KNOWN: what is in the way
    std::string remedy;  // of NOT_KNOWN
};

// By the device list, or by the bus where there is no list. Changes nothing.
CPresence LookForRaidCard();

}  // namespace qorctl

#endif  // QORCTL_HOST_PRESENCE_H
