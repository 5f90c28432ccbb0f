#include "tests/soak/record_kinds.h"

#include "host/records/record_compare.h"
#include "interfaces/idl_app_message_repository.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "tests/soak/record_kind.h"
#include "tests/support/qt_literals.h"

namespace soak {

using namespace test_support::literals;

namespace {

std::string urlOf(const QJsonObject& settings) {
    return settings.value("url"_q).toString().toStdString();
}

class Uplinks final : public RecordKind {
public:
    Uplinks(interfaces::IDatabaseFactory& factory, const QJsonObject& settings)
        : RecordKind(urlOf(settings), "ul_messages", "_id"),
          m_database(factory.CreateMessageDatabaseInst(settings, nullptr)) {}

    QString name() const override { return "uplink messages"_q; }

protected:
    void store(const std::vector<int>& numbers) override {
        m_database->UlMessageRepository()->SaveMessage(record(numbers.front()));
    }

    int numberIn(const std::string& text) const override { return std::stoi(text, nullptr, 16); }

    void readDevice(int device, const Seen& seen) override {
        model::filter_roll filter;
        filter.modem_ids = {device};
        filter.begin = timeOf(0);
        filter.end = endOfTime();
        const auto found = m_database->UlMessageRepository()->GetMessages(filter);
        for (const auto& message : (*found)[device]) {
            const int number = static_cast<int>(message.unique_id);
            seen(number, host::differences(record(number), message));
        }
    }

private:
    static model::message record(int number) {
        model::message message;
        message.modem_id = deviceOf(number);
        message.station_id = number % 7;
        message.ttl = endOfTime();
        message.timestamp = timeOf(number);
        message.time_detected = timeOf(number - 1);
        message.phy = "868"_q;
        message.snr = -number % 20;
        message.rssi = -number % 120;
        message.tag = "reading"_q;
        message.unique_id = static_cast<quint64>(number);
        message.data = QJsonDocument{QJsonObject{{"number"_q, number}}};
        message.extended_data = QJsonDocument{QJsonObject{{"of"_q, "soak"_q}}};
        message.parse_status = "ok"_q;
        message.payload = QByteArray::number(number);
        return message;
    }

    std::shared_ptr<interfaces::IMessagesDatabase> m_database;
};

class Values final : public RecordKind {
public:
    Values(interfaces::IDatabaseFactory& factory, const QJsonObject& settings)
        : RecordKind(urlOf(settings), "eav_values", "message_id", 5),
          m_database(factory.CreateEavDatabaseInst(settings, nullptr)) {}

    QString name() const override { return "values, lists of 5"_q; }

protected:
    void store(const std::vector<int>& numbers) override {
        std::list<model::dev_value> values;
        for (const int number : numbers) {
            values.push_back(record(number));
        }
        m_database->EAVRepository()->SaveValues(values);
    }

    void readDevice(int device, const Seen& seen) override {
        model::filter_eav filter;
        filter.modem_ids = {device};
        filter.begin = timeOf(0);
        filter.end = endOfTime();
        const auto found = m_database->EAVRepository()->GetValues(filter);
        for (const auto& value : (*found)[device]) {
            const int number = value.message_id.toInt();
            seen(number, host::differences(record(number), value));
        }
    }

private:
    static model::dev_value record(int number) {
        model::dev_value value;
        value.modem_id = deviceOf(number);
        value.timestamp = timeOf(number);
        value.obis_code = "1-0:1.8.%1"_q.arg(number % 5);
        value.tag = "energy"_q;
        value.extended_data = QJsonDocument{QJsonObject{{"number"_q, number}}};
        value.value = number + 0.5;
        value.message_id = QString::number(number);
        value.ttl = endOfTime();
        return value;
    }

    std::shared_ptr<interfaces::IEAVDatabase> m_database;
};

class Events final : public RecordKind {
public:
    Events(interfaces::IDatabaseFactory& factory, const QJsonObject& settings)
        : RecordKind(urlOf(settings), "eav_events", "message_id"),
          m_database(factory.CreateEavDatabaseInst(settings, nullptr)) {}

    QString name() const override { return "events"_q; }

protected:
    void store(const std::vector<int>& numbers) override {
        m_database->EAVRepository()->SaveEvents({record(numbers.front())});
    }

    void readDevice(int device, const Seen& seen) override {
        model::filter_eav filter;
        filter.modem_ids = {device};
        filter.begin = timeOf(0);
        filter.end = endOfTime();
        const auto found = m_database->EAVRepository()->GetEvents(filter);
        for (const auto& event : (*found)[device]) {
            const int number = event.message_id.toInt();
            seen(number, host::differences(record(number), event));
        }
    }

private:
    static model::dev_event record(int number) {
        model::dev_event event;
        event.modem_id = deviceOf(number);
        event.timestamp = timeOf(number);
        event.event_code = number % 400;
        event.message_id = QString::number(number);
        event.message = "cover opened"_q;
        event.extended_data = QJsonDocument{QJsonObject{{"number"_q, number}}};
        event.parameter = number;
        event.ttl = endOfTime();
        return event;
    }

    std::shared_ptr<interfaces::IEAVDatabase> m_database;
};

class Downlinks final : public RecordKind {
public:
    Downlinks(interfaces::IDatabaseFactory& factory, const QJsonObject& settings)
        : RecordKind(urlOf(settings), "dl_messages", "api_key"),
          m_database(factory.CreateMessageDatabaseInst(settings, nullptr)) {}

    QString name() const override { return "downlink commands"_q; }

protected:
    void store(const std::vector<int>& numbers) override {
        model::dl_message command = record(numbers.front());
        m_database->DlMessageRepository()->SaveMessage(command);
    }

    void readDevice(int device, const Seen& seen) override {
        model::filter_dl filter;
        filter.modem_ids = {device};
        filter.begin = timeOf(0);
        filter.end = endOfTime();
        const auto found = m_database->DlMessageRepository()->GetCommands(filter);
        for (const auto& command : (*found)[device]) {
            const int number = command.api_key.toInt();
            model::dl_message expected = record(number);
            expected.db_id = command.db_id; // the store gives it
            seen(number, host::differences(expected, command));
        }
    }

private:
    static model::dl_message record(int number) {
        model::dl_message command;
        command.f_ack = number % 2;
        command.modem_id = deviceOf(number);
        command.timeout = number;
        command.ttl = endOfTime();
        command.timestamp = timeOf(number);
        command.api_key = QString::number(number);
        command.data = QJsonObject{{"number"_q, number}};
        command.payload = QByteArray::number(number);
        return command;
    }

    std::shared_ptr<interfaces::IMessagesDatabase> m_database;
};

} // namespace

std::vector<std::unique_ptr<Kind>> recordKinds(interfaces::IDatabaseFactory& factory,
                                               const QJsonObject& settings) {
    std::vector<std::unique_ptr<Kind>> kinds;
    kinds.push_back(std::make_unique<Uplinks>(factory, settings));
    kinds.push_back(std::make_unique<Values>(factory, settings));
    kinds.push_back(std::make_unique<Events>(factory, settings));
    kinds.push_back(std::make_unique<Downlinks>(factory, settings));
    return kinds;
}

} // namespace soak
