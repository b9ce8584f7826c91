// Where the status item stands: the desktop's tray, or a strip of its own at the top edge of the screen.
//
// Threads: the main thread. Sizes are in logical pixels; the hosts paint at the device's own resolution.
#pragma once

#include "platform/Service.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPoint>
#include <QRect>
#include <QSize>

#include <optional>

class QMenu;
class QPainter;

namespace quenby {

// What a host shows, and whom it asks. The painting is the same wherever it is shown. The face outlives its host.
class StatusItemFace {
public:
    virtual ~StatusItemFace() = default;

    // The whole item: gauge and text.
    virtual QSize size() const = 0;
    virtual void paint(QPainter& painter, const QRect& rect, bool isDarkSurrounding) const = 0;
    // The gauge alone, for a place that only shows a square.
    virtual void paintIcon(QPainter& painter, const QRect& square, bool isDarkSurrounding) const = 0;
    virtual QString title() const = 0;
    virtual QString toolTip() const = 0;
    // Whether a drop of these files (absolute local paths, as bytes) would be taken.
    virtual bool acceptsFiles(const QList<QByteArray>& paths) const = 0;
};

enum class StatusItemPlace { tray, strip };

class StatusItemHost : public QObject, public PlatformService {
    Q_OBJECT

public:
    virtual StatusItemPlace place() const = 0;
    // By which protocol the item is shown, for somebody who looks for a fault; empty where there is only one way.
    virtual QString protocol() const { return {}; }
    // Shows the face. The menu is what the tray opens; it is not owned and outlives the host.
    virtual void show(const StatusItemFace& face, QMenu& menu) = 0;
    // The face looks different from before: paints it again. The only reason for which a host paints or sends anything.
    virtual void update() = 0;
    // Where the item is on the screen; empty where that is not known.
    virtual QRect geometry() const = 0;

Q_SIGNALS:
    void clicked();
    void middleClicked();
    // The host opens no menu of its own at this place (global position).
    void menuRequested(const QPoint& position);
    // A drag of files that the face accepts; always followed by dragEnded(), after dropped() when it was dropped.
    void dragEntered();
    void dragEnded();
    void dropped(const QList<QByteArray>& paths);
};

// Chooses the host at the start, and again whenever a tray comes or goes.
class StatusItemHosts : public QObject, public PlatformService {
    Q_OBJECT

public:
    // Null until the first hostChanged(); owned here, and only valid until the next one.
    virtual StatusItemHost* host() const = 0;
    // Begins to look for a place; tells what it found by hostChanged(), through the event loop.
    virtual void start() = 0;
    // From now on; before start() as well. Absent: a tray where there is one, else the strip. Where the item stands
    // somewhere else, it moves at once, and tells so by hostChanged(), through the event loop. A chosen tray that is
    // not there takes the item when it comes; until then the item stays visible somewhere else.
    virtual void choose(std::optional<StatusItemPlace> place) = 0;

Q_SIGNALS:
    // The new host shows nothing until it is told to.
    void hostChanged();
};

} // namespace quenby
