#pragma once

#include "interfaces/idatabase_factory.h"
#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_database.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/imessages_database.h"
#include "interfaces/iul_app_message_repository.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/contract/redis_commands.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/record_samples.h"

#include <gmock/gmock.h>

#include <random>
#include <string>

namespace test_support {

using namespace literals;

/// One object of each kind that the factory makes, used for one device as a host's worker uses
/// them: from one thread at a time.
class one_of_each {
public:
    one_of_each(interfaces::IDatabaseFactory* factory, const QJsonObject& settings, int device)
        : m_device(device), m_messages(factory->CreateMessageDatabaseInst(settings, nullptr)),
          m_eav(factory->CreateEavDatabaseInst(settings, nullptr)),
          m_state(factory->CreateDriverStateInst(settings, nullptr)),
          m_clients(factory->CreateClientDatabaseInst(settings, nullptr)) {
        m_state->SetPrefix("kelvro-each"_q);
    }

    /// Stores the device's `number`-th record of each kind, counted from 1, each with a content of
    /// its own; the state and the queue are replaced.
    void store(int number) {
        model::message message = sampleMessage();
        message.modem_id = m_device;
        message.ttl = in2100();
        message.unique_id = static_cast<quint64>(m_device) * 1000 + static_cast<quint64>(number);
        message.data = QJsonDocument{content(number)};
        m_messages->UlMessageRepository()->SaveMessage(message);

        model::dl_message command = sampleCommand();
        command.modem_id = m_device;
        command.ttl = in2100();
        command.status = model::dl_message::dl_status::PENDING;
        command.data = content(number);
        m_messages->DlMessageRepository()->SaveMessage(command);
        m_messages->DlMessageRepository()->AckCommand(command.db_id);
        EXPECT_THROW(m_messages->DlMessageRepository()->GetById("123"_q), QString);

        model::dev_value value = sampleValue();
        value.modem_id = m_device;
        value.ttl = in2100();
        value.value = number + 0.5;
        value.extended_data = QJsonDocument{content(number)};
        m_eav->EAVRepository()->SaveValues({value});

        model::dev_event event = sampleEvent();
        event.modem_id = m_device;
        event.ttl = in2100();
        event.extended_data = QJsonDocument{content(number)};
        m_eav->EAVRepository()->SaveEvents({event});

        m_state->SetValueAsVariant(m_device, "content"_q, content(number));
        m_state->Push(m_device, true);
        model::dl_queues queues;
        queues.dl["q"_q].elements["e"_q].data = content(number);
        m_state->DLqueue()->Push(m_device, queues, true);
    }

    /// Expects that these objects read back what `count` calls of store() have stored.
    void expectToRead(int count) {
        using testing::UnorderedElementsAreArray;
        std::vector<QJsonObject> all;
        for (int number = 1; number <= count; ++number) {
            all.push_back(content(number));
        }
        std::vector<QJsonObject> found;
        for (const auto& message : everyOne(m_messages->UlMessageRepository()->GetMessages(
                 everything<model::filter_roll>()))) {
            found.push_back(message.data.object());
        }
        EXPECT_THAT(found, UnorderedElementsAreArray(all)) << "uplinks of " << m_device;

        found.clear();
        for (const auto& command : everyOne(
                 m_messages->DlMessageRepository()->GetCommands(everything<model::filter_dl>()))) {
            EXPECT_EQ(command.status, model::dl_message::dl_status::EXECUTED);
            found.push_back(command.data);
        }
        EXPECT_THAT(found, UnorderedElementsAreArray(all)) << "commands of " << m_device;

        found.clear();
        for (const auto& value :
             everyOne(m_eav->EAVRepository()->GetValues(everything<model::filter_eav>()))) {
            found.push_back(value.extended_data.object());
            EXPECT_EQ(value.value.toDouble(), found.back().value("n"_q).toInt() + 0.5);
        }
        EXPECT_THAT(found, UnorderedElementsAreArray(all)) << "values of " << m_device;

        found.clear();
        for (const auto& event :
             everyOne(m_eav->EAVRepository()->GetEvents(everything<model::filter_eav>()))) {
            found.push_back(event.extended_data.object());
        }
        EXPECT_THAT(found, UnorderedElementsAreArray(all)) << "events of " << m_device;

        m_state->Pull(m_device);
        EXPECT_EQ(m_state->GetAll(m_device).value("content"_q), QJsonValue(all.back()));
        EXPECT_EQ(m_state->DLqueue()->Pull(m_device).dl["q"_q].elements["e"_q].data, all.back());
        EXPECT_THAT(m_clients->DeviceClientsRepository()->GetDeviceClients(m_device),
                    testing::ElementsAre("client of %1"_q.arg(m_device)));
    }

private:
    static QDateTime in2100() { return utcMsecs(4'102'444'800'123); }

    /// Ordinary members and ones out of the ordinary, so that a record takes both of the ways that
    /// conversions have.
    QJsonObject content(int number) const {
        return {{"n"_q, number},
                {"fraction"_q, number + 0.25},
                {"text"_q, "😀 %1 of %2"_q.arg(number).arg(m_device)},
                {"nested"_q, QJsonObject{{"device"_q, m_device}}}};
    }

    template <typename Filter>
    Filter everything() const {
        Filter filter;
        filter.modem_ids = {m_device};
        filter.begin = utcSecs(0);
        filter.end = in2100();
        return filter;
    }

    template <typename Record>
    std::list<Record>
    everyOne(const std::shared_ptr<std::map<int, std::list<Record>>>& found) const {
        EXPECT_LE(found->size(), 1u);
        const auto mine = found->find(m_device);
        return mine == found->end() ? std::list<Record>{} : mine->second;
    }

    int m_device;
    std::shared_ptr<interfaces::IMessagesDatabase> m_messages;
    std::shared_ptr<interfaces::IEAVDatabase> m_eav;
    std::shared_ptr<interfaces::IDriverState> m_state;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> m_clients;
};

/// For tests that use every kind of object, for up to sixteen devices that no other test has.
///
/// Needs both servers, and LOCKS common-mongodb.
class EveryKindOfObject : public FixedMongoDatabase {
protected:
    static constexpr int devices = 16;

    EveryKindOfObject() {
        redis.select(2);
        for (int n = 0; n < devices; ++n) {
            redis.run({"SADD", "dev:clients:" + number(n), "client of " + number(n)});
        }
    }

    ~EveryKindOfObject() override {
        for (int n = 0; n < devices; ++n) {
            redis.select(0);
            redis.run({"DEL", "kelvro-each:" + number(n)});
            redis.select(2);
            redis.run({"DEL", "dev:clients:" + number(n)});
            redis.select(7);
            redis.run({"DEL", number(n)});
        }
    }

    QJsonObject settings() const {
        QJsonObject settings = settingsFor(mongoUrl());
        settings.insert("redis"_q, redis.settings());
        return settings;
    }

    /// Objects for the n-th device.
    one_of_each make(interfaces::IDatabaseFactory* factory, int n = 0) const {
        return {factory, settings(), firstDevice + n};
    }

    /// Asks the servers directly how many records of each kind there are of the n-th device.
    void expectStored(int n, int count) {
        const std::string device = R"({"modem_id": )" + number(n) + "}";
        for (const char* collection : {"ul_messages", "dl_messages", "eav_values", "eav_events"}) {
            EXPECT_EQ(database.count(collection, device), count) << collection << number(n);
        }
        for (const auto& [collection, path] :
             {std::pair{"states", "state.content.n"}, {"dl_queues", "state.dl.q.e.data.n"}}) {
            EXPECT_EQ(database.count(collection, R"({"_id": )" + number(n) + R"(, ")" + path +
                                                     R"(": )" + std::to_string(count) + "}"),
                      1)
                << collection << number(n);
        }
        const std::string last = "\"n\":" + std::to_string(count) + ",";
        redis.select(0);
        EXPECT_THAT(redis.run({"GET", "kelvro-each:" + number(n)}), testing::HasSubstr(last));
        redis.select(7);
        EXPECT_THAT(redis.run({"GET", number(n)}), testing::HasSubstr(last));
    }

    redis_commands redis;
    log_capture log;

private:
    std::string number(int n) const { return std::to_string(firstDevice + n); }

    int firstDevice = static_cast<int>(1'000'000'000 + std::random_device{}() % 1'000'000'000);
};

} // namespace test_support
