// Tabs and buttons on their way to new places in the bar.
//
// Threads: the main thread. A thing is known by its address, which is never looked behind.
#pragma once

#include <QRect>
#include <QVariantAnimation>

#include <unordered_map>

namespace quenby {

class TabMotion final : public QObject {
    Q_OBJECT

public:
    explicit TabMotion(QObject* parent = nullptr);

    // Where it is seen now, when its place is there.
    QRect seen(const void* thing, const QRect& place) const;
    // From where each starts to its place; the things that are not named are where they belong. No things: stops.
    void start(std::unordered_map<const void*, QRect> from);
    // Where everything that is not at its place yet is seen now.
    std::unordered_map<const void*, QRect> remaining(const std::unordered_map<const void*, QRect>& places) const;

Q_SIGNALS:
    // Also when everything has arrived.
    void moved();

private:
    std::unordered_map<const void*, QRect> from_;
    QVariantAnimation animation_;
};

} // namespace quenby
