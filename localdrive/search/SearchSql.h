// From a search to the condition that finds its files in the database.
#pragma once

#include "localdrive/search/SearchQuery.h"

#include <QString>
#include <QVariantList>

namespace quenby::localdrive {

struct SearchCondition {
    QString sql;         // about the row "f" of the table files; always 0 or 1, never NULL
    QVariantList values; // for its "?", in order
};

// Who and what the names "me" and "root" mean.
struct SearchNames {
    QString me; // e-mail address
    QString rootFolderId;
};

SearchCondition searchCondition(const SearchNode& search, const SearchNames& names);

} // namespace quenby::localdrive
