// What it costs to turn records into stored documents and back, against the way through JSON text.
// Needs no server.

#include "bench/comparison.h"
#include "bench/environment.h"
#include "bench/records.h"
#include "bench/text_path.h"
#include "model/bson_utils.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <span>
#include <stdexcept>

namespace bench {

namespace {

using document_value = bsoncxx::v1::document::value;
using document_view = bsoncxx::v1::document::view;

/// Enough documents for a block that the clock resolves well.
constexpr std::size_t minPerBlock = 2000;

constexpr Goal flatGoal{Goal::Kind::speedupAtLeast, 8.0};
constexpr Goal nestedGoal{Goal::Kind::speedupAtLeast, 4.0};
/// Writing has no goal of its own here: what it may cost is part of the stores' goals.
constexpr Goal untold{Goal::Kind::speedupAtLeast, 0.0};

template <typename Record>
std::vector<document_value> documentsOf(const std::vector<Record>& records) {
    std::vector<document_value> documents;
    documents.reserve(records.size());
    for (const Record& record : records) {
        documents.push_back(bson_utils::toBson(record));
    }
    return documents;
}

bool equal(const document_view& left, const document_view& right) {
    return std::ranges::equal(std::span{left.data(), left.size()},
                              std::span{right.data(), right.size()});
}

/// Reads or writes all items as often as a block needs; the results are let go one by one.
template <typename Item, typename Convert>
std::function<std::size_t()> loop(const std::shared_ptr<const std::vector<Item>>& items,
                                  const Convert& convert) {
    const std::size_t rounds = (minPerBlock + items->size() - 1) / items->size();
    return [items, convert, rounds] {
        for (std::size_t round = 0; round < rounds; ++round) {
            for (const Item& item : *items) {
                const auto converted = convert(item);
                benchmark::DoNotOptimize(&converted);
            }
        }
        return rounds * items->size();
    };
}

/// Compares a reader with its plain form, once they have been seen to give the same for every
/// record.
template <typename Record, typename Read, typename ReadText>
void compareReaders(const std::string& name, const std::string& input, Goal goal,
                    const std::function<std::vector<Record>()>& records, const Read& read,
                    const ReadText& readText) {
    registerComparison({name, input, goal}, [=] {
        const auto documents =
            std::make_shared<const std::vector<document_value>>(documentsOf(records()));
        for (const document_value& document : *documents) {
            if (!equal(bson_utils::toBson(read(document)),
                       bson_utils::toBson(readText(document)))) {
                throw std::runtime_error("the text path reads another record");
            }
        }
        return Contest{.subject = loop(documents, read), .baseline = loop(documents, readText)};
    });
}

/// Compares a writer with its plain form, once their documents have been seen to be read as the
/// same record.
template <typename Record, typename Read>
void compareWriters(const std::string& name, const std::string& input,
                    const std::function<std::vector<Record>()>& makeRecords, const Read& read) {
    registerComparison({name, input, untold}, [=] {
        const auto records = std::make_shared<const std::vector<Record>>(makeRecords());
        const auto write = [](const Record& record) { return bson_utils::toBson(record); };
        const auto writeText = [](const Record& record) { return text_path::write(record); };
        for (const Record& record : *records) {
            const document_value direct = write(record);
            const document_value text = writeText(record);
            if (direct.size() != text.size() ||
                !equal(bson_utils::toBson(read(direct)), bson_utils::toBson(read(text)))) {
                throw std::runtime_error("the text path writes another document");
            }
        }
        return Contest{.subject = loop(records, write), .baseline = loop(records, writeText)};
    });
}

void compareMessages(const std::string& input,
                     const std::function<std::vector<model::message>()>& messages) {
    const auto read =
        [times = std::make_shared<bson_utils::local_times>()](const document_view& document) {
            return bson_utils::readDocument<model::message>(document, *times);
        };
    compareReaders<model::message>("fromBsonUL", input, nestedGoal, messages, read,
                                   text_path::readUL);
    compareWriters<model::message>("toBson(message)", input, messages, read);
}

/// A reader as a query uses it: for one document after the other.
template <typename Record>
auto inQuery() {
    return [times = std::make_shared<bson_utils::local_times>()](const document_view& document) {
        return bson_utils::readDocument<Record>(document, *times);
    };
}

void registerComparisons() {
    compareMessages("telegrams", telegramMessages);
    const auto madeUp = madeUpDocuments();
    for (const MadeUp& document : madeUp) {
        compareMessages(document.name.toStdString(),
                        [json = document.json] { return messagesWith(json); });
    }

    compareReaders<model::dev_value>("read dev_value", "meter readings", flatGoal, meterValues,
                                     inQuery<model::dev_value>(),
                                     bson_utils::readPlain<model::dev_value>);
    compareWriters<model::dev_value>("toBson(dev_value)", "meter readings", meterValues,
                                     inQuery<model::dev_value>());

    const auto someEvents = [] { return events(minPerBlock); };
    compareReaders<model::dev_event>("read dev_event", "made-up events", flatGoal, someEvents,
                                     inQuery<model::dev_event>(),
                                     bson_utils::readPlain<model::dev_event>);
    compareWriters<model::dev_event>("toBson(dev_event)", "made-up events", someEvents,
                                     inQuery<model::dev_event>());

    const auto someCommands = [] { return commands(minPerBlock, 10); };
    compareReaders<model::dl_message>("read dl_message", "made-up commands", flatGoal, someCommands,
                                      inQuery<model::dl_message>(),
                                      bson_utils::readPlain<model::dl_message>);
    compareWriters<model::dl_message>("toBson(dl_message)", "made-up commands", someCommands,
                                      inQuery<model::dl_message>());
}

} // namespace

} // namespace bench

int main(int argc, char** argv) try {
    bench::registerComparisons();
    return bench::runComparisons(argc, argv, [] { return bench::buildAndLibraries(); });
} catch (const std::exception& error) {
    std::cerr << "kelvro_codec_bench: " << error.what() << '\n';
    return 1;
}
