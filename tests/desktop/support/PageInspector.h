// What stands in the pages of a running program, by the web engine's inspector (the DevTools protocol): a test reads
// there where something is, and then clicks on it with the real pointer.
//
// Threads: the main thread. The calls run the event loop while they wait for the page.
#pragma once

#include <QJsonValue>
#include <QList>
#include <QProcessEnvironment>
#include <QUrl>

#include <functional>
#include <optional>

namespace quenby::testing {

class DesktopInput;

class PageInspector {
public:
    // Programs that are started in this environment can be inspected, one at a time.
    explicit PageInspector(QProcessEnvironment& environment);

    struct Page {
        QString title;
        QUrl url;
        QUrl inspector;
    };
    // The loaded ones whose path and query begin like this, in no particular order; {} for all, and "/" for the start
    // page alone.
    QList<Page> pages(const QString& path) const;
    // Waits until there are so many.
    bool waitForPages(const QString& path, int count) const;

    // What the expression is worth in the page, which must be the only one with that path. Undefined when there is no
    // such page or no answer.
    QJsonValue evaluate(const QString& path, const QString& expression) const;
    // Waits until the expression is true.
    bool waitUntil(const QString& path, const QString& expression) const;

    // Waits until the element, an expression, is at rest and the topmost at its middle: that place of the screen. The
    // pointer is moved to a place where it is over the page.
    std::optional<QPoint> waitForPlace(const QString& path, const QString& element, DesktopInput& input,
                                       const QPoint& overPage) const;

private:
    QString server_;
};

} // namespace quenby::testing
