#include "FleetFixture.h"

#include <gmock/gmock.h>

#include <regex>

namespace fs = std::filesystem;

namespace qortest {
namespace {

CStrings ExporterCommand(const fs::path& folder, int port) {
    return {"/usr/bin/prometheus-node-exporter",
            "--web.listen-address=127.0.0.1:" + std::to_string(port),
            "--collector.disable-defaults",
            "--collector.textfile",
            "--collector.textfile.directory=" + folder.string(),
            "--log.level=warn"};
}

// The words of an alert may name days: those stay.
std::string RulesInSeconds() {
    return std::regex_replace(ReadFile(RULES_FILE), std::regex("for: [0-9]+[mh]\n"), "for: 1s\n");
}

}  // namespace

CExporter::CExporter(const fs::path& folder)
    : m_Port(FreePort()),
      m_Engine(ExporterCommand(folder, m_Port), folder.string() + ".exporter.out") {}

void CFleetFixture::Collect(const std::string& server, const CStrings& options) const {
    CStrings command = {"run"};
    command.insert(command.end(), options.begin(), options.end());
    const std::string file = TextFolder(server) / "qor.prom";
    command.insert(command.end(), {"--", "env", "QOR_PLUGIN=" QOR_PLUGIN_PATH, QORCTL_PROGRAM,
                                   "metrics", "--timeout", "2", "--output", file});
    const CEnd end = Qorsim(command);
    EXPECT_EQ(end.status, 0) << end.err;
}

fs::path CFleetFixture::TextFolder(const std::string& server) const {
    const fs::path folder = Folder() / server;
    fs::create_directories(folder);
    return folder;
}

void CFleetFixture::WriteTargets(const std::map<std::string, int>& ports) const {
    nlohmann::json targets = nlohmann::json::array();
    for (const auto& [server, port] : ports) {
        targets.push_back({{"targets", {"127.0.0.1:" + std::to_string(port)}},
                           {"labels", {{"instance", server}}}});
    }
    WriteFile(Folder() / "targets.new", targets.dump());
    fs::rename(Folder() / "targets.new", Folder() / "targets.json");
}

void CFleetFixture::WriteConfiguration(int alertmanager) const {
    const std::string folder = Folder();
    WriteFile(Folder() / "qor.rules.yml", RulesInSeconds());
    std::string text =
        "global: {scrape_interval: 1s, evaluation_interval: 1s}\n"
        "rule_files: ['" +
        folder +
        "/qor.rules.yml']\n"
        "scrape_configs:\n"
        "  - job_name: qor\n"
        "    file_sd_configs: [{files: ['" +
        folder + "/targets.json'], refresh_interval: 1s}]\n";
    if (alertmanager != 0) {
        text += "alerting:\n  alertmanagers: [static_configs: [targets: ['127.0.0.1:" +
                std::to_string(alertmanager) + "']]]\n";
    }
    WriteFile(Folder() / "prometheus.yml", text);
}

}  // namespace qortest
