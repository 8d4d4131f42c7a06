#include "TraceText.h"

#include <regex>
#include <vector>

#include "FakeComLib.h"

namespace qortest {
namespace {

std::string TextOf(const std::vector<CTraceLine>& lines) {
    static const std::regex RESULT_FILE("/[^ ()]*_MngSrvRaid\\.txt");
    std::string text;
    for (const CTraceLine& line : lines) {
        text += std::to_string(line.level) + ": " + line.text + "\n";
    }
    return std::regex_replace(text, RESULT_FILE, "RESULTFILE");
}

}  // namespace

std::string TraceText() {
    return TextOf(FakeComLib().traces);
}

std::string TraceTextWithoutFlow() {
    return TextOf(FakeComLib().TracesWithoutFlow());
}

}  // namespace qortest
