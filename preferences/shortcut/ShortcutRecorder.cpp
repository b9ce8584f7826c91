#include "preferences/shortcut/ShortcutRecorder.h"

#include "platform/Defaults.h"
#include "preferences/shortcut/PressedKeys.h"
#include "preferences/shortcut/ShortcutRecorderUi.h"
#include "preferences/shortcut/ShortcutRules.h"

#include <QAction>
#include <QKeyEvent>
#include <QLineEdit>

#include <algorithm>
#include <utility>

namespace quenby {
namespace {

bool isPlain(const QKeyEvent& event) {
    return (event.modifiers() & ~Qt::KeyboardModifiers(Qt::KeypadModifier)) == Qt::NoModifier;
}

bool isOneOf(const QKeyEvent& event, std::initializer_list<Qt::Key> keys) {
    return std::find(keys.begin(), keys.end(), event.key()) != keys.end();
}

bool clears(const QKeyEvent& event) { return isPlain(event) && isOneOf(event, {Qt::Key_Backspace, Qt::Key_Delete}); }

bool begins(const QKeyEvent& event) {
    return isPlain(event) && isOneOf(event, {Qt::Key_Space, Qt::Key_Return, Qt::Key_Enter, Qt::Key_Select});
}

// Goes on to the next widget.
bool movesOn(const QKeyEvent& event) {
    const bool isControlHeld = event.modifiers().testAnyFlags(Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    return !isControlHeld && isOneOf(event, {Qt::Key_Tab, Qt::Key_Backtab});
}

} // namespace

ShortcutRecorder::ShortcutRecorder(Defaults& defaults, QWidget* parent)
    : QWidget(parent)
    , defaults_(defaults)
    , ui_(std::make_unique<ShortcutRecorderUi>(this)) {
    ui_->field->installEventFilter(this);
    connect(ui_->clear, &QAction::triggered, this, [this] { store({}); });
    connect(&defaults_, &Defaults::changed, this, [this](const QString& key) {
        if (key == key_)
            refresh();
    });
    refresh();
}

ShortcutRecorder::~ShortcutRecorder() {
    ui_->field->removeEventFilter(this);
    if (std::exchange(isRecording_, false))
        Q_EMIT recordingEnded();
}

void ShortcutRecorder::setAssociatedUserDefaultsKey(const QString& key) {
    key_ = key;
    refresh();
}

bool ShortcutRecorder::isRecording() const { return isRecording_; }

QKeySequence ShortcutRecorder::keys() const { return storedShortcut(defaults_.valueForKey(key_)); }

void ShortcutRecorder::begin() {
    if (std::exchange(isRecording_, true))
        return;
    held_ = {};
    refresh();
    Q_EMIT recordingBegan();
}

void ShortcutRecorder::end() {
    if (!std::exchange(isRecording_, false))
        return;
    refuse({});
    refresh();
    Q_EMIT recordingEnded();
}

// Before the recording ends: so whoever waits for the end finds the new keys.
void ShortcutRecorder::store(const QKeySequence& keys) {
    if (keys.isEmpty())
        defaults_.removeValueForKey(key_);
    else
        defaults_.setValueForKey(key_, storedForm(keys));
}

void ShortcutRecorder::refuse(const QString& sentence) {
    const bool hadRefused = std::exchange(hasRefused_, !sentence.isEmpty());
    if (hadRefused || hasRefused_)
        Q_EMIT refused(sentence);
}

void ShortcutRecorder::refresh() {
    if (isRecording_)
        ui_->showRecording(held_);
    else
        ui_->showKeys(keys());
}

bool ShortcutRecorder::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
    case QEvent::ShortcutOverride:
        // While it records, no key is a command of its window.
        if (isRecording_ || clears(static_cast<const QKeyEvent&>(*event)))
            event->accept();
        return event->isAccepted();
    case QEvent::KeyPress:
        return keyWasPressed(static_cast<const QKeyEvent&>(*event));
    case QEvent::KeyRelease:
        if (isRecording_) {
            held_ = heldAfter(static_cast<const QKeyEvent&>(*event));
            refresh();
        }
        return isRecording_;
    case QEvent::MouseButtonPress:
        if (static_cast<const QMouseEvent&>(*event).button() == Qt::LeftButton) {
            ui_->field->setFocus(Qt::MouseFocusReason);
            begin();
        }
        return true;
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::MouseButtonRelease:
        return true;
    case QEvent::FocusOut:
    case QEvent::Hide:
        end();
        return false;
    default:
        return QWidget::eventFilter(watched, event);
    }
}

void ShortcutRecorder::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    switch (event->type()) {
    case QEvent::EnabledChange:
        if (!isEnabled())
            end();
        refresh();
        break;
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::LayoutDirectionChange:
        ui_->fit();
        break;
    case QEvent::PaletteChange:
        refresh();
        break;
    default:
        break;
    }
}

bool ShortcutRecorder::keyWasPressed(const QKeyEvent& event) {
    if (!isRecording_)
        return keyWasPressedAtRest(event);
    if (movesOn(event))
        return false; // and the recording ends with the focus
    if (!event.isAutoRepeat())
        record(event);
    return true;
}

bool ShortcutRecorder::keyWasPressedAtRest(const QKeyEvent& event) {
    if (event.isAutoRepeat() && !movesOn(event))
        return true; // still the key that ended the recording
    if (begins(event))
        begin();
    else if (clears(event))
        store({});
    else
        return false;
    return true;
}

void ShortcutRecorder::record(const QKeyEvent& event) {
    held_ = heldAfter(event);
    const QKeyCombination chord = chordOf(event);
    if (chord.key() == 0) { // nothing but modifiers so far
        refresh();
        return;
    }
    const bool isCleared = clears(event);
    const bool isCancelled = isPlain(event) && event.key() == Qt::Key_Escape;
    if (!isCleared && !isCancelled) {
        if (const QString refusal = refusalOfShortcut(chord, latinKeyOf(event)); !refusal.isEmpty()) {
            refuse(refusal);
            refresh();
            return;
        }
    }
    if (!isCancelled)
        store(isCleared ? QKeySequence() : QKeySequence(chord));
    end();
}

} // namespace quenby
