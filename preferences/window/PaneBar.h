// The toolbar of the preferences: one of its items is chosen, by the pointer, by its keys Ctrl+1 and so on, or, once
// the Tab key has come here, by the arrow keys.
//
// Threads: the main thread.
#pragma once

#include <QPainterPath>
#include <QWidget>

class QButtonGroup;
class QHBoxLayout;

namespace quenby {

class PaneBar final : public QWidget {
    Q_OBJECT

public:
    explicit PaneBar(QWidget* parent);

    // They count from 0. None is chosen at first.
    void addItem(const QString& name, const QPainterPath& glyph);
    int current() const;
    void setCurrent(int index);

Q_SIGNALS:
    // By the user or by the program.
    void currentChanged(int index);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QHBoxLayout* const layout_;
    QButtonGroup* const group_;
};

} // namespace quenby
