// What the doctor says of the result files, as far as it looks at numbers only.
#include <gtest/gtest.h>

#include "doctor/Checks.h"

namespace {

using qorctl::doctor::EVerdict;
using qorctl::doctor::JudgeOwner;

TEST(DoctorOwnerTest, OwnerIsTheServersUser) {
    EXPECT_EQ(JudgeOwner(7, 7).verdict, EVerdict::OK);
    EXPECT_EQ(JudgeOwner(0, 7).verdict, EVerdict::WARN);
    EXPECT_EQ(JudgeOwner(8, 7).verdict, EVerdict::FAIL);
    EXPECT_EQ(JudgeOwner(8, 0).verdict, EVerdict::FAIL);
}

}  // namespace
