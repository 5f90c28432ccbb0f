#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/filter_eav.h"

#include <list>
#include <map>
#include <memory>

namespace interfaces {

/// Stores and finds the devices' values and events.
///
/// Owned by the database object that hands it out; never delete it. One thread at a time. Every
/// operation blocks on the server; the MongoDB driver's exceptions pass through unchanged.
class IEAVRepository {
public:
    virtual ~IEAVRepository() = default;

    /// One ordered bulk insert. An empty list does nothing.
    ///
    /// If the server refuses a value (mongocxx::v1::exception), those ahead of it stay stored. If a
    /// value has no BSON form, none is stored: bsoncxx::v1::exception when its `extended_data` is
    /// JSON that the BSON library's reader rejects (a key with a zero character in it, {"$oid": "no
    /// ObjectId"}) or its document is beyond BSON's 2 GiB. Nor is any stored of the batch in which
    /// a value cannot be sent, because its document is larger than the server takes
    /// (mongocxx::v1::exception); a list is one batch unless it is longer or larger than the server
    /// takes at once (mostly 100,000 values, 48 MB).
    virtual void SaveValues(const std::list<model::dev_value>& values) = 0;

    /// As SaveValues, for events, and throws as it does.
    virtual void SaveEvents(const std::list<model::dev_event>& events) = 0;

    /// Values by device number. Never null; a device without values has no key. The plain query
    /// gives the newest first; with filter.first_last each device has, for every OBIS code of the
    /// filter, its newest and then its oldest numeric value (the same one twice if there is one).
    ///
    /// Throws bsoncxx::v1::exception if a stored document that the query finds is damaged or holds
    /// text that is not UTF-8. What was read before is lost then.
    virtual std::shared_ptr<std::map<int, std::list<model::dev_value>>>
    GetValues(const model::filter_eav& filter) = 0;

    /// Events by device number, newest first. filter.tags selects by event text. Never null, and
    /// throws as GetValues does.
    virtual std::shared_ptr<std::map<int, std::list<model::dev_event>>>
    GetEvents(const model::filter_eav& filter) = 0;

    /// Deletes by device, period and tags; the OBIS codes of the filter are not read.
    virtual void DeleteValues(const model::filter_eav& filter) = 0;

    /// Deletes by device and period only; the tags of the filter are not read.
    virtual void DeleteEvents(const model::filter_eav& filter) = 0;
};

} // namespace interfaces
