#include "fuzz/support/bson_of_choices.h"

#include <array>
#include <limits>
#include <utility>

namespace fuzz {

namespace raw = test_support::raw_bson;
using test_support::random_bson::member;

namespace {

constexpr int deepest = 12;
constexpr std::uint32_t mostDocuments = 24;

std::string text(choices& choices) {
    static constexpr std::array<std::string_view, 8> pieces{
        "kWh", "1-0:1.8.0", "é", "漢字", "\U0001F600", "\"\\\n\t\x7f", "\xEF\xBB\xBF", "\xC3"};
    const std::uint32_t kind = choices.below(32);
    if (kind < pieces.size()) {
        std::string text{pieces[kind]};
        return text += pieces[choices.below(pieces.size())];
    }
    if (kind < 12) {
        const std::size_t size = choices.byte();
        return std::string(size, static_cast<char>(choices.byte()));
    }
    return std::string{choices.bytes(kind - 12)};
}

std::string hexText(choices& choices) {
    if (choices.rarely()) {
        return text(choices);
    }
    static constexpr std::string_view digits = "0123456789abcdefABCDEF g";
    std::string hex;
    for (std::uint32_t rest = choices.below(20); rest > 0; --rest) {
        hex += digits[choices.below(choices.rarely() ? digits.size() : 16)];
    }
    return hex;
}

std::int64_t wholeNumber(choices& choices) {
    static constexpr std::array<std::int64_t, 8> limits{
        0,          2147483647,       -2147483648,       4294967296,
        4294967295, 9007199254740992, -9007199254740992, INT64_MIN + 128};
    switch (choices.below(4)) {
    case 0:
        return 1'700'000'000 + choices.byte();
    case 1: {
        const std::int64_t limit = limits[choices.below(limits.size())];
        return limit + choices.number<std::int8_t>();
    }
    case 2:
        return choices.number<std::int16_t>();
    default:
        return choices.number<std::int64_t>();
    }
}

double real(choices& choices) {
    using limits = std::numeric_limits<double>;
    static constexpr std::array<double, 8> limitCases{limits::quiet_NaN(),
                                                      -limits::infinity(),
                                                      limits::denorm_min(),
                                                      limits::max(),
                                                      -0.0,
                                                      9007199254740992.0,
                                                      -9223372036854775808.0,
                                                      1e-5};
    switch (choices.below(4)) {
    case 0:
        return choices.number<std::int16_t>() / 8.0;
    case 1:
        return limitCases[choices.below(limitCases.size())];
    case 2:
        return static_cast<double>(wholeNumber(choices));
    default:
        return choices.number<double>();
    }
}

std::string nestedKey(choices& choices) {
    static constexpr std::array<std::string_view, 16> keys{
        "a",           "b", "c",    "energy kWh", "",     "x.y",  "$date", "$oid",
        "$numberLong", "é", "\\\"", "\x7f",       "\x1f", "\xC3", "d",     "e"};
    const std::uint32_t kind = choices.below(20);
    if (kind < keys.size()) {
        return std::string{keys[kind]};
    }
    std::string key{choices.bytes(kind - keys.size() + 1)};
    std::ranges::replace(key, '\0', '0');
    return key;
}

std::string value(choices& choices, const std::string& key, int depth) {
    switch (choices.below(32)) {
    case 0:
    case 1:
    case 2:
        return raw::int32(key, static_cast<std::int32_t>(wholeNumber(choices)));
    case 3:
    case 4:
    case 5:
        return raw::number(key, real(choices));
    case 6:
    case 7:
    case 8:
        return raw::string(key, text(choices));
    case 9:
        return raw::boolean(key, choices.below(2) == 0);
    case 10:
        return raw::null(key);
    case 11:
    case 12:
        return raw::int64(key, wholeNumber(choices));
    case 13:
    case 14:
    case 15:
        return depth > deepest ? raw::null(key)
                               : raw::embedded(key, raw::doc(nestedElements(choices, depth + 1)));
    case 16:
    case 17: {
        std::string elements;
        for (std::uint32_t i = 0, count = depth > deepest ? 0 : choices.below(6); i < count; ++i) {
            const auto name = choices.rarely() ? nestedKey(choices) : std::to_string(i);
            elements += value(choices, name, depth + 1);
        }
        return raw::array(key, raw::doc(elements));
    }
    case 18:
        return raw::date(key, wholeNumber(choices));
    case 19:
        return raw::oid(key, "twelve bytes");
    case 20: {
        const std::string bytes = text(choices);
        return raw::binary(key, bytes, static_cast<char>(choices.byte()));
    }
    case 21:
        return raw::undefined(key);
    case 22:
        return raw::element_bytes{raw::detail::element(
            0x08, key, std::string(1, static_cast<char>(choices.byte())))}; // 2 is no boolean
    case 23:
        return raw::regex(key, "^a.*\"", "ix");
    case 24:
        return raw::dbPointer(key, "db.name", "twelve bytes");
    case 25:
        return raw::code(key, text(choices));
    case 26:
        return raw::symbol(key, text(choices));
    case 27:
        return raw::codeWithScope(key, text(choices), raw::doc(raw::int32("x", 1)));
    case 28:
        return raw::timestamp(key, choices.number<std::uint64_t>());
    case 29: {
        const auto low = choices.number<std::uint64_t>();
        return raw::decimal128(key, low, choices.number<std::uint64_t>());
    }
    case 30:
        return choices.below(2) == 0 ? raw::minKey(key) : raw::maxKey(key);
    default: {
        const std::uint8_t type = choices.byte();
        return raw::detail::element(type, key, text(choices));
    }
    }
}

std::string usual(choices& choices, const member& member) {
    switch (member.kind) {
    case member::int32:
        return raw::int32(member.key, static_cast<std::int32_t>(wholeNumber(choices)));
    case member::int64:
        return raw::int64(member.key, wholeNumber(choices));
    case member::text:
        return raw::string(member.key, text(choices));
    case member::hex:
        return raw::string(member.key, hexText(choices));
    case member::date:
        return raw::date(member.key, wholeNumber(choices));
    case member::object:
        return raw::embedded(member.key, raw::doc(nestedElements(choices)));
    case member::oid:
        return raw::oid(member.key, "twelve bytes");
    case member::any:
        return value(choices, member.key, 0);
    }
    return {};
}

} // namespace

std::string nestedElements(choices& choices, int depth) {
    std::string elements;
    for (std::uint32_t rest = choices.below(8); rest > 0; --rest) {
        const std::string key = nestedKey(choices);
        elements += value(choices, key, depth);
    }
    return elements;
}

std::string elementsOf(choices& choices, const std::vector<member>& members) {
    std::string elements;
    std::string last;
    const bool isStrange = choices.rarely();
    for (const member& member : members) {
        switch (isStrange ? choices.below(16) : 0) {
        case 11:
            break; // left out
        case 12:
            elements += value(choices, member.key, 0);
            break;
        case 13:
            elements += usual(choices, member);
            elements += value(choices, member.key, 0);
            break;
        case 14:
            last += usual(choices, member);
            break;
        case 15:
            elements += value(choices, nestedKey(choices), 0);
            elements += usual(choices, member);
            break;
        default:
            elements += usual(choices, member);
        }
    }
    return elements + last;
}

void damage(choices& choices, raw::document_bytes& document) {
    constexpr std::size_t head = 4;
    const std::size_t inner = document.bytes.size() - head - 1;
    for (std::uint32_t rest = choices.below(4); rest > 0 && inner > 0; --rest) {
        const std::size_t at = head + choices.number<std::uint16_t>() % inner;
        document.bytes[at] = choices.number<char>();
    }
}

similar_documents::similar_documents(std::string_view input, std::vector<member> members)
    : m_changes(input), m_members(std::move(members)) {
    m_chosen = m_changes.bytes(m_changes.number<std::uint16_t>() % 1024);
    m_chosen.resize(std::max<std::size_t>(m_chosen.size(), 1));
}

bool similar_documents::next() {
    if (m_made == mostDocuments || (m_made > 0 && m_changes.atEnd())) {
        return false;
    }
    const std::uint8_t kind = m_changes.byte();
    m_times = kind % 16 == 15 ? 12 : 1;
    for (std::uint32_t rest = m_made == 0 ? 0 : kind / 16; rest > 0; --rest) {
        const std::size_t at = m_changes.number<std::uint16_t>() % m_chosen.size();
        m_chosen[at] = m_changes.number<char>();
    }
    choices document{m_chosen};
    m_document = raw::doc(elementsOf(document, m_members));
    if (kind % 16 == 14) {
        damage(m_changes, m_document);
    }
    ++m_made;
    return true;
}

} // namespace fuzz
