#include "host/input/record_file.h"

#include <QJsonDocument>
#include <QJsonParseError>

namespace host {

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

} // namespace host
