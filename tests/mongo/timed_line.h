#pragma once

#include "tests/support/log_capture.h"

#include <gmock/gmock.h>

#include <QDateTime>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

#include <optional>

/// The milliseconds that such a line tells: quoted text with a number in place of "%1".
inline std::optional<qint64> durationIn(const QString& line, const char* text) {
    const QStringList parts = QString::fromUtf8(text).split(QStringLiteral("%1"));
    const QRegularExpression quoted{
        QStringLiteral("\\A\"%1([0-9]+)%2\"\\z")
            .arg(QRegularExpression::escape(parts.at(0)), QRegularExpression::escape(parts.at(1)))};
    const auto match = quoted.match(line);
    return match.hasMatch() ? std::optional{match.captured(1).toLongLong()} : std::nullopt;
}

/// How long the running test has been running, by the clock that the operations measure with.
inline qint64 msecsOfThisTest() {
    const auto* test = testing::UnitTest::GetInstance()->current_test_info();
    return QDateTime::currentMSecsSinceEpoch() - test->result()->start_timestamp();
}

/// That the captured lines are one debug line of the category "default": the quoted text with the
/// milliseconds in place of "%1", no more of them than the test has taken.
MATCHER_P(IsOneLine, text, "") {
    if (arg.size() != 1 || arg.front() != test_support::debugLine(arg.front().text)) {
        return false;
    }
    const auto duration = durationIn(arg.front().text, text);
    return duration && *duration <= msecsOfThisTest();
}
