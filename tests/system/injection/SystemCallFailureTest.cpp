// Every system call of a request fails in every way that it can.
#include "InjectionFixture.h"

namespace {

class SystemCallFailure : public qortest::CInjectionFixture {};

TEST_P(SystemCallFailure, IsToldAndLeavesNothing) {
    for (const qortest::CFailingFunction& function : qortest::FailingFunctions()) {
        TryCalls(function);
    }
}

INSTANTIATE_TEST_SUITE_P(Any, SystemCallFailure,
                         qortest::InRequests(qortest::RequestsWithSystemCalls()),
                         qortest::ParameterName);

}  // namespace
