#pragma once

#include "host/query/record_columns.h"

#include <QDateTime>
#include <QString>

#include <algorithm>
#include <functional>
#include <iterator>
#include <list>
#include <map>
#include <utility>
#include <vector>

namespace host {

/// The records that a query shows.
template <class Record>
struct Answer {
    std::vector<Record> records;
    /// There are more than the limit let through.
    bool cutOff = false;
};

/// The newest of all that a store has returned, at most `limit` (0 for all) over all devices,
/// newest first. Of the same time, the lower device comes first.
template <class Record>
Answer<Record> newestFirst(std::map<int, std::list<Record>> returned, int limit,
                           QDateTime Record::* time = &Record::timestamp) {
    Answer<Record> answer;
    auto& records = answer.records;
    for (auto& [device, ofDevice] : returned) {
        std::ranges::move(ofDevice, std::back_inserter(records));
    }
    std::ranges::stable_sort(records, std::greater<>(), time);
    const auto most = static_cast<std::size_t>(limit);
    if (most != 0 && records.size() > most) {
        records.erase(records.begin() + limit, records.end());
        answer.cutOff = true;
    }
    return answer;
}

/// As they are, in the form that the user has chosen.
template <class Record>
void showRecords(const std::vector<Record>& records, Session& session) {
    auto output = session.output(fieldsOf<Record>());
    for (const auto& record : records) {
        output.add(cellsOf(record, session));
    }
    output.finish();
    // Before anything is remarked on them.
    session.results().requireWritten();
}

/// The records of an answer; and the remark, on standard error, that there are none, or that there
/// are more. `kind` is what they are, as "uplinks".
template <class Record>
void showAnswer(const Answer<Record>& answer, const QString& kind, Session& session) {
    showRecords(answer.records, session);
    if (answer.records.empty()) {
        session.remarks().line(QStringLiteral("No %1 found.").arg(kind));
    } else if (answer.cutOff) {
        session.remarks().line(QStringLiteral("There are more %1: only the newest %2 are shown. "
                                              "--limit says how many, --limit 0 shows all.")
                                   .arg(kind)
                                   .arg(answer.records.size()));
    }
}

} // namespace host
