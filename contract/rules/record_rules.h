#pragma once

#include "contract/kinds.h"
#include "contract/log_lines.h"

#include <QJsonArray>
#include <QRegularExpression>

/// Rules that several kinds of record share.
namespace contract {

template <class Kind>
void comesBackEqual(Trial& trial) {
    const auto saved = Kind::save(trial, {Kind::record(trial.device(), 1)});
    expectSame(saved.front(), expectOne(Kind::find(trial, Kind::everything(trial))));
}

template <class Kind>
void textsComeBackEqual(Trial& trial) {
    auto record = Kind::record(trial.device(), 1);
    Kind::setTexts(record, QStringLiteral("Z\u00e4hler \u201e7\u201c \"\\/\n\t\u03a9 \U0001f600"));
    const auto saved = Kind::save(trial, {record});
    expectSame(saved.front(), expectOne(Kind::find(trial, Kind::everything(trial))));
}

/// The members that are all bytes, of the kinds that have them.
template <class Kind>
void bytesComeBackEqual(Trial& trial) {
    auto record = Kind::record(trial.device(), 1);
    record.payload.clear();
    for (int byte = 0; byte < 256; ++byte) {
        record.payload.append(static_cast<char>(byte));
    }
    const auto saved = Kind::save(trial, {record});
    expectSame(saved.front(), expectOne(Kind::find(trial, Kind::everything(trial))));
}

template <class Kind>
void jsonComesBackEqual(Trial& trial) {
    const QJsonObject inner{{QStringLiteral("yes"), true},
                            {QStringLiteral("no"), false},
                            {QStringLiteral("empty"), QJsonObject()},
                            {QStringLiteral("text"), QStringLiteral("\u03a9")}};
    const QJsonArray list{1, -2.25, 3e100, QStringLiteral("four"), inner, QJsonArray{5, 6}};
    auto record = Kind::record(trial.device(), 1);
    Kind::setJson(record, {{QStringLiteral("list"), list},
                           {QStringLiteral("inner"), inner},
                           {QStringLiteral("2^40"), 1099511627776.0},
                           {QStringLiteral("tenth"), 0.1}});
    const auto saved = Kind::save(trial, {record});
    expectSame(saved.front(), expectOne(Kind::find(trial, Kind::everything(trial))));
}

template <class Kind>
void timesAreInSeconds(Trial& trial) {
    const auto saved = Kind::save(trial, {Kind::record(trial.device(), 1, 10.987)});
    const auto found = expectOne(Kind::find(trial, Kind::everything(trial)));
    expectEqual(QStringLiteral("the timestamp"), found.timestamp, instant(10));
    expectEqual(QStringLiteral("the ttl"), found.ttl, saved.front().ttl);
}

template <class Kind>
void newestFirst(Trial& trial) {
    const int device = trial.device();
    Kind::save(trial, {Kind::record(device, 2, 20), Kind::record(device, 4, 40),
                       Kind::record(device, 1, 10), Kind::record(device, 3, 30)});
    expectInOrder<Kind>(Kind::find(trial, Kind::everything(trial)), {{device, {4, 3, 2, 1}}});
}

template <class Kind>
void groupedByDevice(Trial& trial) {
    Kind::save(trial, {Kind::record(trial.device(0), 1), Kind::record(trial.device(1), 2, 10),
                       Kind::record(trial.device(1), 3, 20), Kind::record(trial.device(2), 4, 30)});
    auto filter = Kind::everything(trial);
    filter.modem_ids = {trial.device(3), trial.device(1), trial.device(0)};
    const auto answer = Kind::find(trial, filter);
    expectFound<Kind>(answer, {{trial.device(0), {1}}, {trial.device(1), {2, 3}}});
    for (const auto& [device, records] : *answer) {
        for (const auto& record : records) {
            expectEqual(QStringLiteral("the record's device number"), record.modem_id, device);
        }
    }
}

/// Four records, ten seconds apart.
template <class Kind>
void saveFour(Trial& trial) {
    const int device = trial.device();
    Kind::save(trial, {Kind::record(device, 1, 0), Kind::record(device, 2, 10),
                       Kind::record(device, 3, 20), Kind::record(device, 4, 30)});
}

template <class Kind>
void periodIncludesItsEnds(Trial& trial) {
    saveFour<Kind>(trial);
    auto filter = Kind::everything(trial);
    filter.begin = instant(10);
    filter.end = instant(20);
    expectFound<Kind>(Kind::find(trial, filter), {{trial.device(), {2, 3}}});
}

template <class Kind>
void periodIsInSeconds(Trial& trial) {
    saveFour<Kind>(trial);
    auto filter = Kind::everything(trial);
    filter.begin = instant(10.9);
    filter.end = instant(29.9);
    expectFound<Kind>(Kind::find(trial, filter), {{trial.device(), {2, 3}}});
}

template <class Kind>
void limitKeepsTheNewest(Trial& trial) {
    const int one = trial.device(0);
    const int other = trial.device(1);
    Kind::save(trial,
               {Kind::record(one, 1, 10), Kind::record(other, 2, 20), Kind::record(one, 3, 30),
                Kind::record(other, 4, 40), Kind::record(other, 5, 50)});
    auto filter = Kind::everything(trial);
    filter.limit = 2;
    const Numbers limited =
        Kind::limitIsPerDevice ? Numbers{{one, {1, 3}}, {other, {4, 5}}} : Numbers{{other, {4, 5}}};
    expectFound<Kind>(Kind::find(trial, filter), limited);
}

template <class Kind>
void noLimitIsZero(Trial& trial) {
    // More than what servers and libraries like to send at once.
    constexpr int many = 150;
    std::list<typename Kind::Record> records;
    Numbers expected;
    for (int number = 1; number <= many; ++number) {
        records.push_back(Kind::record(trial.device(), number, number));
        expected[trial.device()].push_back(number);
    }
    Kind::save(trial, records);
    expectFound<Kind>(Kind::find(trial, Kind::everything(trial)), expected);
}

template <class Kind>
void emptyAnswersAreNoNulls(Trial& trial) {
    auto filter = Kind::everything(trial);
    expectFound<Kind>(Kind::find(trial, filter), {});
    filter.modem_ids.clear();
    expectFound<Kind>(Kind::find(trial, filter), {});
}

/// `call` logs one line, "TEXT executed in Nms".
template <class Call>
void expectLogLine(const char* text, Call call) {
    LogLines log;
    call();
    const auto lines = log.take();
    const QRegularExpression pattern(QLatin1Char('^') + QLatin1String(text) +
                                     QStringLiteral(R"( executed in \d+ms$)"));
    expect(lines.size() == 1 && pattern.match(lines.front()).hasMatch(),
           QStringLiteral("one debug line \"%1 executed in Nms\"").arg(QLatin1String(text)),
           lines.isEmpty() ? QStringLiteral("none") : lines.join(QStringLiteral(" | ")));
}

} // namespace contract
