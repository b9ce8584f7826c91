// A menu as it goes over the bus to a tray that shows it by itself.
//
// The toolkit turns the first ampersand of a text into the bus's sign for a mnemonic and leaves the others as they are,
// so that an ampersand that is meant would be shown twice. The copy's texts are written for that; everything else
// follows the original. Of the texts that hold an ampersand, the mnemonic has to come first.
//
// Threads: the main thread. The original outlives the copy.
#pragma once

#include <QMenu>

namespace quenby {

class TrayMenuCopy : public QObject {
public:
    explicit TrayMenuCopy(QMenu& original);

    QMenu& menu() { return menu_; }

private:
    void fill(QMenu& copy, QMenu& original);
    void follow(QAction& copy, QAction& original);

    QMenu menu_;
};

// "Up&load && Share" becomes "Up&load & Share".
QString textForBus(QString text);

} // namespace quenby
