// The RAID tool's command lines:
//
//     krzcli -v
//     krzcli -ctrlinfo  -a{N|All}
//     krzcli -ldpdinfo  -a{N|All}
//     krzcli -pdinfo    -a{N|All}
//     krzcli -pdinfo    -nosmart -a{N|All}             from version 4.0
//     krzcli -pdinfo    -pd[ENCLOSURE:SLOT] -aN
//     krzcli -pssdinfo  -aAll                          from version 7.0
//
// The tool ends with a status other than 0 only for a command line that it does not know. What it
// finds wrong with the hardware stands in its first line, "Error - ...", and its status is 0.
#include <algorithm>
#include <regex>

#include "Reports.h"
#include "StandIn.h"

namespace qorsim {
namespace {

using CArguments = std::vector<std::string>;

constexpr const char* CTRL_INFO = "ctrlinfo";
constexpr const char* LD_PD_INFO = "ldpdinfo";
constexpr const char* PD_INFO = "pdinfo";
constexpr const char* PSSD_INFO = "pssdinfo";

constexpr const char* NO_CONTROLLER = "Error - No RAID controller is found.\n";

// Takes arguments one by one; after a refusal there is nothing left to take.
class CCommandLine {
public:
    explicit CCommandLine(const CArguments& arguments) : m_Arguments(arguments) {}

    // The next argument if it matches as a whole, with the expression's groups behind it.
    std::vector<std::string> Take(const char* expression) {
        std::smatch match;
        if (m_Next == m_Arguments.size() ||
            !std::regex_match(m_Arguments[m_Next], match, std::regex(expression))) {
            return {};
        }
        ++m_Next;
        return {match.begin(), match.end()};
    }

    bool AtEnd() const { return m_Next == m_Arguments.size(); }

    // The refusal of the next argument; of the last one when more were due.
    CToolAnswer Refuse() const {
        if (m_Arguments.empty()) {
            return RefuseToken("krzcli");
        }
        return RefuseToken(AtEnd() ? m_Arguments.back() : m_Arguments[m_Next]);
    }

private:
    const CArguments& m_Arguments;
    size_t m_Next = 0;
};

// The controllers that a "-a" argument names.
struct CSelection {
    size_t begin = 0;
    size_t end = 0;
    std::string error;  // the report's text instead
};

CSelection Select(const CHost& host, const std::string& which) {
    const size_t count = host.controllers.size();
    if (count == 0) {
        return {0, 0, NO_CONTROLLER};
    }
    if (which == "All") {
        return {0, count, ""};
    }
    const size_t number = std::stoul(which);
    if (number >= count) {
        return {0, 0, fmt::format("Error - RAID controller {} is not found.\n", number)};
    }
    return {number, number + 1, ""};
}

// Runs `part` for every controller that is asked for by the command line's last argument. `name` is
// that of the report.
template <typename Part>
CToolAnswer ForControllers(const CHost& host, CCommandLine& line, const char* name,
                           const Part& part) {
    const std::vector<std::string> which = line.Take("-a(All|[0-9]{1,5})");
    if (which.empty() || !line.AtEnd()) {
        return line.Refuse();
    }
    const CSelection selection = Select(host, which[1]);
    if (!selection.error.empty()) {
        return {selection.error};
    }
    CReport report(host, name);
    for (size_t number = selection.begin; number < selection.end; ++number) {
        part(number, host.controllers[number], report);
    }
    return {report.Text()};
}

CToolAnswer AnswerVersion(const CHost& host, CCommandLine& line) {
    if (!line.AtEnd()) {
        return line.Refuse();
    }
    CReport report;
    ReportVersion(host, report);
    return {report.Text()};
}

CToolAnswer AnswerDrives(const CHost& host, CCommandLine& line, const CToolGeneration& generation,
                         ESmart smart) {
    return ForControllers(host, line, PD_INFO,
                          [&](size_t number, const CController& controller, CReport& report) {
                              ReportControllerHeader(number, report);
                              for (const CDrive& drive : controller.drives) {
                                  ReportDrive(drive, generation, smart, report);
                              }
                          });
}

CToolAnswer AnswerOneDrive(const CHost& host, CCommandLine& line, const CToolGeneration& generation,
                           const std::vector<std::string>& address) {
    const std::vector<std::string> which = line.Take("-a([0-9]{1,5})");
    if (which.empty() || !line.AtEnd()) {
        return line.Refuse();
    }
    const CSelection selection = Select(host, which[1]);
    if (!selection.error.empty()) {
        return {selection.error};
    }
    const std::vector<CDrive>& drives = host.controllers[selection.begin].drives;
    const auto drive = std::find_if(drives.begin(), drives.end(), [&](const CDrive& each) {
        return each.enclosure == std::stol(address[1]) && each.slot == std::stol(address[2]);
    });
    if (drive == drives.end()) {
        return {
            fmt::format("Error - Physical drive [{}:{}] is not found.\n", address[1], address[2])};
    }
    CReport report(host, PD_INFO);
    ReportControllerHeader(selection.begin, report);
    ReportDrive(*drive, generation, ESmart::WITH, report);
    return {report.Text()};
}

CToolAnswer AnswerPdInfo(const CHost& host, CCommandLine& line, const CToolGeneration& generation) {
    const std::vector<std::string> address = line.Take("-pd\\[([0-9]{1,9}):([0-9]{1,9})\\]");
    if (!address.empty()) {
        return AnswerOneDrive(host, line, generation, address);
    }
    const bool withoutSmart = generation.knowsNoSmart && !line.Take("-nosmart").empty();
    return AnswerDrives(host, line, generation, withoutSmart ? ESmart::WITHOUT : ESmart::WITH);
}

CToolAnswer AnswerPcieSsds(const CHost& host, CCommandLine& line) {
    if (line.Take("-aAll").empty() || !line.AtEnd()) {
        return line.Refuse();
    }
    if (host.ssds.empty()) {
        return {"Error - No PCIe SSD is found.\n"};
    }
    CReport report(host, PSSD_INFO);
    for (const CPcieSsd& ssd : host.ssds) {
        ReportPcieSsd(ssd, report);
    }
    return {report.Text()};
}

CToolAnswer AnswerControllers(const CHost& host, CCommandLine& line,
                              const CToolGeneration& generation) {
    return ForControllers(host, line, CTRL_INFO,
                          [&](size_t number, const CController& controller, CReport& report) {
                              ReportController(number, controller, generation, report);
                          });
}

CToolAnswer AnswerGroups(const CHost& host, CCommandLine& line, const CToolGeneration& generation) {
    return ForControllers(host, line, LD_PD_INFO,
                          [&](size_t number, const CController& controller, CReport& report) {
                              ReportGroups(number, controller, generation, report);
                          });
}

}  // namespace

CToolAnswer AnswerKrzcli(const CHost& host, const std::vector<std::string>& arguments) {
    const CToolGeneration generation = GenerationOf(host.tool.version);
    CCommandLine line(arguments);
    if (!line.Take("-v").empty()) {
        return AnswerVersion(host, line);
    }
    if (!line.Take("-ctrlinfo").empty()) {
        return AnswerControllers(host, line, generation);
    }
    if (!line.Take("-ldpdinfo").empty()) {
        return AnswerGroups(host, line, generation);
    }
    if (!line.Take("-pdinfo").empty()) {
        return AnswerPdInfo(host, line, generation);
    }
    if (generation.knowsPcieSsd && !line.Take("-pssdinfo").empty()) {
        return AnswerPcieSsds(host, line);
    }
    return line.Refuse();
}

}  // namespace qorsim
