#include "mongo/operation_log.h"

#include "tests/mongo/timed_line.h"

#include <thread>

namespace {

/// Comes back when the clock shows that this many milliseconds have passed.
void spend(qint64 msecs) {
    const qint64 end = QDateTime::currentMSecsSinceEpoch() + msecs;
    while (QDateTime::currentMSecsSinceEpoch() < end) {
        std::this_thread::yield();
    }
}

TEST(OperationLog, WritesNothingByItself) {
    const test_support::log_capture log;
    {
        const mongo::operation_log operation;
    }

    EXPECT_TRUE(log.lines().empty());
}

TEST(OperationLog, TellsTheMillisecondsSinceItsConstruction) {
    const test_support::log_capture log;
    spend(15);
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    const mongo::operation_log operation;
    spend(30);
    operation.write(QStringLiteral("It took %1ms, it did"));
    const qint64 after = QDateTime::currentMSecsSinceEpoch();

    ASSERT_THAT(log.lines(), IsOneLine("It took %1ms, it did"));
    const auto duration = durationIn(log.lines().front().text, "It took %1ms, it did");
    EXPECT_GE(duration, 30);
    EXPECT_LE(duration, after - before);
}

} // namespace
