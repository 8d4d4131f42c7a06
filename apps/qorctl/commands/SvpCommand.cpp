#include "commands/SvpCommand.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>

#include "commands/CommonOptions.h"
#include "format/SvpForm.h"
#include "host/Ask.h"
#include "terminal/Output.h"
#include "terminal/TerminalText.h"

namespace qorctl {
namespace {

constexpr const char* SVP_ABOUT =
    "Without --decode the digits are written as the plug-in returns them, and a line feed.\n"
    "--decode shows header, controllers, drives and items, each with its offset in bytes. FILE\n"
    "holds the digits, \"-\" is standard input; no plug-in is needed then, and white space does "
    "not\n"
    "count. A form that is malformed is not shown: the offset and the reason go to standard "
    "error,\n"
    "and the exit status is 1.\n"
    "\n";

constexpr const char* SVP_EXAMPLE =
    "Examples:\n"
    "  qorctl svp > form.txt\n"
    "  qorctl svp --decode form.txt";

// Twice what the largest form has: 255 controllers of 65,535 bytes.
constexpr size_t MAX_DIGITS = 67108864;

int ShowDecoded(const std::string& digits) {
    std::string problem;
    const std::optional<std::vector<CSvpEntry>> form = DecodeSvpForm(digits, problem);
    if (!form) {
        Report("not a service-processor form: " + problem);
        return EXIT_FAILURE;
    }
    return WriteOut(FormatSvpForm(*form, DetectTextStyle(STDOUT_FILENO)));
}

int ShowPlugins(const CPluginChoice& plugin, bool decode) {
    CAnswer answer =
        Ask(plugin, {.operation = [](CMngSrv_QorLibIF& object, CItemList&, CReply& reply) {
                return object.GetCtrlPDInfoBinaryString(&reply.document, &reply.texts.errorCode,
                                                        &reply.texts.noticeCode) != 0;
            }});
    if (answer.IsAnswered()) {
        AddCardGap(answer, CountSvpControllers(answer.document));
    }
    ReportMessages(answer);
    if (!answer.IsAnswered()) {
        return EXIT_FAILURE;
    }
    const int written = decode ? ShowDecoded(answer.document) : WriteBytes(answer.document + '\n');
    return answer.IsWhole() ? written : EXIT_FAILURE;
}

// Nothing, with errno set, when it could not be read to its end.
std::optional<std::string> ReadWhole(std::FILE* file) {
    std::string text;
    std::array<char, 65536> buffer = {};
    size_t count = 0;
    while ((count = std::fread(buffer.data(), 1, buffer.size(), file)) > 0) {
        text.append(buffer.data(), count);
        if (text.size() > MAX_DIGITS) {
            errno = EFBIG;
            return std::nullopt;
        }
    }
    return std::ferror(file) != 0 ? std::nullopt : std::make_optional(std::move(text));
}

std::optional<std::string> ReadFileOrInput(const std::string& path) {
    if (path == "-") {
        return ReadWhole(stdin);
    }
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "re"),
                                                               std::fclose);
    return file == nullptr ? std::nullopt : ReadWhole(file.get());
}

int ShowFile(const std::string& path) {
    const std::optional<std::string> digits = ReadFileOrInput(path);
    if (!digits) {
        const std::string reason = std::strerror(errno);
        Report((path == "-" ? "standard input" : path) + " could not be read: " + reason);
        return EXIT_FAILURE;
    }
    return ShowDecoded(*digits);
}

struct CSvpOptions {
    CPluginChoice plugin;
    std::string form;
};

}  // namespace

void AddSvpCommand(CLI::App& app, int& status) {
    const auto options = std::make_shared<CSvpOptions>();
    CLI::App* command =
        AddCommand(app, options->plugin, "svp", "The service-processor form, as hexadecimal digits",
                   std::string(SVP_ABOUT) + PLUGIN_WHERE + EXIT_STATUS + SVP_EXAMPLE);
    const CLI::Option* decode =
        command
            ->add_option("--decode", options->form,
                         "Show what the form says: the one in FILE, or the plug-in's without FILE")
            ->type_name("[FILE|-]")
            ->expected(0, 1);
    command->callback([options, decode, &status] {
        status = options->form.empty() ? ShowPlugins(options->plugin, decode->count() > 0)
                                       : ShowFile(options->form);
    });
}

}  // namespace qorctl
