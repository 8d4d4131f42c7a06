// Fixture: qorctl on simulated servers and on real terminals, which tmux draws.
#ifndef QORTEST_TERMINALFIXTURE_H
#define QORTEST_TERMINALFIXTURE_H

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "Process.h"
#include "ServerFixture.h"

namespace qortest {

class CTerminalFixture : public CServerFixture {
protected:
    static constexpr const char* MARK = "QOR_TERMINAL_TEST";
    // A broken program is given up after that.
    static constexpr std::chrono::seconds PATIENCE{60};

    void SetUp() override {
        CServerFixture::SetUp();
        ProvideTerminals();
    }
    void TearDown() override {
        Tmux({"kill-server"});
        std::filesystem::remove(Folder() / "tmux");
        CServerFixture::TearDown();
    }

    CEnd Tmux(const CStrings& arguments) const {
        CStrings command = {"tmux", "-u", "-S", Folder() / "tmux", "-f", "/dev/null"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return RunProgram(command);
    }

    // Starts the command on `host` in a terminal of its own, which stays when the command has
    // ended.
    void Start(const std::string& options, const std::string& command, int width,
               int height) const {
        StartProgram(options, QORCTL_PROGRAM " " + command, width, height);
    }
    void StartProgram(const std::string& options, const std::string& command, int width,
                      int height) const {
        const std::string line = std::string(MARK) + "=" + Folder().string() + " " QORSIM_PROGRAM +
                                 " run " + options + " -- " + command +
                                 "; echo status=$?; exec cat";
        // A server that ends with its last terminal takes one along that comes while it does.
        const CEnd end =
            Tmux({"new-session", "-d", "-x", std::to_string(width), "-y", std::to_string(height),
                  line, ";", "set-option", "-s", "exit-empty", "off"});
        EXPECT_EQ(end.status, 0) << end.err;
    }

    // What the terminal shows once `text` is there; with control sequences where `options` say so.
    // A line that was longer than the terminal is wide is one line here.
    std::string Await(const std::string& text, const CStrings& options = {}) const {
        CStrings capture = {"capture-pane", "-p", "-J", "-S", "-"};
        capture.insert(capture.end(), options.begin(), options.end());
        const auto end = std::chrono::steady_clock::now() + PATIENCE;
        std::string shown;
        while (shown.find(text) == std::string::npos) {
            if (std::chrono::steady_clock::now() > end) {
                ADD_FAILURE() << '"' << text << "\" does not come: " << shown;
                break;
            }
            shown = Tmux(capture).out;
        }
        return shown;
    }

    // Processes of the command, all of its descendants included.
    size_t CountProcesses() const {
        const std::string mark = std::string(MARK) + "=" + Folder().string();
        size_t count = 0;
        for (const std::filesystem::directory_entry& entry :
             std::filesystem::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "environ");
            std::stringstream text;
            text << file.rdbuf();
            count += text.str().find(mark) == std::string::npos ? 0U : 1U;
        }
        return count;
    }
};

}  // namespace qortest

#endif  // QORTEST_TERMINALFIXTURE_H
