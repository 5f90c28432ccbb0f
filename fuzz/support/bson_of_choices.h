#pragma once

#include "fuzz/support/choices.h"
#include "tests/support/random_bson.h"

#include <string>
#include <vector>

/// BSON documents of a fuzzer's choices: well-formed ones with what the driver stores, and with
/// everything that other writers may have put there.
namespace fuzz {

/// The elements of a document, for raw_bson::doc(). Where every choice is zero, `members` in their
/// order and with the types that the driver writes.
std::string elementsOf(choices& choices,
                       const std::vector<test_support::random_bson::member>& members);

/// Those of a nested document, with any types.
std::string nestedElements(choices& choices, int depth = 0);

/// Changes some bytes, but not the length at the start and the zero at the end, which are the
/// library's to check.
void damage(choices& choices, test_support::raw_bson::document_bytes& document);

/// The inputs of the readers: a document and others made after it, as the devices of one make send
/// them to one query. The first bytes choose a document; then come changes to these bytes, each of
/// which chooses the next document.
class similar_documents {
public:
    similar_documents(std::string_view input,
                      std::vector<test_support::random_bson::member> members);

    /// False when there are no more.
    bool next();
    const test_support::raw_bson::document_bytes& document() const { return m_document; }
    /// How often the document comes.
    std::uint32_t times() const { return m_times; }

private:
    void make();

    choices m_changes;
    std::vector<test_support::random_bson::member> m_members;
    std::string m_chosen;
    test_support::raw_bson::document_bytes m_document;
    std::uint32_t m_times = 1;
    std::uint32_t m_made = 0;
};

} // namespace fuzz
