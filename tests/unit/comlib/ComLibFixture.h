// Fixture: the private server tree, a scratch directory, and what this process has traced.
#ifndef QORTEST_COMLIBFIXTURE_H
#define QORTEST_COMLIBFIXTURE_H

#include <filesystem>
#include <string>
#include <vector>

#include "PrivateServerFixture.h"

namespace qortest {

inline constexpr const char* CONFIGURATION_FILE = "/etc/opt/tarmica/qor/comlib.ini";

std::vector<std::string> Lines(const std::string& text);

class CComLibFixture : public CPrivateServerFixture {
protected:
    void SetUp() override;
    void TearDown() override;

    // A directory of the test's own outside the private mounts; removed by a test that passed.
    const std::filesystem::path& Scratch() const { return m_Scratch; }

    // "module level message" of the lines that this process traced since the last question.
    static std::vector<std::string> TakeTraces();

private:
    std::filesystem::path m_Scratch;
};

}  // namespace qortest

#endif  // QORTEST_COMLIBFIXTURE_H
