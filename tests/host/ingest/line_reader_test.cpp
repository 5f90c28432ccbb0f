#include "host/ingest/line_reader.h"

#include "host/failure.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QFile>
#include <QStringList>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using host::LineReader;
using Next = LineReader::Next;

class LineReaderOf : public testing::Test {
protected:
    QString write(const QByteArray& text, QIODevice::OpenMode mode = QIODevice::WriteOnly) {
        QFile file(folder.filePath("lines"_q));
        EXPECT_TRUE(file.open(mode));
        file.write(text);
        return file.fileName();
    }

    /// All lines, with their numbers.
    static QStringList linesOf(LineReader& reader) {
        QStringList lines;
        LineReader::Line line;
        while (reader.next(line, std::chrono::milliseconds(0)) == Next::Line) {
            lines.append(QString::number(line.number) + QLatin1Char(' ') +
                         QString::fromUtf8(line.text));
        }
        return lines;
    }

    QTemporaryDir folder;
};

TEST_F(LineReaderOf, AFileGivesItsLines) {
    LineReader reader(write("a\n\nb\n"), false);
    EXPECT_EQ(linesOf(reader), (QStringList{"1 a"_q, "2 "_q, "3 b"_q}));
    EXPECT_EQ(reader.bytesRead(), 5);
    EXPECT_EQ(reader.size(), 5);
}

TEST_F(LineReaderOf, AFileTakesTheLastLineWithoutAnEnd) {
    LineReader reader(write("a\nb"), false);
    EXPECT_EQ(linesOf(reader), (QStringList{"1 a"_q, "2 b"_q}));
}

TEST_F(LineReaderOf, AFollowedFileWaitsForTheEndOfALine) {
    LineReader reader(write("a\nb"), true);
    EXPECT_EQ(linesOf(reader), QStringList("1 a"_q));
    write("c\nd\n", QIODevice::Append);
    EXPECT_EQ(linesOf(reader), (QStringList{"2 bc"_q, "3 d"_q}));
}

TEST_F(LineReaderOf, AFollowedFileBeginsAnewWhereItWasCut) {
    LineReader reader(write("aaaa\nbbbb"), true);
    EXPECT_EQ(linesOf(reader), QStringList("1 aaaa"_q));
    write("c\n");
    EXPECT_EQ(linesOf(reader), QStringList("1 c"_q));
}

TEST_F(LineReaderOf, ALongLineKeepsItsBeginningOnly) {
    const QByteArray longest(LineReader::maxBytes, 'x');
    for (const int more : {1, 70'000, 3'000'000}) {
        LineReader reader(write(longest + "\n" + longest + QByteArray(more, 'y') + "\nz\n"), false);
        LineReader::Line line;
        ASSERT_EQ(reader.next(line, {}), Next::Line);
        EXPECT_FALSE(line.cut);
        EXPECT_EQ(line.text.size(), LineReader::maxBytes);
        ASSERT_EQ(reader.next(line, {}), Next::Line);
        EXPECT_TRUE(line.cut) << more;
        EXPECT_TRUE(line.text == longest);
        ASSERT_EQ(reader.next(line, {}), Next::Line);
        EXPECT_FALSE(line.cut);
        EXPECT_EQ(line.text, "z");
        EXPECT_EQ(reader.bytesRead(), reader.size());
    }
}

TEST_F(LineReaderOf, AFileThatIsNotThereSaysSo) {
    EXPECT_THROW(LineReader("/nonexistent"_q, false), host::Failure);
}

} // namespace
