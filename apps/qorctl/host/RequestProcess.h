// A request in a process of its own, which holds the plug-in: whatever the plug-in does there, and
// whatever becomes of this program, nothing of it stays (see Keeper.h).
//
// Thread rule: one thread at a time; the calling process has no other.
#ifndef QORCTL_HOST_REQUESTPROCESS_H
#define QORCTL_HOST_REQUESTPROCESS_H

#include <chrono>
#include <memory>
#include <string>

#include "host/Answer.h"
#include "host/Keeper.h"
#include "host/ReplyPipe.h"
#include "host/Request.h"
#include "util/UniqueFd.h"

namespace qorctl {

class CRequestProcess {
public:
    // Loads the plug-in there and asks. Both must outlive the object. Without a progress that is to
    // be shown, or a time limit, only failures are listened to in what the plug-in traces: the rest
    // takes time.
    CRequestProcess(const CPluginChoice& plugin, const CRequest& request, EProgress progress);
    // Ends it.
    ~CRequestProcess() { End(); }
    CRequestProcess(const CRequestProcess&) = delete;  // one owner of the process
    CRequestProcess& operator=(const CRequestProcess&) = delete;

    // Can be read when there is something to advance with.
    int Descriptor() const { return m_Reply.Get(); }
    // Milliseconds after which to advance anyway; -1: none.
    int Patience() const;
    // Takes what has come, without waiting. False when the answer is there, or the time is over.
    bool Advance();

    // What runs: "krzcli -pdinfo -nosmart -a1 (controller 2 of 4)". Empty before the first command,
    // where only failures are listened to, or where the common library tells nothing.
    const std::string& Progress() const { return m_Progress; }

    // Ends the request, the tool included; that takes seconds where the kernel cannot end it.
    void End();

    // What came of it; to be asked for once, when Advance() was false.
    CAnswer TakeAnswer();

private:
    using CTime = std::chrono::steady_clock::time_point;

    bool Read();
    void TakeFrame(EFrame kind, const CReplyReader::CFields& fields);

    const CPluginChoice& m_Plugin;
    const CRequest& m_Request;
    util::CUniqueFd m_Reply;
    std::unique_ptr<CKeeper> m_Keeper;
    CReplyReader m_Reader;
    CTime m_End = CTime::max();
    bool m_IsTimeOver = false;
    std::string m_Command;
    size_t m_ToolRuns = 0;
    std::string m_Progress;
    CReply m_Result;
    std::shared_ptr<CItemListOwner> m_Items = std::make_shared<CItemListOwner>();
};

}  // namespace qorctl

#endif  // QORCTL_HOST_REQUESTPROCESS_H
