// The pipe between the process that holds the plug-in and the one that asked:
//
//     stream = { frame }        frame = kind, size, { size, field }
//
// where `kind` is a byte, a size 64 bits of this machine, and a frame's size that of all its
// fields.
//
// Thread rule: one thread at a time for an object.
#ifndef QORCTL_HOST_REPLYPIPE_H
#define QORCTL_HOST_REPLYPIPE_H

#include <cstddef>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace qorctl {

enum class EFrame : char {
    COMMAND = 'C',  // a command that begins to run
    ITEM = 'I',     // parent name, item name, value, enable flag
    REPLY = 'R',    // the last one of a request that came to its end; see Request.cpp
    ENDED = 'E',    // how the process that held the plug-in ended, in words
};

class CReplyWriter {
public:
    // `fd` stays the caller's.
    explicit CReplyWriter(int fd) : m_Fd(fd) {}

    // May keep the frame back until Flush(). Frames are lost when nobody reads.
    void Write(EFrame kind, std::initializer_list<std::string_view> fields);
    void Flush();

private:
    const int m_Fd;
    std::string m_Buffer;
};

class CReplyReader {
public:
    using CFields = std::vector<std::string_view>;  // valid during the call

    // Takes bytes of the stream and hands over each frame that is complete. False when the bytes
    // are none of a writer's.
    bool Take(std::string_view bytes, const std::function<void(EFrame, const CFields&)>& use);

private:
    std::string m_Buffer;
    CFields m_Fields;  // of the frame at hand
};

}  // namespace qorctl

#endif  // QORCTL_HOST_REPLYPIPE_H
