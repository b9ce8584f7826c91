#include "popover/changes/RowMotion.h"

#include "popover/changes/TableRow.h"

#include <cmath>

namespace quenby {

RowMotion::RowMotion(QObject* parent)
    : QObject(parent) {
    animation_.setStartValue(0.0);
    animation_.setEndValue(1.0);
    animation_.setEasingCurve(QEasingCurve::OutCubic);
    connect(&animation_, &QVariantAnimation::valueChanged, this,
            [this](const QVariant& progress) { show(progress.toDouble()); });
    connect(&animation_, &QVariantAnimation::finished, this, &RowMotion::arrive);
}

void RowMotion::start(const std::vector<Course>& courses, int duration) {
    animation_.stop();
    std::vector<Leg> before;
    before.swap(legs_);
    for (const Leg& leg : before) {
        if (leg.course.leaves)
            add(leg.course);
    }
    for (const Course& course : courses)
        add(course);
    if (legs_.empty())
        return;
    if (duration <= 0)
        return arrive();
    animation_.setDuration(duration);
    animation_.start();
}

void RowMotion::finish() {
    animation_.stop();
    arrive();
}

void RowMotion::add(const Course& course) {
    if (course.leaves || course.row->y() != course.toY || course.row->opacity() < 1)
        legs_.push_back({course, course.row->y(), course.row->opacity()});
}

void RowMotion::show(qreal progress) {
    for (const Leg& leg : legs_) {
        const auto between = [&](qreal from, qreal to) { return from + (to - from) * progress; };
        TableRow& row = *leg.course.row;
        row.move(0, static_cast<int>(std::lround(between(leg.fromY, leg.course.toY))));
        row.setOpacity(between(leg.fromOpacity, leg.course.leaves ? 0 : 1));
    }
}

void RowMotion::arrive() {
    show(1);
    for (const Leg& leg : legs_) {
        if (leg.course.leaves) {
            leg.course.row->hide();
            leg.course.row->deleteLater();
        }
    }
    legs_.clear();
}

} // namespace quenby
