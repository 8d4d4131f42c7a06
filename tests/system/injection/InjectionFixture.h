// Fixture: the built plug-in on a small server, asked while something fails, and once more
// afterwards.
#ifndef QORTEST_INJECTIONFIXTURE_H
#define QORTEST_INJECTIONFIXTURE_H

#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Injection.h"
#include "PrivateServerFixture.h"
#include "Request.h"

namespace qortest {

struct CTrial;

// With QOR_ALL_INJECTIONS in the environment every call of every request is tried; else of the long
// requests a part only, always the same.
class CInjectionFixture : public CPrivateServerFixture,
                          public testing::WithParamInterface<std::tuple<size_t, EDuration>> {
protected:
    void SetUp() override;
    void TearDown() override;

    // The following makes the request of the parameter with the first, the second, ... call failing
    // until none is left to fail.

    void TryAllocations();
    // With every error; where not all calls are tried, with one error after the other. Demands that
    // something failed in the request that is sure to call the function.
    void TryCalls(const CFailingFunction& function);

    // How often something failed.
    long Struck() const { return m_Struck; }

private:
    // What a request comes to: verdict and content.
    using Answer = std::pair<std::string, std::string>;

    long Stride() const;
    // Learns what the request gives on a server that traces these levels.
    void Use(const CRequest& request, int traceLevels);
    // Loads the plug-in, makes the request with the injection and then without, unloads. Returns
    // whether there is a call left to try.
    bool Try(const CInjection& injection);
    // The device list decides what there is to report.
    Answer AnswerWith(const std::string& deviceList);
    Answer LearnAnswer();
    void ExpectUsefulAnswers() const;
    void ExpectAnswer(const CTrial& trial) const;
    void ExpectFailure(const CTrial& trial) const;
    void ExpectSuccess(const CTrial& trial) const;
    void ExpectDetail(const CTrial& trial) const;

    const CRequest* m_Request = nullptr;
    EDuration m_Duration = EDuration::ONCE;
    long m_Struck = 0;
    Answer m_Whole;
    std::string m_WholeFile;  // of KRZExecCli
    Answer m_RaidOnly;
    Answer m_SsdOnly;
    Answer m_Nothing;
    // The tool commands of the request, by the number of their run, on all the servers that it was
    // learnt on.
    std::set<std::pair<size_t, std::string>> m_Commands;
};

// The name of a test: request and duration.
std::string ParameterName(const testing::TestParamInfo<CInjectionFixture::ParamType>& parameter);

// One failure, and failure of all calls from one on, in the first `count` requests.
inline auto InRequests(size_t count) {
    return testing::Combine(testing::Range(size_t{0}, count),
                            testing::Values(EDuration::ONCE, EDuration::LASTING));
}

}  // namespace qortest

#endif  // QORTEST_INJECTIONFIXTURE_H
