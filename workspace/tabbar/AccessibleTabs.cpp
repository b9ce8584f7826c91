#include "workspace/tabbar/AccessibleTabs.h"

#include "workspace/tabbar/BarButton.h"
#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"

#include <QAccessibleWidget>
#include <QPointer>

#include <unordered_map>

namespace quenby {
namespace {

const QString closeAction = QStringLiteral("Close");

class AccessibleTab final : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    AccessibleTab(TabBar* bar, DemoModel* model)
        : bar_(bar)
        , model_(model) {}

    int index() const { return bar_ && model_ ? bar_->indexOf(*model_) : -1; }
    bool isValid() const override { return index() >= 0; }
    QObject* object() const override { return nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(bar_.data()); }
    QAccessibleInterface* child(int) const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    void setText(QAccessible::Text, const QString&) override {}
    QAccessible::Role role() const override { return QAccessible::PageTab; }

    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name && isValid() ? bar_->accessibleTabName(index()) : QString();
    }
    QRect rect() const override {
        const QRect frame = isValid() ? bar_->frameOf(index()) : QRect();
        return frame.isNull() ? frame : QRect(bar_->mapToGlobal(frame.topLeft()), frame.size());
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.invalid = !isValid();
        if (state.invalid)
            return state;
        const bool isCurrent = index() == bar_->currentIndex();
        state.selectable = true;
        state.selected = isCurrent;
        state.focusable = true;
        state.focused = isCurrent && bar_->hasFocus();
        state.busy = model_->isProcessing();
        state.invisible = !bar_->isVisible();
        state.offscreen = bar_->frameOf(index()).isNull();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }
    QStringList actionNames() const override {
        QStringList names;
        if (isValid())
            names << pressAction();
        if (isValid() && bar_->mayClose(index()))
            names << closeAction;
        return names;
    }
    void doAction(const QString& name) override {
        if (!actionNames().contains(name))
            return;
        if (name == closeAction)
            Q_EMIT bar_->closeRequested(index());
        else
            bar_->setCurrentIndex(index());
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

private:
    QPointer<TabBar> bar_;
    QPointer<DemoModel> model_;
};

// Its children are the tabs, in their order, and the buttons that are shown.
class AccessibleTabBar final : public QAccessibleWidget {
public:
    explicit AccessibleTabBar(TabBar* bar)
        : QAccessibleWidget(bar, QAccessible::PageTabList) {}
    ~AccessibleTabBar() override {
        for (const auto& [model, identifier] : tabs_)
            QAccessible::deleteAccessibleInterface(identifier);
    }

    int childCount() const override { return bar().count() + static_cast<int>(buttons().size()); }
    QAccessibleInterface* child(int index) const override {
        if (index < 0 || index >= childCount())
            return nullptr;
        return index < bar().count() ? tab(index)
                                     : QAccessible::queryAccessibleInterface(buttons().at(index - bar().count()));
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        for (int index = 0; index < childCount(); ++index) {
            if (this->child(index) == child)
                return index;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        for (int index = 0; index < childCount(); ++index) {
            if (QAccessibleInterface* child = this->child(index); child && child->rect().contains(x, y))
                return child;
        }
        return nullptr;
    }
    QAccessibleInterface* focusChild() const override {
        return bar().hasFocus() ? child(bar().currentIndex()) : QAccessibleWidget::focusChild();
    }

private:
    TabBar& bar() const { return static_cast<TabBar&>(*widget()); }
    QList<BarButton*> buttons() const {
        QList<BarButton*> shown;
        for (BarButton* button : bar().findChildren<BarButton*>(QString(), Qt::FindDirectChildrenOnly)) {
            if (!button->isHidden())
                shown << button;
        }
        return shown;
    }
    QAccessibleInterface* tab(int index) const {
        DemoModel* model = bar().modelAt(index);
        if (!model)
            return nullptr;
        if (const auto known = tabs_.find(model); known != tabs_.end()) {
            QAccessibleInterface* tab = QAccessible::accessibleInterface(known->second);
            if (tab && tab->isValid())
                return tab;
            QAccessible::deleteAccessibleInterface(known->second); // of a model that was at the same address
        }
        auto* tab = new AccessibleTab(&bar(), model);
        tabs_[model] = QAccessible::registerAccessibleInterface(tab);
        return tab;
    }

    mutable std::unordered_map<const DemoModel*, QAccessible::Id> tabs_; // made when they are first asked for
};

QAccessibleInterface* makeInterface(const QString&, QObject* object) {
    auto* bar = qobject_cast<TabBar*>(object);
    return bar ? new AccessibleTabBar(bar) : nullptr;
}

} // namespace

void makeTabsAccessible() { QAccessible::installFactory(makeInterface); } // known already, it is not added again

} // namespace quenby
