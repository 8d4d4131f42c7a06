#include "StandIn.h"

#include <map>

#include "FaultPlay.h"
#include "OwnServer.h"
#include "Report.h"
#include "VisibleText.h"

namespace qorsim {
namespace {

using CAnswerTool = CToolAnswer (*)(const CHost&, const std::vector<std::string>&);

constexpr int NO_HOST = 96;  // the simulation itself is broken: no status of a tool

const std::map<std::string, CAnswerTool>& Tools() {
    static const std::map<std::string, CAnswerTool> tools = {
        {"krzcli", AnswerKrzcli}, {"MegaCli", AnswerMegaCli}, {"storcli", AnswerStorcli}};
    return tools;
}

CToolAnswer Answer(CAnswerTool tool, const CHost& host, const std::vector<std::string>& arguments) {
    try {
        return tool(host, arguments);
    } catch (const CReportTooLong&) {
        return {fmt::format("Error - The report is longer than {} MiB.\n", MAX_REPORT >> 20U)};
    }
}

std::string FileName(const std::string& path) {
    return path.substr(path.rfind('/') + 1);
}

std::optional<CHost> LoadOwnHost(const std::string& tool) {
    std::string error;
    std::optional<CHost> host = LoadOwnServer(error);
    if (!host) {
        Complain(tool + ": no simulated host", error);
    }
    return host;
}

}  // namespace

std::optional<CToolAnswer> AnswerTool(const CHost& host,
                                      const std::vector<std::string>& commandLine) {
    const std::string name = commandLine.empty() ? "" : commandLine.front();
    const auto tool = Tools().find(name);
    if (tool == Tools().end() || host.tool.missing.count(name) != 0) {
        return std::nullopt;
    }
    return Answer(tool->second, host, {commandLine.begin() + 1, commandLine.end()});
}

std::optional<int> PlayTool(const std::vector<std::string>& arguments) {
    const std::string name = arguments.empty() ? "" : FileName(arguments.front());
    const auto tool = Tools().find(name);
    if (tool == Tools().end()) {
        return std::nullopt;
    }
    const std::optional<CHost> host = LoadOwnHost(name);
    if (!host) {
        return NO_HOST;
    }
    const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    return PlayAnswer(name, rest, Answer(tool->second, *host, rest));
}

}  // namespace qorsim
