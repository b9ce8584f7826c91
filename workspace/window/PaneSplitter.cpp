#include "workspace/window/PaneSplitter.h"

#include <QPainter>

namespace quenby {
namespace {

constexpr float lineStrength = 0.2F;

// The pointer grips it a little beside the line, too; the toolkit sees to that.
class FineHandle final : public QSplitterHandle {
public:
    using QSplitterHandle::QSplitterHandle;

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Window));
        painter.fillRect(rect(), partingLineColour(palette()));
    }
};

} // namespace

PaneSplitter::PaneSplitter(QWidget* parent)
    : QSplitter(parent) {
    setHandleWidth(1);
    setChildrenCollapsible(false);
}

QSplitterHandle* PaneSplitter::createHandle() { return new FineHandle(orientation(), this); }

QColor partingLineColour(const QPalette& palette) {
    QColor colour = palette.color(QPalette::WindowText);
    colour.setAlphaF(lineStrength);
    return colour;
}

} // namespace quenby
