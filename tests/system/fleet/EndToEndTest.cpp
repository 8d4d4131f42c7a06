// From a drive that fails to the web hook that hears of it, through the real programs: a simulated
// server, qorctl metrics, node_exporter, Prometheus with the shipped rules, Alertmanager.
#include <gmock/gmock.h>

#include "FleetFixture.h"

namespace qortest {
namespace {

using nlohmann::json;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;

constexpr const char* SERVER = "srv7";

constexpr const char* DRIVE_FAILED = "firing: srv7: controller 0 drive 252:3 is FAILED";
constexpr const char* DRIVE_WELL = "resolved: srv7: controller 0 drive 252:3 is FAILED";
constexpr const char* LD1_DEGRADED = "firing: srv7: controller 0 logical drive LD1 is Degraded";
constexpr const char* LD2_DEGRADED = "firing: srv7: controller 0 logical drive LD2 is Degraded";
constexpr const char* LD1_OPTIMAL = "resolved: srv7: controller 0 logical drive LD1 is Degraded";
constexpr const char* LD2_OPTIMAL = "resolved: srv7: controller 0 logical drive LD2 is Degraded";

// Evaluations, in each of which it could be told again.
constexpr const char* FIRES_FOR_A_WHILE =
    R"(count_over_time(ALERTS{alertname="QorPhysicalDriveFailed",alertstate="firing"}[5m]) >= 6)";

class EndToEndTest : public CFleetFixture {
protected:
    void SetUp() override {
        CFleetFixture::SetUp();
        DemandInstalled({"/usr/bin/prometheus", "/usr/bin/prometheus-node-exporter",
                         "/usr/bin/prometheus-alertmanager"});
    }

    // The host lifecycle; a minute after its start the failed drive is replaced.
    std::string Host() const {
        json profile = ShippedProfile("lifecycle");
        profile.erase("$schema");
        profile["events"].push_back(
            {{"after_s", 60},
             {"patch",
              {{{"op", "replace"}, {"path", "/controllers/0/drives/3/status"}, {"value", "ONLINE"}},
               {{"op", "remove"}, {"path", "/controllers/0/drives/3/mediaErrors"}}}}});
        return WriteProfile(profile);
    }

    // The server as it is so many seconds after its start.
    void CollectAt(int seconds) const {
        Collect(SERVER, {"--host", Host(), "--start-at", std::to_string(seconds)});
    }

    std::string HookFile() const { return Folder() / "hook.jsonl"; }

    // Each alert is a message of its own, and none is repeated within the time of the test.
    void WriteAlertmanagerConfiguration(int hook) const {
        WriteFile(Folder() / "alertmanager.yml",
                  "route: {receiver: hook, group_by: ['...'], group_wait: 0s, group_interval: 1s, "
                  "repeat_interval: 1h}\n"
                  "receivers:\n  - name: hook\n    webhook_configs: [url: 'http://127.0.0.1:" +
                      std::to_string(hook) + "/']\n");
    }

    CStrings AlertmanagerCommand(int port) const {
        return {"/usr/bin/prometheus-alertmanager",
                "--config.file=" + (Folder() / "alertmanager.yml").string(),
                "--storage.path=" + (Folder() / "alertmanager").string(),
                "--web.listen-address=127.0.0.1:" + std::to_string(port),
                "--cluster.listen-address="};
    }

    std::vector<json> Alerts() const {
        std::vector<json> alerts;
        if (std::filesystem::exists(HookFile())) {
            for (const std::string& line : Lines(ReadFile(HookFile()))) {
                const json message = json::parse(line, nullptr, false);
                for (const json& alert : message.value("alerts", json::array())) {
                    alerts.push_back(alert);
                }
            }
        }
        return alerts;
    }

    // What the hook heard of drives out of order, in words, in the order in which it came.
    CStrings Heard() const {
        CStrings heard;
        for (const json& alert : Alerts()) {
            const std::string name = alert.at("labels").at("alertname");
            if (name == "QorPhysicalDriveFailed" || name == "QorLogicalDriveDegraded") {
                heard.push_back(alert.at("status").get<std::string>() + ": " +
                                alert.at("annotations").at("summary").get<std::string>());
            }
        }
        return heard;
    }

    // Waits until the expression has a series.
    static bool Holds(const CPrometheusServer& prometheus, const std::string& expression) {
        return Eventually([&] {
            return !prometheus.Get("/api/v1/query", {{"query", expression}}).at("result").empty();
        });
    }

    bool HearsOf(const CStrings& sentences) const {
        return Eventually([&] { return testing::Matches(IsSupersetOf(sentences))(Heard()); });
    }
};

TEST_F(EndToEndTest, HookHearsOfAFailedDriveOnceAndOfItsEnd) {
    const int hookPort = FreePort();
    const int alertmanagerPort = FreePort();
    CollectAt(0);
    WriteAlertmanagerConfiguration(hookPort);
    WriteConfiguration(alertmanagerPort);
    CEngine hook({PYTHON, HOOK, std::to_string(hookPort), HookFile()}, Folder() / "hook.out");
    CEngine alertmanager(AlertmanagerCommand(alertmanagerPort), Folder() / "alertmanager.out");
    CExporter exporter(TextFolder(SERVER));
    WriteTargets({{SERVER, exporter.Port()}});
    CPrometheusServer prometheus(Folder());
    ASSERT_TRUE(prometheus.IsReady()) << prometheus.Output();
    ASSERT_TRUE(Holds(prometheus, "qor_collection_success == 1")) << prometheus.Output();
    EXPECT_THAT(Heard(), ElementsAre());

    CollectAt(12);
    ASSERT_TRUE(HearsOf({DRIVE_FAILED, LD1_DEGRADED, LD2_DEGRADED}))
        << alertmanager.Output() << prometheus.Output();
    CollectAt(32);
    ASSERT_TRUE(Holds(prometheus, "qor_physical_drive_progress_ratio == 0.5"));
    ASSERT_TRUE(Holds(prometheus, FIRES_FOR_A_WHILE)) << "the rebuild is no news";
    CollectAt(55);
    ASSERT_TRUE(HearsOf({LD1_OPTIMAL, LD2_OPTIMAL})) << alertmanager.Output();
    EXPECT_THAT(Heard(), Not(Contains(DRIVE_WELL))) << "it is in its slot still";
    CollectAt(62);
    ASSERT_TRUE(HearsOf({DRIVE_WELL})) << alertmanager.Output();
    EXPECT_THAT(Heard(), testing::UnorderedElementsAre(DRIVE_FAILED, LD1_DEGRADED, LD2_DEGRADED,
                                                       LD1_OPTIMAL, LD2_OPTIMAL, DRIVE_WELL));

    for (const json& alert : Alerts()) {
        const json& labels = alert.at("labels");
        if (labels.at("alertname") == "QorPhysicalDriveFailed") {
            EXPECT_EQ(labels.at("instance"), SERVER);
            EXPECT_EQ(labels.at("controller"), "0");
            EXPECT_EQ(labels.at("enclosure"), "252");
            EXPECT_EQ(labels.at("slot"), "3");
            EXPECT_EQ(labels.at("severity"), "critical");
        }
    }
}

}  // namespace
}  // namespace qortest
