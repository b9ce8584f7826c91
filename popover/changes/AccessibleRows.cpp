#include "popover/changes/AccessibleRows.h"

#include "popover/changes/TableRow.h"
#include "popover/changes/TableView.h"

#include <QAccessibleWidget>

namespace quenby {
namespace {

const QString shareAction = QStringLiteral("Share");

class AccessibleRow final : public QAccessibleWidget {
public:
    explicit AccessibleRow(TableRow* row)
        : QAccessibleWidget(row, QAccessible::ListItem) {}

    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (row().texts().isOpenable())
            names << pressAction() << shareAction;
        return names;
    }
    void doAction(const QString& name) override {
        if (name == pressAction())
            Q_EMIT row().clicked();
        else if (name == shareAction)
            Q_EMIT row().share();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    TableRow& row() const { return static_cast<TableRow&>(*widget()); }
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    if (auto* row = qobject_cast<TableRow*>(object))
        return new AccessibleRow(row);
    if (auto* view = qobject_cast<TableView*>(object))
        return new QAccessibleWidget(view, QAccessible::List);
    return nullptr;
}

} // namespace

void makeRowsAccessible() { QAccessible::installFactory(makeInterface); } // known already, it is not added again

} // namespace quenby
