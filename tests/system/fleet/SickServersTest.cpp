// Servers whose tool is of no use, beside one that is well.
#include <gmock/gmock.h>

#include "FleetFixture.h"

namespace qortest {
namespace {

using nlohmann::json;

class SickServersTest : public CFleetFixture {
protected:
    static json Ask(const CPrometheusServer& prometheus, const std::string& expression) {
        return prometheus.Get("/api/v1/query", {{"query", expression}}).at("result");
    }

    // Labels and values of all that the server "well" tells.
    static std::string Well(const CPrometheusServer& prometheus) {
        std::map<std::string, json> values;
        for (const json& series : Ask(prometheus, R"({instance="well",__name__=~"qor_.*"})")) {
            values[series.at("metric").dump()] = series.at("value").at(1);
        }
        return json(values).dump(1);
    }

    // What each alert says of its server.
    static std::map<std::string, std::string> Failing(const CPrometheusServer& prometheus) {
        std::map<std::string, std::string> sentences;
        const json answer = prometheus.Get("/api/v1/alerts");
        for (const json& alert : answer.at("alerts")) {
            const json& labels = alert.at("labels");
            if (labels.at("alertname") == "QorCollectionFails" && alert.at("state") == "firing") {
                sentences[labels.at("instance")] = alert.at("annotations").at("summary");
            }
        }
        return sentences;
    }
};

TEST_F(SickServersTest, EachIsToldWithItsReasonAndItsNeighbourIsAsItIsAlone) {
    DemandInstalled({"/usr/bin/prometheus", "/usr/bin/prometheus-node-exporter"});
    Collect("well", {"--host", "small"});
    Collect("hangs", {"--host", "small", "--fault", "hang"});
    Collect("missing", {"--host", "no-tool-storcli"});
    Collect("nonsense", {"--host", "small", "--fault", "mutate=7"});
    CExporter well(TextFolder("well"));
    CExporter hangs(TextFolder("hangs"));
    CExporter missing(TextFolder("missing"));
    CExporter nonsense(TextFolder("nonsense"));
    WriteConfiguration();
    WriteTargets({{"well", well.Port()}});
    CPrometheusServer prometheus(Folder());
    ASSERT_TRUE(prometheus.IsReady()) << prometheus.Output();
    ASSERT_TRUE(Eventually([&] { return !Ask(prometheus, "qor_collection_success").empty(); }));
    const std::string alone = Well(prometheus);

    WriteTargets({{"well", well.Port()},
                  {"hangs", hangs.Port()},
                  {"missing", missing.Port()},
                  {"nonsense", nonsense.Port()}});
    ASSERT_TRUE(Eventually([&] { return Failing(prometheus).size() == 3; }))
        << prometheus.Get("/api/v1/alerts");
    EXPECT_EQ(Failing(prometheus),
              (std::map<std::string, std::string>{
                  {"hangs", "hangs: no answer about the storage (time-over)"},
                  {"missing", "missing: no answer about the storage (no-tool)"},
                  {"nonsense", "nonsense: no answer about the storage (report-not-understood)"}}));
    EXPECT_EQ(Well(prometheus), alone);
    EXPECT_EQ(Ask(prometheus, "qor_collection_success == 0").size(), 3U);
    EXPECT_EQ(Ask(prometheus, "qor_physical_drive_info").size(),
              Ask(prometheus, R"(qor_physical_drive_info{instance="well"})").size());
}

}  // namespace
}  // namespace qortest
