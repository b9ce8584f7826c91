// The rows of lists of files, as HTML.
#pragma once

#include "localdrive/server/web/FileBrowser.h"
#include "localdrive/server/web/PageTemplates.h"

namespace quenby::localdrive {

// One row for each file, for lists and grids alike: how it looks is the style sheet's matter. What scripts must know
// about a file stands in its row's data attributes.
QString rowsOf(const QList<ListedFile>& files, const PageTemplates& pages, const QDateTime& now);

// The same attributes, for whatever element stands for a file: "data-id", "data-kind" (folder, document or file),
// "data-may" (of "own", "edit") and "data-exports" (JSON: [[name, link], ...]).
QString dataAttributes(const ListedFile& file, const PageTemplates& pages);

} // namespace quenby::localdrive
