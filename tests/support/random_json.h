#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <array>
#include <cstdint>
#include <random>

namespace test_support {

template <typename Content>
QJsonArray randomArray(Content& content, int depth);
template <typename Content>
QJsonObject randomObject(Content& content, int depth);

/// `depth` levels deep at the most. Of `content` come below(limit), scalar(kind) for a kind below
/// Content::scalarKinds, and key().
template <typename Content>
QJsonValue randomValue(Content& content, int depth) {
    constexpr auto allKinds = Content::scalarKinds + 2;
    const auto kind = content.below(depth > 0 ? allKinds : Content::scalarKinds);
    if (kind < Content::scalarKinds) {
        return content.scalar(kind);
    }
    if (kind > Content::scalarKinds) {
        return randomObject(content, depth - 1);
    }
    return randomArray(content, depth - 1);
}

/// Of up to four values.
template <typename Content>
QJsonArray randomArray(Content& content, int depth) {
    QJsonArray array;
    for (auto rest = content.below(5); rest > 0; --rest) {
        array.append(randomValue(content, depth));
    }
    return array;
}

/// Of up to four members.
template <typename Content>
QJsonObject randomObject(Content& content, int depth) {
    QJsonObject object;
    for (auto rest = content.below(5); rest > 0; --rest) {
        const QString key = content.key();
        object.insert(key, randomValue(content, depth));
    }
    return object;
}

/// Random content from a seed; the same seed gives the same content on any machine (the standard
/// library's distributions would not).
class random_content {
public:
    explicit random_content(std::uint32_t seed) : m_engine(seed) {}

    std::uint32_t below(std::uint32_t limit) {
        return static_cast<std::uint32_t>(m_engine()) % limit;
    }
    int anyInt() { return static_cast<int>(m_engine()); }
    quint64 anyUnsigned64() {
        return (quint64{m_engine()} << 32 | quint64{m_engine()}) >> below(64);
    }

    /// Of up to nine characters from ASCII, control characters, the whole basic plane and pairs of
    /// surrogates; never a lone surrogate, never a byte order mark.
    QString text() {
        QString made;
        for (std::uint32_t rest = below(10); rest > 0; --rest) {
            switch (below(5)) {
            case 0:
                made.append(QChar{below(0x20)});
                break;
            case 1:
                made.append(QChar{below(0xD800)});
                break;
            case 2:
                made.append(QChar{QChar::highSurrogate(0x1F600)});
                made.append(QChar{QChar::lowSurrogate(0x1F600 + below(0x50))});
                break;
            default:
                made.append(QChar{0x20 + below(0x5F)});
            }
        }
        return made;
    }

    /// Of up to eight printable ASCII characters: what comes back unchanged from being read as
    /// Latin-1, and is no "$" wrapper.
    QString key() {
        QString made;
        for (std::uint32_t rest = below(9); rest > 0; --rest) {
            made.append(QChar{0x25 + below(0x5A)});
        }
        return made;
    }

    /// Exactly representable, and so are its digits: whole numbers up to 53 bits and fractions.
    double number() {
        const auto whole = static_cast<double>(anyUnsigned64() >> 11);
        const double magnitude = below(2) == 0 ? whole : whole / 1024.0;
        return below(2) == 0 ? magnitude : -magnitude;
    }

    QByteArray bytes() {
        QByteArray made;
        for (std::uint32_t rest = below(40); rest > 0; --rest) {
            made.append(static_cast<char>(below(256)));
        }
        return made;
    }

    static constexpr std::uint32_t scalarKinds = 5;

    QJsonValue scalar(std::uint32_t kind) {
        switch (kind) {
        case 0:
            return QJsonValue{QJsonValue::Null};
        case 1:
            return below(2) == 0;
        case 2:
            return number();
        case 3:
            return anyInt();
        default:
            return text();
        }
    }

    QJsonArray array(int depth) { return randomArray(*this, depth); }
    QJsonObject object(int depth) { return randomObject(*this, depth); }

private:
    std::mt19937 m_engine;
};

} // namespace test_support
