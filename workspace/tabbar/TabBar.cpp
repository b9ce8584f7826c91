#include "workspace/tabbar/TabBar.h"

#include "workspace/tabbar/AccessibleTabs.h"
#include "workspace/tabbar/BarButton.h"
#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabMenus.h"
#include "workspace/tabbar/TabPainter.h"
#include "workspace/tabbar/TabTexts.h"

#include <QMenu>
#include <QResizeEvent>
#include <QStyle>

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

constexpr int leastHeight = 34;
constexpr int heightAroundText = 18;

} // namespace

TabBar::TabBar(QWidget* parent)
    : QTabBar(parent)
    , addButton_(new BarButton(BarGlyph::plus, QStringLiteral("New Tab"), this))
    , overflowButton_(new BarButton(BarGlyph::chevron, QStringLiteral("All Tabs"), this)) {
    makeTabsAccessible();
    setAccessibleName(QStringLiteral("Tabs"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMouseTracking(true);
    setAcceptDrops(true);
    setMovable(true);
    setExpanding(false);
    setUsesScrollButtons(false);
    setDrawBase(false);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    connect(&motion_, &TabMotion::moved, this, [this] {
        placeButtons();
        update();
    });
    connect(this, &QTabBar::currentChanged, this, [this] { arrange(Arrival::slides); });
    connect(this, &QTabBar::tabMoved, this, [this](int from, int to) {
        watched_.move(from, to);
        arrange(Arrival::slides);
    });
    connect(addButton_, &QAbstractButton::clicked, this, &TabBar::addTabRequested);
    connect(overflowButton_, &QAbstractButton::clicked, this, [this] {
        QMenu* menu = makeOverflowMenu(*this);
        const bool isReversed = layoutDirection() == Qt::RightToLeft;
        const QPoint corner = isReversed ? overflowButton_->rect().bottomLeft() : overflowButton_->rect().bottomRight();
        const QPoint inset(isReversed ? 0 : menu->sizeHint().width(), 0);
        menu->popup(overflowButton_->mapToGlobal(corner) - inset);
    });
    arrange(Arrival::jumps);
}

TabBar::~TabBar() = default;

template <typename Value>
void TabBar::config(Value TabBarOptions::*option, Value value) {
    if (options_.*option == value)
        return;
    options_.*option = value;
    arrange(Arrival::jumps);
    updateGeometry();
    update();
}

void TabBar::configStyle(TabBarOptions::Style style) { config(&TabBarOptions::style, style); }
void TabBar::configOnlyShowCloseOnHover(bool on) { config(&TabBarOptions::onlyShowCloseOnHover, on); }
void TabBar::configCanCloseOnlyTab(bool on) { config(&TabBarOptions::canCloseOnlyTab, on); }
void TabBar::configDisableTabClose(bool on) { config(&TabBarOptions::disableTabClose, on); }
void TabBar::configAllowBackgroundClosing(bool on) { config(&TabBarOptions::allowBackgroundClosing, on); }
void TabBar::configHideForSingleTab(bool on) {
    config(&TabBarOptions::hideForSingleTab, on);
    setAutoHide(on);
}
void TabBar::configAddTabButton(bool on) { config(&TabBarOptions::addTabButton, on); }
void TabBar::configTabMinWidth(int px) { config(&TabBarOptions::tabMinWidth, px); }
void TabBar::configTabMaxWidth(int px) { config(&TabBarOptions::tabMaxWidth, px); }
void TabBar::configTabOptimumWidth(int px) { config(&TabBarOptions::tabOptimumWidth, px); }
void TabBar::configTabSizeToFit(bool on) { config(&TabBarOptions::tabSizeToFit, on); }
void TabBar::configTearOffStyle(TabBarOptions::TearOff style) { config(&TabBarOptions::tearOffStyle, style); }
void TabBar::configUseOverflowMenu(bool on) { config(&TabBarOptions::useOverflowMenu, on); }
void TabBar::configAutomaticallyAnimates(bool on) { config(&TabBarOptions::automaticallyAnimates, on); }
void TabBar::configAllowsScrubbing(bool on) { config(&TabBarOptions::allowsScrubbing, on); }

int TabBar::addModel(DemoModel& model) {
    arriving_ = &model; // the first tab becomes the current one, and is asked for, before its data can be set
    const int index = addTab(QString());
    arriving_ = nullptr;
    return index;
}

DemoModel* TabBar::modelAt(int index) const {
    if (auto* model = tabData(index).value<DemoModel*>())
        return model;
    return index >= 0 && index == count() - 1 ? arriving_ : nullptr;
}

int TabBar::indexOf(const DemoModel& model) const {
    for (int index = 0; index < count(); ++index) {
        if (modelAt(index) == &model)
            return index;
    }
    return -1;
}

bool TabBar::mayClose(int index) const {
    return modelAt(index) && !options_.disableTabClose && (count() > 1 || options_.canCloseOnlyTab) &&
           (index == currentIndex() || options_.allowBackgroundClosing);
}

QSize TabBar::sizeHint() const {
    return {TabLayout::wishedWidth(options_, room()), std::max(leastHeight, fontMetrics().height() + heightAroundText)};
}

QSize TabBar::minimumSizeHint() const { return {TabLayout::leastWidth(), sizeHint().height()}; }

// The base puts its own rectangles where the tabs are, for those who ask it.
QSize TabBar::tabSizeHint(int index) const { return {layout_.tab(index).width(), height()}; }

QSize TabBar::minimumTabSizeHint(int index) const { return tabSizeHint(index); }

void TabBar::tabInserted(int index) {
    DemoModel* model = arriving_;
    watched_.insert(index, model);
    if (!model) // not by addModel(): nothing to show
        return arrange(Arrival::jumps);
    setTabData(index, QVariant::fromValue(model));
    connect(model, &DemoModel::changed, this, [this, model] { refreshModel(*model); });
    connect(model, &QObject::destroyed, this, [this, model] { // it should not go first, but must do no harm
        const int forsaken = static_cast<int>(watched_.indexOf(model));
        watched_.replace(forsaken, nullptr);
        setTabData(forsaken, QVariant());
        updateTab(forsaken);
        updateSpinner();
    });
    tellName(index);
    arrange(Arrival::slides);
}

void TabBar::tabRemoved(int index) {
    if (DemoModel* model = watched_.takeAt(index)) {
        disconnect(model, nullptr, this, nullptr);
        if (press_.model == model)
            endPress();
    }
    dropTarget_ = -1;
    arrange(Arrival::slides);
}

TabRoom TabBar::room() const {
    TabRoom room{size(), layoutDirection(), count(), currentIndex(), layout_.firstShown(), {}};
    if (options_.tabSizeToFit) {
        for (int index = 0; index < count(); ++index) {
            TabLook look = lookOf(index);
            // There is always room for the close button: a title must not be cut when the pointer comes.
            look.showsCloseButton = mayClose(index) && modelAt(index)->hasCloseButton();
            room.fitWidths.push_back(
                tabFitWidth(fontMetrics().horizontalAdvance(look.label), look.content(fontMetrics())));
        }
    }
    return room;
}

bool TabBar::animates() const {
    return options_.automaticallyAnimates && isSeen_ &&
           style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) > 0;
}

std::unordered_map<const void*, QRect> TabBar::places() const {
    std::unordered_map<const void*, QRect> places;
    for (int index = layout_.firstShown(); index < layout_.endShown(); ++index)
        places[modelAt(index)] = layout_.tab(index);
    places[addButton_] = layout_.addButton();
    return places;
}

// While a tab is removed, the base changes the current one before it tells of the removal: a call from there finds
// everything as it will be.
void TabBar::arrange(Arrival arrival) {
    const int firstBefore = layout_.firstShown();
    const bool overflowedBefore = layout_.overflows();
    layout_ = TabLayout(options_, room());
    auto now = places();
    const auto before = std::exchange(places_, now);
    if (before == now && overflowedBefore == layout_.overflows())
        return updateSpinner();

    std::unordered_map<const void*, QRect> from;
    // Tabs that come into the room from beyond it have no way to be seen on.
    if (arrival == Arrival::slides && animates() && firstBefore == layout_.firstShown()) {
        for (const auto& [thing, place] : now) {
            const auto known = before.find(thing);
            QRect seen = known == before.end() ? QRect() : motion_.seen(thing, known->second);
            if (seen.isNull()) { // a new one grows from its leading edge
                seen = place;
                layoutDirection() == Qt::RightToLeft ? seen.setLeft(place.right()) : seen.setRight(place.left());
            }
            const bool isInHand = press_.kind == Press::Kind::drag && thing == press_.model;
            if (seen != place && !isInHand)
                from[thing] = seen;
        }
    }
    motion_.start(std::move(from));
    placeButtons();
    QResizeEvent same(size(), size());
    QTabBar::resizeEvent(&same); // the base's rectangles
    hoverAt(pointer_);
    updateSpinner();
    update();
}

void TabBar::placeButtons() {
    const auto place = [](BarButton* button, const QRect& frame) {
        if (!frame.isNull())
            button->setGeometry(frame);
        button->setVisible(!frame.isNull());
    };
    place(addButton_, motion_.seen(addButton_, layout_.addButton()));
    place(overflowButton_, layout_.overflowButton());
}

void TabBar::refreshModel(const DemoModel& model) {
    const int index = indexOf(model);
    if (index < 0)
        return;
    tellName(index);
    if (options_.tabSizeToFit)
        arrange(Arrival::jumps);
    updateTab(index);
    updateSpinner();
}

void TabBar::tellName(int index) {
    if (const QString name = tabAccessibleName(*modelAt(index)); name != accessibleTabName(index))
        setAccessibleTabName(index, name);
}

void TabBar::changeEvent(QEvent* event) {
    QTabBar::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange ||
        event->type() == QEvent::LayoutDirectionChange)
        arrange(Arrival::jumps);
}

void TabBar::resizeEvent(QResizeEvent*) { arrange(Arrival::jumps); }

} // namespace quenby
