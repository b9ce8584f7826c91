// What is asked of a sharing page.
#pragma once

#include <QString>

namespace quenby {

// Moves the page's dialog to left 15 px and top 20 px and yields its height as a text; nothing when there is none. The
// dialog is the first child of the body that is a div, has child elements and is higher than 100 px.
QString measuringScript();

} // namespace quenby
