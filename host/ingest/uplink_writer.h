#pragma once

#include "host/ingest/account.h"
#include "host/ingest/patience.h"
#include "host/ingest/rejects.h"
#include "host/ingest/uplink.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/iul_app_message_repository.h"

#include <list>
#include <vector>

namespace host {

/// Stores telegrams so that none of their records is lost or there twice, wherever the program is
/// ended and started again with the same telegrams.
///
/// The uplink goes first: the store refuses a second copy of it. Its values and events go after it,
/// and no store keeps a second copy of those out, so they are stored blindly only where this
/// program has just stored their uplink and has not tried them yet; in all other cases the store is
/// asked which of them it has. This holds as long as only one program at a time stores the same
/// telegrams.
class UplinkWriter {
public:
    /// Borrows everything.
    struct Tools {
        interfaces::IULAPPMessageRepository& messages;
        interfaces::IEAVRepository& records;
        Patience& patience;
        IngestAccount& account;
        Rejects& rejects;
    };

    explicit UplinkWriter(const Tools& tools) : m_tools(tools) {}

    /// Blocks until the server has all that it takes; the others are rejected. Throws GivenUp.
    void write(std::vector<Uplink>& batch);

private:
    /// Uplinks that are in the store, by what is known of their values and events.
    struct Kept {
        /// There are none.
        std::vector<const Uplink*> fresh;
        /// There may be some.
        std::vector<const Uplink*> known;
    };

    Kept saveUplinks(std::vector<Uplink>& batch);
    void restoreTime(Uplink& uplink);

    template <class Record>
    void saveRecords(const Kept& kept, std::list<Record> Uplink::* records,
                     void (interfaces::IEAVRepository::*save)(const std::list<Record>&),
                     qint64 IngestAccount::* stored, qint64 IngestAccount::* there);
    template <class Record>
    bool trySaving(std::list<Record> fresh, std::list<Record> known,
                   void (interfaces::IEAVRepository::*save)(const std::list<Record>&),
                   qint64 IngestAccount::* stored, qint64 IngestAccount::* there);

    Tools m_tools;
};

} // namespace host
