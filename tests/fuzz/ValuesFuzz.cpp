// Values that a user gives, and quantities of a report: each line is read in every way.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdlib>
#include <initializer_list>

#include "Depth.h"
#include "Fault.h"
#include "Fuzz.h"
#include "HelpText.h"
#include "model/DriveAddress.h"
#include "model/Quantity.h"

namespace {

using namespace qorfuzz;
using CNumber = std::optional<long long>;

constexpr long long LIMIT_OF_OPTION = 1000;
constexpr double TOO_LARGE = 9223372036854775808.0;

bool IsDigit(char character) {
    return character >= '0' && character <= '9';
}

std::string_view WithoutBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) {
        text.remove_prefix(1);
    }
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) {
        text.remove_suffix(1);
    }
    return text;
}

// Nothing but digits, digit by digit.
CNumber Digits(std::string_view text) {
    if (text.empty() || !std::all_of(text.begin(), text.end(), IsDigit)) {
        return std::nullopt;
    }
    long long number = 0;
    for (const char digit : text) {
        if (__builtin_mul_overflow(number, 10LL, &number) ||
            __builtin_add_overflow(number, static_cast<long long>(digit - '0'), &number)) {
            return std::nullopt;
        }
    }
    return number;
}

void DemandAddress(const std::string& text) {
    const long long digits = Digits(text).value_or(-1);
    const bool isAddress = digits >= 0 && digits <= qorctl::MAX_ADDRESS_NUMBER;
    Demand(qorctl::ReadAddressNumber(text).value_or(-1) == (isAddress ? digits : -1),
           "an address is digits", text);
    const auto address = qorctl::ReadDriveAddress(text, "252", text);
    Demand(address.has_value() == isAddress, "an address is three numbers", text);
}

// A threshold, a duration, a count: the number that is stored is the one that was written.
void DemandOption(const std::string& text) {
    static long long number = -1;
    static CLI::App app;
    static const CLI::Option* const option =
        app.add_option("--number", number)->transform(qorapps::NumberFromTo(0, LIMIT_OF_OPTION));
    static_cast<void>(option);
    const bool isNegative = text.starts_with('-');
    const long long digits = Digits(isNegative ? text.substr(1) : text).value_or(-1);
    const bool isFit = digits >= 0 && digits <= (isNegative ? 0 : LIMIT_OF_OPTION);
    bool accepted = true;
    try {
        std::vector<std::string> arguments = {"--number=" + text};
        app.parse(arguments);
    } catch (const CLI::ParseError&) {
        accepted = false;
    }
    Demand(accepted == isFit, "an option takes the numbers of its range", text);
    Demand(!accepted || number == digits, "an option has the number that was written", text);
}

struct CUnit {
    std::string_view name;
    double factor;
};

// number [ blanks ] unit
CNumber Measure(std::string_view text, std::initializer_list<CUnit> units) {
    const std::string whole(WithoutBlanks(text));
    const size_t sign = whole.starts_with('-') ? 1 : 0;
    size_t end = sign;
    while (end < whole.size() && IsDigit(whole[end])) {
        ++end;
    }
    if (end == sign) {
        return std::nullopt;
    }
    if (end < whole.size() && whole[end] == '.') {
        do {
            ++end;
        } while (end < whole.size() && IsDigit(whole[end]));
    }
    errno = 0;
    const double number = std::strtod(whole.substr(0, end).c_str(), nullptr);
    const std::string_view unit = WithoutBlanks(std::string_view(whole).substr(end));
    const auto* known = std::find_if(units.begin(), units.end(),
                                     [&](const CUnit& each) { return each.name == unit; });
    if (errno == ERANGE || known == units.end()) {
        return std::nullopt;
    }
    const double value = std::round(number * known->factor);
    return value >= -TOO_LARGE && value < TOO_LARGE ? CNumber(static_cast<long long>(value))
                                                    : std::nullopt;
}

CNumber NotNegative(CNumber number) {
    return number && *number >= 0 ? number : std::nullopt;
}

CNumber Bytes(std::string_view text, double k) {
    const double ki = 1024;
    return NotNegative(Measure(text, {{"B", 1},
                                      {"KB", k},
                                      {"MB", k * k},
                                      {"GB", k * k * k},
                                      {"TB", k * k * k * k},
                                      {"PB", k * k * k * k * k},
                                      {"KiB", ki},
                                      {"MiB", ki * ki},
                                      {"GiB", ki * ki * ki},
                                      {"TiB", ki * ki * ki * ki},
                                      {"PiB", ki * ki * ki * ki * ki}}));
}

CNumber Celsius(std::string_view text) {
    text = WithoutBlanks(text);
    if (text.ends_with(')') && text.find('(') != std::string_view::npos) {
        text = text.substr(0, text.find('('));
    }
    return Measure(text, {{"C", 1},
                          {"\xC2\xB0"
                           "C",
                           1},
                          {"degrees C", 1}});
}

void DemandQuantities(const std::string& text) {
    Demand(qorctl::ReadCount(text) == Digits(WithoutBlanks(text)), "a count is digits", text);
    const CNumber numbered = text.starts_with("PD")
                                 ? Digits(WithoutBlanks(std::string_view(text).substr(2)))
                                 : std::nullopt;
    Demand(qorctl::ReadNumbered(text, "PD") == numbered, "a numbered name has a count", text);
    Demand(qorctl::ReadBinaryBytes(text) == Bytes(text, 1024), "bytes by powers of 1024", text);
    Demand(qorctl::ReadDecimalBytes(text) == Bytes(text, 1000), "bytes by powers of 1000", text);
    Demand(qorctl::ReadCelsius(text) == Celsius(text), "degrees Celsius", text);
    Demand(qorctl::ReadHours(text) == NotNegative(Measure(text, {{"h", 1}, {"hours", 1}, {"", 1}})),
           "hours", text);
    Demand(qorctl::ReadPercent(text) == NotNegative(Measure(text, {{"%", 1}})), "per cent", text);
    Demand(qorctl::ReadBitRate(text) ==
               NotNegative(
                   Measure(text, {{"Kb/s", 1e3}, {"Mb/s", 1e6}, {"Gb/s", 1e9}, {"Tb/s", 1e12}})),
           "bits a second", text);
}

bool IsListed(const std::string& kind) {
    const auto faults = qorsim::ListFaults();
    return std::any_of(faults.begin(), faults.end(),
                       [&](const qorsim::CFaultDescription& each) { return each.name == kind; });
}

// The text must have been kind [ "=" value ] [ "@" command ] [ "#" when ].
void DemandFaultForm(const std::string& text, const qorsim::CFault& fault) {
    const size_t when = text.rfind('#');
    std::string head = text.substr(0, when);
    const size_t command = head.find('@');
    Demand(fault.command == (command == std::string::npos ? "" : head.substr(command + 1)),
           "the command is that behind the @", fault.command);
    head.resize(std::min(command, head.size()));
    const size_t value = head.find('=');
    Demand(IsListed(head.substr(0, value)), "the kind is a listed one", head);
    Demand(value == std::string::npos || fault.text == head.substr(value + 1),
           "the value is that behind the =", fault.text);
    Demand(fault.first >= 1 && (fault.last == 0 || fault.last >= fault.first),
           "the runs are a range that begins at 1 or later", text);
    Demand(fault.Strikes(fault.first) && !fault.Strikes(fault.first - 1) &&
               (fault.last == 0 || fault.last == ULONG_MAX || !fault.Strikes(fault.last + 1)),
           "runs out of the range are spared", text);
    if (when == std::string::npos) {
        Demand(fault.first == 1 && fault.last == 0, "all runs are struck", text);
    } else {
        const std::string first = text.substr(when + 1, text.find('-', when) - when - 1);
        Demand(Digits(first).value_or(-1) < 0 ||
                   fault.first == static_cast<unsigned long>(*Digits(first)),
               "the first run is the one that was written", text);
    }
}

void DemandFault(const std::string& text) {
    std::string error;
    const auto fault = qorsim::ParseFault(text, error);
    Demand(fault.has_value() == error.empty(), "a refusal says why", error);
    if (fault) {
        DemandFaultForm(text, *fault);
        static_cast<void>(fault->Matches("krzcli", {"-ctrlinfo", "-a0"}));
        static_cast<void>(fault->Matches("storcli", {}));
    }
}

// Reading one in all ways takes as long as a whole report of other targets.
constexpr size_t MOST_VALUES = 1000;

void Fuzz(const std::string& text) {
    std::vector<std::string_view> lines = LinesOf(text);
    lines.resize(std::min(lines.size(), MOST_VALUES));
    for (const std::string_view line : lines) {
        const std::string value(line);
        DemandAddress(value);
        DemandOption(value);
        DemandQuantities(value);
        DemandFault(value);
    }
    DemandFault(text);
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {"0",
            "252",
            "010",
            "0x10",
            "1000",
            "1001",
            "-0",
            "-1",
            "+5",
            "1e3",
            "2147483647",
            "2147483648",
            "558.912GB",
            "1.0TiB",
            "8191PB",
            "8192PB",
            "31C",
            "-5 C",
            "31C (87.80 F)",
            "31 degrees C",
            "\xC2\xB0"
            "C",
            "21904h",
            "21904 hours",
            "98%",
            "12.0Gb/s",
            "PD3",
            "hang",
            "hang@-ldpdinfo",
            "hang#2-3",
            "hang#2-",
            "exit=255",
            "exit=256",
            "truncate=10k",
            "size=100M",
            "error=a@b#1",
            "delay",
            "not-executable@storcli",
            "no-device-list",
            "9223372036854775807",
            ""};
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
