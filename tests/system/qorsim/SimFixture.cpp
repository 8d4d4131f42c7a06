#include "SimFixture.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "GoldenFile.h"

namespace fs = std::filesystem;

namespace qortest {
namespace {

constexpr int SIGNALLED = 1000;

[[noreturn]] void Execute(const CStrings& command, int out, const std::string& errFile,
                          EKernel kernel) {
    if (!Enter(kernel)) {
        _exit(126);
    }
    const int err = open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const int in = open("/dev/null", O_RDONLY);
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    std::vector<char*> arguments;
    for (const std::string& argument : command) {
        arguments.push_back(const_cast<char*>(argument.c_str()));
    }
    arguments.push_back(nullptr);
    execvp(arguments.front(), arguments.data());
    _exit(127);
}

std::string ReadToEnd(int fd) {
    std::string text;
    std::array<char, 4096> buffer = {};
    for (ssize_t count = 0; (count = read(fd, buffer.data(), buffer.size())) > 0;) {
        text.append(buffer.data(), static_cast<size_t>(count));
    }
    close(fd);
    return text;
}

fs::path NewFolder() {
    std::string name = (fs::temp_directory_path() / "system_qorsim.XXXXXX").string();
    return mkdtemp(name.data()) != nullptr ? fs::path(name) : fs::path();
}

}  // namespace

CEnd RunProgram(const CStrings& command, EKernel kernel) {
    const fs::path folder = NewFolder();
    const std::string errFile = folder / "err";
    std::array<int, 2> pipe = {};
    if (pipe2(pipe.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return {};
    }
    const pid_t child = fork();
    if (child == 0) {
        Execute(command, pipe[1], errFile, kernel);
    }
    close(pipe[1]);
    CEnd end;
    end.out = ReadToEnd(pipe[0]);
    int status = 0;
    waitpid(child, &status, 0);
    end.status = WIFSIGNALED(status) ? SIGNALLED + WTERMSIG(status) : WEXITSTATUS(status);
    end.err = ReadFile(errFile);
    fs::remove_all(folder);
    return end;
}

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
