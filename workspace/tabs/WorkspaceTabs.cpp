#include "workspace/tabs/WorkspaceTabs.h"

#include "platform/Defaults.h"
#include "workspace/policy/NavigationPolicy.h"
#include "workspace/tabbar/DemoModel.h"
#include "workspace/tabbar/TabBar.h"
#include "workspace/tabs/NewDocuments.h"
#include "workspace/tabs/OldTabs.h"

#include <QLoggingCategory>
#include <QScopedValueRollback>
#include <QStackedWidget>
#include <QVBoxLayout>

namespace quenby {
namespace {

Q_LOGGING_CATEGORY(tabsLog, "quenby.tabs", QtInfoMsg)

// Changes that come together, such as a page's address and its title, are kept together.
constexpr std::chrono::milliseconds keepingDelay(500);
// What a page changes by itself, and may change all the time, is no reason to write all the time.
constexpr std::chrono::milliseconds looksKeepingDelay(5000);

QString titleOf(const TabWebView& tab) { return tab.demoModel().title(); }

// The local Drive may have another port than in the last run.
PageOpenRecord atTodaysPort(PageOpenRecord record, const Endpoints& endpoints) {
    if (endpoints.isLocal && record.url.host() == endpoints.webURL.host())
        record.url.setPort(endpoints.webURL.port());
    return record;
}

} // namespace

WorkspaceTabs::WorkspaceTabs(const TabSurroundings& surroundings, Defaults& defaults, QWidget* parent)
    : QWidget(parent)
    , surroundings_(surroundings)
    , defaults_(defaults)
    , tabBar_(new TabBar(this))
    , pages_(new QStackedWidget(this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(tabBar_);
    layout->addWidget(pages_, 1);
    configureTabBarInitially();
    connectTabBar();
}

WorkspaceTabs::~WorkspaceTabs() {
    tabBar_->disconnect(this);
    for (TabWebView* tab : findChildren<TabWebView*>())
        tab->disconnect(this);
}

void WorkspaceTabs::configureTabBarInitially() {
    tabBar_->configStyle(TabBarOptions::Style::Aqua);
    tabBar_->configOnlyShowCloseOnHover(true);
    tabBar_->configCanCloseOnlyTab(false);
    tabBar_->configDisableTabClose(false);
    tabBar_->configAllowBackgroundClosing(true);
    tabBar_->configHideForSingleTab(false);
    tabBar_->configAddTabButton(true);
    tabBar_->configTabMinWidth(1);
    tabBar_->configTabSizeToFit(false);
    tabBar_->configTearOffStyle(TabBarOptions::TearOff::alphaWindow);
    tabBar_->configUseOverflowMenu(true);
    tabBar_->configAutomaticallyAnimates(true);
    tabBar_->configAllowsScrubbing(true);
}

void WorkspaceTabs::connectTabBar() {
    connect(tabBar_, &TabBar::addTabRequested, this, &WorkspaceTabs::addNewTabToTabView);
    connect(tabBar_, &TabBar::closeRequested, this, &WorkspaceTabs::closeTab);
    connect(tabBar_, &TabBar::closeOthersRequested, this, &WorkspaceTabs::closeOtherTabs);
    connect(tabBar_, &TabBar::reloadRequested, this, [this](int index) {
        if (TabWebView* tab = tabAt(index))
            tab->reloadFromOrigin();
    });
    connect(tabBar_, &TabBar::filesDropped, this,
            [this](int, const QList<QByteArray>& paths) { Q_EMIT filesDropped(paths); });
    connect(tabBar_, &TabBar::addressDropped, this, [this](int, const QUrl& url) {
        if (isPageAddress(url))
            AddNewTabGoogleDriveWithData({url.host(), url});
    });
    connect(tabBar_, &TabBar::tabMoved, this, [this](int, int to) {
        qCDebug(tabsLog).noquote() << "tab view did move tab view item" << titleOf(*tabAt(to)) << "to index:" << to;
        keepSoon();
    });
    connect(tabBar_, &TabBar::currentChanged, this, [this] {
        if (TabWebView* tab = selectedTab())
            pages_->setCurrentWidget(tab);
        refreshToolBar();
        keepSoon();
        Q_EMIT selectedTabChanged();
    });
}

void WorkspaceTabs::connectTab(TabWebView& tab) {
    connect(&tab, &TabWebView::navigationStateChanged, this, [this, &tab] {
        if (selectedTab() == &tab)
            refreshToolBar();
        keepSoon();
    });
    connect(&tab, &TabWebView::newTabRequested, this, &WorkspaceTabs::AddNewTabGoogleDriveWithData);
    connect(&tab, &TabWebView::closeRequested, this, [this, &tab] { closeTab(indexOf(tab)); });
    connect(&tab.demoModel(), &DemoModel::changed, this, [this] { keepWithin(looksKeepingDelay); });
}

// --- What is there --------------------------------------------------------------------------------------------------

int WorkspaceTabs::count() const { return tabBar_->count(); }

TabWebView* WorkspaceTabs::tabAt(int index) const {
    const DemoModel* model = tabBar_->modelAt(index);
    return model ? qobject_cast<TabWebView*>(model->parent()) : nullptr;
}

int WorkspaceTabs::selectedIndex() const { return tabBar_->currentIndex(); }

TabWebView* WorkspaceTabs::selectedTab() const { return tabAt(selectedIndex()); }

int WorkspaceTabs::indexOf(const TabWebView& tab) const { return tabBar_->indexOf(tab.demoModel()); }

void WorkspaceTabs::refreshToolBar() {
    const TabWebView* tab = selectedTab();
    Q_EMIT setToolBarButton(tab && tab->canGoBack(), tab && tab->canGoForward());
}

// --- Opening --------------------------------------------------------------------------------------------------------

TabWebView& WorkspaceTabs::open(const PageOpenRecord& record) {
    auto* model = new DemoModel(record.title, record.url);
    auto* tab = new TabWebView(surroundings_, *model, pages_);
    model->setParent(tab); // goes after the tab that uses it
    pages_->addWidget(tab);
    connectTab(*tab);
    tabBar_->addModel(*model);
    Q_EMIT tabAdded(tab);
    return *tab;
}

void WorkspaceTabs::AddNewTabGoogleDriveWithData(const PageOpenRecord& record, bool isInBackground) {
    TabWebView& tab = open(record);
    if (!isInBackground)
        tabBar_->setCurrentIndex(indexOf(tab));
    tab.loadNow();
    keepSoon();
}

void WorkspaceTabs::addNewTabToTabView() {
    if (!UserLogin_)
        return Q_EMIT loginAccess();
    AddNewTabGoogleDriveWithData({QStringLiteral("Google Drive - New"), surroundings_.endpoints.webURL});
}

void WorkspaceTabs::OpenNewGoogle(int tag) {
    const auto page = newDocumentPage(tag, RootFolderId_, surroundings_.endpoints);
    if (!page) {
        qCInfo(tabsLog, "%s", tag == int(NewDocument::maps) ? "My Maps" : "Error");
        return;
    }
    AddNewTabGoogleDriveWithData(*page);
    Q_EMIT documentOpened();
}

// --- Between runs ---------------------------------------------------------------------------------------------------

void WorkspaceTabs::setTabbarAccordingPreviousData() {
    QList<PageOpenRecord> records = readOldTabs(defaults_).value_or(QList<PageOpenRecord>());
    if (records.isEmpty())
        records.append({QStringLiteral("Google - Drive"), surroundings_.endpoints.webURL});
    const int selected = readSelectedTab(defaults_, int(records.size()));
    const bool hadPlaceholder = count() == 1;
    const int before = hadPlaceholder ? 0 : count();
    pages_->hide(); // a tab that is seen is loaded, and only the selected one is to be
    {
        const QScopedValueRollback filling(isFilling_, true);
        for (const PageOpenRecord& record : std::as_const(records))
            open(atTodaysPort(record, surroundings_.endpoints)).loadWhenShown();
        if (hadPlaceholder)
            removeTab(0);
        tabBar_->setCurrentIndex(before + selected);
    }
    pages_->show();
    keepSoon();
}

void WorkspaceTabs::saveAllTabDetailsToDefaults() {
    for (int i = 0; i < count(); ++i)
        tabAt(i)->stopLoading();
    keepNow();
}

void WorkspaceTabs::closeAllTabs() {
    removeAllTabs();
    removeOldTabs(defaults_);
}

void WorkspaceTabs::removeAllTabs() {
    keeping_.reset();
    pages_->hide(); // or the neighbour of each would be seen for a moment, and loaded
    {
        const QScopedValueRollback filling(isFilling_, true);
        while (count() > 0)
            removeTab(count() - 1);
    }
    pages_->show();
}

void WorkspaceTabs::keepSoon() { keepWithin(keepingDelay); }

void WorkspaceTabs::keepWithin(std::chrono::milliseconds delay) {
    const auto due = surroundings_.timeSource->elapsed() + delay;
    if (isFilling_ || (keeping_ && keepingDue_ <= due))
        return;
    keepingDue_ = due;
    keeping_ = surroundings_.timeSource->startTimer(delay, [this] { keepNow(); });
}

void WorkspaceTabs::keepNow() {
    keeping_.reset();
    QList<PageOpenRecord> records;
    for (int i = 0; i < count(); ++i) {
        const TabWebView& tab = *tabAt(i);
        const QUrl url = tab.mainFrameURL();
        const QString title = titleOf(tab);
        records.append({title.isEmpty() ? QStringLiteral("Google Drive") : title,
                        isPageAddress(url) && !url.host().isEmpty() ? url : surroundings_.endpoints.webURL});
    }
    if (records.isEmpty())
        return;
    writeOldTabs(defaults_, records);
    writeSelectedTab(defaults_, tabBar_->currentIndex());
}

// --- Closing --------------------------------------------------------------------------------------------------------

// The label is one that no page has.
bool WorkspaceTabs::shouldCloseTabViewItem(TabWebView& tab) {
    tab.stopLoading();
    return titleOf(tab) != QLatin1String("Quirl");
}

void WorkspaceTabs::closeTab(int index) {
    TabWebView* tab = tabAt(index);
    if (!tab)
        return;
    if (count() == 1) {
        qCDebug(tabsLog).noquote() << "closeWindowForLastTabViewItem:" << titleOf(*tab);
        return Q_EMIT lastTabClosed();
    }
    if (shouldCloseTabViewItem(*tab))
        removeTab(index);
}

void WorkspaceTabs::closeOtherTabs(int index) {
    const TabWebView* kept = tabAt(index);
    tabBar_->setCurrentIndex(index); // or those that go would be seen, and loaded, one after the other
    for (int i = count() - 1; i >= 0 && kept; --i) {
        if (tabAt(i) != kept)
            closeTab(i);
    }
}

void WorkspaceTabs::removeTab(int index) {
    TabWebView* tab = tabAt(index);
    qCDebug(tabsLog).noquote() << "didCloseTabViewItem:" << titleOf(*tab);
    tab->disconnect(this);
    tab->demoModel().disconnect(this);
    tabBar_->removeTab(index);
    pages_->removeWidget(tab);
    tab->hide();
    tab->deleteLater(); // it may be the one that asks for it
    keepSoon();
}

// --- The toolbar's actions ------------------------------------------------------------------------------------------

void WorkspaceTabs::setPageAlone(bool isAlone) { tabBar_->setVisible(!isAlone); }

void WorkspaceTabs::homeButtonToolbarAction() { tabBar_->setCurrentIndex(0); }

void WorkspaceTabs::backButton() {
    if (TabWebView* tab = selectedTab())
        tab->goBack();
    refreshToolBar();
}

void WorkspaceTabs::FwdButton() {
    if (TabWebView* tab = selectedTab())
        tab->goForward();
    refreshToolBar();
}

void WorkspaceTabs::reloadButton() {
    if (TabWebView* tab = selectedTab())
        tab->reloadFromOrigin();
    refreshToolBar();
}

void WorkspaceTabs::selectNext(bool backward) {
    if (count() > 0)
        tabBar_->setCurrentIndex((tabBar_->currentIndex() + (backward ? count() - 1 : 1)) % count());
}

} // namespace quenby
