#include "commands/ItemReport.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <string_view>

#include "commands/XmlCommand.h"
#include "format/CsvReport.h"
#include "format/JsonReport.h"
#include "format/TableView.h"
#include "format/TreeView.h"
#include "health/Problems.h"
#include "host/Interrupt.h"
#include "host/Progress.h"
#include "model/Inventory.h"
#include "model/ItemTree.h"
#include "terminal/Output.h"
#include "terminal/OutputFile.h"

namespace qorctl {
namespace {

struct CFormatName {
    EItemFormat format;
    std::string_view name;
};

constexpr CFormatName FORMATS[] = {
    {EItemFormat::TREE, "tree"}, {EItemFormat::TABLE, "table"}, {EItemFormat::JSON, "json"},
    {EItemFormat::CSV, "csv"},   {EItemFormat::XML, "xml"},
};

class CItemReport {
public:
    CItemReport(const CItemReportOptions& options, const CItemReportSubject& subject)
        : m_Options(options), m_Subject(subject), m_Style(DetectTextStyle(STDOUT_FILENO)) {
        if (!IsToStandardOutput()) {
            m_Style.colour = false;
            m_Style.width = ANY_WIDTH;
        }
    }

    int Run();

private:
    bool IsToStandardOutput() const {
        return m_Options.outputPath.empty() || m_Options.outputPath == "-";
    }
    CRequestEnd Ask(const CPluginLibrary& library);
    void Take(CMngSrv_QorLibIF& object, CItemList& items);
    void Explain(const CRequestEnd& end);
    void Fail(const std::string& code, const std::string& problem);
    std::string Document() const;
    int WriteDocument() const;
    int Deliver() const;

    const CItemReportOptions& m_Options;
    const CItemReportSubject& m_Subject;
    CTextStyle m_Style;
    CInventory m_Inventory;
    std::string m_Items;       // the tree or the XML document
    std::string m_XmlProblem;  // why there is no XML document
    bool m_IsEmpty = false;
};

int CItemReport::Run() {
    std::string problem;
    const std::optional<CPluginLibrary> library = CPluginLibrary::Load(m_Options.plugin, problem);
    if (library) {
        Explain(Ask(*library));
    } else {
        Fail("plugin-not-loaded", problem);
    }
    if (!m_Inventory.succeeded && m_Options.format != EItemFormat::JSON) {
        return EXIT_FAILURE;
    }
    const int delivered = Deliver();
    return m_Inventory.succeeded ? delivered : EXIT_FAILURE;
}

CRequestEnd CItemReport::Ask(const CPluginLibrary& library) {
    const CInterruptGuard guard;
    CProgress progress(library);
    CRequestEnd end = AskPlugin(library, m_Subject.request.ask,
                                [this](CMngSrv_QorLibIF& object, CItemList& items,
                                       const CResultTexts&) { Take(object, items); });
    m_Inventory.toolVersion = progress.ToolVersion();
    return end;
}

// What is needed of the items, which are gone when the request has ended.
void CItemReport::Take(CMngSrv_QorLibIF& object, CItemList& items) {
    const CItemTree tree(items);
    m_Inventory = BuildInventory(tree, m_Subject.controller);
    m_IsEmpty = tree.IsEmpty();
    if (m_Options.format == EItemFormat::TREE) {
        m_Items = FormatTree(tree, m_Style);
    } else if (m_Options.format == EItemFormat::XML && !m_IsEmpty &&
               SerializeXml(object, items, "", m_Items, m_XmlProblem)) {
        m_Items += '\n';
    }
}

void CItemReport::Explain(const CRequestEnd& end) {
    const bool isAnswered = end.kind == EEnd::ANSWERED;
    m_Inventory.texts = end.texts;
    m_Inventory.messages =
        ResultMessages(end.texts, isAnswered ? EOutcome::SUCCEEDED : EOutcome::FAILED);
    for (const CMessage& message : m_Inventory.messages) {
        Report(MessageText(message, DetectTextStyle(STDERR_FILENO)));
    }
    if (!isAnswered) {
        Fail(end.kind == EEnd::FAILED ? "request-failed" : "plugin-failed", end.problem);
    } else if (!m_XmlProblem.empty()) {
        Fail("no-document", m_XmlProblem);
    } else if (m_IsEmpty) {
        const std::string text = NothingToReport(m_Subject.request);
        m_Inventory.messages.push_back(
            {.severity = ESeverity::INFO, .code = "nothing-to-report", .text = text, .remedy = ""});
        Report(text);
    }
}

void CItemReport::Fail(const std::string& code, const std::string& problem) {
    m_Inventory.succeeded = false;
    m_Inventory.messages.push_back(
        {.severity = ESeverity::ERROR, .code = code, .text = problem, .remedy = ""});
    Report(problem);
}

std::string CItemReport::Document() const {
    switch (m_Options.format) {
        case EItemFormat::TREE:
            return m_Items + FormatProblems(FindProblems(m_Inventory), m_Style);
        case EItemFormat::TABLE: {
            const std::vector<CHealthFinding> problems = FindProblems(m_Inventory);
            return FormatTables(m_Inventory, CProblemMarks(problems), m_Style) +
                   FormatProblems(problems, m_Style);
        }
        case EItemFormat::JSON:
            return FormatJson(m_Inventory, m_Subject.command);
        case EItemFormat::CSV:
            return FormatCsv(m_Inventory);
        case EItemFormat::XML:
            return m_Items;
    }
    return "";
}

int CItemReport::WriteDocument() const {
    switch (m_Options.format) {
        case EItemFormat::TREE:
        case EItemFormat::TABLE:
            return WriteOut(Document());
        case EItemFormat::JSON:
            return WriteJson(Document());
        case EItemFormat::CSV:
        case EItemFormat::XML:
            return WriteBytes(Document());
    }
    return EXIT_FAILURE;
}

int CItemReport::Deliver() const {
    if (IsToStandardOutput()) {
        return WriteDocument();
    }
    std::string problem;
    if (!WriteOutputFile(m_Options.outputPath, Document(), EFileMode::KEPT, problem)) {
        Report(problem);
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

}  // namespace

std::optional<EItemFormat> ReadItemFormat(const std::string& name) {
    const auto* found = std::find_if(std::begin(FORMATS), std::end(FORMATS),
                                     [&](const CFormatName& row) { return row.name == name; });
    return found == std::end(FORMATS) ? std::nullopt : std::make_optional(found->format);
}

int RunItemReport(const CItemReportOptions& options, const CItemReportSubject& subject) {
    return CItemReport(options, subject).Run();
}

}  // namespace qorctl
