#include "host/mongo_log.h"

#include <QByteArray>
#include <QLoggingCategory>
#include <QString>

namespace host {

namespace {

Q_LOGGING_CATEGORY(mongodb, "mongodb")

QByteArray bytes(bsoncxx::v1::stdx::string_view text) {
    return {text.data(), static_cast<int>(text.size())};
}

} // namespace

void MongoLog::operator()(mongocxx::v1::log_level level, bsoncxx::v1::stdx::string_view domain,
                          bsoncxx::v1::stdx::string_view message) noexcept {
    using enum mongocxx::v1::log_level;
    const QByteArray text = bytes(domain) + ": " + bytes(message);
    switch (level) {
    case k_error:
    case k_critical:
        qCCritical(mongodb, "%s", text.constData());
        break;
    case k_warning:
        qCWarning(mongodb, "%s", text.constData());
        break;
    case k_message:
    case k_info:
        qCInfo(mongodb, "%s", text.constData());
        break;
    default:
        qCDebug(mongodb, "%s", text.constData());
    }
}

} // namespace host
