// What the stand-in plug-in is told to answer, and what it reports about the calls it got.
//
// The environment variable QOR_STAND_IN_ANSWER names a file of records, each ended by RECORD_END,
// its fields separated by FIELD_END:
//
//     result N            returned by the information operations (1 when not given)
//     error T, notice T, detail T
//     item PARENT NAME VALUE ENABLE
//     digits T            what GetCtrlPDInfoBinaryString hands out
//     document T          what XmlSerialize hands out; null when not given
//     xml-result T        returned by XmlSerialize, hexadecimal (0 when not given)
//     exec N STATUS T     KRZExecCli returns N, with that exit status and T in the result file
//     throw WHERE WHAT    WHERE: an operation that the program uses (after the items were
//                         appended); WHAT: out_of_range, private (a type of the plug-in) or int
//     no-object           CreateLibIF returns null
//     wait FIFO           a request for items waits until somebody writes to the FIFO
//
// The N-th request for items is answered by the file with ".N" behind the name, if there is one.
//
// Each call is appended as a line to the file that QOR_STAND_IN_LOG names.
#ifndef QORTEST_STANDINANSWER_H
#define QORTEST_STANDINANSWER_H

namespace qortest {

inline constexpr char FIELD_END = '\x1f';
inline constexpr char RECORD_END = '\x1e';

}  // namespace qortest

#endif  // QORTEST_STANDINANSWER_H
