// Fixture: qorctl as a process, with a plug-in that answers as the test tells it.
#ifndef QORTEST_QORCTLFIXTURE_H
#define QORTEST_QORCTLFIXTURE_H

#include <filesystem>
#include <string>
#include <vector>

#include "PrivateServerFixture.h"
#include "Process.h"
#include "RaidHost.h"
#include "StandInAnswer.h"

namespace qortest {

using CRecord = std::vector<std::string>;

// A test may put files of its own into m_Folder.
class CQorctlFixture : public CPrivateServerFixture {
protected:
    void SetUp() override {
        CPrivateServerFixture::SetUp();
        std::filesystem::create_directories(m_Folder);
        PutNoCard();
        m_Environment = {{"LC_ALL", "C.UTF-8"},
                         {"TERM", "xterm"},
                         {"QOR_STAND_IN_ANSWER", m_Folder / "answer"},
                         {"QOR_STAND_IN_LOG", m_Folder / "log"}};
    }

    // What the stand-in plug-in is to answer.
    void Answer(const std::vector<CRecord>& records) const {
        std::string text;
        for (const CRecord& record : records) {
            for (const std::string& field : record) {
                text += field + FIELD_END;
            }
            text += RECORD_END;
        }
        WriteFile(m_Folder / "answer", text);
    }

    CEnd Run(const std::vector<std::string>& arguments) const {
        return RunCommand(
            {.program = QORCTL_PROGRAM, .arguments = arguments, .environment = m_Environment});
    }

    // The calls that the stand-in plug-in got.
    std::string Log() const { return ReadFile(m_Folder / "log"); }

    const std::filesystem::path m_Folder = "/opt/tarmica/ctl";
    CEnvironment m_Environment;
};

}  // namespace qortest

#endif  // QORTEST_QORCTLFIXTURE_H
