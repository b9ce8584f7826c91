// Shows the workspace window, the menus and the status item with made-up contents, for looking at them:
//   quenby_view_windows welcome|waiting|trouble|account|empty|menu|item [--dark]
// Stays until it is ended. QT_SCALE_FACTOR gives other scales.

#include "app/dropview/dragFileImageView.h"
#include "app/statusitem/ApplicationIcon.h"
#include "app/statusitem/StatusItemView.h"
#include "app/statusitem/StatusMenus.h"
#include "tests/app/statusitem/FakeStatusItemInputs.h"
#include "tests/platform/fakes/FakeDefaults.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/UploadRows.h"
#include "workspace/window/WelcomeView.h"
#include "workspace/window/WorkspaceWindow.h"

#include <QApplication>
#include <QPainter>
#include <QStyleFactory>
#include <QTimer>

using namespace quenby;
using namespace quenby::testing;

namespace {

QPalette darkPalette() {
    QPalette palette(QColor(43, 43, 46), QColor(43, 43, 46));
    palette.setColor(QPalette::Base, QColor(30, 30, 32));
    palette.setColor(QPalette::Highlight, QColor(76, 120, 220));
    return palette;
}

// The item in its looks, each on a light and on a dark ground.
class Items : public QWidget {
public:
    explicit Items(QWidget* parent = nullptr)
        : QWidget(parent) {
        resize(420, 420);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        StatusItemView view(applicationIcon());
        int y = 8;
        for (const int state : {0, 1, 2, 3, 4, 5}) {
            StatusItemLook look{QStringLiteral("37%"), 37, state == 3, state == 2, state != 4, state != 5, 72, {}};
            look.displaysize = state == 1 ? 80 : 37;
            view.setLook(look);
            for (const bool isDark : {false, true}) {
                const QRect rect(isDark ? 208 : 8, y, 180, 48);
                painter.fillRect(rect, isDark ? QColor(40, 40, 44) : QColor(236, 236, 238));
                view.paint(painter, QRect(rect.topLeft() + QPoint(8, 4), view.size() + QSize(0, 5)), isDark);
                view.paintIcon(painter, QRect(rect.topLeft() + QPoint(100, 4), QSize(22, 22)), isDark);
                view.paintIcon(painter, QRect(rect.topLeft() + QPoint(130, 2), QSize(44, 44)), isDark);
            }
            y += 56;
        }
    }
};

void showAccount(WorkspaceWindow& window, UploadRows& rows, bool isBusy) {
    AccountView& view = window.accountView();
    view.setAccount(
        {QStringLiteral("Ada Lovelace"), QStringLiteral("ada@example.com"), QStringLiteral("37% of 15 GB used"), 37});
    view.setDropView(new dragFileImageView);
    if (isBusy) {
        rows.append({1, QStringLiteral("Notes on the engine.pdf"), QStringLiteral("3.2 MB of 10 MB"), 32});
        rows.append({2, QStringLiteral("A film with a rather long name that will hardly fit into a single line.mov"),
                     QStringLiteral("812 MB of 1.1 GB"), 73});
        rows.append({3, QStringLiteral("punched card 7.png"), QStringLiteral("Waiting for the Drive"), -1});
        rows.append({4, QStringLiteral("punched card 8.png"), QStringLiteral("100 KB of 100 KB"), 100});
        rows.setWaiting(11);
    }
    view.setUploads(&rows);
    window.showAccount();
}

} // namespace

int main(int argc, char** argv) {
    QApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setWindowIcon(applicationIcon());
    const QStringList arguments = QApplication::arguments();
    if (arguments.contains(QStringLiteral("--dark")))
        QApplication::setPalette(darkPalette());
    const QString what = arguments.value(1);

    FakeDefaults defaults;
    FakeStatusItemInputs inputs;
    StatusMenus menus(inputs, defaults);
    UploadRows rows;
    WorkspaceWindow window(defaults);
    Items items;
    window.setCommandsMenu(&menus.statusMenu());
    if (what == QStringLiteral("item")) {
        items.show();
        return QApplication::exec();
    }
    if (what == QStringLiteral("waiting"))
        window.welcomeView().showWaiting(QStringLiteral("Waiting for the keyring to be unlocked…"));
    else if (what == QStringLiteral("trouble"))
        window.welcomeView().showTrouble(QStringLiteral("The Drive could not be reached: the name of its server is not "
                                                        "known here. Check the network, then try again."));
    else if (what != QStringLiteral("welcome"))
        showAccount(window, rows, what != QStringLiteral("empty"));
    window.bringToFront();
    if (what == QStringLiteral("menu"))
        QTimer::singleShot(500, &menus, [&] { menus.statusMenu().popup(window.mapToGlobal(QPoint(300, 60))); });
    return QApplication::exec();
}
