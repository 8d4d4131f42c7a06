// Fixture: an empty server tree at the fixed paths before every test.
#ifndef QORTEST_PRIVATESERVERFIXTURE_H
#define QORTEST_PRIVATESERVERFIXTURE_H

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace qortest {

inline constexpr const char* INSTALL_DIR = "/opt/tarmica/qor/provider";
inline constexpr const char* RESULT_DIR = "/opt/tarmica/qor/provider/tmp/MSRAID";
inline constexpr const char* DEVICE_LIST = "/opt/tarmica/qor/kam/work/devices.tmp";
inline constexpr const char* TOOL_DIR = "/opt/tarmica/krz/cli";

// Writes `text` to `path`, byte for byte; makes its directories.
void WriteFile(const std::filesystem::path& path, const std::string& text);
// The whole of a file; a test failure and "" when it cannot be read.
std::string ReadFile(const std::filesystem::path& path);
// tests/golden/NAME or tests/golden_bad/NAME of the source tree.
std::string Golden(const std::string& name);
std::string GoldenBad(const std::string& name);

// SetUp empties "/opt/tarmica" and "/etc/opt/tarmica" and makes the install directory (with "tmp")
// and the device list's directory. TearDown demands that nothing was left behind: no result file,
// no child process, no file descriptor.
class CPrivateServerFixture : public testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    // For a test whose contract is to leave a child or a result file: checked no more.
    void ExpectLeftovers() { m_LeftoversExpected = true; }

private:
    size_t m_OpenFiles = 0;
    bool m_LeftoversExpected = false;
};

}  // namespace qortest

#endif  // QORTEST_PRIVATESERVERFIXTURE_H
