// The main() of every test program: each runs in mounts of its own, so that the fixed paths under
// "/opt/tarmica" and "/etc/opt/tarmica" belong to the test and the machine is left untouched.
#include <gtest/gtest.h>

#include <cstdio>
#include <exception>

#include "PrivateMounts.h"

int main(int argc, char** argv) {
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
