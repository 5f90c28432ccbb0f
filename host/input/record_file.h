#pragma once

#include "host/console.h"
#include "host/failure.h"

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QJsonObject>
#include <QString>

#include <functional>
#include <vector>

namespace host {

/// A line of an input file that holds no record, and why.
struct RejectedLine {
    /// Counted from 1.
    int lineNumber = 0;
    QString reason;
};

/// Thrown by the parser of a record: why the line holds none.
struct Rejection {
    QString reason;
};

/// What a file with one record a line held.
template <class Record>
struct RecordFile {
    std::vector<Record> records;
    std::vector<RejectedLine> rejected;
    /// For messages; empty if the lines are from no file.
    QString name;
};

/// The JSON object of a line. Throws Rejection if it is anything else.
QJsonObject parseObject(const QByteArray& line);

/// Hands each line's JSON object and line number to `parse` and gives the lines that were rejected:
/// those that are no JSON object and those for which `parse` throws a Rejection. Blank lines are
/// passed over. `input` must be open; reads it to its end.
std::vector<RejectedLine> readJsonLines(QIODevice& input,
                                        const std::function<void(const QJsonObject&, int)>& parse);

/// As readJsonLines, with `parse` giving the line's record.
template <class Parse>
auto readRecords(QIODevice& input, Parse parse) {
    RecordFile<decltype(parse(QJsonObject(), 0))> file;
    file.rejected = readJsonLines(input, [&](const QJsonObject& object, int lineNumber) {
        file.records.push_back(parse(object, lineNumber));
    });
    return file;
}

/// Reads a file by `read` and reports each rejected line. Throws Failure, naming the file, if it
/// cannot be read or holds no record at all.
template <class Record>
RecordFile<Record> openRecords(const QString& fileName, RecordFile<Record> (*read)(QIODevice&),
                               Console& console) {
    QFile input(fileName);
    if (!input.open(QIODevice::ReadOnly)) {
        throw Failure(
            QStringLiteral("cannot read the input file %1: %2").arg(fileName, input.errorString()));
    }
    auto file = read(input);
    file.name = fileName;
    for (const auto& [lineNumber, reason] : file.rejected) {
        console.line(
            QStringLiteral("%1, line %2 rejected: %3").arg(fileName).arg(lineNumber).arg(reason));
    }
    if (file.records.empty()) {
        throw Failure(QStringLiteral("the input file %1 holds no record").arg(fileName));
    }
    return file;
}

} // namespace host
