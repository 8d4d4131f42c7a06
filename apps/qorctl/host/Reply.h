// What the process that holds the plug-in says at the end of a request, beside the items.
#ifndef QORCTL_HOST_REPLY_H
#define QORCTL_HOST_REPLY_H

#include <optional>
#include <string>

#include "host/ReplyPipe.h"

namespace qorctl {

// What an information operation of the plug-in object returned beside its list.
struct CResultTexts {
    std::string errorCode;   // empty: none
    std::string noticeCode;  // empty: none
    std::string detail;      // the command that failed; empty or "none": no command to name
};

enum class EOutcome {
    ANSWERED,       // also with nothing to report
    FAILED,         // the plug-in said so; its texts say why
    PLUGIN_FAILED,  // it made no object, threw, or ended its process
    NOT_ASKED,      // it could not be loaded, or the command line not be read
    TIME_OVER,      // the caller's own limit
};

struct CReply {
    EOutcome outcome = EOutcome::PLUGIN_FAILED;
    std::string problem;  // of PLUGIN_FAILED and NOT_ASKED, in words
    CResultTexts texts;
    std::optional<std::string> toolVersion;  // of the RAID tool, where the plug-in told it
    std::string printed;  // by the tool when its command failed, one line; empty: not known

    // What the operation returned as such.
    std::string document;      // the form, or the XML document
    unsigned int result = 0;   // of the making of the document, or of a tool command
    unsigned long status = 0;  // exit status of a tool command
};

void WriteReply(const CReply& reply, CReplyWriter& writer);

// Nothing when the fields are none of WriteReply()'s.
std::optional<CReply> ReadReply(const CReplyReader::CFields& fields);

}  // namespace qorctl

#endif  // QORCTL_HOST_REPLY_H
