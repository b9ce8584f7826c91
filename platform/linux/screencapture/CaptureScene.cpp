#include "platform/linux/screencapture/CaptureScene.h"

#include "platform/linux/screencapture/CapturePlacement.h"

#include <QFont>
#include <QFontMetrics>
#include <QStringList>

#include <algorithm>

namespace quenby {
namespace {

// In points; a screen's scale makes pixels of them.
constexpr qreal textHeight = 13;
constexpr qreal cellSize = 7;
constexpr qreal edgeWidth = 2; // of the magnifier: half of it dark, half light
constexpr qreal readoutDistance = 6;
constexpr qreal magnifierDistance = 18;
constexpr qreal hintDistance = 28;
constexpr qreal pointerRoom = 40; // which the hint leaves to the pointer

int scaled(qreal points, qreal scale) { return std::max(1, qRound(points * scale)); }

QSize plateSize(const QString& text, int height) {
    return QFontMetrics(captureFont(height)).size(Qt::TextSingleLine, text) + QSize(height * 7 / 4, height * 3 / 4);
}

// The most useful words first: where the screen is too narrow for all, the last ones but one are left out.
QStringList hintWords(const CaptureSelection& selection) {
    const bool hasSeveralScreens = selection.ground().screens.size() > 1;
    QStringList words;
    if (selection.phase() == CaptureSelection::Phase::staying) {
        words = {QStringLiteral("Enter: take it"), QStringLiteral("Arrows: move"),
                 QStringLiteral("Ctrl + arrows: resize")};
    } else if (selection.mode() == CaptureMode::window) {
        words = {QStringLiteral("Click: a window"), QStringLiteral("Space: a part"),
                 QStringLiteral("Beside windows: the whole screen")};
        if (hasSeveralScreens)
            words += QStringLiteral("Ctrl + click: all screens");
    } else {
        words = {QStringLiteral("Drag: a part"), QStringLiteral("Space: a window"),
                 QStringLiteral("Enter: the whole screen")};
        if (hasSeveralScreens)
            words += QStringLiteral("Ctrl + Enter: all screens");
        words += QStringLiteral("Arrows: by one pixel");
    }
    return words + QStringList{QStringLiteral("Esc: cancel")};
}

QString hintText(const CaptureSelection& selection, int height, int room) {
    QStringList words = hintWords(selection);
    const auto joined = [&words] { return words.join(QStringLiteral("   \u00b7   ")); };
    while (words.size() > 2 && plateSize(joined(), height).width() > room)
        words.removeAt(words.size() - 2);
    return joined();
}

CaptureMagnifier magnifierAt(const QPoint& pointer, const CaptureScreen& screen) {
    CaptureMagnifier magnifier;
    magnifier.pixel = pointer;
    magnifier.cell = scaled(cellSize, screen.scale);
    magnifier.textHeight = scaled(textHeight, screen.scale);
    magnifier.edge = scaled(edgeWidth, screen.scale);
    const int side = (2 * CaptureScene::magnifiedReach + 1) * magnifier.cell + 2 * magnifier.edge;
    const QSize size(side, side + magnifier.textHeight * 3 / 2);
    magnifier.frame = magnifierPlace(size, pointer, scaled(magnifierDistance, screen.scale), screen.pixels);
    return magnifier;
}

CaptureLabel readoutOf(const QRect& rectangle, const CaptureScreen& screen, const QRect& avoided) {
    const QString text = QStringLiteral("%1 \u00d7 %2").arg(rectangle.width()).arg(rectangle.height());
    const int height = scaled(textHeight, screen.scale);
    return {
        readoutPlace(plateSize(text, height), rectangle, scaled(readoutDistance, screen.scale), screen.pixels, avoided),
        text, height};
}

CaptureLabel hintOf(const CaptureSelection& selection, const CaptureScreen& screen, const QList<QRect>& avoided) {
    const int height = scaled(textHeight, screen.scale);
    const QString text = hintText(selection, height, screen.pixels.width() * 9 / 10);
    return {hintPlace(plateSize(text, height), scaled(hintDistance, screen.scale), screen.pixels, avoided), text,
            height};
}

// The two lines around it.
QRegion outline(const QRect& rectangle, int line) {
    const QMargins lines(2 * line, 2 * line, 2 * line, 2 * line);
    return QRegion(rectangle.marginsAdded(lines)) - rectangle.marginsRemoved(lines);
}

template <typename Part>
QRegion changedPart(const std::optional<Part>& before, const std::optional<Part>& after, QRect Part::*place) {
    if (before == after)
        return {};
    QRegion changed;
    if (before)
        changed += (*before).*place;
    if (after)
        changed += (*after).*place;
    return changed;
}

} // namespace

QFont captureFont(int height) {
    QFont font;
    font.setPixelSize(height);
    return font;
}

CaptureScene sceneOf(const CaptureSelection& selection) {
    using Phase = CaptureSelection::Phase;
    CaptureScene scene;
    if (selection.hasEnded())
        return scene;
    const QPoint pointer = selection.pointer();
    const CaptureScreen& screen = screenAt(selection.ground().screens, pointer);
    scene.rectangle = selection.rectangle();
    scene.isTinted = selection.mode() == CaptureMode::window;
    scene.line = scaled(1, screen.scale);
    const int room = scaled(pointerRoom, screen.scale);
    QList<QRect> avoided{QRect(pointer, QSize(1, 1)).marginsAdded(QMargins(room, room, room, room))};
    if (selection.mode() == CaptureMode::region) {
        scene.magnifier = magnifierAt(pointer, screen);
        avoided.append(scene.magnifier->frame);
    }
    if (scene.rectangle) {
        scene.readout = readoutOf(*scene.rectangle, screen, scene.magnifier ? scene.magnifier->frame : QRect());
        avoided.append(scene.readout->plate);
    }
    if (selection.phase() == Phase::aiming || selection.phase() == Phase::staying)
        scene.hint = hintOf(selection, screen, avoided);
    return scene;
}

QRegion changedRegion(const CaptureScene& before, const CaptureScene& after) {
    QRegion changed;
    if (before.rectangle != after.rectangle || before.isTinted != after.isTinted || before.line != after.line) {
        const QRegion old = before.rectangle ? QRegion(*before.rectangle) : QRegion();
        const QRegion now = after.rectangle ? QRegion(*after.rectangle) : QRegion();
        changed = before.isTinted == after.isTinted ? old ^ now : old | now;
        if (before.rectangle)
            changed += outline(*before.rectangle, before.line);
        if (after.rectangle)
            changed += outline(*after.rectangle, after.line);
    }
    changed += changedPart(before.magnifier, after.magnifier, &CaptureMagnifier::frame);
    changed += changedPart(before.readout, after.readout, &CaptureLabel::plate);
    changed += changedPart(before.hint, after.hint, &CaptureLabel::plate);
    return changed;
}

} // namespace quenby
