#include "RaidCommand.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <list>
#include <optional>
#include <string_view>

#include "ItemTree.h"
#include "PluginLibrary.h"
#include "ResultTexts.h"
#include "TerminalText.h"
#include "TreeView.h"

namespace qorctl {
namespace {

constexpr const char* NOTHING_TO_REPORT =
    "nothing to report: no RAID controller with something to show was found on this server";

// Writes `text` to standard error, each line safe for a terminal, the program's name in front.
void Report(std::string_view text) {
    const CTextStyle style = DetectTextStyle(STDERR_FILENO);
    std::string out = "qorctl: ";
    while (!text.empty()) {
        const size_t end = text.find('\n');
        out += MakeVisible(text.substr(0, end), style) + '\n';
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    std::fwrite(out.data(), 1, out.size(), stderr);
}

// The plug-in object, which goes back to its library.
class CPluginObject {
public:
    explicit CPluginObject(const CPluginLibrary& library)
        : m_Library(library), m_Object(library.Create()) {}
    ~CPluginObject() { m_Library.Delete(m_Object); }
    CPluginObject(const CPluginObject&) = delete;  // one owner of the object
    CPluginObject& operator=(const CPluginObject&) = delete;

    CMngSrv_QorLibIF* Get() const { return m_Object; }

private:
    const CPluginLibrary& m_Library;
    CMngSrv_QorLibIF* m_Object;
};

// The items of one request, which go back to the plug-in object.
class CPluginItems {
public:
    explicit CPluginItems(CMngSrv_QorLibIF& object) : m_Object(object) {}
    ~CPluginItems();
    CPluginItems(const CPluginItems&) = delete;  // one owner of the items
    CPluginItems& operator=(const CPluginItems&) = delete;

    std::list<CItemDisp*>& Get() { return m_Items; }

private:
    CMngSrv_QorLibIF& m_Object;
    std::list<CItemDisp*> m_Items;
};

// May run while an exception of the plug-in is on its way: a second one must not end the process.
CPluginItems::~CPluginItems() {
    try {
        m_Object.FreeItemList(&m_Items);
    } catch (...) {
        Report("the plug-in could not free its items: it threw an exception");
    }
}

int WriteOut(const std::string& text) {
    if (std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
        std::fflush(stdout) == 0) {
        return EXIT_SUCCESS;
    }
    Report(std::string("standard output could not be written: ") + std::strerror(errno));
    return EXIT_FAILURE;
}

int RequestAndShow(CMngSrv_QorLibIF& object) {
    CPluginItems items(object);
    CResultTexts texts;
    const bool success =
        object.GetRAIDInfo(&items.Get(), &texts.errorCode, &texts.noticeCode, &texts.detail) != 0;
    for (const std::string& message : ExplainResult(texts, DetectTextStyle(STDERR_FILENO))) {
        Report(message);
    }
    if (!success) {
        Report("the request failed");
        return EXIT_FAILURE;
    }
    const CItemTree tree(items.Get());
    if (tree.IsEmpty()) {
        Report(NOTHING_TO_REPORT);
        return EXIT_SUCCESS;
    }
    return WriteOut(FormatTree(tree, DetectTextStyle(STDOUT_FILENO)));
}

int UsePlugin(const CPluginLibrary& library) {
    const CPluginObject object(library);
    if (object.Get() == nullptr) {
        Report("the plug-in made no plug-in object");
        return EXIT_FAILURE;
    }
    return RequestAndShow(*object.Get());
}

}  // namespace

int RunRaidCommand(const std::string& pluginPath) {
    std::string problem;
    const std::optional<CPluginLibrary> library = CPluginLibrary::Load(pluginPath, problem);
    if (!library) {
        Report(problem);
        return EXIT_FAILURE;
    }
    // Exceptions of the plug-in are caught while the library is loaded: their code lives in it.
    try {
        return UsePlugin(*library);
    } catch (const std::exception& error) {
        Report(std::string("the request ended with an exception: ") + error.what());
    } catch (...) {
        Report("the request ended with an exception of an unknown type");
    }
    return EXIT_FAILURE;
}

}  // namespace qorctl
