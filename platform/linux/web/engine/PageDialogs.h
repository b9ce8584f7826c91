// What a page's scripts ask of its reader: messages, questions, texts and files. Each stands over the page's window and
// holds up that window alone.
//
// Threads: the main thread. The engine wants the answer from inside of its call, so these wait in an event loop of
// their own: anything may happen meanwhile but the destruction of this object. The window may go; end() and close() let
// the waiting return soon. The program goes on meanwhile, but the engine rests, with all of its pages and downloads.
#pragma once

#include <QElapsedTimer>
#include <QPointer>
#include <QUrl>
#include <QWebEnginePage>
#include <QWidget>

#include <optional>

class QDialog;

namespace quenby {

struct PageQuestion {
    enum class Kind { alert, confirm, prompt, leave };

    Kind kind = Kind::alert;
    QUrl origin; // of the page
    QString message;
    QString proposal = {}; // for Kind::prompt
};

class PageDialogs {
public:
    // Without a widget that is there nothing is shown, and everything refused.
    void setOver(QWidget* widget) { over_ = widget; }

    // The answer, empty but for Kind::prompt; none when it is refused. A page that asks three times in a row offers the
    // reader to hear nothing more of it.
    std::optional<QString> ask(const PageQuestion& question);
    // Empty when nothing was chosen.
    QStringList chooseFiles(QWebEnginePage::FileSelectionMode mode, const QString& proposal);

    // The reader comes to a page anew, which may ask again.
    void hearAgain() { silenced_.reset(); }
    // Refuses what is being asked.
    void end();
    // And everything after it.
    void close();

private:
    bool run(QDialog& dialog);
    bool isInARow();

    QPointer<QWidget> over_;
    QPointer<QDialog> open_;
    std::optional<QUrl> silenced_; // the origin whose questions nobody wants to hear
    int inARow_ = 0;
    QElapsedTimer sinceLast_;
};

} // namespace quenby
