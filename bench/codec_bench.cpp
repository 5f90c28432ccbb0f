// What it costs to turn records into stored documents and back, against the way through JSON text.
// Needs no server.

#include "bench/baselines/text_path.h"
#include "bench/documents.h"
#include "bench/harness/comparison.h"
#include "bench/harness/options.h"
#include "bench/query_reader.h"
#include "bench/records.h"
#include "model/bson_utils.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace bench {

namespace {

using document_view = bsoncxx::v1::document::view;

constexpr Goal textGoal(double speedup) {
    return {.against = "text", .speedupAtLeast = speedup};
}
/// Writing has no goal of its own here: what it may cost is part of the stores' goals.
constexpr Goal untold{.against = "text"};

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

/// As the stores read the documents of a query: one reader for a block.
template <typename Record>
auto queryReader() {
    return QueryReader<Record>{};
}

/// As they read a single one: nothing is known of any other.
template <typename Record>
auto loneReader() {
    return [](const document_view& document) { return QueryReader<Record>{}(document); };
}

/// Both ways lead to the same record, from either way's document.
template <typename Record>
void requireSame(const std::vector<Record>& records) {
    QueryReader<Record> read;
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

/// Lest the product's plain way, which is by text, is measured on both sides.
template <typename Record>
void requireOrdinary(const Documents& documents) {
    for (const auto& document : documents) {
        if (!QueryReader<Record>{}.isOrdinary(document)) {
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
    if constexpr (!std::is_same_v<Record, model::message>) { // their plain way is another one
        requireOrdinary<Record>(made);
    }
    const auto documents = std::make_shared<const Documents>(std::move(made));
    return {.sides = {side("direct", documents, queryReader<Record>),
                      side("text", documents, [] { return &text_path::read<Record>; }),
                      side("alone", documents, loneReader<Record>)}};
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
    comparisons.add({.operation = reader, .input = input, .goal = readGoal, .prepare = [=] {
                         return readers(records());
                     }});
    comparisons.add({.operation = writer, .input = input, .goal = untold, .prepare = [=] {
                         return writers(records());
                     }});
}

void addMessages(Comparisons& comparisons, const std::string& input, const Goal& goal,
                 const MakeRecords<model::message>& records) {
    addCodec(comparisons, "fromBsonUL", "toBson(message)", input, goal, records);
}

void addCodecs(Comparisons& comparisons) {
    // Enough documents for a block that the clock resolves well.
    constexpr std::size_t many = 2000;
    constexpr std::size_t some = 400;
    addMessages(comparisons, "telegrams", textGoal(6), [] { return messages(many, 0); });
    for (const MadeUp& madeUp : madeUpDocuments()) {
        addMessages(comparisons, madeUp.name, textGoal(4),
                    [make = madeUp.make] { return messagesWith(make, some); });
    }
    addCodec<model::dev_value>(comparisons, "read dev_value", "toBson(dev_value)", "meter readings",
                               textGoal(6), [] { return values(many); });
    addCodec<model::dev_event>(comparisons, "read dev_event", "toBson(dev_event)", "made-up events",
                               textGoal(8), [] { return events(many); });
    addCodec<model::dl_message>(comparisons, "read dl_message", "toBson(dl_message)",
                                "made-up commands", textGoal(10),
                                [] { return commands(many, 10); });
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
