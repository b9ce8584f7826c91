// A place for the status item that exists only in memory. Events are played by emitting the host's signals, or by
// drag() and drop(), which ask the face first as the real places do.
#pragma once

#include "platform/StatusItemHost.h"

#include <QImage>
#include <QPainter>

#include <memory>

namespace quenby::testing {

class FakeStatusItemHost final : public StatusItemHost {
public:
    explicit FakeStatusItemHost(StatusItemPlace place = StatusItemPlace::strip)
        : place_(place) {}

    StatusItemPlace place() const override { return place_; }
    void show(const StatusItemFace& face, QMenu& menu) override {
        face_ = &face;
        menu_ = &menu;
    }
    void update() override { ++updates_; }
    QRect geometry() const override { return geometry_; }

    const StatusItemFace* face() const { return face_; }
    QMenu* menu() const { return menu_; }
    int updates() const { return updates_; }
    void setGeometry(const QRect& geometry) { geometry_ = geometry; }

    // The whole item as the face paints it now.
    QImage picture(bool isDarkSurrounding = false, qreal scale = 1) const {
        return painted(face_->size(), scale, [this, isDarkSurrounding](QPainter& painter, const QRect& rect) {
            face_->paint(painter, rect, isDarkSurrounding);
        });
    }
    QImage icon(int side, bool isDarkSurrounding = false, qreal scale = 1) const {
        return painted({side, side}, scale, [this, isDarkSurrounding](QPainter& painter, const QRect& square) {
            face_->paintIcon(painter, square, isDarkSurrounding);
        });
    }

    // A drag enters; whether the face takes it.
    bool drag(const QList<QByteArray>& paths) {
        if (!face_ || !face_->acceptsFiles(paths))
            return false;
        Q_EMIT dragEntered();
        return true;
    }
    // A drag enters and is dropped.
    bool drop(const QList<QByteArray>& paths) {
        if (!drag(paths))
            return false;
        Q_EMIT dropped(paths);
        Q_EMIT dragEnded();
        return true;
    }

private:
    template <typename Paint>
    static QImage painted(const QSize& size, qreal scale, const Paint& paint) {
        QImage image((QSizeF(size) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        paint(painter, QRect(QPoint(0, 0), size));
        return image;
    }

    StatusItemPlace place_;
    const StatusItemFace* face_ = nullptr;
    QMenu* menu_ = nullptr;
    int updates_ = 0;
    QRect geometry_{1000, 0, 60, 24};
};

class FakeStatusItemHosts final : public StatusItemHosts {
public:
    // What start() will find.
    explicit FakeStatusItemHosts(StatusItemPlace place = StatusItemPlace::strip)
        : place_(place) {}

    StatusItemHost* host() const override { return host_.get(); }
    void start() override {
        QMetaObject::invokeMethod(
            this, [this] { change(place_); }, Qt::QueuedConnection);
    }

    void choose(std::optional<StatusItemPlace> place) override {
        chosen = place;
        if (host_ && place && host_->place() != *place)
            change(*place);
    }

    std::optional<StatusItemPlace> chosen;
    FakeStatusItemHost* fake() const { return host_.get(); }
    // A tray comes or goes: another host takes the place of the one there was.
    void change(StatusItemPlace place) {
        const std::unique_ptr<FakeStatusItemHost> former = std::move(host_);
        host_ = std::make_unique<FakeStatusItemHost>(place);
        Q_EMIT hostChanged();
    }

private:
    StatusItemPlace place_;
    std::unique_ptr<FakeStatusItemHost> host_;
};

} // namespace quenby::testing
