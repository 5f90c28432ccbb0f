#include "host/console.h"
#include "host/progress.h"

#include "tests/support/qt_literals.h"

#include <QRegularExpression>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using host::Console;
using namespace test_support::literals;

TEST(PlainConsole, AlignsTheColumnsOfATable) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    console.table({{"Device"_q}, {"Payload"_q, true}},
                  {{"00086426"_q, "144 bytes"_q}, {"1"_q, "9 bytes"_q}});
    EXPECT_EQ(stream.str(), " Device   │   Payload\n"
                            "──────────┼───────────\n"
                            " 00086426 │ 144 bytes\n"
                            " 1        │   9 bytes\n");
}

TEST(PlainConsole, DoesNotCutATableThatIsWiderThanATerminal) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    console.table({{"Text"_q}}, {{QString(300, u'x')}});
    EXPECT_NE(stream.str().find(std::string(300, 'x')), std::string::npos);
}

TEST(PlainConsole, PrintsProgressAtEachQuarter) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    {
        auto progress = console.progress("Saving"_q, 10);
        for (int step = 0; step < 10; ++step) {
            progress.advance();
        }
    }
    EXPECT_EQ(stream.str(), "Saving: 3 of 10\n"
                            "Saving: 5 of 10\n"
                            "Saving: 8 of 10\n"
                            "Saving: 10 of 10\n");
}

TEST(PlainConsole, PrintsProgressOnceForAStepOverSeveralQuarters) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    console.progress("Saving"_q, 10).advance(10);
    EXPECT_EQ(stream.str(), "Saving: 10 of 10\n");
}

TEST(Console, ShowsControlCharactersOfATableAsText) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    console.table({{"Text"_q}}, {{"red\x1b[31m\n"_q}});
    EXPECT_NE(stream.str().find(R"( red\x1b[31m\x0a)"), std::string::npos);
}

TEST(TerminalConsole, ShowsARowAsABlockWhereTheTableIsTooWide) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Terminal, 12);
    console.table({{"Device"_q, true}, {"Tag"_q}}, {{"1"_q, "a"_q}, {"2"_q, "b"_q}});
    EXPECT_EQ(stream.str(), "Device  1\nTag     a\n\nDevice  2\nTag     b\n\n");
}

TEST(TerminalConsole, ShowsATableThatJustFits) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Terminal, 14);
    console.table({{"Device"_q, true}, {"Tag"_q}}, {{"1"_q, "a"_q}});
    EXPECT_NE(stream.str().find("│"), std::string::npos);
}

TEST(PlainConsole, PrintsAHeadingAfterAnEmptyLine) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    console.heading("Accounting"_q);
    EXPECT_EQ(stream.str(), "\nAccounting\n");
}

TEST(TerminalConsole, RedrawsTheProgressBarAndEndsItsLine) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Terminal);
    {
        auto progress = console.progress("Saving"_q, 2);
        progress.advance();
        progress.advance();
    }
    const auto text = stream.str();
    EXPECT_NE(text.find("\rSaving "), std::string::npos);
    EXPECT_NE(text.find("1 of 2"), std::string::npos);
    EXPECT_NE(text.find("2 of 2"), std::string::npos);
    EXPECT_EQ(text.back(), '\n');
}

TEST(TerminalConsole, KeepsTheProgressBarOnOneLine) {
    for (const int width : {20, 40, 100}) {
        std::ostringstream stream;
        Console console(stream, Console::Kind::Terminal, width);
        {
            auto progress = console.progress("Storing messages"_q, 51);
            progress.advance(51);
        }
        const auto line = QString::fromStdString(stream.str())
                              .remove(QRegularExpression("\x1b\\[[0-9;]*[A-Za-z]"_q))
                              .trimmed();
        EXPECT_LT(line.size(), width);
        EXPECT_TRUE(line.startsWith("Storing m"_q)) << line.toStdString();
    }
}

TEST(PlainConsole, ShowsTheFirstTwentyComplaintsAndTheNumberOfTheRest) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    QStringList complaints;
    for (int number = 1; number <= 23; ++number) {
        complaints.append(QString::number(number));
    }
    console.complaints(complaints);
    EXPECT_EQ(stream.str(), "1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13\n14\n15\n16\n17\n18\n19\n"
                            "20\n… and 3 more\n");
}

TEST(PlainConsole, ShowsTwentyComplaintsWithoutANumberOfTheRest) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    console.complaints(QStringList(QVector<QString>(20, "x"_q).toList()));
    EXPECT_EQ(stream.str().find("more"), std::string::npos);
}

TEST(PlainConsole, PrintsNothingForNoComplaints) {
    std::ostringstream stream;
    Console console(stream, Console::Kind::Plain);
    console.complaints({});
    EXPECT_EQ(stream.str(), "");
}

} // namespace
