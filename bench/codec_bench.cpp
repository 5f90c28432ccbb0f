// What it costs to turn records into stored documents and back, against the way through JSON text.
// Needs no server.

#include "bench/baselines/raw_collection.h"
#include "bench/baselines/text_path.h"
#include "bench/harness/comparison.h"
#include "bench/harness/options.h"
#include "bench/records.h"
#include "model/bson_utils.h"

#include <benchmark/benchmark.h>
#include <bson/bson.h>

#include <memory>
#include <stdexcept>

namespace bench {

namespace {

using document_value = bsoncxx::v1::document::value;
using document_view = bsoncxx::v1::document::view;

constexpr Goal flatGoal{.speedupAtLeast = 8};
constexpr Goal nestedGoal{.speedupAtLeast = 4};
/// Writing has no goal of its own here: what it may cost is part of the stores' goals.
constexpr Goal untold{};

template <typename Record>
using MakeRecords = std::function<std::vector<Record>()>;

/// A block goes once over all items, as a query does over its documents: the conversion that
/// `conversion()` gives, with whatever it remembers, is for one block. Results are let go one by
/// one.
template <typename Item, typename Conversion>
Side side(const char* name, const std::shared_ptr<const std::vector<Item>>& items,
          Conversion conversion) {
    return {name, [=] {
                auto convert = conversion();
                for (const Item& item : *items) {
                    const auto converted = convert(item);
                    benchmark::DoNotOptimize(&converted);
                }
                return items->size();
            }};
}

/// As the stores read the documents of a query.
template <typename Record>
auto directReader() {
    return [memory = bson_utils::query_memory{}](const document_view& document) mutable {
        return bson_utils::readDocument<Record>(document, memory);
    };
}

/// As the stores have it: where the record gives no "_id", the MongoDB driver has put one ahead.
document_value stored(const document_view& document) {
    if (document["_id"]) {
        return document_value{document};
    }
    bson_t body;
    bson_t with;
    bson_oid_t id;
    bson_oid_init(&id, nullptr);
    bson_init(&with);
    const bool done = bson_init_static(&body, document.data(), document.size()) &&
                      BSON_APPEND_OID(&with, "_id", &id) && bson_concat(&with, &body);
    const document_value copy{document_view{bson_get_data(&with), with.len}};
    bson_destroy(&with);
    if (!done) {
        throw std::runtime_error("cannot put an id ahead of a document");
    }
    return copy;
}

/// Both ways lead to the same record, from either way's document.
template <typename Record>
void requireSame(const std::vector<Record>& records) {
    auto read = directReader<Record>();
    for (const Record& record : records) {
        const auto document = bson_utils::toBson(record);
        const auto text = text_path::write(record);
        const auto expected = bson_utils::toBson(read(document));
        if (text.size() != document.size() || bson_utils::toBson(read(text)) != expected ||
            bson_utils::toBson(text_path::read<Record>(document)) != expected) {
            throw std::runtime_error("the way through text gives something else");
        }
    }
}

/// Lest the plain way is measured on both sides.
template <typename Record>
void requireOrdinary(const Documents& documents) {
    bson_utils::query_memory memory;
    for (const auto& document : documents) {
        if (!bson_utils::readOrdinary<Record>(document, memory)) {
            throw std::runtime_error("the document does not go the direct way");
        }
    }
}

template <typename Record>
Contest readers(const std::vector<Record>& records) {
    requireSame(records);
    Documents made;
    for (const auto& document : documentsOf(records)) {
        made.push_back(stored(document));
    }
    requireOrdinary<Record>(made);
    const auto documents = std::make_shared<const Documents>(std::move(made));
    return {.sides = {side("direct", documents, directReader<Record>),
                      side("text", documents, [] { return &text_path::read<Record>; })}};
}

template <typename Record>
Contest writers(std::vector<Record> made) {
    requireSame(made);
    const auto records = std::make_shared<const std::vector<Record>>(std::move(made));
    const auto direct = [] { return [](const Record& of) { return bson_utils::toBson(of); }; };
    const auto text = [] { return [](const Record& of) { return text_path::write(of); }; };
    return {.sides = {side("direct", records, direct), side("text", records, text)}};
}

template <typename Record>
void addCodec(Comparisons& comparisons, const char* reader, const char* writer,
              const std::string& input, const Goal& readGoal, const MakeRecords<Record>& records) {
    comparisons.add({reader, input, readGoal, [=] { return readers(records()); }});
    comparisons.add({writer, input, untold, [=] { return writers(records()); }});
}

void addMessages(Comparisons& comparisons, const std::string& input,
                 const MakeRecords<model::message>& records) {
    addCodec(comparisons, "fromBsonUL", "toBson(message)", input, nestedGoal, records);
}

void addCodecs(Comparisons& comparisons) {
    // Enough documents for a block that the clock resolves well.
    constexpr std::size_t many = 2000;
    constexpr std::size_t some = 400;
    addMessages(comparisons, "telegrams", [] { return messages(many, 0); });
    for (const MadeUp& madeUp : madeUpDocuments()) {
        addMessages(comparisons, madeUp.name,
                    [make = madeUp.make] { return messagesWith(make, some); });
    }
    addCodec<model::dev_value>(comparisons, "read dev_value", "toBson(dev_value)", "meter readings",
                               flatGoal, [] { return values(many); });
    addCodec<model::dev_event>(comparisons, "read dev_event", "toBson(dev_event)", "made-up events",
                               flatGoal, [] { return events(many); });
    addCodec<model::dl_message>(comparisons, "read dl_message", "toBson(dl_message)",
                                "made-up commands", flatGoal, [] { return commands(many, 10); });
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    return bench::runProgram("kelvro_codec_bench", [&] {
        bench::Comparisons comparisons;
        bench::addCodecs(comparisons);
        return comparisons.run(argc, argv, [] { return QJsonObject{}; });
    });
}
