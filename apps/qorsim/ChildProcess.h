// Running the user's command in place of this process.
#ifndef QORSIM_CHILDPROCESS_H
#define QORSIM_CHILDPROCESS_H

#include <string>
#include <vector>

namespace qorsim {

// Runs a command (found through PATH) and waits for its end. Signals that ask this process to end
// are handed on to the command while it runs. Returns its exit status; 128 + the signal's number
// when a signal killed it; 127 when there is no such command and 126 when it cannot be run.
//
// What the command has started and left running is killed then; only what runs as another user,
// whom this process may not signal, stays.
//
// The process must have one thread only. Signal mask and dispositions are restored for the command,
// but stay changed here: the caller ends soon.
int RunAndWait(const std::vector<std::string>& command);

}  // namespace qorsim

#endif  // QORSIM_CHILDPROCESS_H
