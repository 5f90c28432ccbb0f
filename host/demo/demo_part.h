#pragma once

#include "host/check/accounting.h"
#include "host/check/read_back.h"
#include "host/console.h"
#include "host/failure.h"
#include "host/progress.h"
#include "host/records/demo_mark.h"

#include <QString>

#include <algorithm>
#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace host {

/// What the demo does with the records of one kind. The functions block on the servers, whose
/// errors pass through.
template <class Record>
struct Part {
    /// What the records are called in the accounts, and how they came about.
    QString kind;
    QLatin1String origin = QLatin1String("read");
    /// Printed above, unless empty.
    QString heading;
    QString remark;

    std::vector<Record> records;
    /// How many were rejected before they became records.
    int rejected = 0;

    /// What the store holds that the demo would have to delete.
    std::function<Returned<Record>()> find;
    /// Deletes it, or what the demo has stored.
    std::function<void()> remove;
    /// Stores some records, at most batchSize; may fill in what the store gives them.
    std::function<void(std::span<Record>)> store;
    std::size_t batchSize = 1;
    /// Asks for the records in every way, checks what comes and shows it.
    std::function<void(ReadBack<Record>&, Console&)> readBack;
    /// Records that do not expire are deleted at the end.
    bool expires = true;
};

/// A part of any kind: a row of the demo's table.
struct DemoPart {
    QString kind;
    QLatin1String origin;
    QString heading;
    /// Does the part and gives its account.
    std::function<Accounting(Console&)> run;
    /// Only deletes what an earlier demo stored.
    std::function<void(Console&)> clear;
};

/// Deletes what an earlier demo stored. The stores delete a device's records only all together, so
/// this throws Failure, and changes nothing, if it finds any that no demo wrote.
template <class Record>
void removeEarlier(const Part<Record>& part, Console& console) {
    std::size_t count = 0;
    for (const auto& [device, records] : part.find()) {
        if (!std::ranges::all_of(records, [](const auto& record) { return isDemos(record); })) {
            throw Failure(QStringLiteral("the store holds %1 of device %2 that no demo wrote; the "
                                         "demo would have to delete them and does not run")
                              .arg(part.kind)
                              .arg(device));
        }
        count += records.size();
    }
    if (count != 0) {
        part.remove();
        console.line(QStringLiteral("Deleted %1 %2 of an earlier demo.").arg(count).arg(part.kind));
    }
}

/// Stores the records batch by batch.
template <class Record>
void storeAll(const Part<Record>& part, std::span<Record> records, Console& console) {
    auto progress =
        console.progress(QStringLiteral("Storing ") + part.kind, static_cast<int>(records.size()));
    while (!records.empty()) {
        const auto batch = records.first(std::min(part.batchSize, records.size()));
        part.store(batch);
        progress.advance(static_cast<int>(batch.size()));
        records = records.subspan(batch.size());
    }
}

template <class Record>
Accounting runPart(const Part<Record>& part, Console& console) {
    if (!part.remark.isEmpty()) {
        console.line(part.remark);
    }
    removeEarlier(part, console);
    if (part.records.empty()) {
        console.line(QStringLiteral("There are none."));
        return ReadBack<Record>({}).accounting(part.rejected);
    }
    auto records = part.records;
    storeAll<Record>(part, records, console);
    ReadBack<Record> readBack(std::move(records));
    part.readBack(readBack, console);
    if (!part.expires) {
        part.remove();
    }
    console.complaints(readBack.complaints());
    return readBack.accounting(part.rejected);
}

template <class Record>
DemoPart demoPart(Part<Record> part) {
    DemoPart row{part.kind, part.origin, part.heading, {}, {}};
    row.clear = [part](Console& console) { removeEarlier(part, console); };
    row.run = [part = std::move(part)](Console& console) { return runPart(part, console); };
    return row;
}

} // namespace host
