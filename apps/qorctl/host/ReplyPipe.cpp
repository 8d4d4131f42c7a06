#include "host/ReplyPipe.h"

#include <cstdint>
#include <cstring>

#include "util/FileIo.h"

namespace qorctl {
namespace {

using CSize = uint64_t;

constexpr size_t KEPT_BACK = 65536;
constexpr size_t HEAD = 1 + sizeof(CSize);

void AppendSize(std::string& text, CSize size) {
    text.append(reinterpret_cast<const char*>(&size), sizeof(size));
}

CSize SizeAt(std::string_view bytes) {
    CSize size = 0;
    std::memcpy(&size, bytes.data(), sizeof(size));
    return size;
}

// False when the sizes do not fit.
bool ReadFields(std::string_view bytes, CReplyReader::CFields& fields) {
    fields.clear();
    while (!bytes.empty()) {
        if (bytes.size() < sizeof(CSize) || SizeAt(bytes) > bytes.size() - sizeof(CSize)) {
            return false;
        }
        fields.push_back(bytes.substr(sizeof(CSize), SizeAt(bytes)));
        bytes.remove_prefix(sizeof(CSize) + fields.back().size());
    }
    return true;
}

}  // namespace

void CReplyWriter::Write(EFrame kind, std::initializer_list<std::string_view> fields) {
    CSize size = 0;
    for (const std::string_view field : fields) {
        size += sizeof(CSize) + field.size();
    }
    m_Buffer += static_cast<char>(kind);
    AppendSize(m_Buffer, size);
    for (const std::string_view field : fields) {
        AppendSize(m_Buffer, field.size());
        m_Buffer += field;
    }
    if (m_Buffer.size() >= KEPT_BACK) {
        Flush();
    }
}

void CReplyWriter::Flush() {
    util::WriteAll(m_Fd, m_Buffer);
    m_Buffer.clear();
}

bool CReplyReader::Take(std::string_view bytes,
                        const std::function<void(EFrame, const CFields&)>& use) {
    m_Buffer += bytes;
    std::string_view rest = m_Buffer;
    while (rest.size() >= HEAD && rest.size() - HEAD >= SizeAt(rest.substr(1))) {
        const CSize size = SizeAt(rest.substr(1));
        if (!ReadFields(rest.substr(HEAD, size), m_Fields)) {
            return false;
        }
        use(static_cast<EFrame>(rest.front()), m_Fields);
        rest.remove_prefix(HEAD + size);
    }
    m_Buffer.erase(0, m_Buffer.size() - rest.size());
    return true;
}

}  // namespace qorctl
