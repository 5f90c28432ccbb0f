#pragma once

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
    /// All lines but the blank ones.
    int linesRead = 0;
};

/// Hands each line's JSON object and line number to `parse`. A line that is no JSON object, or for
/// which `parse` throws a Rejection, is rejected and the rest is read; blank lines are passed over.
/// `input` must be open; reads it to its end.
void readJsonLines(QIODevice& input, const std::function<void(const QJsonObject&, int)>& parse,
                   std::vector<RejectedLine>& rejected, int& linesRead);

/// As readJsonLines, with `parse` giving the line's record.
template <class Record>
RecordFile<Record> readRecords(QIODevice& input,
                               const std::function<Record(const QJsonObject&, int)>& parse) {
    RecordFile<Record> file;
    readJsonLines(
        input,
        [&](const QJsonObject& object, int lineNumber) {
            file.records.push_back(parse(object, lineNumber));
        },
        file.rejected, file.linesRead);
    return file;
}

} // namespace host
