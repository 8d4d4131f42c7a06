// Every allocation of a request fails, in the plug-in and in libqor_ComLib: loaded as a host loads
// them, from CreateLibIF on.
#include "InjectionFixture.h"

namespace {

class AllocationFailure : public qortest::CInjectionFixture {};

TEST_P(AllocationFailure, IsToldAndLeavesNothing) {
    TryAllocations();
    EXPECT_GT(Struck(), 10);
}

INSTANTIATE_TEST_SUITE_P(Any, AllocationFailure, qortest::InRequests(qortest::Requests().size()),
                         qortest::ParameterName);

}  // namespace
