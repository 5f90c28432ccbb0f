// Writing JSON texts directly against writing them by Qt. The seed is fixed, or taken from
// KELVRO_SEED; a failure prints it and the smallest object that fails.

#include "model/json/compact_json.h"
#include "model/json/json_writer.h"
#include "model/model_convertors.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/random_json.h"
#include "tests/support/random_seed.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QStringList>

#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <limits>
#include <random>

namespace {

using model::dl_queues;
using model_convertors::compactJson;
using model_convertors::plainJson;
using model_convertors::toJson;
using namespace test_support::literals;

constexpr std::uint32_t documents = 20'000;

std::uint32_t firstSeed() {
    return test_support::randomSeed(20221127);
}

/// Besides what has that key already, as no host should.
template <typename Value>
void insertBeside(QMap<QString, Value>& map, const QString& key, const Value& value) {
    QMultiMap<QString, Value> both(map);
    both.insert(key, value);
    map = both;
}

/// Odd content from a seed.
class odd_content {
public:
    explicit odd_content(std::uint32_t seed) : m_engine(seed), m_odd(below(3) != 0) {}

    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(m_engine()) % limit;
    }

    QString text() {
        QString made;
        for (std::uint32_t rest = below(8) == 0 ? below(300) : below(8); rest > 0; --rest) {
            appendCharacter(made);
        }
        return below(20) == 0 ? QString() : made;
    }

    double number() {
        const auto bits = quint64{m_engine()} << 32U | m_engine();
        const auto whole = static_cast<double>(bits >> below(64));
        const double sign = below(2) == 0 ? 1 : -1;
        switch (below(m_odd ? 7 : 3)) {
        case 0:
            return sign * static_cast<double>(below(1000));
        case 1:
            return sign * std::min(whole, 9007199254740991.0);
        case 2:
            return sign * (1 + static_cast<double>(below(1'000'000))) / std::pow(10.0, below(5));
        case 3:
            return sign * whole / std::pow(10.0, below(25));
        case 4:
            return sign * std::pow(below(2) == 0 ? 2.0 : 10.0, static_cast<int>(below(64)) - 20) +
                   static_cast<double>(below(3)) - 1;
        case 5: {
            static constexpr std::array special{-0.0,   std::numeric_limits<double>::quiet_NaN(),
                                                0.0001, std::numeric_limits<double>::infinity(),
                                                0.1,    std::numeric_limits<double>::denorm_min(),
                                                1e16,   -std::numeric_limits<double>::max()};
            return special.at(below(special.size()));
        }
        default: {
            double any = 0;
            std::memcpy(&any, &bits, sizeof any);
            return any;
        }
        }
    }

    QString key() { return text(); }

    static constexpr std::uint32_t scalarKinds = 6;

    QJsonValue scalar(std::uint32_t kind) {
        switch (kind) {
        case 0:
            return QJsonValue::Null;
        case 1:
            return below(2) == 0;
        case 2:
            return number();
        case 3:
            return static_cast<int>(m_engine());
        case 4:
            return m_odd ? QJsonValue{static_cast<qint64>(quint64{m_engine()} << below(33))}
                         : QJsonValue{static_cast<int>(below(100))};
        default:
            return text();
        }
    }

    QJsonObject object(int depth) { return test_support::randomObject(*this, depth); }

    dl_queues queues() {
        dl_queues made;
        made.lock = below(2) == 0;
        made.status = status();
        for (std::uint32_t rest = below(4); rest > 0; --rest) {
            insert(made.dl, text(), queue());
        }
        return made;
    }

private:
    void appendCharacter(QString& text) {
        static constexpr std::array limits{0x7F,   0x80,   0x7FF,  0x800,
                                           0xD7FF, 0xE000, 0xFEFF, 0xFFFF};
        switch (below(m_odd ? 8 : 3)) {
        case 0:
            text += QChar(below(0x80));
            break;
        case 1:
            text += QChar(limits.at(below(limits.size())));
            break;
        case 2:
            text += QChar(below(0xD800));
            break;
        case 3:
            text += QChar(0xD800 + below(0x800)); // a half of a pair, mostly alone
            break;
        case 4: {
            const std::uint32_t character = 0x1'0000 + below(0x10'0000);
            text += QChar(QChar::highSurrogate(character));
            text += QChar(QChar::lowSurrogate(character));
            break;
        }
        default:
            text += QChar(0x20 + below(0x60));
        }
    }

    dl_queues::queue queue() {
        dl_queues::queue made;
        made.repeat = static_cast<int>(m_engine());
        made.timeout = static_cast<int>(below(100));
        made.start_from = -static_cast<int>(below(100));
        made.status = status();
        for (std::uint32_t rest = below(5); rest > 0; --rest) {
            insert(made.elements, id(), element());
        }
        return made;
    }

    dl_queues::element element() {
        dl_queues::element made;
        made.data = object(2);
        made.type = text();
        made.db_id = text();
        made.status = status();
        made.repeat = static_cast<int>(m_engine());
        return made;
    }

    /// Before, among and after the settings.
    QString id() {
        static const QStringList near{"r"_q,          "repeas"_q,     "repeat1"_q, "s"_q,
                                      "start_from"_q, "start_fron"_q, "statu"_q,   "status"_q,
                                      "t"_q,          "timeout\1"_q};
        return below(3) == 0 ? near.at(static_cast<int>(below(m_odd ? 10U : 4U))) : text();
    }

    enum dl_queues::status status() {
        return static_cast<enum dl_queues::status>(below(m_odd ? 6 : 4));
    }

    template <typename Value>
    void insert(QMap<QString, Value>& map, const QString& key, const Value& value) {
        if (m_odd && below(8) == 0 && !map.isEmpty()) {
            insertBeside(map, map.firstKey(), value);
        } else {
            map.insert(key, value);
        }
    }

    std::mt19937 m_engine;
    bool m_odd;
};

/// Takes members away as long as the object still fails.
QJsonObject smallest(QJsonObject failing, const std::function<bool(const QJsonObject&)>& fails) {
    for (const QString& key : failing.keys()) {
        QJsonObject smaller = failing;
        smaller.remove(key);
        if (fails(smaller)) {
            failing = smaller;
        } else if (failing.value(key).isObject()) {
            failing[key] = smallest(failing.value(key).toObject(), [&](const QJsonObject& inner) {
                QJsonObject with = failing;
                with[key] = inner;
                return fails(with);
            });
        }
    }
    return failing;
}

bool isOrdinary(const QJsonObject& object) {
    return json_writer{}.value(object);
}

void expectPlain(const QJsonObject& object, std::uint32_t seed) {
    const auto fails = [](const QJsonObject& json) { return compactJson(json) != plainJson(json); };
    if (fails(object)) {
        const QJsonObject small = smallest(object, fails);
        FAIL() << "seed " << seed << ": " << compactJson(small).toStdString() << " instead of "
               << plainJson(small).toStdString();
    }
}

TEST(CompactJson, OfRandomObjectsIsThatOfQt) {
    std::uint32_t ordinary = 0;
    for (std::uint32_t seed = firstSeed(); seed < firstSeed() + documents; ++seed) {
        const QJsonObject object = odd_content{seed}.object(4);
        expectPlain(object, seed);
        // What Qt's parser made is kept in other forms than what was inserted.
        expectPlain(QJsonDocument::fromJson(plainJson(object)).object(), seed);
        if (HasFatalFailure()) {
            return;
        }
        ordinary += isOrdinary(object) ? 1 : 0;
    }
    EXPECT_GT(ordinary, documents / 4) << "hardly anything was compared";
    EXPECT_LT(ordinary, documents - documents / 4) << "hardly anything is out of the ordinary";
}

TEST(CompactJson, OfRandomQueuesIsThatOfTheirObject) {
    std::uint32_t ordinary = 0;
    for (std::uint32_t seed = firstSeed(); seed < firstSeed() + documents; ++seed) {
        const dl_queues queues = odd_content{seed}.queues();
        ASSERT_EQ(compactJson(queues).toStdString(), plainJson(toJson(queues)).toStdString())
            << "seed " << seed;
        json_writer json;
        ordinary += model_convertors::writeOrdinary(json, queues) ? 1 : 0;
    }
    EXPECT_GT(ordinary, documents / 4) << "hardly anything was compared";
    EXPECT_LT(ordinary, documents - documents / 4) << "hardly anything is out of the ordinary";
}

TEST(CompactJson, OfEveryKindOfValueIsWrittenDirectly) {
    for (const QJsonValue& value :
         {QJsonValue{QJsonValue::Null}, QJsonValue{true}, QJsonValue{false}, QJsonValue{7},
          QJsonValue{-2.5}, QJsonValue{"text"_q}, QJsonValue{QString()}, QJsonValue{QJsonArray{}},
          QJsonValue{QJsonArray{1, "x"_q}}, QJsonValue{QJsonObject{}}}) {
        const QJsonObject object{{"v"_q, value}};
        EXPECT_TRUE(isOrdinary(object)) << plainJson(object).toStdString();
        EXPECT_EQ(compactJson(object), plainJson(object));
    }
}

TEST(CompactJson, OfEveryCharacterIsThatOfQt) {
    for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
        const QString text{QChar(unit)};
        const QJsonObject object{{text, text}};
        ASSERT_EQ(compactJson(object), plainJson(object)) << unit;
        EXPECT_EQ(isOrdinary(object), !QChar::isSurrogate(unit)) << unit;
    }
}

TEST(CompactJson, OfRandomNumbersIsThatOfQt) {
    odd_content random{firstSeed()};
    for (int i = 0; i < 200'000; ++i) {
        const double number = random.number();
        const QJsonObject object{{"n"_q, number}};
        ASSERT_EQ(compactJson(object), plainJson(object)) << number;
    }
}

TEST(CompactJson, OfNumbersThatWereParsedIsThatOfQt) {
    for (const char* number :
         {"-0", "-0.0", "0e5", "1.0", "1e3", "-1E+3", "1e-3", "1e-5", "9007199254740991",
          "9007199254740993", "-9007199254740993", "9223372036854775807", "9223372036854775808",
          "123456789012345678901234567890", "0.30000000000000004", "1e400"}) {
        const QByteArray text = QByteArray(R"({"n":)") + number + '}';
        const QJsonObject object = QJsonDocument::fromJson(text).object();
        EXPECT_EQ(compactJson(object).toStdString(), plainJson(object).toStdString()) << number;
    }
}

TEST(CompactJson, OfNumbersAtTheLimitsIsDirectOnlyWithin) {
    const auto isDirect = [](double number) { return isOrdinary({{"n"_q, number}}); };
    for (const double number :
         {0.0, 1.0, 0.1, 0.0001, 100000.0, 1e15, 9007199254740991.0, 4503599627370495.5, 1.0 / 3}) {
        EXPECT_TRUE(isDirect(number)) << number;
        EXPECT_TRUE(isDirect(-number)) << number;
    }
    for (const double number : {9007199254740992.0, 1e300, std::nextafter(0.0001, 0.0), 5e-324,
                                std::numeric_limits<double>::infinity()}) {
        EXPECT_FALSE(isDirect(number)) << number;
        EXPECT_FALSE(isDirect(-number)) << number;
    }
    EXPECT_FALSE(isDirect(std::numeric_limits<double>::quiet_NaN()));
}

TEST(CompactJson, OfDeepNestingIsThatOfQt) {
    QJsonObject object{{"n"_q, 1}};
    for (int level = 0; level < 500; ++level) {
        object = {{"o"_q, object}, {"a"_q, QJsonArray{QJsonArray{}, QJsonObject{}, level}}};
    }

    EXPECT_TRUE(isOrdinary(object));
    EXPECT_EQ(compactJson(object), plainJson(object));
}

// The buffer is far too small for these at first.
TEST(CompactJson, OfLongTextsIsThatOfQt) {
    for (int length = 990; length < 1010; ++length) {
        for (const char16_t unit : {u'a', u'\1', u'\u0416', u'\u20ac'}) {
            const QString text(length, QChar(unit));
            const QJsonObject object{{text, QJsonArray{text, 1, text}}, {"z"_q, text}};
            ASSERT_TRUE(isOrdinary(object));
            ASSERT_EQ(compactJson(object), plainJson(object)) << length;
        }
    }
}

TEST(CompactJson, OfATextThatIsVeryLongIsThatOfQt) {
    const QJsonObject object{{"t"_q, QString(30'000'000, u'x')}};

    EXPECT_FALSE(isOrdinary(object));
    EXPECT_TRUE(compactJson(object) == plainJson(object));
}

class ElementBesideTheSettings : public testing::TestWithParam<const char*> {};

TEST_P(ElementBesideTheSettings, HasItsPlace) {
    dl_queues queues;
    queues.dl["q"_q].elements.insert(QString::fromLatin1(GetParam()), {});
    json_writer json;

    EXPECT_TRUE(model_convertors::writeOrdinary(json, queues));
    EXPECT_EQ(json.take().toStdString(), plainJson(toJson(queues)).toStdString());
}

INSTANTIATE_TEST_SUITE_P(Named, ElementBesideTheSettings,
                         testing::Values("", "7", "repea", "repeat ", "start_from1", "start",
                                         "status0", "timeou", "timeout0", "\xff"));

TEST(QueuesOutOfTheOrdinary, AreThoseWithAnElementLikeASetting) {
    for (const QString& name : {"repeat"_q, "start_from"_q, "status"_q, "timeout"_q}) {
        dl_queues queues;
        queues.dl["q"_q].elements.insert(name, {});
        json_writer json;

        EXPECT_FALSE(model_convertors::writeOrdinary(json, queues));
        EXPECT_EQ(compactJson(queues), plainJson(toJson(queues)));
    }
}

TEST(QueuesOutOfTheOrdinary, AreThoseWithANameTwice) {
    dl_queues queues;
    queues.dl.insert("q"_q, {});
    insertBeside(queues.dl, "q"_q, {});
    dl_queues elements;
    elements.dl["q"_q].elements.insert("e"_q, {});
    insertBeside(elements.dl["q"_q].elements, "e"_q, {});

    for (const dl_queues& odd : {queues, elements}) {
        json_writer json;
        EXPECT_FALSE(model_convertors::writeOrdinary(json, odd));
        EXPECT_EQ(compactJson(odd), plainJson(toJson(odd)));
    }
}

} // namespace
