#include "commands/XmlCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>

#include "terminal/Output.h"

namespace qorctl {
namespace {

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

}  // namespace

bool SerializeXml(CMngSrv_QorLibIF& object, CItemList& items, const std::string& component,
                  std::string& document, std::string& problem) {
    char* text = nullptr;
    const unsigned int result =
        object.XmlSerialize(TYPE_DISPLAY_DATA, component.c_str(), &items, &text);
    if (result != 0) {
        problem = ExplainXmlResult(result);
        return false;
    }
    if (text == nullptr) {
        problem = "the plug-in reported success but handed out no XML document";
        return false;
    }
    document = text;
    return true;
}

int RunXmlCommand(const std::string& pluginPath, const CItemRequest& request,
                  const std::string& component) {
    return RunItemRequest(pluginPath, request, [&](CMngSrv_QorLibIF& object, CItemList& items) {
        std::string document;
        std::string problem;
        if (!SerializeXml(object, items, component, document, problem)) {
            Report(problem);
            return EXIT_FAILURE;
        }
        return WriteBytes(document + '\n');
    });
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

}  // namespace qorctl
