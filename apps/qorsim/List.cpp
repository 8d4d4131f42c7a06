// "qorsim list": what there is to simulate.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "Commands.h"
#include "Fault.h"
#include "ProfileFile.h"
#include "ShippedData.h"

namespace qorsim {
namespace {

using CRow = std::pair<std::string, std::string>;  // a name and what it means

void PrintTable(const char* title, const std::vector<CRow>& rows) {
    size_t width = 0;
    for (const CRow& row : rows) {
        width = std::max(width, row.first.size());
    }
    std::puts(title);
    for (const auto& [name, meaning] : rows) {
        std::puts(fmt::format("  {:<{}}  {}", name, width, meaning).c_str());
    }
}

int ListHosts() {
    int status = 0;
    std::vector<CRow> rows;
    for (const std::string& name : ShippedHosts()) {
        std::string error;
        const std::optional<nlohmann::json> profile = LoadProfile(name, error);
        if (profile) {
            rows.emplace_back(name, profile->value("description", std::string()));
        } else {
            status = ReportFailure(error);
        }
    }
    PrintTable("Hosts, for --host:", rows);
    return status;
}

void ListFaultKinds() {
    std::vector<CRow> rows;
    for (const CFaultDescription& fault : ListFaults()) {
        rows.emplace_back(fault.name + fault.value, fault.description);
    }
    PrintTable("\nFaults, for --fault:", rows);
}

}  // namespace

void AddListCommand(CLI::App& app, int& status) {
    CLI::App* list =
        app.add_subcommand("list", "List the shipped hosts and the kinds of faults, a line each");
    list->callback([&status] {
        status = ListHosts();
        ListFaultKinds();
    });
    list->footer("Example:\n  qorsim list");
}

}  // namespace qorsim
