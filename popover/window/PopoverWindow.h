// The popover: a small window without a frame that hangs from the status item. Above, who is signed in and how full the
// Drive is, with the gear and add buttons; below, the list of changes or a text that stands in for it; at the edge away
// from the status item a grip that makes it taller or shorter.
//
// It holds what it is given and asks by signals. Threads: the main thread. Sizes in logical pixels.
#pragma once

#include "core/AccountDisplay.h"
#include "popover/window/CustomWindow.h"

#include <QRect>
#include <QString>

#include <memory>

namespace quenby {

class CustomButton;
class Defaults;
struct PopoverUi;

class PopoverWindow : public CustomWindow {
    Q_OBJECT

public:
    // The list is taken over; it fills what the header leaves. The height is read from and kept under
    // "heightForStatusMenu" of the defaults, which outlive the window.
    PopoverWindow(QWidget* changes, Defaults& defaults);
    ~PopoverWindow() override;

    // Nothing is painted again when nothing is different.
    void setAccount(const AccountDisplay& account);
    // Stands where the rows would be; hidden when empty.
    void setStatusText(const QString& text);
    void setActivityIndicator(bool isShown);
    // A place to drop files on, beside the buttons and of their size. Taken over; the one before is deleted.
    void setDropTarget(QWidget* dropTarget);

    // Opens under the anchor (the status item on the screen; empty when nobody knows where it is), whole on the screen
    // that has it. Comes to the front and takes the keys.
    void open(const QRect& anchor);

Q_SIGNALS:
    // The buttons, to put the menu under them. While a menu is open, its button looks pressed and the window stays.
    void gearRequested(QWidget& button);
    void addRequested(QWidget& button);
    // It is on the screen, or not any more.
    void visibleChanged(bool isVisible);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    using Request = void (PopoverWindow::*)(QWidget& button);
    void connectButton(CustomButton* button, Request request);
    void showAccount();
    void focusFirst();

    Defaults& defaults_;
    const std::unique_ptr<PopoverUi> ui_;
    AccountDisplay account_;
    QString status_;
    bool isBusy_ = false;
};

} // namespace quenby
