// Many servers as plain HTML: a line for each, the worst first.
#ifndef QORCTL_PAGE_PLAINFLEET_H
#define QORCTL_PAGE_PLAINFLEET_H

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "page/ServerReport.h"
#include "terminal/Pieces.h"

namespace qorctl {

// How a server stands in the list, the worst first. NO_ANSWER: there is no report, or one without a
// device because the request failed.
enum class EServerState { CRITICAL, NO_ANSWER, UNKNOWN, WARNING, OK };

// A server's line. The texts are HTML.
struct CFleetLine {
    EServerState state = EServerState::NO_ANSWER;
    size_t index = 0;  // the server's in the page
    std::string name;
    std::string time;
    std::string what;      // the worst that is told of it
    std::string strip;     // a stroke for each drive
    std::string count;     // of drives; empty without a report
    std::string problems;  // entries of a list; empty without any
};

CFleetLine FleetLine(const CServerReport& report, size_t index);

// "5 of 9 servers are not well"
std::string FleetVerdict(const std::vector<CFleetLine>& lines);

// Sorts the lines, and gives the list.
bool GivePlainFleet(std::vector<CFleetLine>& lines, const CTakePiece& take);

}  // namespace qorctl

#endif  // QORCTL_PAGE_PLAINFLEET_H
