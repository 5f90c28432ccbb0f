#include "host/doctor/index_check.h"

#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/id.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <QStringList>

#include <algorithm>

namespace host {

namespace {

/// The direction of a key, or "hashed" and the like; whole numbers of any type are the same.
QString direction(const bsoncxx::v1::element::view& key) {
    using bsoncxx::v1::types::id;
    switch (key.type_id()) {
    case id::k_int32:
        return QString::number(key.get_int32().value);
    case id::k_int64:
        return QString::number(key.get_int64().value);
    case id::k_double:
        return QString::number(key.get_double().value);
    case id::k_string: {
        const auto text = key.get_string().value;
        return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    }
    default:
        return QStringLiteral("?");
    }
}

QString keysOf(const DocumentView& keys) {
    QStringList parts;
    for (const auto& key : keys) {
        const auto name = key.key();
        parts.append(QString::fromUtf8(name.data(), static_cast<int>(name.size())) +
                     QStringLiteral(": ") + direction(key));
    }
    return parts.join(QStringLiteral(", "));
}

QString shown(const QString& keys) {
    return QLatin1Char('{') + keys + QLatin1Char('}');
}

/// What makes the index, for the shells of MongoDB and FerretDB.
QString command(const QString& collection, const IndexLayout& index) {
    auto keys = index.keys;
    keys.replace(QStringLiteral("hashed"), QStringLiteral("\"hashed\""));
    return QStringLiteral("db.%1.createIndex(%2%3)")
        .arg(collection, shown(keys),
             index.expires ? QStringLiteral(", {expireAfterSeconds: %1}").arg(expireAfterSecs)
                           : QString());
}

QString inShell(const QString& statement) {
    return QStringLiteral("in mongosh, after `use %1`: %2")
        .arg(QLatin1String(databaseName), statement);
}

QString expiryOf(const ListedIndex& index) {
    constexpr int digits = 10; // all of the longest that there is
    return index.expireAfterSecs ? QStringLiteral("removes documents %1 s after the date")
                                       .arg(*index.expireAfterSecs, 0, 'g', digits)
                                 : QStringLiteral("removes no documents");
}

Finding missing(const QString& subject, const QString& collection, const IndexLayout& index) {
    return {.severity = Severity::Warning,
            .subject = subject,
            .found = QStringLiteral("%1 is missing: %2")
                         .arg(shown(index.keys),
                              index.expires ? QStringLiteral("documents stay for ever")
                                            : QStringLiteral("queries that need it take long")),
            .advice = inShell(command(collection, index))};
}

/// How an index with the right keys is not what it should be; nothing if it is.
std::optional<Finding> difference(const QString& subject, const QString& collection,
                                  const IndexLayout& wanted, const ListedIndex& listed) {
    const bool expiryIsRight = wanted.expires ? listed.expireAfterSecs == expireAfterSecs
                                              : !listed.expireAfterSecs.has_value();
    if (expiryIsRight && listed.options.isEmpty()) {
        return {};
    }
    Finding finding{.severity = Severity::Warning,
                    .subject = subject,
                    .advice =
                        inShell(QStringLiteral("db.%1.dropIndex(\"%2\"); %3")
                                    .arg(collection, listed.name, command(collection, wanted)))};
    finding.found =
        expiryIsRight
            ? QStringLiteral("%1 is %2, and should not be").arg(shown(wanted.keys), listed.options)
            : QStringLiteral("%1 %2; it should be: %3")
                  .arg(shown(wanted.keys), expiryOf(listed),
                       wanted.expires ? QStringLiteral("%1 s").arg(expireAfterSecs)
                                      : QStringLiteral("none"));
    return finding;
}

Finding extra(const QString& subject, const QString& collection, const ListedIndex& listed) {
    Finding finding{
        .severity = Severity::Note,
        .subject = subject,
        .found = QStringLiteral("%1 is not one of the plug-in's").arg(shown(listed.keys)),
        .advice = QStringLiteral("if nobody needs it, it costs time and space for "
                                 "nothing; ") +
                  inShell(QStringLiteral("db.%1.dropIndex(\"%2\")").arg(collection, listed.name))};
    if (listed.expireAfterSecs) {
        finding.severity = Severity::Warning;
        finding.found += QStringLiteral(", and ") + expiryOf(listed);
    }
    return finding;
}

} // namespace

ListedIndex listedIndex(const DocumentView& index) {
    const auto described = plainObject(index);
    ListedIndex listed{.name = described.value(QLatin1String("name")).toString(),
                       .keys = keysOf(index["key"].get_document().value)};
    if (const auto expiry = described.value(QLatin1String("expireAfterSeconds"));
        expiry.isDouble()) {
        listed.expireAfterSecs = expiry.toDouble();
    }
    QStringList options;
    for (const auto* name : {"unique", "sparse", "hidden"}) {
        if (described.value(QLatin1String(name)).toBool()) {
            options.append(QLatin1String(name));
        }
    }
    for (const auto* name : {"partialFilterExpression", "collation"}) {
        if (described.contains(QLatin1String(name))) {
            options.append(QLatin1String(name));
        }
    }
    listed.options = options.join(QStringLiteral(", "));
    return listed;
}

Findings indexFindings(const CollectionLayout& layout, const std::vector<ListedIndex>& listed) {
    const auto subject = QStringLiteral("indexes of %1").arg(layout.name);
    Findings findings;
    for (const auto& wanted : layout.indexes) {
        const auto found = std::ranges::find(listed, wanted.keys, &ListedIndex::keys);
        if (found == listed.end()) {
            findings.push_back(missing(subject, layout.name, wanted));
        } else if (const auto other = difference(subject, layout.name, wanted, *found)) {
            findings.push_back(*other);
        }
    }
    for (const auto& index : listed) {
        if (index.keys != QLatin1String("_id: 1") &&
            std::ranges::find(layout.indexes, index.keys, &IndexLayout::keys) ==
                layout.indexes.end()) {
            findings.push_back(extra(subject, layout.name, index));
        }
    }
    if (findings.empty()) {
        findings.push_back(
            {.subject = subject,
             .found = QStringLiteral("all %1 are there, as laid out").arg(layout.indexes.size())});
    }
    return findings;
}

} // namespace host
