// Rows on their way: they slide to their places, and fade in or out. Only places and opacities change on the way.
//
// Threads: the main thread.
#pragma once

#include <QVariantAnimation>

#include <vector>

namespace quenby {

class TableRow;

class RowMotion : public QObject {
    Q_OBJECT

public:
    explicit RowMotion(QObject* parent = nullptr);

    // Where a row goes from wherever it is now. One that leaves is deleted when it has gone.
    struct Course {
        TableRow* row;
        int toY;
        bool leaves = false;
    };
    // Rows that are still on their way out stay on it; the others take their new courses. With no duration
    // (milliseconds) everything is there at once.
    void start(const std::vector<Course>& courses, int duration);
    // Everything is where it goes to.
    void finish();
    bool isRunning() const { return animation_.state() == QAbstractAnimation::Running; }

private:
    struct Leg {
        Course course;
        int fromY;
        qreal fromOpacity;
    };
    void add(const Course& course);
    void show(qreal progress);
    void arrive();

    std::vector<Leg> legs_;
    QVariantAnimation animation_;
};

} // namespace quenby
