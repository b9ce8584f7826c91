// A page on its way to paper: the user chooses a printer or a PDF file over the page's window, and hears of it when it
// does not work.
//
// Threads: the main thread. Nothing here blocks.
#pragma once

#include <QObject>
#include <QPointer>

#include <memory>

class QPrintDialog;
class QPrinter;
class QWebEngineView;

namespace quenby {

class PagePrinting final : public QObject {
    Q_OBJECT

public:
    // The view outlives its printing, which it owns.
    explicit PagePrinting(QWebEngineView* view);
    ~PagePrinting() override;

    // Does nothing while the page is being printed already.
    void start();

private:
    void print();
    void finish(bool isPrinted);

    QWebEngineView* const view_;
    std::unique_ptr<QPrinter> printer_; // while it is used
    QPointer<QPrintDialog> dialog_;
};

} // namespace quenby
