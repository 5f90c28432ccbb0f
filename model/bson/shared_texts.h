#pragma once

#include <QString>

#include <cstddef>
#include <functional>
#include <string_view>
#include <vector>

namespace bson_utils {

/// Makes the texts of one query's records: those that come again and again (tags, OBIS codes,
/// makes) share one storage, which halves what the records of a large query hold.
///
/// Bounded: 256 texts of up to 64 characters, and none of the first few. One thread at a time; the
/// texts themselves may go to any.
class shared_texts {
public:
    /// `ascii` holds ASCII only.
    QString fromAscii(std::string_view ascii) {
        const QLatin1String text{ascii.data(), static_cast<int>(ascii.size())};
        if (ascii.empty() || ascii.size() > longest || m_made < few) {
            ++m_made;
            return text;
        }
        if (m_known.empty()) {
            m_known.resize(most);
        }
        QString& known = m_known[std::hash<std::string_view>{}(ascii) % most];
        if (known != text) {
            known = text;
        }
        return known;
    }

private:
    /// Longer ones are hardly ever repeated.
    static constexpr std::size_t longest = 64;
    static constexpr std::size_t most = 256;
    /// So many texts are not worth a table.
    static constexpr std::size_t few = 32;

    std::size_t m_made = 0;
    /// Each at the place that its hash gives; a later text takes the place of an earlier one.
    std::vector<QString> m_known;
};

} // namespace bson_utils
