// Trace lines as readable text, for exact comparisons:
//
//     level: text        one line a line, each ended
//
// The path of a result file differs in every run; it is shown as RESULT.
#ifndef QORTEST_TRACETEXT_H
#define QORTEST_TRACETEXT_H

#include <regex>
#include <string>
#include <vector>

#include "FakeComLib.h"

namespace qortest {

inline std::string TraceText(const std::vector<CTraceLine>& lines) {
    static const std::regex resultPath("/[^ ()]*_[0-9a-f]+_MngSrvRaid\\.txt");
    std::string text;
    for (const CTraceLine& line : lines) {
        text += std::to_string(line.level) + ": " +
                std::regex_replace(line.text, resultPath, "RESULT") + "\n";
    }
    return text;
}

// All lines but "[START]" and "[END]".
inline std::string TraceText() {
    return TraceText(FakeComLib().TracesWithoutFlow());
}

// The lines that `part` occurs in, of all levels.
inline std::string TraceTextWith(const std::string& part) {
    std::vector<CTraceLine> lines;
    for (const CTraceLine& line : FakeComLib().traces) {
        if (line.text.find(part) != std::string::npos) {
            lines.push_back(line);
        }
    }
    return TraceText(lines);
}

}  // namespace qortest

#endif  // QORTEST_TRACETEXT_H
