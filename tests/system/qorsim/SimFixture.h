// Fixture: the qorsim program as a user runs it, in a folder of the test's own.
#ifndef QORTEST_SIMFIXTURE_H
#define QORTEST_SIMFIXTURE_H

#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "PrivateServerFixture.h"
#include "Process.h"

namespace qortest {

CStrings Lines(const std::string& text);
std::string Joined(const CStrings& texts, const std::string& separator);

// The names of the hosts in the source tree, sorted.
CStrings ShippedHosts();

class CSimFixture : public CPrivateServerFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    // qorsim run --host HOST -- COMMAND...
    static CEnd RunOn(const std::string& host, const CStrings& command);
    // The same with the text of a shell command.
    static CEnd RunShellOn(const std::string& host, const std::string& text);
    // What krzcli prints; demands the exit status 0 and nothing on standard error.
    static std::string Krzcli(const std::string& host, const CStrings& arguments);

    // qorsim ARGUMENTS...
    static CEnd Qorsim(const CStrings& arguments);

    static nlohmann::json ShippedProfile(const std::string& name);
    // Writes a profile into the test's folder and returns its path.
    std::string WriteProfile(const nlohmann::json& profile) const;
    // The small host with another tool version.
    std::string SmallHostOfVersion(const std::string& version) const;

    const std::filesystem::path& Folder() const { return m_Folder; }

private:
    std::filesystem::path m_Folder;
};

// What the JSON library says of a text that is no JSON. The words are its own, and its versions
// differ in them.
std::string JsonProblem(const std::string& text);

// Compares with the golden file tests/golden/sim/NAME.
void ExpectGolden(const std::string& name, const std::string& text);

}  // namespace qortest

#endif  // QORTEST_SIMFIXTURE_H
