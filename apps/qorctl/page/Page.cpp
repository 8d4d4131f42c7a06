#include "page/Page.h"

#include <fmt/format.h>

#include <initializer_list>
#include <nlohmann/json.hpp>
#include <string_view>

#include "format/JsonDocument.h"
#include "page/PageTemplate.h"
#include "page/PageText.h"
#include "page/PlainServer.h"

namespace qorctl {
namespace {

struct CPart {
    std::string_view mark;  // in the template
    CGivePieces give;
};

CGivePieces Whole(const std::string& text) {
    return [&text](const CTakePiece& take) { return take(text); };
}

// The parts stand in the template in this order, each once.
bool GiveFilled(std::string_view page, std::initializer_list<CPart> parts, const CTakePiece& take) {
    for (const CPart& part : parts) {
        const size_t place = page.find(part.mark);
        if (!take(page.substr(0, place)) || !part.give(take)) {
            return false;
        }
        page.remove_prefix(place + part.mark.size());
    }
    return take(page);
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
    m_Data.Append(DataHtml(report, m_Lines.size()));
    m_Lines.push_back(FleetLine(report, m_Lines.size()));
}

bool CPage::GivePlain(const CTakePiece& take) {
    return m_PlainServer.empty() ? GivePlainFleet(m_Lines, take) : take(m_PlainServer);
}

bool CPage::Give(const CTakePiece& take) {
    const bool isFleet = m_PlainServer.empty();
    const std::string title = isFleet ? FleetVerdict(m_Lines) : m_Title;
    const std::string kind = isFleet ? "fleet" : "server";
    return GiveFilled(
        PAGE_TEMPLATE,
        {{"<!-- title -->", Whole(title)},
         {"<!-- kind -->", Whole(kind)},
         {"<!-- plain -->", [this](const CTakePiece& taker) { return GivePlain(taker); }},
         {"<!-- data -->", [this](const CTakePiece& taker) { return m_Data.Give(taker); }}},
        take);
}

}  // namespace qorctl
