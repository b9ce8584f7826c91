// The recorder's field, and how it looks in each state. Owned by the recorder that it is made for.
#pragma once

#include <QKeySequence>

class QAction;
class QLineEdit;
class QString;
class QWidget;

namespace quenby {

struct ShortcutRecorderUi {
    explicit ShortcutRecorderUi(QWidget* recorder);

    // Empty: a prompt.
    void showKeys(const QKeySequence& keys);
    void showRecording(Qt::KeyboardModifiers held);
    // After another font, style or direction.
    void fit() const;

    QLineEdit* field;
    QAction* clear;

private:
    void show(const QString& text, const QString& prompt, bool isRecording);
    void setGround(bool isRecording);
};

} // namespace quenby
