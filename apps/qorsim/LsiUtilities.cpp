#include "Report.h"
#include "StandIn.h"

namespace qorsim {
namespace {

// The refusal of a command line that is not exactly the one that the tool's stand-in knows.
std::optional<CToolAnswer> DemandArguments(const char* tool, const std::vector<std::string>& known,
                                           const std::vector<std::string>& arguments) {
    for (size_t i = 0; i < arguments.size(); ++i) {
        if (i >= known.size() || arguments[i] != known[i]) {
            return RefuseToken(arguments[i]);
        }
    }
    if (arguments.size() < known.size()) {
        return RefuseToken(arguments.empty() ? tool : arguments.back());
    }
    return std::nullopt;
}

}  // namespace

// The line that counts an adapter's drives: two blanks, "Disks", eleven blanks, a colon, the
// number.
CToolAnswer AnswerMegaCli(const CHost& host, const std::vector<std::string>& arguments) {
    if (const auto refusal = DemandArguments("MegaCli", {"-AdpAllInfo", "-aALL"}, arguments)) {
        return *refusal;
    }
    CReport report;
    for (size_t number = 0; number < host.controllers.size(); ++number) {
        const CController& controller = host.controllers[number];
        report.Blank();
        report.Line(fmt::format("Adapter {}", number));
        report.Line(fmt::format("{:<18}: {}", "Name", controller.product));
        report.Line(fmt::format("{:<18}: {}", "Serial", controller.serial));
        report.Line(fmt::format("{:<18}: {}", "Package", controller.firmware.package));
        report.Line("Attached");
        report.Line(fmt::format("{:<18}: {}", "  Groups", controller.groups.size()));
        report.Line(fmt::format("{:<18}: {}", "  Disks", controller.drives.size()));
    }
    return {report.Text()};
}

// The line that counts a controller's drives: "Physical Drives =" and the number.
CToolAnswer AnswerStorcli(const CHost& host, const std::vector<std::string>& arguments) {
    if (const auto refusal = DemandArguments("storcli", {"/call", "show"}, arguments)) {
        return *refusal;
    }
    CReport report;
    for (size_t number = 0; number < host.controllers.size(); ++number) {
        const CController& controller = host.controllers[number];
        report.Line(fmt::format("Controller = {}", number));
        report.Line("Status = Success");
        report.Blank();
        report.Line("Product = " + controller.product);
        report.Line("Serial = " + controller.serial);
        report.Line("Firmware Package = " + controller.firmware.package);
        report.Line(fmt::format("Drive Groups = {}", controller.groups.size()));
        report.Line(fmt::format("Physical Drives = {}", controller.drives.size()));
        report.Blank();
    }
    return {report.Text()};
}

}  // namespace qorsim
