// A file that holds a whole document or keeps what it held.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_OUTPUTFILE_H
#define QORCTL_OUTPUTFILE_H

#include <string>

namespace qorctl {

enum class EFileMode {
    KEPT,     // the old file's permissions, or those that the umask leaves
    PRIVATE,  // 0600
};

// Replaces the file `path` by one that holds `text`: written to a temporary file in the same
// directory, put on disk, renamed. A reader sees the old file or the new one. A symbolic link
// stays, and what it points to is replaced. What is no regular file (a pipe, a device) is written
// to as it stands. Returns true on success; otherwise sets `problem` to the reason, path included:
// the temporary file is gone and a regular file is as it was.
bool WriteOutputFile(const std::string& path, const std::string& text, EFileMode mode,
                     std::string& problem);

}  // namespace qorctl

#endif  // QORCTL_OUTPUTFILE_H
