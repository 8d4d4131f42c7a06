#include "host/Worker.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <exception>
#include <stdexcept>
#include <utility>

#include "comlib/TraceSink.h"
#include "host/PluginLibrary.h"
#include "host/ReplyPipe.h"
#include "host/ResultFiles.h"
#include "model/Quantity.h"
#include "terminal/Output.h"

namespace qorctl {
namespace {

constexpr std::string_view COMMAND_HEAD = "execute krzcli command.(";
constexpr std::string_view COMMAND_TAIL = ")";
constexpr std::string_view UTILITY_HEAD = "Execute LSI RAID Utilty command. ";
constexpr std::string_view VERSION_HEAD = "KRZ Version is ";
constexpr std::string_view VERSION_TAIL = ".";
constexpr std::array<std::string_view, 2> FAILURE_HEADS = {"KRZ CLI has an error(",
                                                           "Failed to execute krzcli command.("};
constexpr std::string_view CARD_HEAD = "Support PCI Device(RAID/SSD) found.";
constexpr std::string_view CONTROLLER_ARGUMENT = " -a";

// What stands between `head` and `tail`; nothing when the message is another one.
std::optional<std::string> Between(std::string_view message, std::string_view head,
                                   std::string_view tail) {
    if (!message.starts_with(head) || !message.ends_with(tail) ||
        message.size() < head.size() + tail.size()) {
        return std::nullopt;
    }
    return std::string(message.substr(head.size(), message.size() - head.size() - tail.size()));
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

    CItemList& Get() { return m_Items; }

private:
    CMngSrv_QorLibIF& m_Object;
    CItemList m_Items;
};

// May run while an exception of the plug-in is on its way: a second one must not end the process.
CPluginItems::~CPluginItems() {
    try {
        m_Object.FreeItemList(&m_Items);
    } catch (...) {
        Report("the plug-in could not free its items: it threw an exception");
    }
}

enum class ELines { ALL, FAILURES };

// Passes on which command runs, and takes what the tool printed where it failed: the plug-in
// removes the file behind that line.
class CTraceWatch {
public:
    CTraceWatch(const CPluginLibrary& library, CReplyWriter& writer, ELines lines)
        : m_SetSink(reinterpret_cast<decltype(m_SetSink)>(library.Symbol("QorSetTraceSink"))),
          m_Writer(writer) {
        if (m_SetSink != nullptr) {
            const unsigned results = lines == ELines::ALL ? CTraceUtility::TRACE_DBG_RESULT : 0;
            m_SetSink(OnLine, this, results | CTraceUtility::TRACE_DBG_FAILURE);
        }
    }
    ~CTraceWatch() {
        if (m_SetSink != nullptr) {
            m_SetSink(nullptr, nullptr, 0);
        }
    }
    CTraceWatch(const CTraceWatch&) = delete;  // the trace knows its address
    CTraceWatch& operator=(const CTraceWatch&) = delete;

    const std::optional<std::string>& ToolVersion() const { return m_Reader.ToolVersion(); }
    const std::string& Printed() const { return m_Printed; }

private:
    static void OnLine(void* context, const char* /*module*/,
                       CTraceUtility::TRACE_DBG_LEVEL /*level*/, const char* message,
                       unsigned long length) noexcept;

    decltype(&QorSetTraceSink) m_SetSink;
    CReplyWriter& m_Writer;
    CTraceReader m_Reader;
    std::string m_Printed;
};

bool TellsOfFailedTool(std::string_view message) {
    return std::any_of(FAILURE_HEADS.begin(), FAILURE_HEADS.end(),
                       [message](std::string_view head) { return message.starts_with(head); });
}

void CTraceWatch::OnLine(void* context, const char* /*module*/,
                         CTraceUtility::TRACE_DBG_LEVEL /*level*/, const char* message,
                         unsigned long length) noexcept {
    CTraceWatch& watch = *static_cast<CTraceWatch*>(context);
    if (TellsOfFailedTool({message, length})) {
        watch.m_Printed = WhatTheToolComplainedOf();
        return;
    }
    const size_t before = watch.m_Reader.Commands();
    watch.m_Reader.Take({message, length});
    if (watch.m_Reader.Commands() != before) {
        watch.m_Writer.Write(EFrame::COMMAND, {watch.m_Reader.Command(), watch.m_Reader.Text()});
        watch.m_Writer.Flush();
    }
}

void WriteItems(const CItemList& items, CReplyWriter& writer) {
    for (const CItemDisp* item : items) {
        if (item != nullptr) {
            writer.Write(EFrame::ITEM,
                         {item->ParentName(), item->ItemName(), item->ItemValue(), item->Enable()});
        }
    }
}

void AskPlugin(const CPluginLibrary& library, const CRequest& request, CReplyWriter& writer,
               CReply& reply) {
    const CPluginObject object(library);
    if (object.Get() == nullptr) {
        reply.problem = "the plug-in made no plug-in object";
        return;
    }
    CPluginItems items(*object.Get());
    const bool answered = request.operation(*object.Get(), items.Get(), reply);
    if (answered) {
        WriteItems(items.Get(), writer);
    }
    reply.outcome = answered ? EOutcome::ANSWERED : EOutcome::FAILED;
}

// Exceptions of the plug-in are caught while the library is loaded: their code lives in it.
void AskSafely(const CPluginLibrary& library, const CRequest& request, CReplyWriter& writer,
               CReply& reply) {
    std::string what;
    try {
        AskPlugin(library, request, writer, reply);
        return;
    } catch (const std::out_of_range& error) {
        what = std::string(": ") + error.what() + "; a line of the RAID tool's report is too short";
    } catch (const std::exception& error) {
        what = std::string(": ") + error.what();
    } catch (...) {
        what = " of an unknown type";
    }
    reply.outcome = EOutcome::PLUGIN_FAILED;
    reply.problem = "the request ended with an exception" + what;
}

}  // namespace

void CTraceReader::Take(std::string_view message) {
    if (auto command = Between(message, COMMAND_HEAD, COMMAND_TAIL)) {
        m_Command = *std::move(command);
        ++m_Commands;
    } else if (auto utility = Between(message, UTILITY_HEAD, "")) {
        m_Command = *std::move(utility);
        ++m_Commands;
    } else if (auto version = Between(message, VERSION_HEAD, VERSION_TAIL)) {
        m_ToolVersion = version->empty() ? std::nullopt : std::move(version);
    } else if (m_Command.empty() && message.starts_with(CARD_HEAD)) {
        ++m_Cards;
    }
}

std::string CTraceReader::Text() const {
    const size_t argument = m_Command.rfind(CONTROLLER_ARGUMENT);
    const auto number =
        argument == std::string::npos
            ? std::nullopt
            : ReadCount(std::string_view(m_Command).substr(argument + CONTROLLER_ARGUMENT.size()));
    if (!number) {
        return m_Command;
    }
    return *number < m_Cards
               ? fmt::format("{} (controller {} of {})", m_Command, *number + 1, m_Cards)
               : fmt::format("{} (controller {})", m_Command, *number + 1);
}

void AnswerRequest(const std::string& pluginPath, const CRequest& request, bool listens, int fd) {
    CReplyWriter writer(fd);
    CReply reply;
    if (const auto library = CPluginLibrary::Load(pluginPath, reply.problem)) {
        const CTraceWatch watch(*library, writer, listens ? ELines::ALL : ELines::FAILURES);
        AskSafely(*library, request, writer, reply);
        reply.toolVersion = watch.ToolVersion();
        reply.printed = watch.Printed();
    } else {
        reply.outcome = EOutcome::NOT_ASKED;
    }
    WriteReply(reply, writer);
}

}  // namespace qorctl
