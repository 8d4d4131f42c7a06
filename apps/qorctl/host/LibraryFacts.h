// Where a loaded library or program comes from, and which build it is.
#ifndef QORCTL_HOST_LIBRARYFACTS_H
#define QORCTL_HOST_LIBRARYFACTS_H

#include <string>

namespace qorctl {

struct CLibraryFacts {
    std::string path;     // empty: nothing is loaded at the address
    std::string version;  // of the note that our libraries carry; empty for somebody else's
    std::string buildId;  // the linker's, in hexadecimal digits; empty without one
};

// The facts of what is loaded at `address`: a function of the library, for instance.
CLibraryFacts FactsOfLibraryAt(const void* address);

}  // namespace qorctl

#endif  // QORCTL_HOST_LIBRARYFACTS_H
