// The two ways out of the program: the report on standard output, everything else on standard
// error.
//
// Thread rule: plain functions; one thread at a time.
#ifndef QORCTL_OUTPUT_H
#define QORCTL_OUTPUT_H

#include <string>
#include <string_view>

namespace qorctl {

// Writes `text` to standard error, each line safe for a terminal, the program's name in front.
void Report(std::string_view text);

// Writes `text` to standard output as it stands. Returns the exit status: 0, or 1 after a report
// that standard output could not be written.
int WriteOut(const std::string& text);

}  // namespace qorctl

#endif  // QORCTL_OUTPUT_H
