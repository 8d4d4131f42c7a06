// Why a file or directory that is needed cannot be used, told apart by what has to be done.
#ifndef QORCTL_HOST_PATHTROUBLE_H
#define QORCTL_HOST_PATHTROUBLE_H

#include <string>

namespace qorctl {

enum class EPathKind { FILE, DIRECTORY };

enum class ETrouble {
    NONE,
    MISSING,      // whoever asks knows best what to do
    UNREACHABLE,  // this user may not look into a folder above it
    FORBIDDEN,    // this user may see it, but not use it
    WRONG_KIND,   // something else stands there, or in place of a folder above it
};

struct CPathTrouble {
    ETrouble trouble = ETrouble::NONE;
    std::string reason;  // with the path, fit to go on behind: "PATH is missing"
    std::string remedy;  // what can be done; empty for NONE and MISSING
};

// Judged for the user who asks. `rights` are those of access(): R_OK, or W_OK | X_OK.
CPathTrouble ExaminePath(const std::string& path, EPathKind kind, int rights);

// The remedy as a sentence: "Run it as root, or as the user of the server."
std::string RemedySentence(const CPathTrouble& trouble);

}  // namespace qorctl

#endif  // QORCTL_HOST_PATHTROUBLE_H
