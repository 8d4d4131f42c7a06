// The ways out of the program: the report on standard output, everything else on standard error.
// Nothing that a terminal obeys reaches one.
#ifndef QORCTL_TERMINAL_OUTPUT_H
#define QORCTL_TERMINAL_OUTPUT_H

#include <string>
#include <string_view>

#include "terminal/Pieces.h"

namespace qorctl {

// Writes `text` to standard error, each line safe for a terminal, the program's name in front.
void Report(std::string_view text);

// Writes a text to standard error whose lines are laid out already; safe for a terminal.
void ReportLines(const std::string& text);

// Writes `text`, which is safe for a terminal, to standard output as it stands. Returns the exit
// status: 0, or 1 after a report that standard output could not be written.
int WriteOut(const std::string& text);

// The same for bytes of somebody else, or values for a spreadsheet: as they stand, but made visible
// on a terminal.
int WriteBytes(const std::string& bytes);
int WriteBytes(const CGivePieces& give);

// The same for JSON (see format/JsonDocument.h): plain ASCII on a terminal that does not know
// UTF-8.
int WriteJson(const std::string& json);

}  // namespace qorctl

#endif  // QORCTL_TERMINAL_OUTPUT_H
