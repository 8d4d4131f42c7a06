// Every system call of a request fails in every way that it can.
#include "InjectionTest.h"

namespace {

class SystemCallFailure : public qortest::CInjectionTest {};

TEST_P(SystemCallFailure, IsToldAndLeavesNothing) {
    for (const qortest::CFailingFunction& function : qortest::FailingFunctions()) {
        TryCalls(function);
    }
    EXPECT_GT(Struck(), 10);
}

// The last request, XML, makes no system call.
INSTANTIATE_TEST_SUITE_P(Any, SystemCallFailure,
                         qortest::InRequests(qortest::Requests().size() - 1),
                         qortest::ParameterName);

}  // namespace
