#include "host/records/record_compare.h"

#include "host/records/record_members.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QVariant>

#include <bit>
#include <concepts>

namespace host {

template <>
inline constexpr auto membersOf<DeviceState> = std::tuple{
    NamedMember{"modem_id", &DeviceState::modem_id},
    NamedMember{"values", &DeviceState::values},
};
template <>
inline constexpr auto membersOf<DeviceQueues> = std::tuple{
    NamedMember{"modem_id", &DeviceQueues::modem_id},
    NamedMember{"queues", &DeviceQueues::queues},
};
template <>
inline constexpr auto membersOf<DeviceEntry> = std::tuple{
    NamedMember{"modem_id", &DeviceEntry::modem_id},
    NamedMember{"clients", &DeviceEntry::clients},
    NamedMember{"protocol", &DeviceEntry::protocol},
    NamedMember{"hw_type", &DeviceEntry::hw_type},
};

namespace {

template <std::integral Number>
QString toText(Number number) {
    return QString::number(number);
}
template <class Enumeration>
    requires std::is_enum_v<Enumeration>
QString toText(Enumeration value) {
    return QString::number(static_cast<int>(value));
}
QString toText(const QString& text) {
    return QLatin1Char('"') + text + QLatin1Char('"');
}
QString toText(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex()) + QStringLiteral(" (%1 bytes)").arg(bytes.size());
}
QString toText(const QJsonDocument& document) {
    return QString::fromUtf8(document.toJson(QJsonDocument::Compact));
}
QString toText(const QJsonObject& object) {
    return toText(QJsonDocument(object));
}
QString toText(const QDateTime& instant) {
    return instant.isValid() ? instant.toUTC().toString(Qt::ISODateWithMs)
                             : QStringLiteral("no time");
}
QString toText(const QVariant& value) {
    const auto number = value.type() == QVariant::Double
                            ? QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest)
                            : value.toString();
    return QString::fromLatin1(value.typeName()) + QLatin1Char(' ') + toText(number);
}
QString toText(const std::set<QString>& texts) {
    return QStringList(texts.begin(), texts.end()).join(QStringLiteral(", "));
}

template <class Member>
bool same(const Member& written, const Member& readBack) {
    return written == readBack;
}
/// QVariant converts before it compares, and takes nearly equal numbers for equal.
bool same(const QVariant& written, const QVariant& readBack) {
    if (written.userType() != readBack.userType()) {
        return false;
    }
    if (written.type() == QVariant::Double) {
        return std::bit_cast<quint64>(written.toDouble()) ==
               std::bit_cast<quint64>(readBack.toDouble());
    }
    return written == readBack;
}

QDateTime wholeSeconds(const QDateTime& instant) {
    return instant.isValid() ? QDateTime::fromSecsSinceEpoch(instant.toSecsSinceEpoch(), Qt::UTC)
                             : instant;
}

/// The record as the store gives it back: timestamps in whole seconds, a number as a double, the
/// host's own members, which are never stored, empty or 0.
template <class Record>
Record asStored(Record record) {
    if constexpr (requires { record.timestamp; }) {
        record.timestamp = wholeSeconds(record.timestamp);
    }
    if constexpr (requires { record.time_detected; }) {
        record.time_detected = wholeSeconds(record.time_detected);
        record.extra_value1 = 0;
        record.extra_value2 = 0;
    }
    if constexpr (requires { record.extra_text; }) {
        record.extra_text.clear();
    }
    if constexpr (requires { record.obis_code; }) {
        if (record.value.type() == QVariant::Int) {
            record.value = record.value.toDouble();
        }
    }
    return record;
}

/// Collects the members that differ, within records of records too.
class Differences {
public:
    template <class Member>
    void compare(const QString& name, const Member& written, const Member& readBack) {
        if (!same(written, readBack)) {
            add(name, toText(written), toText(readBack));
        }
    }

    template <HasMembers Record>
    void compare(const QString& name, const Record& written, const Record& readBack) {
        forEachMember(
            written, readBack, [&](std::string_view member, const auto& first, const auto& second) {
                compare(
                    join(name, QString::fromUtf8(member.data(), static_cast<int>(member.size()))),
                    first, second);
            });
    }

    template <HasMembers Record>
    void compare(const QString& name, const QMap<QString, Record>& written,
                 const QMap<QString, Record>& readBack) {
        if (written.keys() != readBack.keys()) {
            add(name, written.keys().join(QLatin1Char(' ')),
                readBack.keys().join(QLatin1Char(' ')));
            return;
        }
        for (auto each = written.begin(); each != written.end(); ++each) {
            compare(join(name, each.key()), each.value(), readBack[each.key()]);
        }
    }

    QStringList texts() const { return m_texts; }

private:
    void add(const QString& name, const QString& written, const QString& readBack) {
        m_texts.append(QStringLiteral("%1: wrote %2, got %3").arg(name, written, readBack));
    }

    static QString join(const QString& name, const QString& member) {
        return name.isEmpty() ? member : name + QLatin1Char('.') + member;
    }

    QStringList m_texts;
};

QString ofDevice(const QString& what, int device) {
    return what + QStringLiteral(" of device ") + QString::number(device);
}

QString at(const QDateTime& instant) {
    return QStringLiteral(" at ") + instant.toUTC().toString(Qt::ISODate);
}

} // namespace

template <class Record>
QStringList differences(const Record& written, const Record& readBack) {
    Differences all;
    all.compare(QString(), asStored(written), readBack);
    return all.texts();
}

template QStringList differences(const model::message&, const model::message&);
template QStringList differences(const model::dev_value&, const model::dev_value&);
template QStringList differences(const model::dev_event&, const model::dev_event&);
template QStringList differences(const model::dl_message&, const model::dl_message&);
template QStringList differences(const DeviceState&, const DeviceState&);
template QStringList differences(const DeviceQueues&, const DeviceQueues&);
template QStringList differences(const DeviceEntry&, const DeviceEntry&);

QString describe(const model::message& message) {
    return ofDevice(QStringLiteral("message %1").arg(message.unique_id), message.modem_id);
}
QString describe(const model::dev_value& value) {
    return ofDevice(QStringLiteral("value of ") + value.obis_code, value.modem_id) +
           at(value.timestamp);
}
QString describe(const model::dev_event& event) {
    return ofDevice(QStringLiteral("event ") + event.message, event.modem_id) + at(event.timestamp);
}
QString describe(const model::dl_message& command) {
    return ofDevice(QStringLiteral("command ") + command.db_id, command.modem_id);
}
QString describe(const DeviceState& state) {
    return ofDevice(QStringLiteral("state"), state.modem_id);
}
QString describe(const DeviceQueues& queues) {
    return ofDevice(QStringLiteral("downlink queues"), queues.modem_id);
}
QString describe(const DeviceEntry& entry) {
    return ofDevice(QStringLiteral("registry entry"), entry.modem_id);
}

} // namespace host
