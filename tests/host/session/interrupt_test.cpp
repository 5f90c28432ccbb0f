#include "host/session/interrupt.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>

namespace {

using host::Interrupt;

class InterruptBy : public testing::TestWithParam<int> {};

TEST_P(InterruptBy, IsNotedAndEndsNothing) {
    const Interrupt interrupt;
    EXPECT_FALSE(Interrupt::requested());
    std::raise(GetParam());
    EXPECT_TRUE(Interrupt::requested());
}

TEST_P(InterruptBy, TheSecondTimeEndsTheProgram) {
    EXPECT_EXIT(
        {
            const Interrupt interrupt;
            std::raise(GetParam());
            std::raise(GetParam());
            std::_Exit(EXIT_SUCCESS);
        },
        testing::KilledBySignal(GetParam()), "");
}

TEST_P(InterruptBy, EndsTheProgramWhenTheWorkIsDone) {
    EXPECT_EXIT(
        {
            {
                const Interrupt interrupt;
            }
            std::raise(GetParam());
            std::_Exit(EXIT_SUCCESS);
        },
        testing::KilledBySignal(GetParam()), "");
}

TEST_P(InterruptBy, IsForgottenByTheNextWork) {
    {
        const Interrupt interrupt;
        std::raise(GetParam());
    }
    const Interrupt interrupt;
    EXPECT_FALSE(Interrupt::requested());
}

INSTANTIATE_TEST_SUITE_P(Signals, InterruptBy, testing::Values(SIGINT, SIGTERM));

} // namespace
