// A program of the user's that takes an event.
//
// It is run directly, without a shell, with the event on its standard input, which is a file, and
// in a small environment: PATH, LANG and HOME as this program has them, and QOR_EVENT_ID,
// QOR_SEVERITY, QOR_OBJECT, QOR_SUMMARY and QOR_HOST, each one visible line of MAX_VALUE bytes at
// most. What it writes goes to this program's standard error. It has no terminal, no other
// descriptors, default signals, and a process group of its own, which is killed when it has ended.
// When its time is over, or this program ends, however it does, everything is killed that it
// started.
//
// Thread rule: one thread at a time; the calling process has no other.
#ifndef QORCTL_WATCH_EVENTPROGRAM_H
#define QORCTL_WATCH_EVENTPROGRAM_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/Keeper.h"
#include "util/UniqueFd.h"

namespace qorctl {

class CEventProgram {
public:
    static constexpr size_t MAX_VALUE = 1000;

    // The absolute path of a program as a shell finds it: by PATH, unless it has a slash. Nothing,
    // and the reason in `problem`, when there is none that this user may run.
    static std::optional<std::string> Find(const std::string& program, std::string& problem);

    // Runs the program at `path` for `limit` milliseconds at most.
    CEventProgram(std::string path, int64_t limit) : m_Path(std::move(path)), m_Limit(limit) {}

    // Starts it for an event, one line of JSON, at `now`, milliseconds of any one clock. False,
    // with Problem() set, when there can be no process.
    bool Start(const std::string& line, int64_t now);
    bool IsRunning() const { return m_Keeper != nullptr; }
    // Can be read when there is something to advance with.
    int Descriptor() const { return m_Reply.Get(); }
    // When it is ended.
    int64_t Deadline() const { return m_Deadline; }
    // Whether it took the event: it ended with the status 0. Nothing while it runs; false with
    // Problem() set. To be asked while it runs only.
    std::optional<bool> Advance(int64_t now);

    // "ended with status 3"
    const std::string& Problem() const { return m_Problem; }

private:
    bool ReadReply();
    bool Judge();

    const std::string m_Path;
    const int64_t m_Limit;
    std::unique_ptr<CKeeper> m_Keeper;
    util::CUniqueFd m_Reply;
    std::string m_Text;
    int64_t m_Deadline = 0;
    std::string m_Problem;
};

}  // namespace qorctl

#endif  // QORCTL_WATCH_EVENTPROGRAM_H
