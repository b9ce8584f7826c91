// The status item as it is seen: the storage gauge and the storage-use text.
//
// Threads: the main thread. It is told what to look like; it decides nothing but which drops it takes.
#pragma once

#include "app/statusitem/GaugePainter.h"
#include "app/statusitem/StatusItemLook.h"
#include "platform/StatusItemHost.h"

#include <QIcon>
#include <QImage>

#include <optional>

namespace quenby {

class StatusItemView final : public StatusItemFace {
public:
    explicit StatusItemView(QIcon applicationIcon);

    const StatusItemLook& look() const { return look_; }
    void setLook(const StatusItemLook& look) { look_ = look; }

    QString strsize() const { return look_.strsize; }
    unsigned displaysize() const { return look_.displaysize; }
    // The gauge as it was drawn last; the application's icon until it is drawn for the first time.
    QImage image() const;

    QSize size() const override;
    void paint(QPainter& painter, const QRect& rect, bool isDarkSurrounding) const override;
    void paintIcon(QPainter& painter, const QRect& square, bool isDarkSurrounding) const override;
    QString title() const override;
    QString toolTip() const override { return look_.toolTip; }
    bool acceptsFiles(const QList<QByteArray>& paths) const override;

private:
    struct DrawnGauge {
        QColor colour;
        unsigned percent = 0;
    };
    void noteDrawn(bool isDarkSurrounding) const;

    const GaugePainter painter_;
    const QIcon applicationIcon_;
    StatusItemLook look_;
    mutable std::optional<DrawnGauge> drawn_;
};

} // namespace quenby
