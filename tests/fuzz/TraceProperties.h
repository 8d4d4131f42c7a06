// What must hold for the lines of the trace.
#ifndef QORFUZZ_TRACEPROPERTIES_H
#define QORFUZZ_TRACEPROPERTIES_H

namespace qorfuzz {

// From now on, or no more: every line of the trace, whatever its level, is written, and is one line
// without control characters. Independent of QOR_TRACE, which shows the trace to a person.
void LookAtTrace(bool look);

}  // namespace qorfuzz

#endif  // QORFUZZ_TRACEPROPERTIES_H
