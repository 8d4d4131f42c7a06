#include "watch/WatchFile.h"

#include <fmt/format.h>
#include <poll.h>

#include <chrono>

#include "host/HostName.h"
#include "terminal/Output.h"
#include "watch/WatchClock.h"

namespace qorctl {
namespace {

using std::chrono::steady_clock;

// A keeper takes five seconds at most (see host/Keeper.h).
constexpr std::chrono::seconds LOCK_PATIENCE(6);
constexpr int LOCK_PAUSE = 50;  // milliseconds

}  // namespace

std::unique_ptr<CWatchFile> CWatchFile::Open(const std::string& path,
                                             const CInventoryFilter& filter, int64_t wallTime,
                                             std::string& problem) {
    std::unique_ptr<CWatchFile> file(new CWatchFile(path, filter, HostName()));
    if (!file->Lock()) {
        problem = file->m_File.Problem();
        return nullptr;
    }
    return file->Read(filter, wallTime, problem) ? std::move(file) : nullptr;
}

bool CWatchFile::Lock() {
    const auto deadline = steady_clock::now() + LOCK_PATIENCE;
    CStateFile::ELock lock = m_File.Lock();
    while (lock == CStateFile::ELock::BUSY && steady_clock::now() < deadline) {
        poll(nullptr, 0, LOCK_PAUSE);
        lock = m_File.Lock();
    }
    return lock == CStateFile::ELock::TAKEN;
}

bool CWatchFile::Read(const CInventoryFilter& filter, int64_t wallTime, std::string& problem) {
    std::string text;
    const CStateFile::ERead read = m_File.Read(text);
    if (read == CStateFile::ERead::MISSING) {
        return true;
    }
    if (read == CStateFile::ERead::FAILED) {
        problem = m_File.Problem();
        return false;
    }
    switch (m_State.Parse(text)) {
        case CWatchState::EParse::FOREIGN:
            problem = m_Path + ": not a state file of this watch; name another one";
            return false;
        case CWatchState::EParse::CORRUPT:
            return SetAside(wallTime, problem);
        case CWatchState::EParse::DONE:
            break;
    }
    if (!m_State.IsFor(filter)) {
        problem = m_Path +
                  ": it belongs to a watch with another --controller or --enclosure; name "
                  "another file";
        return false;
    }
    return true;
}

bool CWatchFile::SetAside(int64_t wallTime, std::string& problem) {
    std::string aside;
    if (!m_File.KeepBeside(".corrupt-" + FormatTime(wallTime), aside)) {
        problem = m_File.Problem();
        return false;
    }
    const std::string message = fmt::format(
        "{}: the state file was corrupt; it is kept as {}, and watching begins anew: events that "
        "were not handed over may be in it",
        m_Path, aside);
    Report(message);
    m_State.TellCorrupt(message, wallTime);
    Save();
    return true;
}

bool CWatchFile::Save() {
    if (!m_File.Write(m_State.Format())) {
        if (!m_IsFailing) {
            Report(m_File.Problem() + "; no event is handed over until it can be written");
        }
        m_IsFailing = true;
        return false;
    }
    m_IsFailing = false;
    m_State.Outbox().MarkKept();
    return true;
}

}  // namespace qorctl
