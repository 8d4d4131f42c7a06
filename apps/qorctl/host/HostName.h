// Thread rule: any thread at any time.
#ifndef QORCTL_HOST_HOSTNAME_H
#define QORCTL_HOST_HOSTNAME_H

#include <string>

namespace qorctl {

// The name of this server as the kernel has it; empty where it has none.
std::string HostName();

}  // namespace qorctl

#endif  // QORCTL_HOST_HOSTNAME_H
