#include "StandInTool.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "PrivateServerFixture.h"

namespace fs = std::filesystem;

namespace qortest {

CStandInTool::CStandInTool(const std::string& path) : m_Path(path), m_StepDir(path + ".steps") {
    fs::remove_all(m_StepDir);  // of an earlier stand-in at this path
    fs::create_directories(m_StepDir);
    WriteFile(m_StepDir + "/next", "0\n");
    WriteFile(m_Path,
              "#!/bin/sh\n"
              "steps='" +
                  m_StepDir +
                  "'\n"
                  "read -r n < \"$steps/next\"\n"
                  "echo $((n + 1)) > \"$steps/next\"\n"
                  "printf '%s\\n' \"$*\" >> \"$steps/calls\"\n"
                  "if [ ! -e \"$steps/$n.arguments\" ] || [ \"$*\" != \"$(cat "
                  "\"$steps/$n.arguments\")\" ]\n"
                  "then\n"
                  "    echo \"step $n: unexpected call: $*\" | tee -a \"$steps/unexpected\" >&2\n"
                  "    exit 97\n"
                  "fi\n"
                  ". \"$steps/$n.run\"\n"
                  "cat \"$steps/$n.out\"\n"
                  "cat \"$steps/$n.err\" >&2\n"
                  "read -r status < \"$steps/$n.status\"\n"
                  "exit \"$status\"\n");
    fs::permissions(m_Path, fs::perms::owner_all | fs::perms::group_read | fs::perms::group_exec |
                                fs::perms::others_read | fs::perms::others_exec);
}

CStandInTool::~CStandInTool() {
    if (fs::exists(m_StepDir + "/unexpected")) {
        ADD_FAILURE() << m_Path
                      << " was asked what was not played: " << ReadFile(m_StepDir + "/unexpected");
    }
    EXPECT_EQ(Calls().size(), static_cast<size_t>(m_StepCount))
        << "steps of " << m_Path << " played";
}

void CStandInTool::Play(const std::string& arguments, const CToolStep& step) {
    const std::string prefix = m_StepDir + "/" + std::to_string(m_StepCount++);
    WriteFile(prefix + ".arguments", arguments);
    WriteFile(prefix + ".run", step.run + "\n");
    WriteFile(prefix + ".out", step.out);
    WriteFile(prefix + ".err", step.err);
    WriteFile(prefix + ".status", std::to_string(step.status) + "\n");
}

std::vector<std::string> CStandInTool::Calls() const {
    std::vector<std::string> calls;
    std::ifstream file(m_StepDir + "/calls");
    for (std::string line; std::getline(file, line);) {
        calls.push_back(line);
    }
    return calls;
}

}  // namespace qortest
