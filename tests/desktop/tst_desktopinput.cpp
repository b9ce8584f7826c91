// That what a test does with the pointer and the keyboard arrives in a plain window, under a real window manager.

#include "tests/desktop/support/DesktopInput.h"
#include "tests/desktop/support/DragSource.h"

#include <QApplication>
#include <QDropEvent>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QTemporaryDir>
#include <QTest>
#include <QVBoxLayout>

using namespace quenby::testing;

namespace {

// Notes the mouse buttons, and takes drops on its left half.
class Field final : public QLabel {
public:
    Field()
        : QLabel(QStringLiteral("Drop files on the left half")) {
        setAcceptDrops(true);
        setMinimumSize(400, 120);
    }
    QList<Qt::MouseButton> pressed;
    int doubleClicks = 0;
    QByteArray dropped;
    int left = 0;

protected:
    void mousePressEvent(QMouseEvent* event) override { pressed.append(event->button()); }
    void mouseDoubleClickEvent(QMouseEvent*) override { ++doubleClicks; }
    void dragEnterEvent(QDragEnterEvent* event) override { event->accept(); }
    void dragMoveEvent(QDragMoveEvent* event) override {
        event->setAccepted(event->position().x() < width() / 2.0);
        if (event->isAccepted())
            event->acceptProposedAction();
    }
    void dragLeaveEvent(QDragLeaveEvent*) override { ++left; }
    void dropEvent(QDropEvent* event) override {
        dropped = event->mimeData()->data(QStringLiteral("text/uri-list"));
        event->acceptProposedAction();
    }
};

} // namespace

class DesktopInputTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() {
        window_ = std::make_unique<QWidget>();
        window_->setWindowTitle(title);
        window_->setGeometry(300, 200, 420, 240);
        auto* layout = new QVBoxLayout(window_.get());
        layout->addWidget(line_ = new QLineEdit);
        layout->addWidget(field_ = new Field);
        window_->show();
        QVERIFY(QTest::qWaitForWindowExposed(window_.get()));
        id_ = input_.waitForWindow(title, QCoreApplication::applicationPid());
        QVERIFY(id_ != 0);
        // The window manager has put its frame around it, and Qt knows.
        QTRY_COMPARE(input_.geometry(id_), QRect(window_->mapToGlobal(QPoint()), window_->size()));
        QVERIFY(input_.activate(id_));
        QTRY_VERIFY(window_->isActiveWindow());
    }
    void cleanup() {
        input_.savePictureOfFailure();
        window_.reset();
    }

    void clicksAndTyping() {
        input_.click(at(field_), DesktopInput::left);
        input_.click(at(field_), DesktopInput::middle);
        input_.click(at(field_), DesktopInput::right);
        QTRY_COMPARE(field_->pressed, (QList{Qt::LeftButton, Qt::MiddleButton, Qt::RightButton}));
        input_.doubleClick(at(field_));
        QTRY_COMPARE(field_->doubleClicks, 1);
        input_.click(at(line_));
        QTRY_VERIFY(line_->hasFocus());
        input_.type(QStringLiteral("Quenby -x: (7)"));
        QTRY_COMPARE(line_->text(), QStringLiteral("Quenby -x: (7)"));
        input_.key(QStringLiteral("ctrl+a"));
        input_.key(QStringLiteral("Delete"));
        QTRY_COMPARE(line_->text(), QString());
    }

    void windows() {
        QCOMPARE(input_.find(QStringLiteral("A window"), 0), 0U);
        QCOMPARE(input_.find(title, 1), 0U);
        window_->hide();
        QVERIFY(input_.waitUntilGone(id_));
        QCOMPARE(input_.find(title, 0), 0U);
    }

    void pictures() {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("desktop.png"));
        field_->setStyleSheet(QStringLiteral("background: #c03050"));
        QTRY_VERIFY(input_.savePicture(path) && QImage(path).pixelColor(at(field_, 380)) == QColor(0xc0, 0x30, 0x50));
    }

    void filesAreDropped_data() {
        QTest::addColumn<int>("x");
        QTest::addColumn<bool>("isTaken");
        QTest::newRow("where they are taken") << 100 << true;
        QTest::newRow("where they are refused") << 300 << false;
    }
    void filesAreDropped() {
        QFETCH(int, x);
        QFETCH(bool, isTaken);
        DragSource source({"/tmp/a b.txt", "/tmp/caf\xe9"});
        QVERIFY(source.begin());
        // Over the half that takes them first, so that the refusal is seen to come.
        source.moveTo(at(field_, 100));
        QVERIFY(source.waitForAcceptance());
        source.moveTo(at(field_, x));
        QVERIFY(source.waitForAcceptance(isTaken));
        QCOMPARE(source.drop(), isTaken ? Qt::CopyAction : Qt::IgnoreAction);
        QTRY_COMPARE(field_->dropped, isTaken ? "file:///tmp/a%20b.txt\r\nfile:///tmp/caf%E9\r\n" : "");
    }

    void aDragIsCancelled() {
        DragSource source({"/tmp/a"});
        QVERIFY(source.begin());
        source.moveTo(at(field_, 100));
        QVERIFY(source.waitForAcceptance());
        QCOMPARE(source.cancel(), Qt::IgnoreAction);
        QTRY_COMPARE(field_->left, 1);
        QVERIFY(field_->dropped.isEmpty());
        // The pointer is free again.
        input_.click(at(field_, 100));
        QTRY_COMPARE(field_->pressed, QList{Qt::LeftButton});
    }

private:
    static QPoint at(const QWidget* widget, int x = 20) { return widget->mapToGlobal(QPoint(x, widget->height() / 2)); }

    const QString title = QStringLiteral("A window (no. 1) [x.y]");
    DesktopInput input_;
    std::unique_ptr<QWidget> window_;
    QLineEdit* line_ = nullptr;
    Field* field_ = nullptr;
    WindowId id_ = 0;
};

QTEST_MAIN(DesktopInputTest)
#include "tst_desktopinput.moc"
