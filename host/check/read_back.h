#pragma once

#include "host/check/accounting.h"
#include "host/records/record_compare.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <utility>
#include <vector>

namespace host {

/// What a store's query gives: the records of each device.
template <class Record>
using Returned = std::map<int, std::list<Record>>;

template <class Record>
using Selection = std::function<bool(const Record&)>;

/// Holds the records of one kind that were written, checks what the store's queries return against
/// them, and keeps account.
///
/// Record is one of the kinds that record_compare.h knows; no two records may share a description.
template <class Record>
class ReadBack {
public:
    explicit ReadBack(std::vector<Record> written)
        : m_written(std::move(written)), m_fates(m_written.size()) {
        for (std::size_t index = 0; index < m_written.size(); ++index) {
            m_byName.insert(describe(m_written[index]), index);
        }
    }

    const std::vector<Record>& written() const { return m_written; }

    /// Changes what the queries must return from here on, as the store was told to. What describes
    /// a record must stay.
    void change(const std::function<void(Record&)>& change) {
        for (auto& record : m_written) {
            change(record);
        }
    }

    /// Checks one query's result: exactly the written records that `selected` accepts, each equal,
    /// under its device's number and, where it has a timestamp, newest first. `query` names the
    /// query in the complaints.
    void check(const QString& query, const Selection<Record>& selected,
               const Returned<Record>& returned) {
        std::vector<bool> seen(m_written.size(), false);
        for (const auto& [device, records] : returned) {
            const Record* previous = nullptr;
            for (const auto& record : records) {
                checkRecord(query, selected, device, record, previous, seen);
                previous = &record;
            }
        }
        for (std::size_t index = 0; index < m_written.size(); ++index) {
            if (!seen[index] && selected(m_written[index])) {
                complain(index, query, QStringLiteral("not returned"));
            }
        }
    }

    /// Notes something else that is wrong with one of the written records.
    void complain(const Record& written, const QString& text) {
        complain(m_byName.value(describe(written)), QStringLiteral("stored"), text);
    }

    /// The account of these records and of `rejected` ones that never became any.
    Accounting accounting(int rejected) const {
        Accounting result;
        result.stored = static_cast<int>(m_written.size());
        result.read = result.stored + rejected;
        result.rejected = rejected;
        result.unexpected = m_unexpected;
        for (const auto& fate : m_fates) {
            if (!fate.returned) {
                ++result.lost;
            } else {
                ++(fate.faulty ? result.different : result.equal);
            }
        }
        return result;
    }

    /// Everything that was not as it must be, one text each.
    const QStringList& complaints() const { return m_complaints; }

private:
    struct Fate {
        bool returned = false;
        bool faulty = false;
    };

    void checkRecord(const QString& query, const Selection<Record>& selected, int device,
                     const Record& record, [[maybe_unused]] const Record* previous,
                     std::vector<bool>& seen) {
        const auto found = m_byName.constFind(describe(record));
        if (found == m_byName.constEnd() || seen[*found] || !selected(m_written[*found])) {
            ++m_unexpected;
            m_complaints.append(query + QStringLiteral(": ") + describe(record) +
                                QStringLiteral(" was not asked for"));
            return;
        }
        const auto index = *found;
        seen[index] = true;
        m_fates[index].returned = true;
        for (const auto& difference : differences(m_written[index], record)) {
            complain(index, query, difference);
        }
        if (device != m_written[index].modem_id) {
            complain(index, query, QStringLiteral("returned under device %1").arg(device));
        }
        if constexpr (requires { record.timestamp; }) {
            if (previous != nullptr && previous->timestamp < record.timestamp) {
                complain(index, query, QStringLiteral("returned after an older one"));
            }
        }
    }

    void complain(std::size_t index, const QString& query, const QString& text) {
        m_fates[index].faulty = true;
        m_complaints.append(query + QStringLiteral(": ") + describe(m_written[index]) +
                            QStringLiteral(": ") + text);
    }

    std::vector<Record> m_written;
    std::vector<Fate> m_fates;
    QHash<QString, std::size_t> m_byName;
    QStringList m_complaints;
    int m_unexpected = 0;
};

} // namespace host
