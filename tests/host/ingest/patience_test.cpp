#include "host/ingest/patience.h"

#include "host/console.h"
#include "host/failure.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gmock/gmock.h>

#include <sstream>
#include <stdexcept>
#include <system_error>

namespace {

using namespace test_support::literals;
using host::Patience;
using Outcome = Patience::Outcome;

class PatienceWith : public testing::Test {
protected:
    void ask() {
        if (questionsUnanswered > 0) {
            --questionsUnanswered;
            throw std::runtime_error("nobody there");
        }
    }

    /// A call that throws so many times.
    std::function<void()> failing(int times) {
        return [this, times] {
            if (++calls <= times) {
                throw std::runtime_error("broken");
            }
        };
    }

    int questionsUnanswered = 0;
    int calls = 0;
    std::ostringstream remarks;
    host::Console console{remarks, host::Console::Kind::Plain};
    Patience patience{"server"_q, [this] { ask(); }, console};
};

TEST_F(PatienceWith, AServerThatIsThereMakesTheCallOnce) {
    EXPECT_EQ(patience.attempt(failing(0)), Outcome::Done);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(remarks.str(), "");
}

TEST_F(PatienceWith, AFaultThatIsOverMakesTheCallAgain) {
    EXPECT_EQ(patience.attempt(failing(1)), Outcome::Done);
    EXPECT_EQ(calls, 2);
}

TEST_F(PatienceWith, AServerThatIsThereCountsTheSecondFaultAsARefusal) {
    EXPECT_EQ(patience.attempt(failing(9)), Outcome::Refused);
    EXPECT_EQ(calls, 2);
    EXPECT_EQ(patience.reason(), "broken"_q);
}

TEST_F(PatienceWith, AServerThatIsAwayWaitsAndSaysSoOnce) {
    questionsUnanswered = 2;
    EXPECT_EQ(patience.attempt(failing(1)), Outcome::Done);
    EXPECT_EQ(calls, 2);
    EXPECT_THAT(remarks.str(),
                testing::MatchesRegex("server does not answer, waiting for it: broken\n"
                                      "server answers again after [0-9]+ s\n"));
}

TEST_F(PatienceWith, AFaultOfTheServerDoesNotCountAgainstTheRecord) {
    questionsUnanswered = 1;
    EXPECT_EQ(patience.attempt(failing(2)), Outcome::Done);
    EXPECT_EQ(calls, 3);
}

TEST_F(PatienceWith, AKeyThatIsTakenKnowsASecondCopy) {
    const auto duplicate = [] {
        throw std::system_error(11000, std::generic_category(), "duplicate key");
    };
    EXPECT_EQ(patience.attempt(duplicate), Outcome::SecondCopy);
}

TEST_F(PatienceWith, AQuestionThatIsRefusedFails) {
    EXPECT_THROW(patience.require("looking"_q, failing(9)), host::Failure);
}

} // namespace
