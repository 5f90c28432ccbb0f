#include "host/input/record_file.h"

#include "host/failure.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>

namespace host {

namespace {

QJsonObject parseObject(const QByteArray& line) {
    QJsonParseError error{};
    const auto document = QJsonDocument::fromJson(line, &error);
    if (error.error != QJsonParseError::NoError) {
        throw Rejection{QStringLiteral("not JSON: %1 at byte %2")
                            .arg(error.errorString())
                            .arg(error.offset + 1)};
    }
    if (!document.isObject()) {
        throw Rejection{QStringLiteral("not a JSON object")};
    }
    return document.object();
}

} // namespace

std::vector<RejectedLine> readJsonLines(QIODevice& input,
                                        const std::function<void(const QJsonObject&, int)>& parse) {
    std::vector<RejectedLine> rejected;
    for (int lineNumber = 1; !input.atEnd(); ++lineNumber) {
        const auto line = input.readLine();
        if (line.trimmed().isEmpty()) {
            continue;
        }
        try {
            parse(parseObject(line), lineNumber);
        } catch (const Rejection& rejection) {
            rejected.push_back({lineNumber, rejection.reason});
        }
    }
    return rejected;
}

std::unique_ptr<QIODevice> openInput(const QString& fileName) {
    auto input = std::make_unique<QFile>(fileName);
    if (!input->open(QIODevice::ReadOnly)) {
        throw Failure(QStringLiteral("cannot read the input file %1: %2")
                          .arg(fileName, input->errorString()));
    }
    return input;
}

void reportRejected(const QString& fileName, const std::vector<RejectedLine>& rejected,
                    Console& console) {
    for (const auto& line : rejected) {
        console.line(QStringLiteral("%1, line %2 rejected: %3")
                         .arg(fileName)
                         .arg(line.lineNumber)
                         .arg(line.reason));
    }
}

void refuseEmptyFile(const QString& fileName) {
    throw Failure(QStringLiteral("the input file %1 holds no record").arg(fileName));
}

} // namespace host
