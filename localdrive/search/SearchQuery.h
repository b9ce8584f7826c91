// The search language of the parameter "q", as a tree.
//
//   query   := term (("and" | "or") term)*         from left to right, neither binds closer
//   term    := "not" term | "(" query ")" | field operator value | value "in" collection
//   value   := 'text' with \' and \\ for ' and \, or true, or false
//
// Words are in lower case. An empty query finds everything.
#pragma once

#include "core/Result.h"

#include <QString>
#include <QVariant>

#include <memory>

namespace quenby::localdrive {

enum class SearchField {
    title,
    fullText,
    mimeType,
    createdDate,
    modifiedDate,
    lastViewedByMeDate,
    trashed,
    starred,
    hidden,
    sharedWithMe,
    parents,
    owners,
    writers,
    readers,
};

enum class SearchOperator { contains, equal, notEqual, less, lessOrEqual, greater, greaterOrEqual, in };

struct SearchNode {
    enum class Kind { everything, comparison, conjunction, disjunction, negation };

    Kind kind = Kind::everything;
    std::unique_ptr<SearchNode> left;  // of the last three kinds
    std::unique_ptr<SearchNode> right; // of conjunction and disjunction
    int depth = 0;                     // levels of parentheses that it needs when written with all of them

    // Of a comparison. The value has the field's type: QString, bool, or qint64 milliseconds for dates.
    SearchField field = SearchField::title;
    SearchOperator op = SearchOperator::equal;
    QVariant value;
};

// 400 "invalid" with the place and what was expected there. Queries of more than 200 comparisons, or nested deeper than
// 20, are refused: "and" and "or" by turns count as nested.
Result<std::unique_ptr<SearchNode>> parseSearch(const QString& query);

} // namespace quenby::localdrive
