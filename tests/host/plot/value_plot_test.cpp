#include "host/plot/value_plot.h"

#include "host/failure.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

model::dev_value value(qint64 secs, const QVariant& value) {
    model::dev_value result;
    result.timestamp = QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
    result.value = value;
    return result;
}

QByteArray contentsOf(const QString& fileName) {
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

const std::list<model::dev_value> newestFirst = {value(1'553'436'323, 0.1), value(1'553'436'322, 2),
                                                 value(1'553'436'321, "text"_q)};

TEST(ValuePlot, DrawsNumbersOldestFirstAndLeavesTextOut) {
    const auto script = host::plotScript(newestFirst, {"t"_q, "v"_q, "f"_q});
    EXPECT_TRUE(script.startsWith("$values << END_OF_VALUES\n"
                                  "1553436322 2\n"
                                  "1553436323 0.1\n"
                                  "END_OF_VALUES\n"_q))
        << script.toStdString();
}

TEST(ValuePlot, NamesTheDayOnTheTimeAxis) {
    const auto script = host::plotScript(newestFirst, {"t"_q, "v"_q, "f"_q});
    EXPECT_TRUE(script.contains("set xlabel 'Time (UTC), 2019-03-24'\n"_q));
}

TEST(ValuePlot, WritesDatesOnTheTimeAxisOfSeveralDays) {
    const auto script =
        host::plotScript({value(1'553'536'000, 1), value(1'553'436'000, 2)}, {"t"_q, "v"_q, "f"_q});
    EXPECT_TRUE(script.contains("set xlabel 'Time (UTC)'\n"_q));
    EXPECT_TRUE(script.contains("%Y-%m-%d"_q));
}

TEST(ValuePlot, KeepsQuotesInNamesFromEndingTheText) {
    const auto script = host::plotScript(newestFirst, {"a'b\nc"_q, "v"_q, "f"_q});
    EXPECT_TRUE(script.contains("set title 'a''bc' noenhanced\n"_q));
}

TEST(ValuePlot, WritesSvgWithTitleUnitAndTimesAndPng) {
    const QTemporaryDir folder;
    const auto base = folder.filePath("it's"_q);
    host::plotValues(newestFirst, {"Power"_q, "1-0:1.7.0 (kW)"_q, base});
    const auto svg = contentsOf(base + ".svg"_q);
    EXPECT_TRUE(svg.contains("<svg"));
    EXPECT_TRUE(svg.contains("Power"));
    EXPECT_TRUE(svg.contains("1-0:1.7.0 (kW)"));
    EXPECT_TRUE(svg.contains("14:05:22"));
    EXPECT_TRUE(contentsOf(base + ".png"_q).startsWith("\x89PNG\r\n"));
}

TEST(ValuePlot, ReportsAFileThatCannotBeWritten) {
    EXPECT_THROW(host::plotValues(newestFirst, {"t"_q, "v"_q, "/nonexistent/power"_q}),
                 host::Failure);
}

TEST(ValuePlot, RefusesValuesWithoutNumbers) {
    EXPECT_THROW(host::plotValues({value(1, "text"_q)}, {"t"_q, "v"_q, "f"_q}), host::Failure);
}

} // namespace
