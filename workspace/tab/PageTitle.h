// What a tab is called after a page's title.
#pragma once

#include <QString>

namespace quenby {

// The title without the names of the web application and its editors. Empty when nothing else stands in it: the tab
// keeps what it is called.
QString pageTitle(const QString& documentTitle);

} // namespace quenby
