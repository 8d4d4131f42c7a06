// Reads the output of a monitoring plug-in as a monitoring server does, knowing nothing of the
// program that wrote it.
#ifndef QORTEST_MONITORINGOUTPUT_H
#define QORTEST_MONITORINGOUTPUT_H

#include <map>
#include <string>
#include <vector>

namespace qortest {

struct CMonitoringValue {
    double value = 0;
    std::string unit;
    std::string warning;
    std::string critical;
};

struct CMonitoringOutput {
    std::string summary;               // the first line before the "|"
    std::vector<std::string> details;  // the other lines
    std::map<std::string, CMonitoringValue> values;
    std::vector<std::string> errors;  // what a monitoring server could not read
};

CMonitoringOutput ReadMonitoringOutput(const std::string& text);

// Whether a value alarms by a range: [@][START:][END], START "~" for minus infinity, 0 when not
// given; alarmed outside, with "@" inside.
bool IsAlarmed(double value, const std::string& range);

}  // namespace qortest

#endif  // QORTEST_MONITORINGOUTPUT_H
