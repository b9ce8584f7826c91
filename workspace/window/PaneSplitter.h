// A splitter whose parts are told apart by a fine line and nothing more.
//
// Threads: the main thread.
#pragma once

#include <QSplitter>

namespace quenby {

class PaneSplitter final : public QSplitter {
    Q_OBJECT

public:
    explicit PaneSplitter(QWidget* parent = nullptr);

protected:
    QSplitterHandle* createHandle() override;
};

// Of lines between parts of the window.
QColor partingLineColour(const QPalette& palette);

} // namespace quenby
