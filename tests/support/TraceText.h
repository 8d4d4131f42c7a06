// The recorded traces as one readable text.
#ifndef QORTEST_TRACETEXT_H
#define QORTEST_TRACETEXT_H

#include <string>

namespace qortest {

// All lines of FakeComLib(), "level: text" and a line feed each. The path of a result file, which
// no test can know, is shown as RESULTFILE.
std::string TraceText();
// The same without "[START]" and "[END]" lines.
std::string TraceTextWithoutFlow();

}  // namespace qortest

#endif  // QORTEST_TRACETEXT_H
