// What can go wrong on a simulated server: faults, and how a user writes them.
//
//     fault   = kind [ "=" value ] [ "@" command ] [ "#" when ]
//     when    = N              the Nth run only
//             | N "-" M        the runs N to M
//             | N "-"          the run N and all behind it
//
// A fault of tool runs strikes those of krzcli, or with a command only the matching ones; `when`
// counts the runs that match. Faults can be combined, and work in the order in which they are
// given.
#ifndef QORSIM_FAULT_H
#define QORSIM_FAULT_H

#include <optional>
#include <string>
#include <vector>

namespace qorsim {

enum class EFault {
    HANG,
    HANG_TERM,
    HANG_CHILD,
    DELAY,
    DRIP,
    EXIT,
    KILL,
    STOP,
    ERROR,
    BAD_TOKEN,
    EMPTY,
    TRUNCATE,
    NO_NEWLINE,
    CRLF,
    TABS,
    NUL,
    MUTATE,
    SIZE,
    STANDARD_ERROR,
    VANISH,
    NOT_EXECUTABLE,
    RESULT_DIR_UNWRITABLE,
    RESULT_DIR_FULL,
    NO_DEVICE_LIST,
    UNREADABLE_DEVICE_LIST,
};

struct CFault {
    EFault kind = EFault::HANG;
    unsigned long number = 0;  // the value of a kind that takes a number
    std::string text;          // the value of a kind that takes a text
    std::string command;       // "" is every run of krzcli
    unsigned long first = 1;   // the runs that it strikes, counted from 1
    unsigned long last = 0;    // 0 is no end

    // Whether it strikes runs of tools, and is not there from the start.
    bool IsOfRuns() const;
    // Whether a run of `tool` is one of those that `command` means.
    bool Matches(const std::string& tool, const std::vector<std::string>& arguments) const;
    // Whether the matching run of that number is struck.
    bool Strikes(unsigned long run) const;
};

// One line of the list of kinds.
struct CFaultDescription {
    std::string name;
    std::string value;  // the form of the value, as in "=BYTES" or "[=N]"; "" when it takes none
    std::string description;
};

std::vector<CFaultDescription> ListFaults();

// Reads a fault as a user wrote it. On a mistake returns nothing and `error` says what is wrong
// with which part of it, and what there is to choose from.
std::optional<CFault> ParseFault(const std::string& text, std::string& error);

}  // namespace qorsim

#endif  // QORSIM_FAULT_H
