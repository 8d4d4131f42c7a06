#include "commands/XmlCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "Quoted.h"
#include "commands/CommonOptions.h"
#include "host/Ask.h"
#include "terminal/Output.h"

namespace qorctl {
namespace {

constexpr const char* XML_ABOUT =
    "The document is written byte for byte as the plug-in returns it, and a line feed; on a\n"
    "terminal, what it would obey is made visible. Nothing is escaped: a value that holds \"<\" "
    "or\n"
    "\"&\" makes the document unfit for an XML reader.\n"
    "The plug-in makes no document of an empty list: with nothing to report, standard error says\n"
    "so, standard output stays empty, and the exit status is 0.\n"
    "\n";

constexpr const char* XML_EXAMPLE =
    "Examples:\n"
    "  qorctl xml --of storage | xmllint --format -\n"
    "  qorctl xml --of drive 0 252 3 --component disk";

constexpr unsigned int TYPE_DISPLAY_DATA = 0;
constexpr unsigned int ITEM_NUMBER = 0x000FFFFF;

struct CMeaning {
    unsigned int result;  // without an item number
    std::string_view meaning;
};

constexpr std::array<CMeaning, 6> MEANINGS = {{
    {0x01000000, "invalid argument: the list of items is empty, or something was missing"},
    {0x02000000, "the plug-in does not know this type of document"},
    {0x03100000, "item {} is out of order: its parent does not stand before it"},
    {0x03200000, "item {} is named like its own parent"},
    {0x03300000, "item {} has an enable flag that is neither \"TRUE\" nor \"FALSE\""},
    {0x04000000, "the document would be too large"},
}};

struct CXmlOptions {
    CPluginChoice plugin;
    std::vector<std::string> of = {"raid"};
    std::string component;
};

// The request that `--of` names; nothing when it names none.
std::optional<CRequest> RequestOf(const std::vector<std::string>& of) {
    if (of == std::vector<std::string>{"raid"}) {
        return RaidRequest();
    }
    if (of == std::vector<std::string>{"storage"}) {
        return StorageRequest();
    }
    if (of.size() != 4 || of[0] != "drive") {
        return std::nullopt;
    }
    const auto address = ReadDriveAddress(of[1], of[2], of[3]);
    return address ? std::make_optional(DriveRequest(*address)) : std::nullopt;
}

// The plug-in makes no document of an empty list.
int RunXml(const CXmlOptions& options) {
    const std::optional<CRequest> request = RequestOf(options.of);
    if (!request) {
        throw CLI::ValidationError(
            "--of", qorapps::Quoted(fmt::format("{}", fmt::join(options.of, " "))) +
                        " is none of: raid, storage, drive CONTROLLER ENCLOSURE SLOT");
    }
    const CAnswer answer = Ask(options.plugin, WithXml(*request, options.component));
    const std::string problem = XmlProblem(answer);
    ReportMessages(answer);
    if (!problem.empty()) {
        Report(problem);
    }
    if (!answer.IsAnswered() || !problem.empty()) {
        return EXIT_FAILURE;
    }
    const int written = answer.document.empty() ? EXIT_SUCCESS : WriteBytes(answer.document + '\n');
    return answer.IsWhole() ? written : EXIT_FAILURE;
}

}  // namespace

CRequest WithXml(CRequest request, std::string component) {
    request.operation = [ask = std::move(request.operation), component = std::move(component)](
                            CMngSrv_QorLibIF& object, CItemList& items, CReply& reply) {
        if (!ask(object, items, reply)) {
            return false;
        }
        char* text = nullptr;
        if (!items.empty()) {
            reply.result = object.XmlSerialize(TYPE_DISPLAY_DATA, component.c_str(), &items, &text);
        }
        if (reply.result == 0 && text != nullptr) {
            reply.document = text;
        }
        return true;
    };
    return request;
}

std::string XmlProblem(const CAnswer& answer) {
    if (!answer.IsAnswered() || answer.items->empty() || !answer.document.empty()) {
        return "";
    }
    return answer.result != 0 ? ExplainXmlResult(answer.result)
                              : "the plug-in reported success but handed out no XML document";
}

std::string ExplainXmlResult(unsigned int result) {
    const unsigned int item = result >> 24U == 3 ? result & ITEM_NUMBER : 0;
    const auto* found = std::find_if(MEANINGS.begin(), MEANINGS.end(), [&](const CMeaning& row) {
        return row.result == (result - item);
    });
    const std::string meaning = found == MEANINGS.end()
                                    ? "no meaning is known for this result"
                                    : fmt::format(fmt::runtime(found->meaning), item);
    return fmt::format("no XML document, result 0x{:08X}: {}", result, meaning);
}

void AddXmlCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CXmlOptions>();
    CLI::App* command =
        AddCommand(app, options->plugin, "xml", "The plug-in's XML document of a request",
                   std::string(XML_ABOUT) + PLUGIN_WHERE + EXIT_STATUS + XML_EXAMPLE);
    command
        ->add_option("--of", options->of,
                     "What to ask for: raid (the default), storage, or drive and its three numbers")
        ->type_name("raid|storage|drive CONTROLLER ENCLOSURE SLOT")
        ->expected(1, 4);
    command
        ->add_option("--component", options->component,
                     "Text of the document's component element; empty when not given")
        ->type_name("TEXT");
    command->callback([options, &status] { status = RunXml(*options); });
}

}  // namespace qorctl
