#include "ComLibFixture.h"

#include <cstdlib>
#include <sstream>

namespace fs = std::filesystem;

namespace qortest {
namespace {

fs::path MakeScratch() {
    std::string path = testing::TempDir() + "comlib.XXXXXX";
    return mkdtemp(path.data()) != nullptr ? path : "";
}

// The trace settings are read once a process: all tests of this process share one trace file.
class CTraceFile : public testing::Environment {
public:
    void SetUp() override {
        m_Directory = MakeScratch();
        ASSERT_FALSE(m_Directory.empty());
        setenv("QOR_TRACE", ("file:" + Path().string() + ":31").c_str(), 1);
    }
    void TearDown() override { fs::remove_all(m_Directory); }

    fs::path Path() const { return m_Directory / "trace.log"; }

private:
    fs::path m_Directory;
};

CTraceFile* const s_TraceFile = [] {
    auto* file = new CTraceFile;
    testing::AddGlobalTestEnvironment(file);  // gtest owns it
    return file;
}();

}  // namespace

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

void CComLibFixture::SetUp() {
    CPrivateServerFixture::SetUp();
    m_Scratch = MakeScratch();
    ASSERT_FALSE(m_Scratch.empty());
    fs::remove(s_TraceFile->Path());
}

void CComLibFixture::TearDown() {
    CPrivateServerFixture::TearDown();
    if (!HasFailure()) {
        fs::remove_all(m_Scratch);
    }
}

std::vector<std::string> CComLibFixture::TakeTraces() {
    if (!fs::exists(s_TraceFile->Path())) {
        return {};
    }
    std::vector<std::string> lines = Lines(ReadFile(s_TraceFile->Path()));
    for (std::string& line : lines) {
        const size_t processEnd = line.find(' ', line.find(' ') + 1);
        line.erase(0, processEnd + 1);
    }
    fs::remove(s_TraceFile->Path());
    return lines;
}

}  // namespace qortest
