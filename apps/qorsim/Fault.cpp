#include "Fault.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <iterator>
#include <limits>

namespace qorsim {
namespace {

enum class EValue { NONE, NUMBER, SIZE, TEXT };

// What can stand behind a kind: a command and a count, the name of a tool, or nothing.
enum class EReach { RUNS, TOOL, SERVER };

struct CFaultRow {
    const char* name;
    EFault kind;
    EReach reach;
    EValue value;
    const char* valueForm;
    const char* defaultValue;  // null when the value must be given
    unsigned long least;       // of a number
    unsigned long most;
    const char* description;
};

constexpr unsigned long ANY = std::numeric_limits<int>::max();
constexpr unsigned long MOST_BYTES = 1'000'000'000;  // it stands in memory

constexpr CFaultRow ROWS[] = {
    {"hang", EFault::HANG, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "writes its report, then never ends"},
    {"hang-term", EFault::HANG_TERM, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "the same, and ignores HUP, INT and TERM"},
    {"hang-child", EFault::HANG_CHILD, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "ends, but leaves a child that holds its output open and never ends"},
    {"delay", EFault::DELAY, EReach::RUNS, EValue::NUMBER, "[=MS]", "1000", 0, ANY,
     "waits before its report, 1000 milliseconds"},
    {"drip", EFault::DRIP, EReach::RUNS, EValue::NUMBER, "[=MS]", "1", 0, ANY,
     "writes byte by byte, with a pause of 1 millisecond behind each"},
    {"exit", EFault::EXIT, EReach::RUNS, EValue::NUMBER, "[=STATUS]", "1", 0, 255,
     "ends with exit status 1"},
    {"kill", EFault::KILL, EReach::RUNS, EValue::NUMBER, "[=SIGNAL]", "9", 1, 64,
     "writes its report, then dies of signal 9"},
    {"stop", EFault::STOP, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "writes its report, then stops itself (SIGSTOP); ends when it is continued"},
    {"error", EFault::ERROR, EReach::RUNS, EValue::TEXT, "[=TEXT]", "Simulated fault.", 0, 0,
     "reports only \"Error - TEXT\""},
    {"bad-token", EFault::BAD_TOKEN, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "refuses its last argument: \"Error - Invalid input at or near token ...\", status 1"},
    {"empty", EFault::EMPTY, EReach::RUNS, EValue::NONE, "", "", 0, 0, "reports nothing"},
    {"truncate", EFault::TRUNCATE, EReach::RUNS, EValue::SIZE, "=BYTES", nullptr, 0, MOST_BYTES,
     "reports only the first bytes"},
    {"no-newline", EFault::NO_NEWLINE, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "leaves out the line feeds at the report's end"},
    {"crlf", EFault::CRLF, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "ends lines with carriage return and line feed"},
    {"tabs", EFault::TABS, EReach::RUNS, EValue::NONE, "", "", 0, 0, "writes tabs for blanks"},
    {"nul", EFault::NUL, EReach::RUNS, EValue::NUMBER, "[=N]", "16", 1, ANY,
     "writes a NUL in place of every 16th byte"},
    {"mutate", EFault::MUTATE, EReach::RUNS, EValue::NUMBER, "[=SEED]", "1", 0, ANY,
     "damages the report at random; the same seed does the same damage"},
    {"size", EFault::SIZE, EReach::RUNS, EValue::SIZE, "[=BYTES]", "100M", 0, MOST_BYTES,
     "repeats the report until it has 100 MB"},
    {"stderr", EFault::STANDARD_ERROR, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "writes its report on standard error"},
    {"vanish", EFault::VANISH, EReach::RUNS, EValue::NONE, "", "", 0, 0,
     "removes itself from the server when it has run"},
    {"not-executable", EFault::NOT_EXECUTABLE, EReach::TOOL, EValue::NONE, "", "", 0, 0,
     "the tool's file cannot be executed; @MegaCli and @storcli name another tool"},
    {"result-dir-unwritable", EFault::RESULT_DIR_UNWRITABLE, EReach::SERVER, EValue::NONE, "", "",
     0, 0, "no result file can be created"},
    {"result-dir-full", EFault::RESULT_DIR_FULL, EReach::SERVER, EValue::NONE, "", "", 0, 0,
     "result files can be created, but nothing can be written into them"},
    {"no-device-list", EFault::NO_DEVICE_LIST, EReach::SERVER, EValue::NONE, "", "", 0, 0,
     "the list of PCI devices is missing"},
    {"unreadable-device-list", EFault::UNREADABLE_DEVICE_LIST, EReach::SERVER, EValue::NONE, "", "",
     0, 0, "the list of PCI devices is there, but cannot be read"},
};

constexpr const char* TOOLS[] = {"krzcli", "MegaCli", "storcli"};
constexpr const char* DEFAULT_TOOL = "krzcli";

// The parts of a fault's text; a part that is not there is nothing, an empty one is "".
struct CParts {
    std::string kind;
    std::optional<std::string> value;
    std::optional<std::string> command;
    std::optional<std::string> when;
};

// Cuts off what follows the separator at `position`.
std::optional<std::string> CutOff(std::string& text, size_t position) {
    if (position == std::string::npos) {
        return std::nullopt;
    }
    std::string tail = text.substr(position + 1);
    text.resize(position);
    return tail;
}

CParts Split(const std::string& text) {
    CParts parts;
    parts.kind = text;
    parts.when = CutOff(parts.kind, parts.kind.rfind('#'));
    parts.command = CutOff(parts.kind, parts.kind.find('@'));
    parts.value = CutOff(parts.kind, parts.kind.find('='));
    return parts;
}

const CFaultRow* FindRow(const std::string& name) {
    const auto* row = std::find_if(std::begin(ROWS), std::end(ROWS),
                                   [&](const CFaultRow& each) { return each.name == name; });
    return row == std::end(ROWS) ? nullptr : row;
}

std::string UnknownKind(const std::string& name) {
    std::vector<std::string> names;
    std::transform(std::begin(ROWS), std::end(ROWS), std::back_inserter(names),
                   [](const CFaultRow& row) { return row.name; });
    return fmt::format("there is no kind \"{}\": the kinds are {}", name, fmt::join(names, ", "));
}

std::optional<unsigned long> ReadNumber(const std::string& text) {
    unsigned long number = 0;
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, number);
    return stop == end && failure == std::errc() ? std::optional(number) : std::nullopt;
}

// A number of bytes, also with k (1000) or M (1000 times 1000) behind it.
std::optional<unsigned long> ReadSize(std::string text) {
    unsigned long unit = 1;
    if (text.ends_with('k') || text.ends_with('M')) {
        unit = text.back() == 'k' ? 1000 : 1'000'000;
        text.pop_back();
    }
    const std::optional<unsigned long> number = ReadNumber(text);
    if (!number || *number > MOST_BYTES / unit) {
        return std::nullopt;
    }
    return *number * unit;
}

bool ReadValue(const CFaultRow& row, const std::optional<std::string>& given, CFault& fault,
               std::string& error) {
    if (row.value == EValue::NONE) {
        if (given) {
            error = fmt::format("{} takes no value, but has \"{}\"", row.name, *given);
        }
        return !given;
    }
    if (!given && row.defaultValue == nullptr) {
        error = fmt::format("{} needs a value: {}{}", row.name, row.name, row.valueForm);
        return false;
    }
    fault.text = given ? *given : row.defaultValue;
    if (row.value == EValue::TEXT) {
        return true;
    }
    const std::optional<unsigned long> number =
        row.value == EValue::SIZE ? ReadSize(fault.text) : ReadNumber(fault.text);
    if (!number || *number < row.least || *number > row.most) {
        error = fmt::format("the value \"{}\" of {} is no number from {} to {}{}", fault.text,
                            row.name, row.least, row.most,
                            row.value == EValue::SIZE ? " (k and M behind it are units)" : "");
        return false;
    }
    fault.number = *number;
    return true;
}

bool ReadCommand(const CFaultRow& row, const std::optional<std::string>& given, CFault& fault,
                 std::string& error) {
    if (!given) {
        return true;
    }
    fault.command = *given;
    if (row.reach == EReach::SERVER) {
        error = fmt::format("{} is a fault of the server, not of runs: \"@{}\" has no place there",
                            row.name, *given);
        return false;
    }
    if (given->empty()) {
        error = "there is nothing behind \"@\": a tool's name or a part of its arguments is due";
        return false;
    }
    if (row.reach == EReach::TOOL &&
        std::find(std::begin(TOOLS), std::end(TOOLS), *given) == std::end(TOOLS)) {
        error = fmt::format("{} is a fault of a whole tool: there is no tool \"{}\", but {}",
                            row.name, *given, fmt::join(TOOLS, ", "));
        return false;
    }
    return true;
}

bool ReadWhen(const CFaultRow& row, const std::optional<std::string>& given, CFault& fault,
              std::string& error) {
    if (!given) {
        return true;
    }
    if (row.reach != EReach::RUNS) {
        error =
            fmt::format("{} is there from the start: \"#{}\" has no place there", row.name, *given);
        return false;
    }
    std::string from = *given;
    const std::optional<std::string> to = CutOff(from, from.find('-'));
    const std::optional<unsigned long> first = ReadNumber(from);
    const std::optional<unsigned long> last = !to ? first : to->empty() ? 0 : ReadNumber(*to);
    if (!first || !last || *first < 1 || (*last < *first && !(to && to->empty()))) {
        error = fmt::format("\"#{}\" is not of the form #N, #N-M or #N-, counted from 1", *given);
        return false;
    }
    fault.first = *first;
    fault.last = *last;
    return true;
}

std::string JoinArguments(const std::vector<std::string>& arguments) {
    return fmt::format("{}", fmt::join(arguments, " "));
}

}  // namespace

bool CFault::IsOfRuns() const {
    return std::any_of(std::begin(ROWS), std::end(ROWS), [this](const CFaultRow& row) {
        return row.kind == kind && row.reach == EReach::RUNS;
    });
}

bool CFault::Matches(const std::string& tool, const std::vector<std::string>& arguments) const {
    const std::string joined = JoinArguments(arguments);
    for (const std::string name : TOOLS) {
        if (command.starts_with(name)) {
            return (tool + " " + joined).starts_with(command);
        }
    }
    return tool == DEFAULT_TOOL && joined.find(command) != std::string::npos;
}

bool CFault::Strikes(unsigned long run) const {
    return run >= first && (last == 0 || run <= last);
}

std::vector<CFaultDescription> ListFaults() {
    std::vector<CFaultDescription> list;
    for (const CFaultRow& row : ROWS) {
        list.push_back({row.name, row.valueForm, row.description});
    }
    return list;
}

std::optional<CFault> ParseFault(const std::string& text, std::string& error) {
    const CParts parts = Split(text);
    const CFaultRow* row = FindRow(parts.kind);
    CFault fault;
    std::string problem;
    if (text.find('\n') != std::string::npos) {
        problem = "it has a line feed";
    } else if (row == nullptr) {
        problem = UnknownKind(parts.kind);
    } else if (fault.kind = row->kind; ReadValue(*row, parts.value, fault, problem) &&
                                       ReadCommand(*row, parts.command, fault, problem) &&
                                       ReadWhen(*row, parts.when, fault, problem)) {
        return fault;
    }
    error = fmt::format("the fault \"{}\": {}", text, problem);
    return std::nullopt;
}

}  // namespace qorsim
