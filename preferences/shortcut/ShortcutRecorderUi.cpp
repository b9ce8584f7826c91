#include "preferences/shortcut/ShortcutRecorderUi.h"

#include "preferences/shortcut/ShortcutRecorder.h"
#include "widgets/Glyphs.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLineEdit>

#include <algorithm>

namespace quenby {
namespace {

constexpr float recordingTint = 0.18F; // of the colour of what is chosen, in the field's ground

QString clickPrompt() { return ShortcutRecorder::tr("Click to record"); }
QString keysPrompt() { return ShortcutRecorder::tr("Press keys…"); }

QString nativeText(QKeyCombination chord) { return QKeySequence(chord).toString(QKeySequence::NativeText); }

// The modifiers as they will stand before the key.
QString heldText(Qt::KeyboardModifiers held) {
    return held == Qt::NoModifier ? QString()
                                  : nativeText(QKeyCombination(held, Qt::Key_A)).chopped(1) + QStringLiteral("…");
}

QColor mixed(const QColor& ground, const QColor& tint, float share) {
    const auto mix = [share](float one, float other) { return one * (1 - share) + other * share; };
    return QColor::fromRgbF(mix(ground.redF(), tint.redF()), mix(ground.greenF(), tint.greenF()),
                            mix(ground.blueF(), tint.blueF()));
}

} // namespace

ShortcutRecorderUi::ShortcutRecorderUi(QWidget* recorder)
    : field(new QLineEdit(recorder))
    , clear(field->addAction(glyphIcon(crossGlyph()), QLineEdit::TrailingPosition)) {
    field->setReadOnly(true);
    field->setContextMenuPolicy(Qt::NoContextMenu);
    field->setCursor(Qt::ArrowCursor);
    field->setAccessibleName(ShortcutRecorder::tr("Keyboard shortcut"));
    // Neither Tab nor the pointer marks letters in it.
    QObject::connect(field, &QLineEdit::selectionChanged, field, &QLineEdit::deselect);
    clear->setText(ShortcutRecorder::tr("Clear"));
    clear->setToolTip(ShortcutRecorder::tr("Clear the shortcut"));

    auto* layout = new QHBoxLayout(recorder);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(field);
    recorder->setFocusProxy(field);
    recorder->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    fit();
}

void ShortcutRecorderUi::fit() const {
    const QFontMetrics metrics = field->fontMetrics();
    int widest = 0;
    for (const QString& text :
         {clickPrompt(), keysPrompt(), nativeText(Qt::CTRL | Qt::ALT | Qt::SHIFT | Qt::Key_PageDown)})
        widest = std::max(widest, metrics.horizontalAdvance(text));
    // Where the window's lines begin, although the names of keys are Latin.
    field->setAlignment((field->isRightToLeft() ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignAbsolute |
                        Qt::AlignVCenter);
    field->setMinimumWidth(widest + 2 * field->sizeHint().height()); // the frame, and room for the clear button
}

void ShortcutRecorderUi::showKeys(const QKeySequence& keys) {
    show(keys.toString(QKeySequence::NativeText), clickPrompt(), false);
    field->setAccessibleDescription(keys.isEmpty()
                                        ? ShortcutRecorder::tr("Press Space to record a shortcut.")
                                        : ShortcutRecorder::tr("Press Space to record another, Delete to clear."));
}

void ShortcutRecorderUi::showRecording(Qt::KeyboardModifiers held) {
    show(heldText(held), keysPrompt(), true);
    field->setAccessibleDescription(ShortcutRecorder::tr("Press the keys of the shortcut, or Escape to cancel."));
}

void ShortcutRecorderUi::show(const QString& text, const QString& prompt, bool isRecording) {
    if (field->text() != text)
        field->setText(text);
    field->setPlaceholderText(prompt);
    field->setCursorPosition(0);
    clear->setVisible(!isRecording && field->isEnabled() && !text.isEmpty());
    setGround(isRecording);
}

void ShortcutRecorderUi::setGround(bool isRecording) {
    if (!isRecording) {
        field->setPalette(QPalette());
        return;
    }
    const QPalette around = field->parentWidget()->palette();
    QPalette palette;
    palette.setColor(QPalette::Base, mixed(around.color(QPalette::Active, QPalette::Base),
                                           around.color(QPalette::Active, QPalette::Highlight), recordingTint));
    field->setPalette(palette);
}

} // namespace quenby
