#pragma once

#include "tests/support/log_capture.h"

#include <gmock/gmock.h>

#include <QRegularExpression>

/// That the captured lines are one debug line of the category "default": the quoted text with some
/// number of milliseconds in place of "%1".
MATCHER_P(IsOneLine, text, "") {
    const QStringList parts = QString::fromUtf8(text).split(QStringLiteral("%1"));
    const QRegularExpression quoted{
        QStringLiteral("\\A\"%1[0-9]+%2\"\\z")
            .arg(QRegularExpression::escape(parts.at(0)), QRegularExpression::escape(parts.at(1)))};
    return arg.size() == 1 && arg.front() == test_support::debugLine(arg.front().text) &&
           quoted.match(arg.front().text).hasMatch();
}
