#include "widgets/SecondaryLabel.h"

#include <QApplication>
#include <QEvent>

namespace quenby {
namespace {

// Soft, and still easy to read: a contrast of more than 4.5 to 1 wherever the full colour has 12 to 1.
constexpr float strength = 0.72F;

QColor mixed(const QColor& text, const QColor& ground) {
    const auto mix = [](float a, float b) { return a * strength + b * (1 - strength); };
    return QColor::fromRgbF(mix(text.redF(), ground.redF()), mix(text.greenF(), ground.greenF()),
                            mix(text.blueF(), ground.blueF()));
}

} // namespace

SecondaryLabel::SecondaryLabel(QWidget* parent)
    : ElidedLabel(parent) {
    soften();
}

void SecondaryLabel::changeEvent(QEvent* event) {
    ElidedLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::ParentChange)
        soften();
}

void SecondaryLabel::soften() {
    const QPalette source = QApplication::palette(this);
    QPalette soft; // of this one colour: the others go on following the desktop
    for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        soft.setColor(group, QPalette::WindowText,
                      mixed(source.color(group, QPalette::WindowText), source.color(group, QPalette::Window)));
    setPalette(soft); // comes here again only if that changes something
}

} // namespace quenby
