// Everything that decides what the status item looks like, as one value: two equal ones look the same.
#pragma once

#include <QString>

namespace quenby {

struct StatusItemLook {
    QString strsize;          // the storage-use text, for example "37%"
    unsigned displaysize = 0; // the gauge: percent, 0 to 100
    bool drag = false;        // files are being dragged over the item
    bool isPopoverVisible = false;
    bool showMenubarIcon = false;
    bool showUsegeText = false;
    qreal width = 17; // logical pixels
    QString toolTip;

    friend bool operator==(const StatusItemLook&, const StatusItemLook&) = default;
};

} // namespace quenby
