#include "tests/soak/record_kind.h"

#include "tests/support/extended_json.h"

#include <bsoncxx/v1/document/view.hpp>
#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/view.hpp>
#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/find_options.hpp>
#include <mongocxx/v1/uri.hpp>

#include <utility>

namespace soak {

namespace {

constexpr int recordsOfDevice = 200;
constexpr qint64 firstSecs = 1'700'000'000;

QString whatIs(const Kind& kind, int number) {
    return QStringLiteral("%1: record %2").arg(kind.name()).arg(number);
}

} // namespace

RecordKind::RecordKind(std::string url, std::string collection, std::string numberField,
                       int recordsOfCall)
    : m_url(std::move(url)), m_collection(std::move(collection)),
      m_numberField(std::move(numberField)), m_recordsOfCall(recordsOfCall) {}

int RecordKind::deviceOf(int number) {
    return 1 + number / recordsOfDevice;
}

QDateTime RecordKind::timeOf(int number) {
    return QDateTime::fromSecsSinceEpoch(firstSecs + number, Qt::UTC);
}

QDateTime RecordKind::endOfTime() {
    return QDateTime(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC);
}

int RecordKind::numberIn(const std::string& text) const {
    return std::stoi(text);
}

void RecordKind::save(int call) {
    std::vector<int> numbers;
    for (int part = 0; part < m_recordsOfCall; ++part) {
        numbers.push_back(call * m_recordsOfCall + part);
    }
    store(numbers);
}

void RecordKind::note(int call, bool acknowledged) {
    m_acknowledged.resize(static_cast<std::size_t>(call) + 1);
    m_acknowledged[static_cast<std::size_t>(call)] = acknowledged;
}

std::vector<int> RecordKind::countDocuments() const {
    std::vector<int> counts(m_acknowledged.size() * static_cast<std::size_t>(m_recordsOfCall));
    mongocxx::v1::client client{mongocxx::v1::uri{m_url}};
    mongocxx::v1::find_options options;
    options.projection(test_support::fromJson("{\"" + m_numberField + "\": 1}"));
    auto documents = client.database("kelvrostorage")
                         .collection(m_collection)
                         .find(test_support::fromJson("{}"), options);
    for (const auto& document : documents) {
        const std::string text{document[m_numberField].get_string().value};
        ++counts.at(static_cast<std::size_t>(numberIn(text)));
    }
    return counts;
}

std::vector<int> RecordKind::countThroughPlugin(Findings& findings) {
    const auto records = m_acknowledged.size() * static_cast<std::size_t>(m_recordsOfCall);
    std::vector<int> counts(records);
    for (int device = 1; device <= deviceOf(static_cast<int>(records) - 1); ++device) {
        readDevice(device, [&](int number, const QStringList& differences) {
            ++counts.at(static_cast<std::size_t>(number));
            ++findings.read;
            if (!differences.isEmpty()) {
                ++findings.different;
                findings.example(whatIs(*this, number) + QStringLiteral(" differs: ") +
                                 differences.join(QStringLiteral("; ")));
            }
        });
    }
    return counts;
}

Findings RecordKind::readBack() {
    Findings findings;
    const std::vector<int> documents = countDocuments();
    const std::vector<int> throughPlugin = countThroughPlugin(findings);
    for (std::size_t number = 0; number < documents.size(); ++number) {
        const bool acknowledged =
            m_acknowledged[number / static_cast<std::size_t>(m_recordsOfCall)];
        const int stored = documents[number];
        const auto what = [&] { return whatIs(*this, static_cast<int>(number)); };
        if (acknowledged && (stored == 0 || throughPlugin[number] == 0)) {
            ++findings.lost;
            findings.example(what() + QStringLiteral(" is lost"));
        } else if (stored != throughPlugin[number]) {
            ++findings.different;
            findings.example(what() + QStringLiteral(" is stored %1 times and read %2 times")
                                          .arg(stored)
                                          .arg(throughPlugin[number]));
        }
        if (acknowledged && stored > 1) {
            ++findings.twice;
            findings.example(what() + QStringLiteral(" is stored %1 times").arg(stored));
        }
        findings.storedThoughThrown += !acknowledged && stored > 0 ? 1 : 0;
    }
    return findings;
}

} // namespace soak
