#pragma once

#include <QString>

#include <vector>

namespace host {

/// Where the plug-in keeps its documents, whatever database the connection string names.
inline constexpr const char* databaseName = "kelvrostorage";

/// How long after its "ttl" date the server may remove a document.
inline constexpr int expireAfterSecs = 60;

struct IndexLayout {
    /// The keys in their order, as "modem_id: 1, timestamp: -1" or "modem_id: hashed".
    QString keys;
    /// Whether the server removes documents by it.
    bool expires = false;
};

struct CollectionLayout {
    QString name;
    /// What its documents are, for people.
    QString holds;
    std::vector<IndexLayout> indexes;

    bool expires() const;
};

/// The collections that the plug-in lays out, with all indexes that they have besides the one that
/// MongoDB itself makes for "_id". Frozen, as the format of the stored documents is.
const std::vector<CollectionLayout>& storeLayout();

} // namespace host
