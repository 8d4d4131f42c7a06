// Fixture: the built qorctl and plug-in on a simulated server.
#ifndef QORTEST_SERVERFIXTURE_H
#define QORTEST_SERVERFIXTURE_H

#include <cstdlib>
#include <string>

#include "../qorsim/SimFixture.h"

namespace qortest {

class CServerFixture : public CSimFixture {
protected:
    void SetUp() override {
        CSimFixture::SetUp();
        setenv("QOR_PLUGIN", REAL_PLUGIN, 1);
        setenv("TERM", "xterm-256color", 1);
        for (const char* name : {"NO_COLOR", "COLUMNS"}) {
            unsetenv(name);
        }
    }

    // What the shell command `text`, in which qorctl is a command, does on `host`.
    static CEnd Shell(const std::string& host, const std::string& text) {
        return RunShellOn(host, QORCTL + text);
    }

    static constexpr const char* QORCTL = "qorctl() { " QORCTL_PROGRAM " \"$@\"; }; ";
};

}  // namespace qortest

#endif  // QORTEST_SERVERFIXTURE_H
