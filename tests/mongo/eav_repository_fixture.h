#pragma once

#include "mongo/eav_reopository_mongo.h"

#include "tests/mongo/records.h"
#include "tests/mongo/timed_line.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_commands.h"
#include "tests/support/mongo_database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace records {

struct reading {
    int modem = 7;
    qint64 at = 1'700'000'000;
    QString obis = QStringLiteral("1-0:1.8.0");
    QString tag = QStringLiteral("energy");
    QVariant value = 2.5;

    model::dev_value record() const {
        model::dev_value record;
        record.modem_id = modem;
        record.timestamp = utc(at);
        record.obis_code = obis;
        record.tag = tag;
        record.extended_data = QJsonDocument::fromJson(R"({"unit":"kWh"})");
        record.value = value;
        record.message_id = "m-5"_q;
        record.ttl = in2100();
        return record;
    }

    operator model::dev_value() const { return record(); }
};

struct happening {
    int modem = 7;
    qint64 at = 1'700'000'000;
    QString message = QStringLiteral("PERMANENT_ERROR");

    model::dev_event record() const {
        model::dev_event record;
        record.modem_id = modem;
        record.timestamp = utc(at);
        record.event_code = 8;
        record.message_id = "m-5"_q;
        record.message = message;
        record.extended_data = QJsonDocument::fromJson(R"({"sabotage":true})");
        record.parameter = -3;
        record.ttl = in2100();
        return record;
    }

    operator model::dev_event() const { return record(); }
};

/// Everything of these devices before 2100.
inline model::filter_eav allOf(std::list<int> modem_ids) {
    model::filter_eav filter;
    filter.modem_ids = std::move(modem_ids);
    filter.begin = utc(0);
    filter.end = in2100();
    return filter;
}

template <typename Record>
times_by_device timesOf(const std::map<int, std::list<Record>>& records) {
    times_by_device times;
    for (const auto& [device, list] : records) {
        for (const Record& record : list) {
            times[device].push_back(record.timestamp.toSecsSinceEpoch());
        }
    }
    return times;
}

} // namespace records

/// A repository of values and events on a database of the test's own, watched from three sides:
/// what it sends, what it logs and what is in the database.
class EavRepositoryTest : public test_support::UniqueMongoDatabase {
protected:
    static constexpr std::string_view values = "eav_values";
    static constexpr std::string_view events = "eav_events";

    records::times_by_device valueTimes(const model::filter_eav& filter) {
        return records::timesOf(*repository.GetValues(filter));
    }

    records::times_by_device eventTimes(const model::filter_eav& filter) {
        return records::timesOf(*repository.GetEvents(filter));
    }

    test_support::log_capture log;
    test_support::recording_client client{test_support::mongoUrl()};
    mongo::EAVRepositoryMongo repository{client.database(database.name())};
};

/// The same on a server that does not answer.
class UnreachableEavRepository : public testing::Test {
protected:
    test_support::log_capture log;
    test_support::recording_client client{test_support::unreachableMongoUrl()};
    mongo::EAVRepositoryMongo repository{client.database("kelvro_test")};
};
