#include "SimFixture.h"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "GoldenFile.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

fs::path NewFolder() {
    std::string name = (fs::temp_directory_path() / "system_qorsim.XXXXXX").string();
    return mkdtemp(name.data()) != nullptr ? fs::path(name) : fs::path();
}

}  // namespace

CStrings Lines(const std::string& text) {
    CStrings lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::string Joined(const CStrings& texts, const std::string& separator) {
    std::string joined;
    for (const std::string& text : texts) {
        joined += (joined.empty() ? "" : separator) + text;
    }
    return joined;
}

CStrings ShippedHosts() {
    CStrings names;
    for (const fs::directory_entry& entry :
         fs::directory_iterator(fs::path(QORSIM_SOURCE_DATA_DIR) / "hosts")) {
        if (entry.path().stem() != "host.schema") {
            names.push_back(entry.path().stem());
        }
    }
    std::sort(names.begin(), names.end());
    return names;
}

void CSimFixture::SetUp() {
    CPrivateServerFixture::SetUp();
    // The lines of qorctl's trees are compared, and messages of the system's programs.
    setenv("LC_ALL", "C.UTF-8", 1);
    unsetenv("LANGUAGE");
    m_Folder = NewFolder();
    fs::permissions(m_Folder, fs::perms(0755));  // for the test that becomes another user
}

// A failed test's folder stays for inspection.
void CSimFixture::TearDown() {
    CPrivateServerFixture::TearDown();
    if (!HasFailure()) {
        fs::remove_all(m_Folder);
    }
}

CEnd CSimFixture::RunOn(const std::string& host, const CStrings& command) {
    CStrings whole = {QORSIM_PROGRAM, "run", "--host", host, "--"};
    whole.insert(whole.end(), command.begin(), command.end());
    return RunProgram(whole);
}

CEnd CSimFixture::Qorsim(const CStrings& arguments) {
    CStrings whole = {QORSIM_PROGRAM};
    whole.insert(whole.end(), arguments.begin(), arguments.end());
    return RunProgram(whole);
}

CEnd CSimFixture::RunShellOn(const std::string& host, const std::string& text) {
    return RunOn(host, {"sh", "-c", text});
}

std::string CSimFixture::Krzcli(const std::string& host, const CStrings& arguments) {
    CStrings command = {"/opt/tarmica/krz/cli/krzcli"};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const CEnd end = RunOn(host, command);
    EXPECT_EQ(end.status, 0);
    EXPECT_EQ(end.err, "");
    return end.out;
}

nlohmann::json CSimFixture::ShippedProfile(const std::string& name) {
    return nlohmann::json::parse(
        ReadFile(fs::path(QORSIM_SOURCE_DATA_DIR) / "hosts" / (name + ".json")));
}

std::string CSimFixture::WriteProfile(const nlohmann::json& profile) const {
    const fs::path path = m_Folder / "host.json";
    WriteFile(path, profile.dump(2));
    return path;
}

std::string CSimFixture::SmallHostOfVersion(const std::string& version) const {
    nlohmann::json profile = ShippedProfile("small");
    profile["tool"]["version"] = version;
    return WriteProfile(profile);
}

std::string JsonProblem(const std::string& text) {
    try {
        const nlohmann::json document = nlohmann::json::parse(text);
        ADD_FAILURE() << text << " is JSON";
        return "";
    } catch (const nlohmann::json::exception& failure) {
        const std::string what = failure.what();  // "[name and number] words"
        return what.substr(what.find("] ") + 2);
    }
}

void ExpectGolden(const std::string& name, const std::string& text) {
    ExpectGoldenFile(fs::path(QORSIM_GOLDEN_DIR) / name, text);
}

}  // namespace qortest
