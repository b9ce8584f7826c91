// Following the pages of a list: the query of the next page, and one result out of two.
#pragma once

#include "driveapi/GTLBatchQuery.h"
#include "driveapi/GTLObject.h"

namespace quenby {

// No more pages than this follow the first one.
inline constexpr unsigned maximumFollowUpPages = 26;

// The query of the page after this result: a copy with the same request ID, of a batch one of the members that have
// another page. Null when there is none.
std::shared_ptr<GTLQueryProtocol> nextPageQueryForQuery(const GTLQueryProtocol& query, const GTLObjectPtr& result);

// The newer result with the items of the earlier one before its own. Items are shared, and the earlier result must not
// be used afterwards: its array grows into the new one, so that following n pages costs n pages, not n squared.
GTLObjectPtr mergedResult(const GTLObjectPtr& earlier, const GTLObjectPtr& newer);

} // namespace quenby
