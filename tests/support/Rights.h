// Words before a command of a shell, which are not the same for root and for an ordinary user.
#ifndef QORTEST_RIGHTS_H
#define QORTEST_RIGHTS_H

#include <unistd.h>

#include <string>

namespace qortest {

// Runs the command without root's right to read and search everything. An ordinary user does not
// have it, and setpriv may not take it away there.
inline std::string WithoutRights() {
    return geteuid() == 0 ? "setpriv --bounding-set -dac_override,-dac_read_search --inh-caps "
                            "-dac_override,-dac_read_search "
                          : "";
}

// Runs the command with mounts of its own. An ordinary user may have them as the root of a
// namespace.
inline std::string WithMounts() {
    return geteuid() == 0 ? "unshare --mount " : "unshare --user --map-root-user --mount ";
}

}  // namespace qortest

#endif  // QORTEST_RIGHTS_H
