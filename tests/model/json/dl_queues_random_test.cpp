#include "model/model_convertors.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/random_json.h"
#include "tests/support/record_equality.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <array>
#include <functional>
#include <limits>
#include <random>

// Random records and random JSON. A failure prints the seed and the smallest record that fails.
namespace {

using model::dl_queues;
using model_convertors::fromJson;
using model_convertors::toJson;
using namespace test_support::literals;

using queue_status = enum dl_queues::status;

class generator {
public:
    explicit generator(unsigned seed) : m_engine(seed) {}

    int below(int bound) { return std::uniform_int_distribution{0, bound - 1}(m_engine); }

    int number() {
        static constexpr std::array extremes{0, 1, -1, std::numeric_limits<int>::max(),
                                             std::numeric_limits<int>::min()};
        if (below(3) == 0) {
            return extremes.at(static_cast<std::size_t>(below(static_cast<int>(extremes.size()))));
        }
        return std::uniform_int_distribution<int>{std::numeric_limits<int>::min()}(m_engine);
    }

    QString text() {
        static const QStringList pieces{"a"_q,  "B"_q,  "0"_q,      "."_q,  "$"_q,          ":"_q,
                                        "\""_q, "\\"_q, "\u0416"_q, "\0"_q, "\U0001F50C"_q, "\n"_q};
        QString text;
        for (int length = below(6); length > 0; --length) {
            text += pieces.at(below(pieces.size()));
        }
        return text;
    }

    queue_status status() { return static_cast<queue_status>(below(4)); }

    QString key() { return text(); }

    static constexpr int scalarKinds = 5;

    QJsonValue scalar(int kind) {
        switch (kind) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return below(2) == 0;
        case 2:
            return number();
        case 3:
            return std::uniform_real_distribution{-1e9, 1e9}(m_engine);
        default:
            return text();
        }
    }

    dl_queues queues() {
        dl_queues queues;
        queues.lock = below(2) == 0;
        queues.status = status();
        for (int size = below(4); size > 0; --size) {
            queues.dl.insert(text(), queue());
        }
        return queues;
    }

    // An object that looks like queues, but with any kind of value anywhere.
    QJsonValue nearly(int level) {
        static const QStringList names{"dl"_q,      "lock"_q,       "status"_q, "repeat"_q,
                                       "timeout"_q, "start_from"_q, "db_id"_q,  "data"_q,
                                       "type"_q,    "q"_q};
        static const QStringList states{"NONE"_q, "DONE"_q, "WAIT"_q, "FAIL"_q, "wait"_q};
        if (level == 0 || below(4) == 0) {
            return below(2) == 0 ? QJsonValue{states.at(below(states.size()))}
                                 : test_support::randomValue(*this, 1);
        }
        QJsonObject object;
        for (int size = below(8); size > 0; --size) {
            object.insert(names.at(below(names.size())), nearly(level - 1));
        }
        return object;
    }

private:
    // Ids of elements must not be names of settings, which no text of text() is.
    dl_queues::queue queue() {
        dl_queues::queue queue;
        queue.repeat = number();
        queue.timeout = number();
        queue.start_from = number();
        queue.status = status();
        for (int size = below(4); size > 0; --size) {
            dl_queues::element element;
            element.data = test_support::randomObject(*this, 2);
            element.type = text();
            element.db_id = text();
            element.status = status();
            element.repeat = number();
            queue.elements.insert(text(), element);
        }
        return queue;
    }

    std::mt19937 m_engine;
};

dl_queues throughJson(const dl_queues& queues) {
    return fromJson<dl_queues>(toJson(queues));
}

// As the text goes through Redis.
dl_queues throughText(const dl_queues& queues) {
    const QByteArray text = QJsonDocument{toJson(queues)}.toJson(QJsonDocument::Compact);
    return fromJson<dl_queues>(QJsonDocument::fromJson(text).object());
}

// Takes away queues and elements as long as the record still fails.
dl_queues smallest(dl_queues failing, const std::function<bool(const dl_queues&)>& fails) {
    for (const QString& name : failing.dl.keys()) {
        dl_queues smaller = failing;
        smaller.dl.remove(name);
        if (fails(smaller)) {
            failing = smaller;
            continue;
        }
        for (const QString& id : failing.dl[name].elements.keys()) {
            smaller = failing;
            smaller.dl[name].elements.remove(id);
            if (fails(smaller)) {
                failing = smaller;
            }
        }
    }
    return failing;
}

void expectRoundTrips(dl_queues (*through)(const dl_queues&)) {
    const auto fails = [through](const dl_queues& queues) { return through(queues) != queues; };
    int elements = 0;
    for (unsigned seed = 1; seed <= 2000; ++seed) {
        const dl_queues queues = generator{seed}.queues();
        for (const auto& queue : queues.dl) {
            elements += queue.elements.size();
        }
        if (fails(queues)) {
            const dl_queues small = smallest(queues, fails);
            ASSERT_EQ(through(small), small) << "seed " << seed;
        }
    }
    EXPECT_GT(elements, 2000) << "the records are too small to show anything";
}

TEST(RandomQueues, ComeBackFromTheirJson) {
    expectRoundTrips(throughJson);
}

TEST(RandomQueues, ComeBackFromTheirText) {
    expectRoundTrips(throughText);
}

TEST(RandomQueues, OfAnyJsonReadWithoutFailureAndThenComeBack) {
    int readable = 0;
    for (unsigned seed = 1; seed <= 5000; ++seed) {
        const QJsonObject json = generator{seed}.nearly(4).toObject();
        dl_queues queues = fromJson<dl_queues>(json);
        for (auto& queue : queues.dl) {
            for (const QString& setting : {"repeat"_q, "start_from"_q, "status"_q, "timeout"_q}) {
                queue.elements.remove(setting); // lost on output, and rightly so
            }
        }
        readable += queues.dl.isEmpty() ? 0 : 1;
        ASSERT_EQ(throughText(queues), queues)
            << "seed " << seed << ": " << testing::PrintToString(json);
    }
    EXPECT_GT(readable, 500) << "the objects are too odd to show anything";
}

} // namespace
