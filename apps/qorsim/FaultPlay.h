// How a stand-in tool gives its answer, with the faults that strike this run.
#ifndef QORSIM_FAULTPLAY_H
#define QORSIM_FAULTPLAY_H

#include <string>
#include <vector>

#include "StandIn.h"

namespace qorsim {

// Writes the answer of `tool` to a command line, as the faults of the server let it, and returns
// the exit status; or does not return, when a fault makes the tool hang or die.
int PlayAnswer(const std::string& tool, const std::vector<std::string>& arguments,
               const CToolAnswer& answer);

// Writes all of a text, or as much of it as is taken.
void WriteText(int fd, const std::string& text);

// Dies of a signal, without a core file; ends with 128 + its number should it not be deadly.
[[noreturn]] void DieOfSignal(int signal);

}  // namespace qorsim

#endif  // QORSIM_FAULTPLAY_H
