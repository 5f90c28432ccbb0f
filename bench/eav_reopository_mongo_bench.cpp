#include "bench/queries.h"
#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"

#include <algorithm>
#include <numeric>

namespace bench {

namespace {

namespace value_field = layout::eav_values;
namespace event_field = layout::eav_events;
using Repository = interfaces::IEAVRepository;

/// The plug-in's operations on one kind of record.
template <typename Record>
struct Kind {
    std::string_view collection;
    std::span<const layout::index> indexes;
    std::vector<Record> (*make)(std::size_t count, std::size_t first);
    void (Repository::*save)(const std::list<Record>&);
    std::shared_ptr<mongo::by_device<Record>> (Repository::*get)(const model::filter_eav&);
    void (Repository::*erase)(const model::filter_eav&) = nullptr;

    RawCollectionPtr empty(Stores& stores) const {
        return stores.emptyCollection(collection, indexes);
    }
};

constexpr Kind<model::dev_value> valueKind{
    value_field::collection, value_field::indexes,   values,
    &Repository::SaveValues, &Repository::GetValues, &Repository::DeleteValues};
constexpr Kind<model::dev_event> eventKind{
    event_field::collection, event_field::indexes,   events,
    &Repository::SaveEvents, &Repository::GetEvents, &Repository::DeleteEvents};

std::list<int> devicesFrom(int first, int count) {
    std::list<int> devices(static_cast<std::size_t>(count));
    std::iota(devices.begin(), devices.end(), first);
    return devices;
}

/// All records: of every device and of all times.
template <typename Record>
model::filter_eav filterFor(const std::vector<Record>& records) {
    const auto [first, last] = std::ranges::minmax(records, {}, &Record::timestamp);
    model::filter_eav filter;
    filter.begin = first.timestamp;
    filter.end = last.timestamp;
    filter.modem_ids = devicesFrom(1, std::ranges::max(records, {}, &Record::modem_id).modem_id);
    return filter;
}

template <typename Record>
Prepare saving(const Kind<Record>& kind) {
    return [kind](Stores& stores, std::size_t size) {
        const auto records = kind.make(size, 0);
        return insertAtOnce(
            kind.empty(stores),
            [kind, &repository = stores.eav(), list = std::list(records.begin(), records.end())] {
                (repository.*kind.save)(list);
            },
            documentsOf(records));
    };
}

template <typename Record>
Prepare getting(const Kind<Record>& kind) {
    return [kind](Stores& stores, std::size_t size) {
        const auto records = kind.make(size, 0);
        const auto collection = kind.empty(stores);
        collection->put(documentsOf(records));
        const auto filter = filterFor(records);
        return readContest(
            [kind, &repository = stores.eav(), filter] { return (repository.*kind.get)(filter); },
            collection, {newestOf(filter)}, readBack(records));
    };
}

template <typename Record>
Prepare deleting(const Kind<Record>& kind) {
    return [kind](Stores& stores, std::size_t size) {
        const auto records = kind.make(size, 0);
        const auto filter = filterFor(records);
        return deleteContest(
            kind.empty(stores), documentsOf(records),
            [kind, &repository = stores.eav(), filter] { (repository.*kind.erase)(filter); },
            {conditionsOf(filter)});
    };
}

/// A block's devices.
struct Share {
    model::filter_eav filter;
    std::vector<ReadyQuery> queries;
};
using Shares = std::vector<Share>;

/// As many devices in each share as give a hundred readings.
Shares sharesOf(const std::vector<model::dev_value>& records, const std::vector<QString>& codes,
                int devices) {
    const int perShare = std::min(devices, static_cast<int>(50 / codes.size()));
    auto filter = filterFor(records);
    filter.first_last = true;
    filter.obis_codes.assign(codes.begin(), codes.end());
    Shares shares;
    for (int device = 1; device <= devices; device += perShare) {
        filter.modem_ids = devicesFrom(device, perShare);
        shares.push_back({filter, firstAndLastOf(filter)});
    }
    return shares;
}

/// Asks for one share after the other, from the start again after the last one. Each copy counts by
/// itself.
template <typename Ask>
auto inTurn(const std::shared_ptr<const Shares>& shares, const Ask& ask) {
    return [shares, ask, next = std::size_t{0}](const auto&... arguments) mutable {
        const Share& share = (*shares)[next];
        next = (next + 1) % shares->size();
        return ask(share, arguments...);
    };
}

/// `size` readings, half as many pairs of device and OBIS code, two requests each.
Contest getFirstAndLast(Stores& stores, std::size_t size) {
    const auto collection = valueKind.empty(stores);
    const auto codes = numericObisCodes(std::min<std::size_t>(size / 2, 10));
    const auto devices = static_cast<int>(size / 2 / codes.size());
    const auto records = numericValues(devices, codes);
    collection->put(documentsOf(records));
    const auto shares = std::make_shared<const Shares>(sharesOf(records, codes, devices));
    auto contest = readContest(inTurn(shares,
                                      [&repository = stores.eav()](const Share& share) {
                                          return repository.GetValues(share.filter);
                                      }),
                               inTurn(shares,
                                      [collection](const Share& share, const auto& each) {
                                          return collection->drain(share.queries, each);
                                      }),
                               readBack(records));
    contest.minBlocks = shares->size();
    return contest;
}

} // namespace

void addEav(Comparisons& comparisons, LazyStores& stores) {
    addForSizes(comparisons, stores, "values SaveValues", writeGoals, saving(valueKind));
    addForSizes(comparisons, stores, "values GetValues", manyGoals, getting(valueKind));
    addForSizes(comparisons, stores, "values GetValues first_last", readGoals, getFirstAndLast,
                {2, 100, 10'000});
    addForSizes(comparisons, stores, "values DeleteValues", writeGoals, deleting(valueKind));
    addForSizes(comparisons, stores, "events SaveEvents", writeGoals, saving(eventKind));
    addForSizes(comparisons, stores, "events GetEvents", manyGoals, getting(eventKind));
    addForSizes(comparisons, stores, "events DeleteEvents", writeGoals, deleting(eventKind));
}

} // namespace bench
