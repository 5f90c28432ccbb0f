#include "contract/rules/record_rules.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"

#include <QVariantList>

#include <array>

namespace contract {

namespace {

void standInTheirSlots(Trial& trial) {
    auto* const eav = &trial.eav();
    const auto all = Values::everything(trial);
    using Save = void(const std::list<model::dev_value>&);
    using Query = Answer<model::dev_value>(const model::filter_eav&);
    slot<Save>::call(eav, 1, {Values::record(trial.device(), 1)});
    expectFound<Values>(slot<Query>::call(eav, 3, all), {{trial.device(), {1}}});
    slot<void(const model::filter_eav&)>::call(eav, 5, all);
    expectFound<Values>(eav->GetValues(all), {});
}

/// What a value comes back as.
QVariant readBack(Trial& trial, const QVariant& value) {
    auto record = Values::record(trial.device(), 1);
    record.value = value;
    Values::save(trial, {record});
    const auto found = expectOne(Values::find(trial, Values::everything(trial)));
    Values::removeAll(trial);
    return found.value;
}

/// Equal in type and value; QVariant itself converts before it compares.
void expectReadBack(Trial& trial, const QVariant& value, const QVariant& expected) {
    const auto seen = readBack(trial, value);
    expect(seen.userType() == expected.userType() && seen == expected,
           toText(value) + QStringLiteral(" comes back as ") + toText(expected), toText(seen));
}

void keepTheirKind(Trial& trial) {
    expectReadBack(trial, true, true);
    expectReadBack(trial, false, false);
    expectReadBack(trial, 2.5, 2.5);
    expectReadBack(trial, -1e300, -1e300);
    expectReadBack(trial, QStringLiteral("12"), QStringLiteral("12"));
    expectReadBack(trial, QString(), QStringLiteral(""));
}

void numbersAreDoubles(Trial& trial) {
    expectReadBack(trial, 7, 7.0);
    expectReadBack(trial, -2147483647, -2147483647.0);
    expectReadBack(trial, 8U, 8.0);
    expectReadBack(trial, 3.0, 3.0);
}

void longNumbersAreNarrowed(Trial& trial) {
    constexpr qint64 high = Q_INT64_C(1) << 40U;
    expectReadBack(trial, high + 5, 5.0);
    expectReadBack(trial, Q_INT64_C(6), 6.0);
}

void otherKindsAreNamed(Trial& trial) {
    const auto unknown = QStringLiteral("unknown type");
    expectReadBack(trial, QByteArrayLiteral("bytes"), unknown);
    expectReadBack(trial, instant(0), unknown);
    expectReadBack(trial, QVariantList{1, 2}, unknown);
    expectReadBack(trial, QVariant(), QStringLiteral("invalid type"));
}

/// Values 1 to 4 with two tags and two codes: 1 and 2 of tag "a", 1 and 3 of code "x".
void saveTagged(Trial& trial) {
    std::list<model::dev_value> records;
    for (int number = 1; number <= 4; ++number) {
        auto record = Values::record(trial.device(), number, number * 10);
        record.tag = number <= 2 ? QStringLiteral("a") : QStringLiteral("b");
        record.obis_code = number % 2 == 1 ? QStringLiteral("x") : QStringLiteral("y");
        records.push_back(record);
    }
    Values::save(trial, records);
}

void tagsSelect(Trial& trial) {
    saveTagged(trial);
    auto filter = Values::everything(trial);
    filter.tags = {QStringLiteral("none"), QStringLiteral("a")};
    expectFound<Values>(Values::find(trial, filter), {{trial.device(), {1, 2}}});
}

void codesSelect(Trial& trial) {
    saveTagged(trial);
    auto filter = Values::everything(trial);
    filter.obis_codes = {QStringLiteral("none"), QStringLiteral("x")};
    expectFound<Values>(Values::find(trial, filter), {{trial.device(), {1, 3}}});
    filter.tags = {QStringLiteral("b")};
    expectFound<Values>(Values::find(trial, filter), {{trial.device(), {3}}});
}

/// The filter of a first-last query of this device's codes "x" and "y".
model::filter_eav firstAndLast(Trial& trial) {
    auto filter = Values::everything(trial);
    filter.first_last = true;
    filter.obis_codes = {QStringLiteral("x"), QStringLiteral("y")};
    return filter;
}

model::dev_value valueOf(int device, int number, const char* code, const QVariant& value) {
    auto record = Values::record(device, number, number * 10);
    record.obis_code = QLatin1String(code);
    record.value = value;
    return record;
}

void findFirstAndLast(Trial& trial) {
    const int one = trial.device(0);
    const int other = trial.device(1);
    Values::save(trial,
                 {valueOf(one, 2, "x", 2), valueOf(one, 1, "x", 1.5), valueOf(one, 3, "x", 3),
                  valueOf(one, 4, "y", 4), valueOf(one, 6, "y", 6), valueOf(other, 7, "y", 7),
                  valueOf(other, 8, "y", 8), valueOf(other, 9, "z", 9)});
    expectInOrder<Values>(Values::find(trial, firstAndLast(trial)),
                          {{one, {3, 1, 6, 4}}, {other, {8, 7}}});
}

void findASingleOneTwice(Trial& trial) {
    Values::save(trial, {valueOf(trial.device(), 1, "x", 1)});
    expectInOrder<Values>(Values::find(trial, firstAndLast(trial)), {{trial.device(), {1, 1}}});
}

void findNumbersOnly(Trial& trial) {
    const int device = trial.device();
    Values::save(trial, {valueOf(device, 1, "x", QStringLiteral("1")), valueOf(device, 2, "x", 2),
                         valueOf(device, 3, "x", 3.5), valueOf(device, 4, "x", true),
                         valueOf(device, 5, "y", QStringLiteral("5"))});
    expectInOrder<Values>(Values::find(trial, firstAndLast(trial)), {{device, {3, 2}}});
}

void findWithinTheFilter(Trial& trial) {
    const int device = trial.device();
    auto tagged = valueOf(device, 4, "x", 4);
    tagged.tag = QStringLiteral("other");
    Values::save(trial, {valueOf(device, 1, "x", 1), valueOf(device, 2, "x", 2),
                         valueOf(device, 3, "x", 3), tagged, valueOf(device, 5, "x", 5)});
    auto filter = firstAndLast(trial);
    filter.tags = {QStringLiteral("energy")};
    filter.begin = instant(20);
    filter.end = instant(40);
    expectInOrder<Values>(Values::find(trial, filter), {{device, {3, 2}}});
}

void findNothingWithoutCodes(Trial& trial) {
    Values::save(trial, {valueOf(trial.device(), 1, "x", 1)});
    auto filter = firstAndLast(trial);
    filter.obis_codes.clear();
    expectFound<Values>(Values::find(trial, filter), {});
}

void saveNothing(Trial& trial) {
    Values::save(trial, {});
    expectFound<Values>(Values::find(trial, Values::everything(trial)), {});
}

void deleteByPeriodAndTags(Trial& trial) {
    saveTagged(trial);
    Values::save(trial, {Values::record(trial.device(1), 5, 20)});
    auto filter = Values::everything(trial);
    filter.modem_ids = {trial.device()};
    filter.begin = instant(20);
    filter.end = instant(30);
    filter.tags = {QStringLiteral("a")};
    trial.eav().DeleteValues(filter);
    const auto all = Values::everything(trial);
    expectFound<Values>(Values::find(trial, all),
                        {{trial.device(0), {1, 3, 4}}, {trial.device(1), {5}}});
    filter.tags.clear();
    trial.eav().DeleteValues(filter);
    expectFound<Values>(Values::find(trial, all),
                        {{trial.device(0), {1, 4}}, {trial.device(1), {5}}});
}

void deletionReadsNoCodes(Trial& trial) {
    saveTagged(trial);
    auto filter = Values::everything(trial);
    filter.obis_codes = {QStringLiteral("x")};
    filter.limit = 1;
    trial.eav().DeleteValues(filter);
    expectFound<Values>(Values::find(trial, Values::everything(trial)), {});
}

void deletionNeedsDevices(Trial& trial) {
    Values::save(trial, {Values::record(trial.device(), 1)});
    auto filter = Values::everything(trial);
    filter.modem_ids.clear();
    trial.eav().DeleteValues(filter);
    expectFound<Values>(Values::find(trial, Values::everything(trial)), {{trial.device(), {1}}});
}

void logTheirOperations(Trial& trial) {
    auto& eav = trial.eav();
    auto filter = Values::everything(trial);
    expectLogLine("Save EAV values", [&] { eav.SaveValues({Values::record(trial.device(), 1)}); });
    expectLogLine("Get EAV values", [&] { eav.GetValues(filter); });
    expectLogLine("Delete EAV values", [&] { eav.DeleteValues(filter); });
    filter.modem_ids.clear();
    expectLogLine("Save EAV values", [&] { eav.SaveValues({}); });
    expectLogLine("Get EAV values", [&] { eav.GetValues(filter); });
    expectLogLine("Delete EAV values", [&] { eav.DeleteValues(filter); });
}

constexpr std::array rules{
    Rule{"values.slots", "Slots 1, 3 and 5 are SaveValues, GetValues and DeleteValues",
         standInTheirSlots},
    Rule{"values.equal", "A value comes back equal in every member", comesBackEqual<Values>},
    Rule{"values.texts", "Any Unicode text comes back equal", textsComeBackEqual<Values>},
    Rule{"values.json", "Nested JSON content comes back equal", jsonComesBackEqual<Values>},
    Rule{"values.seconds", "A timestamp loses its milliseconds, a ttl keeps them",
         timesAreInSeconds<Values>},
    Rule{"values.kinds", "Booleans, doubles and texts come back as what they were", keepTheirKind},
    Rule{"values.numbers", "Every number comes back as a double", numbersAreDoubles},
    Rule{"values.narrowed", "A 64-bit integer keeps its low 32 bits", longNumbersAreNarrowed},
    Rule{"values.other-kinds",
         "A value of another kind comes back as the text \"unknown type\", an invalid one as "
         "\"invalid type\"",
         otherKindsAreNamed},
    Rule{"values.newest-first", "A device's values come newest first", newestFirst<Values>},
    Rule{"values.devices",
         "Only the filter's devices are found, each under its number, and none without values",
         groupedByDevice<Values>},
    Rule{"values.period", "Both ends of a period belong to it", periodIncludesItsEnds<Values>},
    Rule{"values.period-seconds", "The milliseconds of a period's ends are dropped",
         periodIsInSeconds<Values>},
    Rule{"values.tags", "Tags select the values that have one of them", tagsSelect},
    Rule{"values.codes",
         "OBIS codes select the values that have one of them, among those of the "
         "tags",
         codesSelect},
    Rule{"values.limit", "A limit keeps the newest values of all devices together",
         limitKeepsTheNewest<Values>},
    Rule{"values.no-limit", "A limit of 0 is none", noLimitIsZero<Values>},
    Rule{"values.empty",
         "No device, or one without values, gives an empty answer and no null pointer",
         emptyAnswersAreNoNulls<Values>},
    Rule{"values.first-last",
         "first_last gives for each device and OBIS code the newest value and then the oldest",
         findFirstAndLast},
    Rule{"values.first-last-single", "first_last gives a single value twice", findASingleOneTwice},
    Rule{"values.first-last-numbers", "first_last looks at numbers only", findNumbersOnly},
    Rule{"values.first-last-filter", "first_last heeds the period, with both ends, and the tags",
         findWithinTheFilter},
    Rule{"values.first-last-codes", "first_last without OBIS codes gives nothing",
         findNothingWithoutCodes},
    Rule{"values.save-none", "Saving an empty list does nothing", saveNothing},
    Rule{"values.delete",
         "Deleting takes the devices' values of the period, with both its ends, "
         "and of the tags, if there are any",
         deleteByPeriodAndTags},
    Rule{"values.delete-codes", "Deleting reads neither the OBIS codes nor the limit",
         deletionReadsNoCodes},
    Rule{"values.delete-none", "Deleting without a device deletes nothing", deletionNeedsDevices},
    Rule{"values.log", "Each operation writes its own debug line, also when there is nothing to do",
         logTheirOperations},
};

} // namespace

std::span<const Rule> valueRules() {
    return rules;
}

} // namespace contract
