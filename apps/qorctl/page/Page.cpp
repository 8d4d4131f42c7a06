#include "page/Page.h"

#include <fmt/format.h>

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string_view>
#include <vector>

#include "format/JsonDocument.h"
#include "page/PageTemplate.h"
#include "page/PageText.h"
#include "page/PlainServer.h"

namespace qorctl {
namespace {

struct CPart {
    std::string_view mark;  // in the template
    const std::vector<std::string>& texts;
};

// The parts stand in the template in this order, each once.
std::string Filled(std::string_view page, std::initializer_list<CPart> parts) {
    size_t size = page.size();
    for (const CPart& part : parts) {
        for (const std::string& text : part.texts) {
            size += text.size();
        }
    }
    std::string filled;
    filled.reserve(size);
    for (const CPart& part : parts) {
        const size_t place = page.find(part.mark);
        filled += page.substr(0, place);
        for (const std::string& text : part.texts) {
            filled += text;
        }
        page.remove_prefix(place + part.mark.size());
    }
    return filled.append(page);
}

// What is told of a server beside its report.
std::string EnvelopeText(const CServerReport& report) {
    const CJson envelope = {{"name", ValidUtf8(report.name)},
                            {"file", ValidUtf8(report.file)},
                            {"time", report.time},
                            {"problem", ValidUtf8(report.problem)}};
    return ScriptJson(JsonText(envelope, NO_INDENTATION));
}

// An object with the envelope's members and the report.
std::string DataHtml(const CServerReport& report, size_t index) {
    std::string envelope = EnvelopeText(report);
    envelope.pop_back();  // its brace
    return fmt::format(
        "<script type=\"application/json\" id=\"data-{}\">{},\"report\":{}}}</script>\n", index,
        envelope, report.json.empty() ? "null" : ScriptJson(report.json));
}

}  // namespace

void CPage::Add(const CServerReport& report) {
    m_PlainServer.clear();
    if (m_Lines.empty() && report.problem.empty()) {
        m_PlainServer = PlainServer(report);
        m_Title = HtmlText(report.name + ": " + FieldText(report.content["health"], "status"));
    }
    m_Data.push_back(DataHtml(report, m_Lines.size()));
    m_Lines.push_back(FleetLine(report, m_Lines.size()));
}

std::string CPage::Text() {
    const bool isFleet = m_PlainServer.empty();
    const std::vector<std::string> title = {isFleet ? FleetVerdict(m_Lines) : m_Title};
    const std::vector<std::string> plain = {isFleet ? PlainFleet(m_Lines) : m_PlainServer};
    const std::vector<std::string> kind = {isFleet ? "fleet" : "server"};
    return Filled(PAGE_TEMPLATE, {{"<!-- title -->", title},
                                  {"<!-- kind -->", kind},
                                  {"<!-- plain -->", plain},
                                  {"<!-- data -->", m_Data}});
}

}  // namespace qorctl
