// One question of a page's script. Its words are a stranger's: they are shown as they are, never as markup, and only as
// far as fits on a screen.
//
// Threads: the main thread.
#pragma once

#include "platform/linux/web/engine/PageDialogs.h"

#include <QDialog>

class QCheckBox;
class QLineEdit;

namespace quenby {

class PageQuestionDialog final : public QDialog {
    Q_OBJECT

public:
    PageQuestionDialog(const PageQuestion& question, bool offersSilence, QWidget* parent);

    // What was typed; empty for questions that want no text.
    QString text() const;
    bool wantsSilence() const;

private:
    QLineEdit* edit_ = nullptr;
    QCheckBox* silence_ = nullptr;
};

} // namespace quenby
