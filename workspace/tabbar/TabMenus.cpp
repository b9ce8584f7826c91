#include "workspace/tabbar/TabMenus.h"

#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabbar/TabPainter.h"
#include "workspace/tabbar/TabTexts.h"

#include <QMenu>
#include <QPointer>

namespace quenby {
namespace {

QMenu* makeMenu(TabBar& bar) {
    auto* menu = new QMenu(&bar);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setToolTipsVisible(false);
    return menu;
}

template <typename Action>
QAction* addTabAction(QMenu& menu, const QString& text, TabBar& bar, int index, Action action) {
    const QPointer<DemoModel> model(bar.modelAt(index));
    return menu.addAction(text, &bar, [&bar, model, action] {
        if (const int now = model ? bar.indexOf(*model) : -1; now >= 0)
            action(now);
    });
}

bool mayCloseOthers(const TabBar& bar) {
    return bar.count() > 1 && !bar.options().disableTabClose && bar.options().allowBackgroundClosing;
}

} // namespace

QMenu* makeTabMenu(TabBar& bar, int index) {
    QMenu* menu = makeMenu(bar);
    menu->addAction(QStringLiteral("&New Tab"), &bar, &TabBar::addTabRequested);
    if (index < 0)
        return menu;
    addTabAction(*menu, QStringLiteral("&Reload"), bar, index, [&bar](int now) { Q_EMIT bar.reloadRequested(now); });
    menu->addSeparator();
    addTabAction(*menu, QStringLiteral("&Close"), bar, index, [&bar](int now) {
        if (bar.mayClose(now))
            Q_EMIT bar.closeRequested(now);
    })->setEnabled(bar.mayClose(index));
    addTabAction(*menu, QStringLiteral("Close &Others"), bar, index, [&bar](int now) {
        if (mayCloseOthers(bar))
            Q_EMIT bar.closeOthersRequested(now);
    })->setEnabled(mayCloseOthers(bar));
    return menu;
}

QMenu* makeOverflowMenu(TabBar& bar) {
    QMenu* menu = makeMenu(bar);
    const QIcon blankPage = blankPageIcon(menu->palette(), bar.devicePixelRatioF());
    for (int index = 0; index < bar.count(); ++index) {
        const DemoModel* model = bar.modelAt(index);
        if (!model)
            continue;
        QAction* action =
            addTabAction(*menu, tabMenuText(*model), bar, index, [&bar](int now) { bar.setCurrentIndex(now); });
        const QIcon icon = model->shownIcon();
        action->setIcon(icon.isNull() ? blankPage : icon);
        action->setIconVisibleInMenu(true); // whatever the desktop does in its menus: these tell the tabs apart
        action->setCheckable(true);
        action->setChecked(index == bar.currentIndex());
        if (action->isChecked()) {
            QFont font = menu->font(); // where there are icons, a check mark is hard to see
            font.setBold(true);
            action->setFont(font);
            menu->setActiveAction(action);
        }
    }
    return menu;
}

} // namespace quenby
