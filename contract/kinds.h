#pragma once

#include "contract/expectations.h"
#include "contract/trial.h"

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
struct Uplinks {
    using Record = model::message;
    using Filter = model::filter_roll;
    static constexpr Stores store = uplinkStore;
    static constexpr bool limitIsPerDevice = false;

    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.station_id; }
    static Filter everything(const Trial& trial);
    static std::list<Record> save(Trial& trial, std::list<Record> records);
    static Answer<Record> find(Trial& trial, const Filter& filter);
    static void removeAll(Trial& trial);
    static void setTexts(Record& record, const QString& text);
    static void setJson(Record& record, const QJsonObject& object);
};

struct Downlinks {
    using Record = model::dl_message;
    using Filter = model::filter_dl;
    static constexpr Stores store = downlinkStore;
    static constexpr bool limitIsPerDevice = true;

    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.timeout; }
    static Filter everything(const Trial& trial);
    static std::list<Record> save(Trial& trial, std::list<Record> records);
    static Answer<Record> find(Trial& trial, const Filter& filter);
    static void removeAll(Trial& trial);
    static void setTexts(Record& record, const QString& text);
    static void setJson(Record& record, const QJsonObject& object);
};

struct Values {
    using Record = model::dev_value;
    using Filter = model::filter_eav;
    static constexpr Stores store = valueStore;
    static constexpr bool limitIsPerDevice = false;

    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.message_id.toInt(); }
    static Filter everything(const Trial& trial);
    static std::list<Record> save(Trial& trial, std::list<Record> records);
    static Answer<Record> find(Trial& trial, const Filter& filter);
    static void removeAll(Trial& trial);
    static void setTexts(Record& record, const QString& text);
    static void setJson(Record& record, const QJsonObject& object);
};

struct Events {
    using Record = model::dev_event;
    using Filter = model::filter_eav;
    static constexpr Stores store = eventStore;
    static constexpr bool limitIsPerDevice = false;

    static Record record(int device, int number, double secs = 0);
    static int numberOf(const Record& record) { return record.parameter; }
    static Filter everything(const Trial& trial);
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
