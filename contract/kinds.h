#pragma once

#include "contract/expectations.h"
#include "contract/trial.h"

#include <QDateTime>
#include <QJsonDocument>

#include <list>

namespace contract {

/// A fixed instant and `secs` after it, in UTC.
QDateTime instant(double secs);

/// The kinds of record, each in the same words, for the rules that several kinds share:
///
///     Record, Filter       the types
///     store                the flag
///     limitIsPerDevice     or over all devices
///     record()             one with every member set. `number` tells it from the rest; it expires
///                          in a day, so that what a killed run leaves behind goes by itself
///     numberOf()           that number
///     everything()         all of the rule's devices, of all times, without a limit
///     save()               gives what was saved, with what the store has written into it
///     find(), removeAll()
///     setTexts(), setJson()  all members of the kind
template <class RecordType, class FilterType, Stores storeFlag, bool perDevice>
struct RecordKind {
    using Record = RecordType;
    using Filter = FilterType;
    static constexpr Stores store = storeFlag;
    static constexpr bool limitIsPerDevice = perDevice;

    static Filter everything(const Trial& trial) {
        Filter filter;
        for (int index = 0; index < Trial::devices; ++index) {
            filter.modem_ids.push_back(trial.device(index));
        }
        filter.begin = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
        filter.end = QDateTime::fromSecsSinceEpoch(4'102'444'800, Qt::UTC); // in 2100
        return filter;
    }
};

struct Uplinks : RecordKind<model::message, model::filter_roll, uplinkStore, false> {
    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.station_id; }
    static std::list<Record> save(Trial& trial, std::list<Record> records);
    static Answer<Record> find(Trial& trial, const Filter& filter);
    static void removeAll(Trial& trial);
    static void setTexts(Record& record, const QString& text);
    static void setJson(Record& record, const QJsonObject& object);
};

struct Downlinks : RecordKind<model::dl_message, model::filter_dl, downlinkStore, true> {
    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.timeout; }
    static std::list<Record> save(Trial& trial, std::list<Record> records);
    static Answer<Record> find(Trial& trial, const Filter& filter);
    static void removeAll(Trial& trial);
    static void setTexts(Record& record, const QString& text);
    static void setJson(Record& record, const QJsonObject& object);
};

struct Values : RecordKind<model::dev_value, model::filter_eav, valueStore, false> {
    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.message_id.toInt(); }
    static std::list<Record> save(Trial& trial, std::list<Record> records);
    static Answer<Record> find(Trial& trial, const Filter& filter);
    static void removeAll(Trial& trial);
    static void setTexts(Record& record, const QString& text);
    static void setJson(Record& record, const QJsonObject& object);
};

struct Events : RecordKind<model::dev_event, model::filter_eav, eventStore, false> {
    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.parameter; }
    static std::list<Record> save(Trial& trial, std::list<Record> records);
    static Answer<Record> find(Trial& trial, const Filter& filter);
    static void removeAll(Trial& trial);
    static void setTexts(Record& record, const QString& text);
    static void setJson(Record& record, const QJsonObject& object);
};

template <class Visit>
void forEachKind(Visit visit) {
    visit(Uplinks{});
    visit(Downlinks{});
    visit(Values{});
    visit(Events{});
}

} // namespace contract
