// How large a page may be shown.
#pragma once

#include <QtGlobal>

namespace quenby {

// The next larger or smaller of the usual sizes between 0.25 and 5, where 1 is the page's own; the largest and the
// smallest have no next.
qreal zoomedIn(qreal factor);
qreal zoomedOut(qreal factor);

} // namespace quenby
