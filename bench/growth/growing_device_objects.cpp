#include "bench/device_client_contests.h"
#include "bench/device_object_contests.h"
#include "bench/growth/growing.h"
#include "model/documents/device_object.h"

#include <bsoncxx/v1/types/view.hpp>

#include <array>
#include <memory>

namespace bench {

namespace {

namespace field = layout::persistent;

/// The plug-in writes and reads the objects of these; those of the others are copies of the first
/// one.
constexpr std::size_t askedDevices = 100;

/// States of other kinds, so many devices each.
constexpr std::array<std::size_t, 3> otherKinds{1, 100, 10'000};

QString kindOf(std::size_t devices) {
    return QStringLiteral("of%1").arg(devices);
}

/// Sets the keys KEYS[1] with ARGV[1] to ARGV[2]-1 behind it to the text ARGV[3].
constexpr const char* setAll = "for i = ARGV[1], ARGV[2] - 1 do "
                               "redis.call('SET', string.format('%s%d', KEYS[1], i), ARGV[3]) end";

void setTexts(RawRedis& redis, const QByteArray& start, std::size_t begin, std::size_t end,
              const QByteArray& text) {
    redis.run({"EVAL", setAll, "1", start, QByteArray::number(static_cast<qint64>(begin)),
               QByteArray::number(static_cast<qint64>(end)), text});
}

QByteArray textOf(RawRedis& redis, const QByteArray& key) {
    const auto reply = redis.run({"GET", key});
    return {reply->str, static_cast<int>(reply->len)};
}

Documents copiesOf(const bsoncxx::v1::document::view& original, std::size_t count,
                   std::size_t first) {
    Documents documents;
    for (std::size_t device = first; device < first + count; ++device) {
        bson_utils::bson_builder copy;
        copy.appendInt32(field::id, static_cast<int>(device));
        copy.appendDocument(field::state, original);
        documents.push_back(copy.take());
    }
    return documents;
}

/// Keys and copies of one kind of object, and the plug-in's calls for the first ones.
class GrowingObjects {
public:
    GrowingObjects(Stores& stores, DeviceObjects objects)
        : m_stores(stores), m_objects(std::move(objects)) {}

    void empty() {
        m_copies = m_stores.emptyCollection(m_objects.copies, field::indexes);
        m_stores.emptyRedis(m_objects.db);
        m_calls = m_objects.make(m_stores, askedDevices);
    }

    void grow(std::size_t begin, std::size_t end) {
        pushAsked();
        const std::size_t first = std::max(begin, askedDevices);
        const QByteArray keyOfFirst = m_objects.keyOf(0);
        auto& redis = m_stores.otherRedis(m_objects.db);
        setTexts(redis, keyOfFirst.chopped(1), first, end, textOf(redis, keyOfFirst));
        const auto original = m_copies->unmeasured.find_one(idOf(0));
        putAll(*m_copies, m_objects.copies, first, end,
               [state = original->view()[field::state].get_document().value](
                   std::size_t count, std::size_t from) { return copiesOf(state, count, from); });
    }

    std::vector<GrowthStep> steps() {
        pushAsked();
        const auto stored = storedObjects(m_stores, m_objects, m_copies, m_calls, askedDevices);
        const auto& name = m_objects.name;
        auto fromCopy = pullContest(stored, true);
        fromCopy.beforeBlock = [this] { forgetKeys(); };
        return {
            {.operation = name + " Push", .contest = pushContest(stored, false), .plan = {}},
            {.operation = name + " Push persist", .contest = pushContest(stored, true), .plan = {}},
            {.operation = name + " Pull", .contest = pullContest(stored, false), .plan = {}},
            {.operation = name + " Pull from copy",
             .contest = std::move(fromCopy),
             .plan = m_stores.planOf(m_objects.copies, {idOf(0), {}})}};
    }

private:
    static bsoncxx::v1::document::value idOf(int device) {
        bson_utils::bson_builder query;
        query.appendInt32(field::id, device);
        return query.take();
    }

    void pushAsked() const {
        for (std::size_t device = 0; device < askedDevices; ++device) {
            m_calls.push(static_cast<int>(device), true);
        }
    }

    void forgetKeys() const {
        QList<QByteArray> command{"DEL"};
        for (std::size_t device = 0; device < askedDevices; ++device) {
            command.append(m_objects.keyOf(static_cast<int>(device)));
        }
        m_stores.otherRedis(m_objects.db).run(command);
    }

    Stores& m_stores;
    DeviceObjects m_objects;
    DeviceCalls m_calls;
    RawCollectionPtr m_copies;
};

/// The object lives as long as what is returned.
Growing growing(std::string_view name, const std::shared_ptr<GrowingObjects>& objects) {
    return {.name = name,
            .empty = [objects] { objects->empty(); },
            .grow = [objects](std::size_t begin, std::size_t end) { objects->grow(begin, end); },
            .steps = [objects] { return objects->steps(); }};
}

void addOtherKinds(RawRedis& redis) {
    const QByteArray text = textOf(redis, "bench:state:0");
    for (const std::size_t devices : otherKinds) {
        setTexts(redis, "bench:" + kindOf(devices).toLatin1() + ':', 0, devices, text);
    }
}

} // namespace

Growing growingStates(Stores& stores) {
    auto growingStates = growing(layout::states::collection,
                                 std::make_shared<GrowingObjects>(stores, stateObjects()));
    growingStates.grow = [&stores, grow = growingStates.grow](std::size_t begin, std::size_t end) {
        grow(begin, end);
        addOtherKinds(stores.otherRedis(Stores::stateDb));
    };
    growingStates.steps = [&stores, objectSteps = growingStates.steps] {
        auto steps = objectSteps();
        for (const std::size_t devices : otherKinds) {
            steps.push_back({.operation = "state GetAllStates",
                             .devices = devices,
                             .contest = allStatesContest(stores, kindOf(devices), devices),
                             .plan = {}});
        }
        return steps;
    };
    return growingStates;
}

Growing growingQueues(Stores& stores) {
    return growing(layout::dl_queues::collection,
                   std::make_shared<GrowingObjects>(stores, queueObjects()));
}

Growing growingClients(Stores& stores) {
    return {.name = "clients",
            .empty = [&stores] { stores.emptyRedis(Stores::clientDb); },
            .grow =
                [&stores](std::size_t begin, std::size_t end) {
                    storeClients(stores.otherRedis(Stores::clientDb), begin, end);
                },
            .steps =
                [&stores] {
                    return std::vector<GrowthStep>{
                        {.operation = "clients GetDeviceClients",
                         .contest = deviceClientsContest(stores, askedDevices),
                         .plan = {}},
                        {.operation = "clients GetDeviceInfo",
                         .contest = deviceInfoContest(stores, askedDevices),
                         .plan = {}}};
                }};
}

} // namespace bench
