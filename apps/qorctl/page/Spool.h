// A text that grows: it goes to disk, so that the memory for it stays the same.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_PAGE_SPOOL_H
#define QORCTL_PAGE_SPOOL_H

#include <string>
#include <string_view>

#include "terminal/Pieces.h"
#include "util/UniqueFd.h"

namespace qorctl {

class CSpool {
public:
    // A failure is kept: all that follow, and Give(), fail too.
    void Append(std::string_view text);

    // The whole text. Any number of times.
    bool Give(const CTakePiece& take);

private:
    void Flush();

    std::string m_Tail;  // what is not on disk yet
    util::CUniqueFd m_File;
    int m_Error = 0;
};

}  // namespace qorctl

#endif  // QORCTL_PAGE_SPOOL_H
