#include "fuzz/support/json_of_choices.h"

#include "model/json/compact_json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QString>

#include <array>
#include <utility>

namespace fuzz {

namespace {

constexpr int deepest = 20;

QJsonValue anyValue(choices& choices, int depth);

QString anyString(choices& choices) {
    const std::uint32_t size = choices.below(24);
    QString text;
    for (std::uint32_t i = 0; i < size; ++i) {
        const bool isWide = choices.rarely();
        text.append(QChar(isWide ? choices.number<char16_t>() : char16_t{choices.byte()}));
    }
    return choices.rarely() ? text.repeated(1 + choices.byte()) : text;
}

QJsonArray anyArray(choices& choices, int depth) {
    QJsonArray array;
    for (std::uint32_t rest = choices.below(6); rest > 0; --rest) {
        array.append(anyValue(choices, depth));
    }
    return array;
}

QJsonValue anyValue(choices& choices, int depth) {
    switch (choices.below(depth < deepest ? 10 : 8)) {
    case 0:
        return choices.number<std::int16_t>();
    case 1:
        return choices.number<double>();
    case 2:
        return qint64{choices.number<std::int64_t>()};
    case 3:
        return choices.number<std::int32_t>() / 1000.0;
    case 4:
    case 5:
        return anyString(choices);
    case 6:
        return choices.below(2) == 0;
    case 7:
        return QJsonValue{QJsonValue::Null};
    case 8:
        return anyArray(choices, depth + 1);
    default:
        return anyObject(choices, depth + 1);
    }
}

/// Writes JSON text; where every choice is zero, an empty object.
class text_writer {
public:
    text_writer(choices& choices, const json_names& names) : m_choices(choices), m_names(names) {}

    std::string object(int depth) {
        std::string members;
        for (std::uint32_t rest = m_choices.below(10); rest > 0; --rest) {
            members += members.empty() ? "" : ",";
            members += key();
            members += ':';
            members += value(depth);
        }
        return '{' + members + '}';
    }

private:
    std::string key() {
        const std::uint32_t kind = m_choices.byte();
        if (kind < 0xE0 && !m_names.empty()) {
            return '"' + std::string{m_names[kind % m_names.size()]} + '"';
        }
        return kind % 2 == 0 ? '"' + std::string(1, static_cast<char>('a' + kind % 8)) + '"'
                             : string();
    }

    std::string value(int depth) {
        switch (m_choices.below(depth < deepest ? 16 : 12)) {
        case 0:
        case 1:
        case 2:
            return std::to_string(m_choices.number<std::int16_t>());
        case 3:
        case 4:
            return number();
        case 5:
        case 6:
        case 7:
            return string();
        case 8:
            return key(); // also the states of queues are names
        case 9:
            return m_choices.below(2) == 0 ? "true" : "false";
        case 10:
            return "null";
        case 11: // anything
            return std::string{m_choices.bytes(m_choices.below(16))};
        case 12: {
            std::string elements;
            for (std::uint32_t rest = m_choices.below(6); rest > 0; --rest) {
                elements += (elements.empty() ? "" : ",") + value(depth + 1);
            }
            return '[' + elements + ']';
        }
        default:
            return object(depth + 1);
        }
    }

    std::string number() {
        static constexpr std::array<std::string_view, 16> pieces{"0",
                                                                 "1",
                                                                 "9",
                                                                 "-",
                                                                 ".",
                                                                 "e",
                                                                 "E",
                                                                 "+",
                                                                 "00",
                                                                 "99999999",
                                                                 "2147483648",
                                                                 "9007199254740993",
                                                                 "9223372036854775808",
                                                                 ".5",
                                                                 "e308",
                                                                 "e-320"};
        std::string digits;
        for (std::uint32_t rest = 1 + m_choices.below(6); rest > 0; --rest) {
            digits += pieces[m_choices.below(pieces.size())];
        }
        return digits;
    }

    std::string string() {
        static constexpr std::array<std::string_view, 16> pieces{
            "a",    "0",       "ff",         "\\n",          "\\\"",
            "\\\\", "\\u0000", "\\ud800",    "\\udc00",      "\\ud83d\\ude00",
            "é",    "漢",      "\U0001F600", "\xEF\xBB\xBF", "\xC3",
            "\x01"};
        std::string text;
        for (std::uint32_t rest = m_choices.below(6); rest > 0; --rest) {
            const std::uint32_t kind = m_choices.byte();
            text += kind < 0xC0 ? std::string{pieces[kind % pieces.size()]}
                                : std::string{m_choices.bytes(kind % 32)};
        }
        return '"' + text + '"';
    }

    choices& m_choices;
    const json_names& m_names;
};

} // namespace

QJsonObject anyObject(choices& choices, int depth) {
    QJsonObject object;
    for (std::uint32_t rest = choices.below(8); rest > 0; --rest) {
        static constexpr std::string_view names = "abcd";
        const QString key = choices.rarely()
                                ? anyString(choices)
                                : QString(QLatin1Char(names[choices.below(names.size())]));
        object.insert(key, anyValue(choices, depth));
    }
    return object;
}

std::string anyText(choices& choices, const json_names& names) {
    return text_writer{choices, names}.object(0);
}

QJsonObject parsed(std::string_view json) {
    return QJsonDocument::fromJson(QByteArray(json.data(), static_cast<int>(json.size()))).object();
}

QJsonObject settled(QJsonObject object) {
    QByteArray text = model_convertors::plainJson(object);
    for (QByteArray previous; previous != text;) {
        previous = std::exchange(text, {});
        object = QJsonDocument::fromJson(previous).object();
        text = model_convertors::plainJson(object);
    }
    return object;
}

} // namespace fuzz
