// A file without a name, which vanishes with its last descriptor.
#ifndef QORCTL_TERMINAL_NAMELESSFILE_H
#define QORCTL_TERMINAL_NAMELESSFILE_H

#include "util/UniqueFd.h"

namespace qorctl {

// To read and write, in /var/tmp. In memory only where no disk takes it: a text without end would
// fill the machine's. Not open, with errno set, where there can be neither.
util::CUniqueFd OpenNamelessFile();

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_NAMELESSFILE_H
