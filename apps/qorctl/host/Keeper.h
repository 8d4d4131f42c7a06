// A process between the program and the one that does its work: whatever becomes of the two, the
// work's process ends, and everything that it started.
//
//     program ---- keeper ---- worker ---- the RAID tool, and what that starts
//
// The keeper and all below it are a session of their own: neither a terminal's Ctrl-C nor a signal
// to the program's process group reaches it. It ends the worker when the program closes the leash
// or ends, however it does, and ends what the worker left behind when that dies. Its own end goes
// on to the worker; only what the worker started outlives both when both are killed at once.
//
// Thread rule: the calling process has one thread.
#ifndef QORCTL_HOST_KEEPER_H
#define QORCTL_HOST_KEEPER_H

#include <sys/types.h>

#include <functional>

#include "util/UniqueFd.h"

namespace qorctl {

struct CKeeperWork {
    // Runs in the worker, which ends with status 0 after it.
    std::function<void()> work;
    // Runs in the keeper when the worker was ended or died, and all that it started is gone, or was
    // given up after five seconds. `status` is as waitpid() gives it. Without a worker, -1, since
    // no process could be made, it is the error of that.
    std::function<void(pid_t worker, int status)> clear;
};

class CKeeper {
public:
    // Starts both processes. IsRunning() is false, and errno set, when that failed.
    explicit CKeeper(const CKeeperWork& work);
    // Ends them.
    ~CKeeper() { End(); }
    CKeeper(const CKeeper&) = delete;  // one owner of the processes
    CKeeper& operator=(const CKeeper&) = delete;

    bool IsRunning() const { return m_Keeper > 0; }
    // Lets the leash go, and waits for the keeper's end, which comes within seconds.
    void End();

private:
    util::CUniqueFd m_Leash;
    pid_t m_Keeper = -1;
};

}  // namespace qorctl

#endif  // QORCTL_HOST_KEEPER_H
