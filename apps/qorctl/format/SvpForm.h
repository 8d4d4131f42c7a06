// Decodes the service-processor form: RAID controllers and their drives as one binary record,
// handed around as hexadecimal digits.
//
//     form        5 signature, 1 format revision, 2 reserved, 4 total size, 1 number of
//                 controllers, 1 number of drives, 2 reserved; the controllers
//     controller  1 number, 1 number of drives, 2 size with drives, 2 size without drives;
//                 items; drives
//     drive       1 number, 2 size; items
//     item        1 label size, label, 2 value size, value
//
// The figures are widths in bytes. Numbers are little-endian; a size counts what it stands in
// front of or in, a label's and a value's zero byte included.
//
// The writer leaves characters from 0x80 to 0xFF out of the texts, but every size still counts
// them. So a text ends at its zero byte, and may end before its size says. The sizes among
// themselves stay consistent, whatever is left out: the sections are told apart by adding up the
// sizes that the items state, not by the bytes that are there.
//
// The sizes of a section have 16 bits and wrap beyond 65,535, as the header's number of drives does
// beyond 255: they are compared as far as they go.
#ifndef QORCTL_FORMAT_SVPFORM_H
#define QORCTL_FORMAT_SVPFORM_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "terminal/TerminalText.h"

namespace qorctl {

// One line of the decoded form.
struct CSvpEntry {
    enum class EKind { HEADING, FIELD, NOTE };

    EKind kind = EKind::HEADING;
    size_t offset = 0;  // of the first byte, from 0; without meaning for a note
    size_t depth = 0;
    std::string name = {};   // of the section or the field, a label; the text of a note
    std::string value = {};  // of a field; bytes as they stand in the form
};

// Decodes a form of hexadecimal digits (either case; white space is ignored) in the order of its
// bytes. What is malformed gives nothing, and `problem` says where (the offset of the byte in the
// form, or of the character in the text) and why. Tolerated, with a note: a text shorter than its
// size, a size or count that wrapped, a signature or reserved bytes that are not zero.
std::optional<std::vector<CSvpEntry>> DecodeSvpForm(std::string_view digits, std::string& problem);

// The number of controllers that the form's header states; 0 where there is none.
size_t CountSvpControllers(std::string_view digits);

// One line an entry, every line ended: the offset, then the name and value, indented by depth.
std::string FormatSvpForm(const std::vector<CSvpEntry>& form, const CTextStyle& style);

}  // namespace qorctl

#endif  // QORCTL_FORMAT_SVPFORM_H
