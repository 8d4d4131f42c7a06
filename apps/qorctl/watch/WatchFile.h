// The state of a watch that hands events over, in its file.
//
// Owner: the object holds the file's lock.
// Thread rule: one thread at a time.
#ifndef QORCTL_WATCH_WATCHFILE_H
#define QORCTL_WATCH_WATCHFILE_H

#include <cstdint>
#include <memory>
#include <string>

#include "health/StateFile.h"
#include "watch/WatchState.h"

namespace qorctl {

class CWatchFile {
public:
    // Takes the lock, for which it waits some seconds: what a killed watch leaves behind needs them
    // to end. Reads the state, or begins anew where there is none. A corrupt one is kept beside, as
    // "PATH.corrupt-TIME", which is told on standard error and by an event. Null, and the reason in
    // `problem`, when another watch has the file, when it cannot be read, is another program's, or
    // belongs to a watch over another part of the server.
    static std::unique_ptr<CWatchFile> Open(const std::string& path, const CInventoryFilter& filter,
                                            int64_t wallTime, std::string& problem);

    CWatchState& State() { return m_State; }

    // Puts the state on disk. False when that failed, which is told on standard error the first
    // time.
    bool Save();

private:
    CWatchFile(const std::string& path, const CInventoryFilter& filter, std::string host)
        : m_Path(path), m_File(path), m_State(filter, std::move(host)) {}

    bool Lock();
    bool Read(const CInventoryFilter& filter, int64_t wallTime, std::string& problem);
    bool SetAside(int64_t wallTime, std::string& problem);

    const std::string m_Path;
    CStateFile m_File;
    CWatchState m_State;
    bool m_IsFailing = false;
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_WATCHFILE_H
