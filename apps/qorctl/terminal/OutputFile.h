// A file that holds a whole document or keeps what it held.
//
// Thread rule: one thread at a time.
#ifndef QORCTL_TERMINAL_OUTPUTFILE_H
#define QORCTL_TERMINAL_OUTPUTFILE_H

#include <string>

#include "terminal/Pieces.h"

namespace qorctl {

enum class EFileMode {
    // As any new file: 0666 and the umask, or what the directory's access control list says. Of an
    // old file of the caller's: its rights to read, write and execute, without those of others to
    // write, and those of its group only where the new file has it too and the old one had no list.
    KEPT,
    // 0600. What is to be read again: never a device, a pipe or a descriptor, nor in a directory
    // where
    // others may write.
    PRIVATE,
    READABLE,  // 0644, whatever the umask and the old file say: another user's program reads it
};

// Replaces the file `path` by one that holds `text`: written to a temporary file in the same
// directory, put on disk, renamed. A reader sees the old file or the new one. A symbolic link of
// root or the caller stays, and what it points to is replaced; another user's is a failure.
//
// A device, and a pipe of root's or the caller's that somebody reads, is written to as it stands;
// nothing is waited for but a reader that is there, for ten seconds. What is a terminal gets a text
// that is safe for it. "/dev/stdout", "/dev/stderr", "/dev/fd/N" and "/proc/self/fd/N" mean the
// descriptor that the program was given, without a look at the file system.
//
// A signal to end takes effect when a file is replaced or as it was.
//
// Returns true on success; otherwise sets `problem` to the reason, path included: the temporary
// file is gone and a regular file is as it was.
bool WriteOutputFile(const std::string& path, const std::string& text, EFileMode mode,
                     std::string& problem);

// The same of a text in pieces: one that is not given to its end is a failure, too.
bool WriteOutputFile(const std::string& path, const CGivePieces& give, EFileMode mode,
                     std::string& problem);

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_OUTPUTFILE_H
