// The plug-in and the common library: found, loadable, of this build, complete.
#include <dlfcn.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <memory>
#include <vector>

#include "doctor/Checks.h"
#include "doctor/ServerFacts.h"
#include "host/LibraryFacts.h"

namespace qorctl::doctor {
namespace {

constexpr const char* COMMON_LIBRARY = "libqor_ComLib.so";
constexpr const char* COMMON_SERVICE = "GetPrivateProfileIntA";

using CHandle = std::unique_ptr<void, int (*)(void*)>;

CFinding JudgeBuild(const CLibraryFacts& facts, const std::string& remedy) {
    const std::string where =
        fmt::format("{}, build {}", facts.path, facts.buildId.empty() ? "unknown" : facts.buildId);
    if (facts.version.empty()) {
        return Warn(fmt::format("of an unknown version: {}", where), remedy);
    }
    const std::string text = fmt::format("version {}: {}", facts.version, where);
    return facts.version == QORCTL_VERSION
               ? Ok(text)
               : Warn(fmt::format("{}; this program is version {}", text, QORCTL_VERSION), remedy);
}

CFinding JudgeExports(void* library) {
    std::vector<std::string> missing;
    std::vector<std::string> elsewhere;
    for (const char* symbol : PLUGIN_EXPORTS) {
        const void* address = dlsym(library, symbol);
        if (address == nullptr) {
            missing.emplace_back(symbol);
        } else if (FactsOfLibraryAt(address).path !=
                   FactsOfLibraryAt(dlsym(library, PLUGIN_EXPORTS[0])).path) {
            elsewhere.push_back(fmt::format("{} in {}", symbol, FactsOfLibraryAt(address).path));
        }
    }
    if (!missing.empty()) {
        return Fail(fmt::format("missing: {}", fmt::join(missing, ", ")),
                    "this file is not the plug-in; name another one with --plugin");
    }
    if (!elsewhere.empty()) {
        return Warn(fmt::format("not in the plug-in itself: {}", fmt::join(elsewhere, ", ")),
                    "the libraries do not belong together; install them again");
    }
    return Ok(fmt::format("{}", fmt::join(PLUGIN_EXPORTS, ", ")));
}

}  // namespace

CFinding ExaminePlugin(CServerFacts& facts) {
    if (!facts.Plugin()) {
        return Fail(facts.PluginProblem(), "install the libraries, or name the plug-in");
    }
    return JudgeBuild(FactsOfLibraryAt(facts.Plugin()->Symbol("CreateLibIF")),
                      "install program and plug-in of one version");
}

CFinding ExamineExports(CServerFacts& facts) {
    const CHandle library(dlopen(facts.PluginName().c_str(), RTLD_NOW | RTLD_LOCAL), dlclose);
    return library == nullptr ? NotExamined("the file could not be loaded")
                              : JudgeExports(library.get());
}

CFinding ExamineCommonLibrary(CServerFacts& facts) {
    constexpr const char* REMEDY =
        "put libqor_ComLib.so beside the plug-in or into /opt/tarmica/qor/provider/lib, or set "
        "LD_LIBRARY_PATH";
    if (!facts.Plugin()) {
        return facts.PluginProblem().find(COMMON_LIBRARY) == std::string::npos
                   ? NotExamined("the plug-in could not be loaded")
                   : Fail("the plug-in does not find it, or something is missing in it", REMEDY);
    }
    const void* service = facts.Plugin()->Symbol(COMMON_SERVICE);
    if (service == nullptr) {
        return Fail(fmt::format("the plug-in brings no {}", COMMON_LIBRARY), REMEDY);
    }
    return JudgeBuild(FactsOfLibraryAt(service),
                      "is it the host's own? The checks below read the configuration as ours does");
}

}  // namespace qorctl::doctor
