#include "host/ingest/uplink_writer.h"

#include "host/ingest/stored_records.h"

#include <QSet>

namespace host {

namespace {

template <class Record>
std::list<Record> together(const std::vector<const Uplink*>& uplinks,
                           std::list<Record> Uplink::* records) {
    std::list<Record> all;
    for (const auto* uplink : uplinks) {
        all.insert(all.end(), (uplink->*records).begin(), (uplink->*records).end());
    }
    return all;
}

} // namespace

void UplinkWriter::write(std::vector<Uplink>& batch) {
    const auto kept = saveUplinks(batch);
    saveRecords(kept, &Uplink::values, &interfaces::IEAVRepository::SaveValues,
                &IngestAccount::values, &IngestAccount::valuesThere);
    saveRecords(kept, &Uplink::events, &interfaces::IEAVRepository::SaveEvents,
                &IngestAccount::events, &IngestAccount::eventsThere);
}

UplinkWriter::Kept UplinkWriter::saveUplinks(std::vector<Uplink>& batch) {
    Kept kept;
    QSet<quint64> ofThisBatch;
    for (auto& uplink : batch) {
        if (ofThisBatch.contains(uplink.message.unique_id)) {
            // Its values are those of the first copy, which are not stored yet.
            ++m_tools.account.uplinksThere;
            continue;
        }
        switch (m_tools.patience.attempt([&] { m_tools.messages.SaveMessage(uplink.message); })) {
        case Patience::Outcome::Done:
            ++m_tools.account.uplinks;
            kept.fresh.push_back(&uplink);
            break;
        case Patience::Outcome::SecondCopy:
            ++m_tools.account.uplinksThere;
            restoreTime(uplink);
            kept.known.push_back(&uplink);
            break;
        case Patience::Outcome::Refused:
            m_tools.rejects.add(uplink.source, QStringLiteral("the store refuses the uplink: ") +
                                                   m_tools.patience.reason());
            continue;
        }
        ofThisBatch.insert(uplink.message.unique_id);
    }
    return kept;
}

void UplinkWriter::restoreTime(Uplink& uplink) {
    if (!uplink.timeAssigned) {
        return;
    }
    m_tools.patience.require(QStringLiteral("looking for the first copy of an uplink"), [&] {
        if (const auto time =
                storedTime(m_tools.messages, uplink.message.modem_id, uplink.message.unique_id)) {
            setTime(uplink, *time);
        }
    });
}

template <class Record>
void UplinkWriter::saveRecords(const Kept& kept, std::list<Record> Uplink::* records,
                               void (interfaces::IEAVRepository::*save)(const std::list<Record>&),
                               qint64 IngestAccount::* stored, qint64 IngestAccount::* there) {
    if (trySaving(together(kept.fresh, records), together(kept.known, records), save, stored,
                  there)) {
        return;
    }
    // One of them spoils it for all.
    auto uplinks = kept.fresh;
    uplinks.insert(uplinks.end(), kept.known.begin(), kept.known.end());
    for (const auto* uplink : uplinks) {
        if (!trySaving({}, uplink->*records, save, stored, there)) {
            m_tools.rejects.add(
                uplink->source,
                QStringLiteral("the store refuses the uplink's values or events: ") +
                    m_tools.patience.reason());
        }
    }
}

template <class Record>
bool UplinkWriter::trySaving(std::list<Record> fresh, std::list<Record> known,
                             void (interfaces::IEAVRepository::*save)(const std::list<Record>&),
                             qint64 IngestAccount::* stored, qint64 IngestAccount::* there) {
    const auto wanted = static_cast<qint64>(fresh.size()) + static_cast<qint64>(known.size());
    qint64 missingAtFirst = -1;
    const auto outcome = m_tools.patience.attempt([&] {
        const auto found = findStored(m_tools.records, known);
        auto missing = known;
        missing.remove_if([&](const Record& record) { return found.contains(keyOf(record)); });
        missing.insert(missing.end(), fresh.begin(), fresh.end());
        if (missingAtFirst < 0) {
            missingAtFirst = static_cast<qint64>(missing.size());
        }
        // If this throws it may have been done, or in part.
        known.splice(known.end(), fresh);
        if (!missing.empty()) {
            (m_tools.records.*save)(missing);
        }
    });
    if (outcome != Patience::Outcome::Done) {
        return false;
    }
    m_tools.account.*stored += missingAtFirst;
    m_tools.account.*there += wanted - missingAtFirst;
    return true;
}

} // namespace host
