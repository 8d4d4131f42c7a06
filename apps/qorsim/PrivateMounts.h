// A view of the file system in which a simulated server can be laid out.
//
// EnterPrivateMounts() moves the calling process into a mount namespace of its own (and, without
// privilege, a user namespace of its own) in which "/opt/tarmica" and "/etc/opt/tarmica" are empty
// directories in memory. The real machine does not see them; they vanish with the last process in
// the namespace. Everything else, the other entries of "/opt" and "/etc/opt" included, stays as it
// is. Children inherit the view.
//
// The process must have one thread only when it calls this.
#ifndef QORSIM_PRIVATEMOUNTS_H
#define QORSIM_PRIVATEMOUNTS_H

#include <string>

namespace qorsim {

// Throws std::runtime_error that says which step failed, why, and what to do about it. The process
// should end then: it may be in the namespaces with half of the mounts.
void EnterPrivateMounts();

// The steps of it, for a view in which the real server is still there. They throw in the same way.
//
// Moves the calling process into namespaces of its own; what it sees stays the same.
void EnterMountNamespace();
// In such namespaces: the directory keeps its entries, but only this view sees what is added to it.
void CoverWithWritableCopy(const std::string& parent);

}  // namespace qorsim

#endif  // QORSIM_PRIVATEMOUNTS_H
