// "krzcli -v": the tool's version, and its two numbers.
#include <algorithm>
#include <optional>
#include <stdexcept>

#include "Depth.h"
#include "Fuzz.h"
#include "Server.h"
#include "cli/CMSRAID_KRZ.h"
#include "cli/KRZVersion.h"

namespace {

using namespace qorfuzz;

// The version in a report; nothing where its line ends at the colon.
std::optional<std::string> VersionIn(const std::string& report) {
    for (const std::string_view line : LinesOf(report)) {
        if (line.find("Product Version") == std::string_view::npos) {
            continue;
        }
        const size_t colon = line.find(':');
        if (colon + 1 == line.size()) {
            return std::nullopt;
        }
        const std::string_view behind =
            colon == std::string_view::npos ? "" : line.substr(colon + 2);
        const size_t last = behind.find_last_not_of(" \t\r\n");
        return std::string(behind.substr(0, last == std::string_view::npos ? 0 : last + 1));
    }
    return "";
}

void DemandNumbers(const std::string& version) {
    const bool hasTwoParts = std::count(version.begin(), version.end(), '.') == 1;
    Demand(CKRZVersion::Parse(version).has_value() == hasTwoParts, "a version has two numbers",
           version);
}

void Fuzz(const std::string& report) {
    const std::optional<std::string> expected =
        report.starts_with("Error - ") ? std::string() : VersionIn(report);
    LetToolPrint({{"krzcli -v", report}});
    const CLeavesNothing check;
    try {
        const std::string version =
            CMSRAID_KRZ::GetKRZVersion("/opt/tarmica/qor/provider/tmp/version.txt");
        Demand(expected == version, "the version is that of its line", version);
        DemandNumbers(version);
    } catch (const std::out_of_range&) {
        Demand(!expected, "only a version line that ends at its colon is out of range");
    }
}

}  // namespace

std::vector<std::string_view> qorfuzz::Vocabulary() {
    return {"Product Version : 7.0",
            "Product Version :",
            "Product Version",
            "Product Version : ",
            "Product Version : 4.3.1",
            "Product Version : 99999999999999999999.-1",
            "Error - Invalid input at or near token",
            "RAID tool",
            ""};
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    qorfuzz::FuzzInput(data, size, Fuzz);
    return 0;
}
