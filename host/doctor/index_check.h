#pragma once

#include "host/doctor/finding.h"
#include "host/servers/extended_json.h"
#include "host/servers/store_layout.h"

#include <QJsonObject>
#include <QString>

#include <optional>
#include <vector>

namespace host {

/// An index as a server lists it.
struct ListedIndex {
    QString name;
    /// As in IndexLayout.
    QString keys;
    // NOLINTBEGIN(readability-redundant-member-init): GCC warns where one without is left out.
    std::optional<double> expireAfterSecs = {};
    /// Options that the plug-in gives none of its indexes, as "unique"; empty without.
    QString options = {};
    // NOLINTEND(readability-redundant-member-init)
};

/// Reads one document of the list.
ListedIndex listedIndex(const DocumentView& index);

/// What is missing, other than laid out, or more than that.
Findings indexFindings(const CollectionLayout& layout, const std::vector<ListedIndex>& listed);

} // namespace host
