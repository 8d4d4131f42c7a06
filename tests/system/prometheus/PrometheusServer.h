// A real Prometheus on a free port of 127.0.0.1, and what it answers.
//
//     WriteFile(Folder() / "prometheus.yml", "global: {evaluation_interval: 1s}\n...");
//     CPrometheusServer prometheus(Folder());
//     ASSERT_TRUE(prometheus.IsReady()) << prometheus.Output();
//     const nlohmann::json answer = prometheus.Query("up", time(nullptr));
#ifndef QORTEST_PROMETHEUSSERVER_H
#define QORTEST_PROMETHEUSSERVER_H

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include "Engine.h"

namespace qortest {

// Ends with the test, whichever way that ends.
class CPrometheusServer {
public:
    using CParameters = std::map<std::string, std::string>;

    // Reads `folder`/prometheus.yml, keeps its blocks in `folder`/data and its words in
    // `folder`/prometheus.out. `arguments` are more of its own.
    explicit CPrometheusServer(const std::filesystem::path& folder, const CStrings& arguments = {});

    // Waits, for a limited time, until it serves.
    bool IsReady();
    // Waits, for a limited time, until each group of rules was evaluated once; false as well
    // when it has none.
    bool HasEvaluatedRules();

    // The "data" of its answer; a test failure and null when it has none.
    nlohmann::json Get(const std::string& path, const CParameters& parameters = {}) const;
    // The "result" of an expression at a time, and at times from `start` to `end`.
    nlohmann::json Query(const std::string& expression, double time) const;
    nlohmann::json QueryRange(const std::string& expression, double start, double end,
                              double step) const;

    int Port() const { return m_Port; }
    std::string Output() const { return m_Engine.Output(); }

private:
    std::string Fetch(const std::string& target) const;

    int m_Port;
    CEngine m_Engine;
};

}  // namespace qortest

#endif  // QORTEST_PROMETHEUSSERVER_H
