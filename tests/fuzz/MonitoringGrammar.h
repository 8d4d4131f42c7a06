// The output of `qorctl check` as a monitoring server reads it, by a grammar of our own.
#ifndef QORFUZZ_MONITORINGGRAMMAR_H
#define QORFUZZ_MONITORINGGRAMMAR_H

#include <map>
#include <string>
#include <string_view>

namespace qorfuzz {

// Demands
//
//     output  = "RAID " status " - " text [ "|" values ] LF { detail LF }
//     values  = value { " " value }
//     value   = label "=" number [ "%" | "c" ] ";" [ range ] ";" [ range ]
//     label   = word | "'" { character | "''" } "'"      no "=" in either
//     range   = [ "~:" ] number
//
// in printable ASCII, a bar nowhere else. Returns the numbers by label; of equal labels the first.
std::map<std::string, std::string, std::less<>> ReadMonitoringOutput(std::string_view text,
                                                                     std::string_view status);

}  // namespace qorfuzz

#endif  // QORFUZZ_MONITORINGGRAMMAR_H
