// The main() of every test program: each runs in mounts of its own, so that the fixed paths under
// "/opt/tarmica" and "/etc/opt/tarmica" belong to the test and the machine is left untouched.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <exception>

#include "PrivateMounts.h"

namespace {

// What a script runs in the background ignores interrupts, and so would the programs under test.
void TakeDefaultSignals() {
    for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGTERM}) {
        std::signal(signal, SIG_DFL);
    }
}

}  // namespace

int main(int argc, char** argv) {
    TakeDefaultSignals();
    umask(022);  // modes of files are compared, and other users read what a test writes
    testing::InitGoogleTest(&argc, argv);
    if (!testing::GTEST_FLAG(list_tests)) {
        try {
            qorsim::EnterPrivateMounts();
        } catch (const std::exception& error) {
            std::fprintf(stderr, "tests need private mounts: %s\n", error.what());
            return 1;
        }
    }
    return RUN_ALL_TESTS();
}
