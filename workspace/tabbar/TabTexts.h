// The words of a tab: a page chooses its own title, so none of it is taken for more than plain text in one line.
#pragma once

#include <QString>

namespace quenby {

class DemoModel;

// One line without characters that would turn the direction of what stands around it; no longer than a tool tip may
// be. Never empty.
QString tabLabel(const DemoModel& model);
QString toolTipOf(const DemoModel& model);
// For an entry of a menu, where an ampersand would be a mnemonic.
QString tabMenuText(const DemoModel& model);
// What a screen reader says: the label, and whatever else the tab shows.
QString tabAccessibleName(const DemoModel& model);
// At most four characters for counts that can be.
QString objectCountText(qint64 count);
// "item" or "items".
QString accessibilityString(qint64 objectCount);

} // namespace quenby
