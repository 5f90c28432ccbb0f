#include "host/input_files.h"

#include "host/failure.h"

#include <QFile>

namespace host {

namespace {

template <class Record, class Read>
RecordFile<Record> openRecords(const QString& fileName, Console& console, Read read) {
    QFile input(fileName);
    if (!input.open(QIODevice::ReadOnly)) {
        throw Failure(
            QStringLiteral("cannot read the input file %1: %2").arg(fileName, input.errorString()));
    }
    RecordFile<Record> file = read(input);
    for (const auto& rejected : file.rejected) {
        console.line(QStringLiteral("%1, line %2 rejected: %3")
                         .arg(fileName)
                         .arg(rejected.lineNumber)
                         .arg(rejected.reason));
    }
    if (file.records.empty()) {
        throw Failure(QStringLiteral("the input file %1 holds no record").arg(fileName));
    }
    return file;
}

} // namespace

TelegramFile openTelegrams(const QString& fileName, Console& console) {
    return openRecords<Telegram>(fileName, console, readTelegrams);
}

MeterReadingFile openMeterReadings(const QString& fileName, Console& console) {
    return openRecords<MeterReading>(fileName, console, readMeterReadings);
}

} // namespace host
