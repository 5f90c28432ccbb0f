#pragma once

#include <bsoncxx/v1/document/view.hpp>
#include <bsoncxx/v1/element/view.hpp>

#include <algorithm>
#include <array>
#include <cstddef>
#include <stdexcept>
#include <string_view>

namespace bson_utils {

/// Finds the named fields of one document in a single pass over it.
///
/// Reading a document field by field would search it from the start each time; the documents of a
/// store have their fields in the writer's order, so this pass needs one comparison a field. Of a
/// repeated field the first counts, as in bsoncxx::v1::document::view::operator[], and a field that
/// is missing is an invalid element, whose typed accessors throw bsoncxx::v1::exception.
///
/// Borrows the document's bytes. `Fields` is an array of std::string_view in the expected order.
template <const auto& Fields>
class field_lookup {
public:
    /// A name of `Fields`; any other does not compile.
    class name {
    public:
        consteval name(std::string_view text)
            : m_index(static_cast<std::size_t>(std::ranges::find(Fields, text) - Fields.begin())) {
            if (m_index == Fields.size()) {
                throw std::logic_error("no such field");
            }
        }

    private:
        friend class field_lookup;
        std::size_t m_index;
    };

    /// Throws bsoncxx::v1::exception if the bytes are not a well-formed document.
    explicit field_lookup(const bsoncxx::v1::document::view& document) {
        std::size_t expected = 0;
        for (const bsoncxx::v1::element::view& element : document) {
            const std::size_t found = indexOf(std::string_view{element.key()}, expected);
            if (found == Fields.size()) {
                continue;
            }
            if (!m_elements[found]) {
                m_elements[found] = element;
            }
            expected = found + 1;
        }
    }

    const bsoncxx::v1::element::view& operator[](name field) const {
        return m_elements[field.m_index];
    }

private:
    static std::size_t indexOf(std::string_view key, std::size_t expected) {
        if (expected < Fields.size() && Fields[expected] == key) {
            return expected;
        }
        return static_cast<std::size_t>(std::ranges::find(Fields, key) - Fields.begin());
    }

    std::array<bsoncxx::v1::element::view, Fields.size()> m_elements;
};

} // namespace bson_utils
