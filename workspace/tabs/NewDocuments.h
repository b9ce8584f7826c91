// The kinds of new documents that the web application makes, by the tags of their commands.
#pragma once

#include "core/Endpoints.h"
#include "core/PageOpenRecord.h"

#include <optional>

namespace quenby {

enum class NewDocument { document = 1, presentation, spreadsheets, forms, drawings, maps };

// The page on which it is made in that folder; nothing for kinds that have none, and for tags that are no kind.
std::optional<PageOpenRecord> newDocumentPage(int tag, const QString& folderId, const Endpoints& endpoints);

} // namespace quenby
