#include "host/Reply.h"

#include <charconv>

namespace qorctl {
namespace {

constexpr size_t FIELDS = 11;

template <typename NUMBER>
NUMBER ReadNumber(std::string_view text) {
    NUMBER number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

}  // namespace

void WriteReply(const CReply& reply, CReplyWriter& writer) {
    writer.Write(EFrame::REPLY,
                 {std::to_string(static_cast<int>(reply.outcome)), reply.problem,
                  reply.texts.errorCode, reply.texts.noticeCode, reply.texts.detail,
                  reply.toolVersion ? "1" : "0", reply.toolVersion.value_or(""), reply.document,
                  std::to_string(reply.result), std::to_string(reply.status), reply.printed});
    writer.Flush();
}

std::optional<CReply> ReadReply(const CReplyReader::CFields& fields) {
    if (fields.size() != FIELDS) {
        return std::nullopt;
    }
    CReply reply;
    reply.outcome = static_cast<EOutcome>(ReadNumber<int>(fields[0]));
    reply.problem = fields[1];
    reply.texts = {std::string(fields[2]), std::string(fields[3]), std::string(fields[4])};
    if (fields[5] == "1") {
        reply.toolVersion = fields[6];
    }
    reply.document = fields[7];
    reply.result = ReadNumber<unsigned int>(fields[8]);
    reply.status = ReadNumber<unsigned long>(fields[9]);
    reply.printed = fields[10];
    return reply;
}

}  // namespace qorctl
