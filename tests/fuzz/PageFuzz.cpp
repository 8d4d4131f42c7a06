// The file of a server that `qorctl page` is given: whatever it holds, the page has the elements of
// the program alone, and its script reads what the file has.
#include <algorithm>
#include <cctype>
#include <nlohmann/json.hpp>
#include <set>

#include "Depth.h"
#include "Fuzz.h"
#include "format/JsonScan.h"
#include "page/Page.h"
#include "page/PageText.h"

namespace {

using namespace qorfuzz;
using qorctl::CServerReport;
using CReadJson = nlohmann::json;
using CWords = std::set<std::string_view>;

const CWords ELEMENTS = {"a",     "div",  "h1",     "h2",      "h3",   "header", "li",  "main",
                         "p",     "path", "script", "section", "span", "strong", "svg", "table",
                         "tbody", "td",   "th",     "thead",   "time", "tr",     "ul",  "use"};
const CWords ATTRIBUTES = {"aria-hidden", "aria-label", "class",    "d",
                           "data-server", "data-state", "datetime", "height",
                           "href",        "id",         "role",     "scope",
                           "tabindex",    "type",       "viewBox",  "width"};

std::string TextOf(qorctl::CPage& page) {
    std::string text;
    Demand(page.Give([&text](std::string_view piece) {
        text += piece;
        return true;
    }),
           "a page can be made");
    return text;
}

std::string_view Between(std::string_view text, std::string_view begin, std::string_view end) {
    const size_t at = text.find(begin);
    Demand(at != std::string_view::npos, "the page has its parts", begin);
    text.remove_prefix(at + begin.size());
    const size_t until = text.find(end);
    Demand(until != std::string_view::npos, "the page has its parts", end);
    return text.substr(0, until);
}

std::string_view TakeWord(std::string_view& text) {
    const auto* end = std::find_if_not(text.begin(), text.end(), [](char byte) {
        return byte == '-' || std::isalnum(static_cast<unsigned char>(byte)) != 0;
    });
    const std::string_view word = text.substr(0, static_cast<size_t>(end - text.begin()));
    text.remove_prefix(word.size());
    return word;
}

// What stands behind the "<" of a tag. Takes it, with its ">".
void TakeTag(std::string_view& text) {
    if (text.starts_with('/')) {
        text.remove_prefix(1);
    }
    const std::string_view name = TakeWord(text);
    Demand(ELEMENTS.contains(name), "an element is one of the program", name);
    while (text.starts_with(' ')) {
        text.remove_prefix(1);
        const std::string_view attribute = TakeWord(text);
        Demand(ATTRIBUTES.contains(attribute), "an attribute is one of the program", attribute);
        Demand(text.starts_with("=\""), "an attribute has a value in quotes", text.substr(0, 40));
        text.remove_prefix(2);
        const std::string_view value = text.substr(0, text.find('"'));
        Demand(attribute != "href" || value.starts_with('#'), "a link stays in the page", value);
        Demand(value.find_first_of("<>") == std::string_view::npos, "a value is escaped", value);
        text.remove_prefix(std::min(text.size(), value.size() + 1));
    }
    text.remove_prefix(text.starts_with('/') ? 1 : 0);
    Demand(text.starts_with('>'), "a tag ends", text.substr(0, 40));
    text.remove_prefix(1);
}

void DemandMarkup(std::string_view text) {
    for (size_t at = 0; (at = text.find_first_of("<>")) != std::string_view::npos;) {
        Demand(text[at] == '<', "a text is escaped", text.substr(0, at + 1));
        text.remove_prefix(at + 1);
        TakeTag(text);
    }
}

void DemandPrintable(std::string_view text) {
    for (const char byte : text) {
        Demand(byte == '\n' || (static_cast<unsigned char>(byte) >= 0x20 && byte != 0x7F),
               "nothing hidden is in the markup", text.substr(0, 200));
    }
}

void DemandData(std::string_view page, const std::string& name, const CServerReport& report) {
    const std::string_view data =
        Between(page, "<script type=\"application/json\" id=\"data-0\">", "</script>");
    Demand(data.find_first_of("<>&") == std::string_view::npos, "data are escaped", data);
    const CReadJson read = CReadJson::parse(data, nullptr, false);
    Demand(!read.is_discarded(), "data can be read", data);
    Demand(read["report"] == report.content, "data are those of the file", data);
    Demand(read["problem"] == report.problem, "data tell of the problem", data);
    const CReadJson given =
        CReadJson::parse(CReadJson(name).dump(-1, ' ', false, CReadJson::error_handler_t::replace));
    Demand(read["name"] == given, "data have the name", data);
}

void DemandPage(const std::string& page, const std::string& name, const CServerReport& report) {
    static const std::string SCRIPT = [] {
        qorctl::CPage empty;
        const std::string text = TextOf(empty);
        return text.substr(text.find("<script type=\"module\">"));
    }();
    Demand(page.ends_with(SCRIPT), "the script is that of the program");
    const std::string_view body = Between(page, "<main", "<script type=\"module\">");
    DemandMarkup(std::string("<main").append(body));
    DemandPrintable(Between(page, "<main", "</main>"));
    DemandMarkup(Between(page, "<title>", "</title>"));
    DemandData(page, name, report);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text = InputText(data, size);
    CServerReport report = qorctl::ParseServerReport(text);
    Demand(report.problem.empty() == report.content.is_object(), "a report or a problem",
           report.problem);
    if (qorctl::JsonDepth(text) <= qorctl::MAX_REPORT_DEPTH && !report.content.is_null()) {
        Demand(report.content == CReadJson::parse(text, nullptr, false), "a report is the file's");
    }
    report.name = text.substr(0, 200);
    report.file = text.substr(0, 200);
    qorctl::CPage page;
    page.Add(report);
    DemandPage(TextOf(page), report.name, report);
    page.Add(report);
    DemandPage(TextOf(page), report.name, report);
    return 0;
}
