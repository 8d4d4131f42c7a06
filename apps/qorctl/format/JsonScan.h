// What can be told of a JSON text without reading it.
//
// Thread rule: one thread at a time for an object.
#ifndef QORCTL_FORMAT_JSONSCAN_H
#define QORCTL_FORMAT_JSONSCAN_H

#include <cstddef>
#include <string_view>

namespace qorctl {

// Tells what stands inside the strings of a JSON text, which is given to it byte by byte.
class CJsonStrings {
public:
    // Whether the byte is part of a string; its quotes are not.
    bool IsInside(char byte) {
        if (!m_IsInside) {
            m_IsInside = byte == '"';
            return false;
        }
        if (m_IsEscaped) {
            m_IsEscaped = false;
            return true;
        }
        m_IsEscaped = byte == '\\';
        m_IsInside = byte != '"';
        return m_IsInside;
    }

private:
    bool m_IsInside = false;
    bool m_IsEscaped = false;
};

// How deep the lists and objects of a JSON text are nested; of any other text, some number.
size_t JsonDepth(std::string_view json);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_JSONSCAN_H
