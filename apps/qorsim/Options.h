// Options that several sub-commands have.
#ifndef QORSIM_OPTIONS_H
#define QORSIM_OPTIONS_H

#include <CLI/CLI.hpp>

#include "HelpText.h"

namespace qorsim {

// How long the simulated server has been running when the command begins, in seconds.
inline CLI::Option* AddStartAtOption(CLI::App& command, long& seconds) {
    constexpr long MOST = 4294967295;
    return command
        .add_option("--start-at", seconds,
                    "Begin SECONDS after the server's start, for the events of its profile")
        ->type_name("SECONDS")
        ->transform(qorapps::NumberFromTo(0, MOST));
}

}  // namespace qorsim

#endif  // QORSIM_OPTIONS_H
