// Fixture: servers with a node_exporter each, and a Prometheus with the shipped rules.
//
//     CExporter exporter(TextFolder("one"));
//     Collect("one", {"--host", "small"});
//     WriteTargets({{"one", exporter.Port()}});
//     WriteConfiguration();
//     CPrometheusServer prometheus(Folder());
#ifndef QORTEST_FLEETFIXTURE_H
#define QORTEST_FLEETFIXTURE_H

#include <map>
#include <string>

#include "PrometheusServer.h"
#include "SimFixture.h"

namespace qortest {

// A real node_exporter that serves the texts of a folder, and nothing else.
class CExporter {
public:
    explicit CExporter(const std::filesystem::path& folder);

    int Port() const { return m_Port; }

private:
    int m_Port;
    CEngine m_Engine;
};

class CFleetFixture : public CSimFixture {
protected:
    // `qorsim run OPTIONS -- qorctl metrics`, into what the exporter of the server reads.
    void Collect(const std::string& server, const CStrings& options) const;
    // The folder of that, which is there afterwards.
    std::filesystem::path TextFolder(const std::string& server) const;

    // The name and the port of each server that Prometheus asks; it sees a change at once.
    void WriteTargets(const std::map<std::string, int>& ports) const;
    // Each second it asks, and evaluates the shipped rules, whose minutes are seconds. What they
    // say goes to the port of an Alertmanager; 0: to nobody.
    void WriteConfiguration(int alertmanager = 0) const;
};

}  // namespace qortest

#endif  // QORTEST_FLEETFIXTURE_H
