// Host profiles of qorsim: the reader, what a profile extends, the events, and the reports of a
// host that was found valid.
#include <sys/stat.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "Fuzz.h"
#include "HostProfile.h"
#include "ProfileFile.h"
#include "ReportFuzz.h"
#include "Server.h"
#include "StandIn.h"
#include "Timeline.h"
#include "getters/CMSRAID_CtrlInfoGetter.h"
#include "getters/CMSRAID_LDInfoGetter.h"
#include "getters/CMSRAID_PDInfoGetter.h"

namespace {

using namespace qorfuzz;

constexpr const char* CONTROLLER = "-a0";
// Some JSON patches copy all there is, and after each event the whole host is checked: more of them
// take the sanitizers too long.
constexpr size_t MOST_EVENTS = 8;
constexpr const char* PROFILE = "/opt/tarmica/profiles/host.json";
constexpr const char* SECRET = "what nobody gave away";

// What the input can extend beside shipped hosts, and what it must not reach.
bool MakeProfiles() {
    namespace fs = std::filesystem;
    const fs::path folder = fs::path(PROFILE).parent_path();
    const auto profile = [](const char* description) {
        return nlohmann::json{{"tool", {{"version", "7.0"}}}, {"description", description}}.dump();
    };
    fs::create_directories(folder / "below");
    WriteServerFile("/opt/tarmica/secret.json", profile(SECRET));
    WriteServerFile("/opt/tarmica/profiles/base.json", profile("a base"));
    WriteServerFile("/opt/tarmica/profiles/below/base.json", profile("another one"));
    WriteServerFile("/opt/tarmica/profiles/again.json", R"({"extends": "host.json"})");
    fs::create_symlink("../secret.json", folder / "link.json");
    fs::create_symlink("..", folder / "up");
    return mkfifo((folder / "fifo.json").c_str(), 0600) == 0;
}

// The input as a file, with what it extends and its patch.
void DemandEffective(const std::string& text) {
    static const bool made = MakeProfiles();
    Demand(made, "the profiles can be made");
    WriteServerFile(PROFILE, text);
    std::string problem;
    const auto effective = qorsim::LoadProfile(PROFILE, problem);
    Demand(effective.has_value() == problem.empty(), "a refusal says why", problem);
    if (!effective) {
        return;
    }
    Demand(!effective->contains("extends") && !effective->contains("patch"), "all is carried out");
    Demand(effective->dump().find(SECRET) == std::string::npos, "nothing outside is read");
    Demand(qorsim::ReadHostProfile(*effective, problem).has_value(), "a host comes of it", problem);
}

void DemandRead(CMSRAID_InfoGetter& getter, const char* root,
                const std::vector<CToolReport>& reports, bool plain) {
    bool understood = true;
    FuzzGetter(getter,
               [&](ItemList& items) {
                   understood = getter.GetInfo(0, items);
                   return understood;
               },
               reports, {.root = root, .retired = "### SMART Information ###"});
    Demand(understood || !plain, "the plug-in understands the simulated tool", root);
}

CToolReport ReportOf(const qorsim::CHost& host, const char* command) {
    const qorsim::CToolAnswer answer = AnswerKrzcli(host, {command, CONTROLLER});
    Demand(answer.status == 0, "the tool knows its commands", answer.out);
    return {std::string("krzcli ") + command + " " + CONTROLLER, answer.out};
}

// The plug-in reads what the simulated tool prints. Additions may hold lines of any kind.
void DemandReports(const qorsim::CHost& host) {
    const bool plain = host.tool.additions.empty() && !host.controllers.empty();
    const CToolReport groups = ReportOf(host, "-ldpdinfo");
    CMSRAID_CtrlInfoGetter ctrlGetter;
    DemandRead(ctrlGetter, "Controller Information", {ReportOf(host, "-ctrlinfo")}, plain);
    CMSRAID_LDInfoGetter ldGetter;
    DemandRead(ldGetter, "Logical Drive Information", {groups}, plain);
    CMSRAID_PDInfoGetter pdGetter;
    DemandRead(pdGetter, "Physical Drive Information", {groups, ReportOf(host, "-pdinfo")}, plain);
}

void DemandEvents(const nlohmann::json& profile) {
    std::string problem;
    qorsim::CPatcher patcher;
    qorsim::CheckEvents(profile, patcher, problem);
    if (!problem.empty()) {
        return;
    }
    for (const long second : {0L, 10L, 4294967295L}) {
        const auto state = qorsim::ProfileAt(profile, second, problem);
        Demand(state.has_value(), "checked events can be carried out", problem);
        Demand(qorsim::ReadHostProfile(*state, problem).has_value(), "they leave a host", problem);
    }
}

size_t EventsIn(const nlohmann::json& profile) {
    return profile.is_object() && profile.contains("events") ? profile["events"].size() : 0;
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string problem;
    const auto profile = qorsim::ParseProfile(InputText(data, size), problem);
    Demand(profile.has_value() == problem.empty(), "a refusal says why", problem);
    if (!profile) {
        return 0;
    }
    if (EventsIn(*profile) <= MOST_EVENTS) {
        DemandEffective(InputText(data, size));
    }
    const auto host = qorsim::ReadHostProfile(*profile, problem);
    Demand(host.has_value() == problem.empty(), "a refusal says why", problem);
    if (!host) {
        return 0;
    }
    DemandReports(*host);
    if (EventsIn(*profile) <= MOST_EVENTS) {
        DemandEvents(*profile);
    }
    return 0;
}
