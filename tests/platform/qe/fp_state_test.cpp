// Rounding stands for the whole floating-point environment: it can be seen without raising anything.
#include "platform/qe/fp_state.hpp"

#include <gtest/gtest.h>

#include <cfenv>
#include <thread>

namespace {

TEST(fp_state, keeps_the_callers_state_around_foreign_code) {
    std::fesetround(FE_TOWARDZERO);
    QE::set_fp_state(true);
    EXPECT_EQ(std::fegetround(), FE_TOWARDZERO);
    QE::set_fp_state(false);
    EXPECT_EQ(std::fegetround(), FE_TONEAREST);
    // What the foreign code leaves behind is not taken for the caller's state.
    std::fesetround(FE_UPWARD);
    QE::set_fp_state(false);
    EXPECT_EQ(std::fegetround(), FE_UPWARD);
    int rounding_elsewhere = -1;
    std::thread([&] {
        std::fesetround(FE_DOWNWARD);
        QE::set_fp_state(true);
        rounding_elsewhere = std::fegetround();
    }).join();
    EXPECT_EQ(rounding_elsewhere, FE_DOWNWARD);
    QE::set_fp_state(true);
    EXPECT_EQ(std::fegetround(), FE_TOWARDZERO);
    std::fesetround(FE_TONEAREST);
}

}  // namespace
