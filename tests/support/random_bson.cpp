#include "tests/support/random_bson.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <string_view>

namespace test_support::random_bson {

namespace raw = raw_bson;

namespace {

class generator {
public:
    explicit generator(std::mt19937_64& random) : m_random(random) {}

    document generate(const std::vector<member>& members) {
        document document;
        for (const member& member : members) {
            if (oneIn(25)) {
                continue;
            }
            document.push_back(oneIn(12) ? anything(member.key, 0) : usual(member));
            if (oneIn(60)) {
                document.push_back(anything(member.key, 0)); // a repeated key
            }
        }
        for (int others = below(3); others > 0; --others) {
            document.push_back(anything(key(), 0));
        }
        if (oneIn(10)) {
            std::ranges::shuffle(document, m_random);
        }
        return document;
    }

    document ordinary(const std::vector<member>& members) {
        document document;
        for (const member& member : members) {
            document.push_back(oneIn(100) ? usual(member) : plain(member));
        }
        return document;
    }

    document similar(const std::vector<member>& members, const document& of) {
        document document = ordinary(members);
        for (std::size_t i = 0; i < of.size(); ++i) {
            if (members[i].kind == member::object) {
                document[i] = similar(of[i]);
            }
        }
        return document;
    }

private:
    element similar(const element& of) {
        element element = of;
        element.children.clear();
        for (const auto& child : of.children) {
            if (oneIn(150)) {
                element.children.push_back(anything(oneIn(2) ? child.key : key(), 1));
            }
            if (oneIn(150)) {
                continue;
            }
            if (child.nesting != 0) {
                element.children.push_back(oneIn(4) ? similar(child) : child);
            } else {
                element.children.push_back(oneIn(3) ? child : similarValue(child));
            }
        }
        return element;
    }

    // Mostly of the same type.
    element similarValue(const element& of) {
        const auto type = of.bytes.front();
        for (int tries = 0; tries < 20; ++tries) {
            element other = oneIn(30) ? anything(of.key, 1) : plainValue(of.key, 5);
            if (other.nesting == 0 && (other.bytes.front() == type || oneIn(20))) {
                return other;
            }
        }
        return of;
    }

    // As usual(), but with contents that every reader takes alike.
    element plain(const member& member) {
        switch (member.kind) {
        case member::text:
            return leaf(member.key, raw::string(member.key, plainText()));
        case member::object:
            return plainNested(member.key, 0x03, 1);
        case member::any:
            return plainValue(member.key, 0);
        case member::int64:
            return leaf(member.key,
                        raw::int64(member.key, std::int64_t{1'500'000'000} + below(600'000'000)));
        default:
            return usual(member);
        }
    }

    std::string plainText() {
        using namespace std::string_view_literals;
        std::string text;
        for (int pieces = below(4); pieces > 0; --pieces) {
            text += oneOf(std::array<std::string_view, 7>{"1-0:1.8.0"sv, "kWh"sv, "é"sv, "漢字"sv,
                                                          "\U0001F600"sv, "\"\\\n\t"sv, "12.5"sv});
        }
        return oneIn(50) ? text + std::string(300, 'x') : text;
    }

    // Depth 0 is a member's own value, which is no document.
    element plainValue(std::string key, int depth) {
        switch (below(depth == 0 || depth > 4 ? 4 : 8)) {
        case 0:
            return leaf(key, raw::int32(key, static_cast<std::int32_t>(wholeNumber())));
        case 1:
            return leaf(key, raw::number(key, finite(real())));
        case 2:
            return leaf(key, raw::string(key, plainText()));
        case 3:
            return leaf(key, raw::boolean(key, oneIn(2)));
        case 4:
            return leaf(key, raw::null(key));
        case 5:
            return leaf(key, raw::int64(key, wholeNumber() >> 11));
        case 6:
            return plainNested(std::move(key), 0x04, depth + 1);
        default:
            return plainNested(std::move(key), 0x03, depth + 1);
        }
    }

    element plainNested(std::string key, unsigned char nesting, int depth) {
        element element{.key = std::move(key), .bytes = {}, .nesting = nesting, .children = {}};
        for (int count = below(5), i = 0; i < count; ++i) {
            std::string name =
                nesting == 0x04
                    ? std::to_string(i)
                    : oneOf(std::array<std::string, 6>{"a", "b", "$date", "energy kWh", "", "x.y"});
            element.children.push_back(plainValue(std::move(name), depth));
        }
        return element;
    }

    int below(int limit) { return std::uniform_int_distribution<int>{0, limit - 1}(m_random); }

    bool oneIn(int chance) { return below(chance) == 0; }

    template <typename Item, std::size_t Count>
    Item oneOf(const std::array<Item, Count>& items) {
        return items[static_cast<std::size_t>(below(static_cast<int>(Count)))];
    }

    static element leaf(std::string key, std::string bytes) {
        return {.key = std::move(key), .bytes = std::move(bytes), .nesting = 0, .children = {}};
    }

    element usual(const member& member) {
        switch (member.kind) {
        case member::int32:
            return leaf(member.key, raw::int32(member.key, static_cast<std::int32_t>(m_random())));
        case member::int64:
            return leaf(member.key,
                        raw::int64(member.key, std::int64_t{1'500'000'000} + below(900'000'000)));
        case member::text:
            return leaf(member.key, raw::string(member.key, text()));
        case member::hex:
            return leaf(member.key, raw::string(member.key, "00ff0A1b"));
        case member::date:
            return leaf(member.key, raw::date(member.key, 1'500'000'000'123 + below(900'000'000)));
        case member::object:
            return nested(member.key, 0x03, 1);
        case member::oid:
            return leaf(member.key, raw::oid(member.key, "twelve bytes"));
        case member::any:
            return anything(member.key, 0);
        }
        return {};
    }

    std::int64_t wholeNumber() {
        switch (below(4)) {
        case 0:
            return below(100);
        case 1:
            return oneOf(std::array<std::int64_t, 10>{
                0, -1, 2147483647, 2147483648, -2147483648, -2147483649, 9007199254740993,
                -9007199254740993, std::numeric_limits<std::int64_t>::max(),
                std::numeric_limits<std::int64_t>::min()});
        default:
            return static_cast<std::int64_t>(m_random()) >> below(64);
        }
    }

    double real() {
        switch (below(6)) {
        case 0:
            return static_cast<double>(wholeNumber());
        case 1:
            return oneOf(std::array<double, 12>{
                0.0, -0.0, 0.1, -2.5, 5.0, 1e20, 1e300, 5e-324, 2147483648.0, 9223372036854775808.0,
                -9223372036854775808.0, std::numeric_limits<double>::max()});
        case 2:
            return std::bit_cast<double>(m_random());
        default:
            return static_cast<double>(wholeNumber() % 1000000) / 1000.0;
        }
    }

    // Now and then no number at all: the whole document's text does not parse then.
    double strangeReal() {
        return oneIn(40) ? oneOf(std::array<double, 3>{std::numeric_limits<double>::quiet_NaN(),
                                                       std::numeric_limits<double>::infinity(),
                                                       -std::numeric_limits<double>::infinity()})
                         : finite(real());
    }

    static double finite(double number) { return std::isfinite(number) ? number : 1.5; }

    std::string text() {
        using namespace std::string_view_literals;
        if (oneIn(300)) {
            return std::string{oneOf(std::array<std::string_view, 5>{
                "\xFF"sv, "ok\x80"sv, "\xED\xA0\x80"sv, "\xF5\x80\x80\x80"sv, "\xE2\x82"sv})};
        }
        std::string text;
        for (int pieces = below(4); pieces > 0; --pieces) {
            text += oneOf(std::array<std::string_view, 22>{"1-0:1.8.0"sv,
                                                           "kWh"sv,
                                                           "true"sv,
                                                           "12.5"sv,
                                                           " "sv,
                                                           "\""sv,
                                                           "\\"sv,
                                                           "/"sv,
                                                           "\b\f\n\r\t"sv,
                                                           "\x01\x1F\x7F"sv,
                                                           "\0"sv,
                                                           "\xC0\x80"sv,
                                                           "é"sv,
                                                           "Ω"sv,
                                                           "漢字"sv,
                                                           "\U0001F600"sv,
                                                           "\xEF\xBB\xBF"sv,
                                                           "\xEF\xBF\xBF"sv,
                                                           "\xEF\xBF\xBD"sv,
                                                           "\\u0041"sv,
                                                           "{}[]:,"sv,
                                                           "\xE2\x80\xA8"sv});
        }
        return text;
    }

    static std::string withoutZero(std::string text) {
        std::erase(text, '\0');
        return text;
    }

    std::string key() {
        using namespace std::string_view_literals;
        if (oneIn(300)) {
            return "\xFE";
        }
        return std::string{oneOf(std::array<std::string_view, 18>{
            "a"sv, "b"sv, "c"sv, "energy"sv, "power_kw"sv, "$date"sv, "$oid"sv, "$numberLong"sv,
            "x.y"sv, ""sv, "é"sv, "Ω"sv, "\"quoted\""sv, "back\\slash"sv, "\n"sv, "_id"sv,
            "\xC0\x80"sv, "z\U0001F600"sv})};
    }

    element anything(std::string key, int depth) {
        switch (below(24)) {
        case 0:
        case 1:
            return leaf(key, raw::int32(key, static_cast<std::int32_t>(wholeNumber())));
        case 2:
        case 3:
            return leaf(key, raw::int64(key, wholeNumber()));
        case 4:
        case 5:
            return leaf(key, raw::number(key, strangeReal()));
        case 6:
        case 7:
            return leaf(key, raw::string(key, text()));
        case 8:
            return leaf(key, raw::boolean(key, oneIn(2)));
        case 9:
            return leaf(key, raw::null(key));
        case 10:
        case 11:
            return depth < 4 ? nested(key, 0x03, depth + 1) : leaf(key, raw::null(key));
        case 12:
            return depth < 4 ? nested(key, 0x04, depth + 1) : leaf(key, raw::null(key));
        case 13:
            return leaf(key, raw::oid(key, "\x01\x23\x45\x67\x89\xAB\xCD\xEF twe"));
        case 14:
            return leaf(key, raw::date(key, wholeNumber()));
        case 15:
            return leaf(key, raw::binary(key, text(), oneOf(std::array<char, 4>{0, 1, 4, '\x80'})));
        case 16:
            return leaf(key, raw::regex(key, withoutZero(text()), oneIn(9) ? "xz\"i\xFF" : "imx"));
        case 17:
            return leaf(key, raw::timestamp(key, m_random()));
        case 18:
            return leaf(key, raw::undefined(key));
        case 19:
            return leaf(key, raw::code(key, text()));
        case 20:
            return leaf(key, raw::codeWithScope(key, text(),
                                                raw::doc(raw::date("when", wholeNumber()),
                                                         raw::number("n", real()),
                                                         raw::string("s", text()))));
        case 21:
            return leaf(key, raw::symbol(key, text()));
        case 22:
            return leaf(key, raw::decimal128(key, m_random() >> 20, 0x3040000000000000));
        default:
            return leaf(key, oneIn(3)   ? raw::minKey(key)
                             : oneIn(2) ? raw::maxKey(key)
                                        : raw::dbPointer(key, text(), "twelve bytes"));
        }
    }

    element nested(std::string key, unsigned char nesting, int depth) {
        if (oneIn(400)) {
            return deep(std::move(key), 195 + below(10));
        }
        element element{.key = std::move(key), .bytes = {}, .nesting = nesting, .children = {}};
        const int count = oneIn(10) ? 0 : below(5);
        for (int i = 0; i < count; ++i) {
            element.children.push_back(
                anything(nesting == 0x04 ? std::to_string(i) : this->key(), depth));
        }
        return element;
    }

    // About as many levels as libbson renders.
    element deep(std::string key, int levels) {
        element element{.key = std::move(key), .bytes = {}, .nesting = 0x03, .children = {}};
        if (levels > 1) {
            element.children.push_back(deep("d", levels - 1));
        } else if (oneIn(2)) {
            element.children.push_back(leaf("t", raw::string("t", text())));
        }
        return element;
    }

    std::mt19937_64& m_random;
};

// Tries every element of the tree once; true if one could be left out.
bool removeOne(document& whole, std::vector<element>& elements,
               const std::function<bool(const document&)>& fails) {
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const element removed = elements[i];
        elements.erase(elements.begin() + static_cast<std::ptrdiff_t>(i));
        if (fails(whole)) {
            return true;
        }
        elements.insert(elements.begin() + static_cast<std::ptrdiff_t>(i), removed);
        if (removeOne(whole, elements[i].children, fails)) {
            return true;
        }
    }
    return false;
}

std::string bytesOf(const element& element) {
    if (element.nesting == 0) {
        return element.bytes;
    }
    return raw::detail::element(element.nesting, element.key, bytesOf(element.children).bytes);
}

} // namespace

raw::document_bytes bytesOf(const document& document) {
    std::string content;
    for (const element& element : document) {
        content += bytesOf(element);
    }
    return raw::doc(content);
}

document generate(std::mt19937_64& random, const std::vector<member>& members) {
    return generator{random}.generate(members);
}

document generateOrdinary(std::mt19937_64& random, const std::vector<member>& members) {
    return generator{random}.ordinary(members);
}

document generateSimilar(std::mt19937_64& random, const std::vector<member>& members,
                         const document& of) {
    return generator{random}.similar(members, of);
}

document shrink(document failing, const std::function<bool(const document&)>& fails) {
    while (removeOne(failing, failing, fails)) {
    }
    return failing;
}

} // namespace test_support::random_bson
