#include "host/RequestProcess.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "host/ResultFiles.h"
#include "host/Worker.h"

namespace qorctl {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

void RemoveResultFiles(pid_t worker) {
    for (const std::string& path : ResultFilesOf(worker)) {
        unlink(path.c_str());
    }
}

std::string NoProcess(int error) {
    return fmt::format("no process for the plug-in could be made: {}", std::strerror(error));
}

std::string DescribeEnd(pid_t worker, int status) {
    if (worker < 0) {
        return NoProcess(status);
    }
    return WIFSIGNALED(status)
               ? fmt::format("the plug-in ended the process that held it: {}",
                             strsignal(WTERMSIG(status)))
               : fmt::format("the plug-in ended the process that held it, status {}",
                             WEXITSTATUS(status));
}

size_t LeastFields(EFrame kind) {
    switch (kind) {
        case EFrame::COMMAND:
            return 2;
        case EFrame::ITEM:
            return 4;
        case EFrame::REPLY:
        case EFrame::ENDED:
            return 1;
    }
    return 0;
}

}  // namespace

CRequestProcess::CRequestProcess(const CPluginChoice& plugin, const CRequest& request,
                                 EProgress progress)
    : m_Plugin(plugin), m_Request(request) {
    std::array<int, 2> ends = {};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) {
        m_Result.problem = NoProcess(errno);
        return;
    }
    m_Reply = util::CUniqueFd(ends[0]);
    const util::CUniqueFd in(ends[1]);
    const bool listens = progress == EProgress::SHOWN || plugin.timeout.has_value();
    m_Keeper = std::make_unique<CKeeper>(
        CKeeperWork{.work = [&] { AnswerRequest(plugin.path, request, listens, in.Get()); },
                    .clear =
                        [&](pid_t worker, int status) {
                            if (worker > 0) {
                                RemoveResultFiles(worker);
                            }
                            CReplyWriter writer(in.Get());
                            writer.Write(EFrame::ENDED, {DescribeEnd(worker, status)});
                            writer.Flush();
                        }});
    if (!m_Keeper->IsRunning()) {
        m_Result.problem = NoProcess(errno);
    }
    if (plugin.timeout) {
        m_End = steady_clock::now() + *plugin.timeout;
    }
}

int CRequestProcess::Patience() const {
    return m_End == CTime::max()
               ? -1
               : static_cast<int>(std::max(milliseconds::zero(), std::chrono::ceil<milliseconds>(
                                                                     m_End - steady_clock::now()))
                                      .count());
}

bool CRequestProcess::Advance() {
    // What came in time counts, however late it is taken: this process may have been stopped.
    if (!Read()) {
        return false;
    }
    if (steady_clock::now() >= m_End) {
        End();
        m_IsTimeOver = true;
        return false;
    }
    return true;
}

// False at the end.
bool CRequestProcess::Read() {
    std::array<char, 65536> block;
    for (;;) {
        pollfd entry = {m_Reply.Get(), POLLIN, 0};
        if (!m_Reply.IsOpen() || poll(&entry, 1, 0) == 0) {
            return m_Reply.IsOpen();
        }
        const ssize_t count = read(m_Reply.Get(), block.data(), block.size());
        if (count < 0 && errno == EINTR) {
            continue;
        }
        if (count <= 0 || !m_Reader.Take({block.data(), static_cast<size_t>(count)},
                                         [this](EFrame kind, const CReplyReader::CFields& fields) {
                                             TakeFrame(kind, fields);
                                         })) {
            End();
            return false;
        }
    }
}

// The plug-in's process may have written anything: a frame with too few fields says nothing.
void CRequestProcess::TakeFrame(EFrame kind, const CReplyReader::CFields& fields) {
    if (fields.size() < LeastFields(kind)) {
        return;
    }
    switch (kind) {
        case EFrame::COMMAND:
            ++m_ToolRuns;
            m_Command = fields[0];
            m_Progress = fields[1];
            break;
        case EFrame::ITEM:
            AddItem(*m_Items, std::string(fields[0]), std::string(fields[1]),
                    std::string(fields[2]),
                    fields[3] == "FALSE" ? EItemFlag::PLACEHOLDER : EItemFlag::SHOWN);
            break;
        case EFrame::REPLY:
            m_Result = ReadReply(fields).value_or(CReply());
            break;
        case EFrame::ENDED:
            m_Result.problem = fields[0];
            break;
    }
}

void CRequestProcess::End() {
    m_Reply.Close();
    m_Keeper.reset();
}

CAnswer CRequestProcess::TakeAnswer() {
    CAnswer answer = m_IsTimeOver ? TimeIsOver(*m_Plugin.timeout, m_Command)
                                  : MakeAnswer(m_Request, std::move(m_Result), std::move(m_Items));
    answer.toolRuns = m_ToolRuns;
    return answer;
}

}  // namespace qorctl
