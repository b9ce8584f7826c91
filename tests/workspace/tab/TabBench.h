// A tab on a page that the test plays.
#pragma once

#include "tests/platform/fakes/FakeWebViews.h"
#include "tests/support/ManualTimeSource.h"
#include "workspace/tab/TabWebView.h"
#include "workspace/tabbar/DemoModel.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

namespace quenby::testing {

inline QUrl local(const char* path) { return QUrl(QStringLiteral("http://127.0.0.1:1") + QLatin1String(path)); }

// Everything lies in the order in which it depends on one another.
struct TabBench {
    explicit TabBench(const QUrl& url = local("/"), const QString& title = QStringLiteral("A tab"))
        : model(title, url)
        , tab(surroundings, model) {
        QObject::connect(&tab, &TabWebView::newTabRequested, &tab,
                         [this](const PageOpenRecord& page, bool isInBackground) {
                             newTabs.append(page);
                             backgrounds.append(isInBackground);
                         });
        QObject::connect(&tab, &TabWebView::openOutsideRequested, &tab, [this](const QUrl& to) { outside.append(to); });
    }

    FakeBrowserView& page() { return webViews.lastBrowser(); }
    // Its page is there.
    FakeBrowserView& opened(const QString& title = QStringLiteral("My Drive")) {
        tab.loadNow();
        QCoreApplication::processEvents();
        page().finish(title);
        return page();
    }
    // What was put off until the event loop.
    static void settle() {
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
    }

    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    FakeWebViews webViews;
    QTemporaryDir documents;
    TabSurroundings surroundings{.webViews = webViews,
                                 .profile = {.account = QStringLiteral("a@example.com")},
                                 .endpoints = Endpoints::localDrive(local("")),
                                 .timeSource = time,
                                 .documentsFolder = documents.path()};
    DemoModel model;
    TabWebView tab;
    QList<PageOpenRecord> newTabs;
    QList<bool> backgrounds;
    QList<QUrl> outside;
};

// The button below a widget with this text, without its mnemonic; only those that are seen.
template <typename Button>
Button* visibleButton(QWidget& parent, const char* text) {
    for (Button* button : parent.findChildren<Button*>()) {
        if (button->isVisible() && button->text().remove(QLatin1Char('&')) == QLatin1String(text))
            return button;
    }
    return nullptr;
}

} // namespace quenby::testing
