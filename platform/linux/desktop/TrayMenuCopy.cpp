#include "platform/linux/desktop/TrayMenuCopy.h"

namespace quenby {

TrayMenuCopy::TrayMenuCopy(QMenu& original) { fill(menu_, original); }

void TrayMenuCopy::fill(QMenu& copy, QMenu& original) {
    // Menus that are brought up to date when they open are so here, too.
    connect(&copy, &QMenu::aboutToShow, &original, &QMenu::aboutToShow);
    const auto actions = original.actions();
    for (QAction* action : actions) {
        QAction* twin = action->menu() ? copy.addMenu(QString())->menuAction() : copy.addAction(QString());
        if (action->menu())
            fill(*twin->menu(), *action->menu());
        follow(*twin, *action);
    }
}

void TrayMenuCopy::follow(QAction& copy, QAction& original) {
    const auto update = [&copy, &original] {
        copy.setText(textForBus(original.text()));
        copy.setSeparator(original.isSeparator());
        copy.setEnabled(original.isEnabled());
        copy.setVisible(original.isVisible());
        copy.setCheckable(original.isCheckable());
        copy.setChecked(original.isChecked());
    };
    update();
    connect(&original, &QAction::changed, &copy, update);
    connect(&copy, &QAction::triggered, &original, [&copy, &original] {
        // The original checks itself, and the copy follows it.
        copy.setChecked(original.isChecked());
        original.trigger();
    });
}

QString textForBus(QString text) { return text.replace(QStringLiteral("&&"), QStringLiteral("&")); }

} // namespace quenby
