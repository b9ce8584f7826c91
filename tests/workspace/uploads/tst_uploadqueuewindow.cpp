// The window of the upload queue, by the pointer and the keyboard: which command is offered when, what it names, and
// what is painted.

#include "tests/support/Settled.h"
#include "tests/workspace/uploads/QueueBench.h"
#include "workspace/uploads/UploadQueueWindow.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDropEvent>
#include <QLabel>
#include <QListView>
#include <QMessageBox>
#include <QMimeData>
#include <QPaintEvent>
#include <QSignalSpy>
#include <QSpinBox>
#include <QTest>
#include <QToolButton>

#include <algorithm>
#include <utility>

using namespace quenby;
using namespace quenby::testing;
using State = QueueRow::State;

namespace {

const QString counts = QStringLiteral("1 running, 4 waiting, 1 paused, 1 changed, 1 failed, 1 done"); // of the stage

QString numbersOf(QSignalSpy& spy) {
    return spy.isEmpty() ? QStringLiteral("nothing") : numbersText(spy.takeFirst().at(0).value<QList<qint64>>());
}

// Of the viewport that it watches: what has been painted.
class PaintWatch : public QObject {
public:
    explicit PaintWatch(QWidget* viewport) { viewport->installEventFilter(this); }
    QRegion painted;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            painted += static_cast<QPaintEvent*>(event)->region();
        return false;
    }
};

struct Stage {
    Stage() {
        rows.append({queueRow(1, State::running, megabyte), queueRow(2, State::resting), queueRow(3, State::waiting),
                     queueRow(4, State::waiting), queueRow(5, State::waiting), queueRow(6, State::paused),
                     queueRow(7, State::changed), queueRow(8, State::failed), queueRow(9, State::done)});
        window.resize(640, 800); // with room for all
        window.bringToFront();
        QVERIFY(QTest::qWaitForWindowExposed(&window) && QTest::qWaitForWindowActive(&window));
    }

    QPoint middle(int row) const { return list->visualRect(rows.index(row)).center(); }
    void click(qint64 number, Qt::KeyboardModifiers modifiers = {}) const {
        QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, middle(int(number) - 1));
    }
    // A press of the button that has this name.
    template <typename Button = QAbstractButton>
    Button* button(const char* name) const {
        for (auto* candidate : window.findChildren<Button*>()) {
            if (candidate->text().remove(QLatin1Char('&')) == QLatin1String(name))
                return candidate;
        }
        return nullptr;
    }
    void press(const char* name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    // "Retry, Cancel"
    QString enabledButtons() const {
        QStringList names;
        for (const auto* candidate : window.findChildren<QToolButton*>()) {
            if (candidate->isEnabled() && candidate->isVisible())
                names += candidate->text();
        }
        return names.join(QStringLiteral(", "));
    }
    bool shows(const QString& text) const {
        const auto labels = window.findChildren<QLabel*>();
        return std::any_of(labels.begin(), labels.end(),
                           [&text](const QLabel* label) { return label->isVisible() && label->text() == text; });
    }
    QMessageBox* question() const { return window.findChild<QMessageBox*>(); }
    void answer(const char* text) const {
        QPointer<QMessageBox> box = question();
        QVERIFY(box && box->windowModality() == Qt::WindowModal);
        for (QAbstractButton* candidate : box->buttons()) {
            if (candidate->text().remove(QLatin1Char('&')) == QLatin1String(text))
                candidate->click();
        }
        QTRY_VERIFY(!box);
    }

    QueueRows rows;
    UploadQueueWindow window{rows};
    QListView* list = window.findChild<QListView*>();
    QSignalSpy pause{&window, &UploadQueueWindow::pauseRequested};
    QSignalSpy resume{&window, &UploadQueueWindow::resumeRequested};
    QSignalSpy retry{&window, &UploadQueueWindow::retryRequested};
    QSignalSpy cancel{&window, &UploadQueueWindow::cancelRequested};
    QSignalSpy order{&window, &UploadQueueWindow::orderRequested};
};

} // namespace

class UploadQueueWindowTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void commandsAreOfferedByState_data() {
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("offered");
        QTest::newRow("running") << 1 << QStringLiteral("Pause, Cancel, Clear Finished, Pause All");
        QTest::newRow("first that waits") << 3
                                          << QStringLiteral("Pause, Cancel, Move Down, Move to Bottom, Clear "
                                                            "Finished, Pause All");
        QTest::newRow("last that waits") << 5
                                         << QStringLiteral("Pause, Cancel, Move Up, Move to Top, Clear Finished, "
                                                           "Pause All");
        QTest::newRow("paused") << 6 << QStringLiteral("Resume, Cancel, Clear Finished, Pause All");
        QTest::newRow("changed") << 7 << QStringLiteral("Retry, Cancel, Clear Finished, Pause All");
        QTest::newRow("done") << 9 << QStringLiteral("Clear Finished, Pause All");
    }
    void commandsAreOfferedByState() {
        QFETCH(int, number);
        QFETCH(QString, offered);
        Stage stage;
        QTRY_COMPARE(stage.enabledButtons(), QStringLiteral("Clear Finished, Pause All"));
        stage.click(number);
        QTRY_COMPARE(stage.enabledButtons(), offered);
        stage.rows.remove(9);
        QTRY_VERIFY(!stage.button("Clear Finished")->isEnabled());
    }

    // Of all that are chosen, a command names those that it can be done to.
    void commandsNameWhatTheyMean() {
        Stage stage;
        QTest::keyClick(stage.list, Qt::Key_A, Qt::ControlModifier);
        QTRY_VERIFY(stage.button("Retry")->isEnabled());
        stage.press("Pause");
        stage.press("Resume");
        stage.press("Retry");
        QCOMPARE(numbersOf(stage.pause), QStringLiteral("1 2 3 4 5"));
        QCOMPARE(numbersOf(stage.resume), QStringLiteral("6"));
        QCOMPARE(numbersOf(stage.retry), QStringLiteral("7 8"));

        stage.click(5);
        stage.click(4, Qt::ControlModifier);
        stage.click(6, Qt::ControlModifier);
        QTRY_VERIFY(stage.button("Move to Top")->isEnabled());
        stage.press("Move to Top");
        QCOMPARE(numbersOf(stage.order), QStringLiteral("4 5 3"));
        stage.rows.setOrder({1, 2, 4, 5, 3});
        stage.press("Retry");
        QVERIFY(stage.retry.isEmpty());
        QTRY_VERIFY(!stage.button("Move to Top")->isEnabled());
        stage.press("Move Down"); // the same are chosen as before
        QCOMPARE(numbersOf(stage.order), QStringLiteral("3 4 5"));

        QSignalSpy clear(&stage.window, &UploadQueueWindow::clearRequested);
        QSignalSpy all(&stage.window, &UploadQueueWindow::allPausedRequested);
        stage.press("Clear Finished");
        stage.press("Pause All");
        QCOMPARE(clear.count(), 1);
        QCOMPARE(all.takeFirst().at(0).toBool(), true);
        stage.window.setAllPaused(false);
        QVERIFY(all.isEmpty());
        stage.press("Pause All");
        QCOMPARE(all.takeFirst().at(0).toBool(), true);
    }

    void keyboard() {
        Stage stage;
        QStringList order;
        for (const QWidget* first = stage.list; order.isEmpty() || QApplication::focusWidget() != first;) {
            order += QApplication::focusWidget()->accessibleName();
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            QVERIFY(order.size() < 20);
        }
        QCOMPARE(order.join(QStringLiteral(", ")),
                 QStringLiteral("Uploads, Speed limit, Pause on metered connections, Clear Finished, Pause All"));
        stage.click(4);
        QTRY_VERIFY(stage.button("Move Up")->isEnabled());
        QTest::keyClick(stage.list, Qt::Key_Up, Qt::AltModifier);
        QCOMPARE(numbersOf(stage.order), QStringLiteral("4 3 5"));
        QTest::keyClick(stage.list, Qt::Key_Down, Qt::AltModifier);
        QCOMPARE(numbersOf(stage.order), QStringLiteral("3 5 4"));
        QTest::keyClick(stage.list, Qt::Key_Space);
        QCOMPARE(numbersOf(stage.pause), QStringLiteral("4"));
        stage.click(6);
        QTRY_VERIFY(stage.button("Resume")->isEnabled());
        QTest::keyClick(stage.list, Qt::Key_Space);
        QCOMPARE(numbersOf(stage.resume), QStringLiteral("6"));
        stage.click(4, Qt::ControlModifier); // some of both kinds: the first meaning counts
        QTRY_VERIFY(stage.button("Pause")->isEnabled());
        QTest::keyClick(stage.list, Qt::Key_Space);
        QCOMPARE(numbersOf(stage.pause), QStringLiteral("4"));
        QVERIFY(stage.resume.isEmpty());
        QSignalSpy shown(&stage.window, &UploadQueueWindow::showSourceRequested);
        stage.click(8);
        QTest::keyClick(stage.list, Qt::Key_Return);
        QCOMPARE(shown.takeFirst().at(0).toLongLong(), 8);
        QTRY_VERIFY(stage.button("Retry")->isEnabled());
        QTest::keyClick(stage.list, Qt::Key_Delete);
        QCOMPARE(numbersOf(stage.cancel), QStringLiteral("8"));

        QTest::keyClick(stage.list, Qt::Key_Escape);
        QVERIFY(!stage.window.isVisible());
        stage.window.bringToFront();
        QTest::keyClick(stage.list, Qt::Key_W, Qt::ControlModifier);
        QVERIFY(!stage.window.isVisible());
    }

    void cancellingAsksWhereSomethingWouldBeLost() {
        Stage stage;
        stage.click(4);
        QTRY_VERIFY(stage.button("Cancel")->isEnabled());
        stage.press("Cancel");
        QCOMPARE(numbersOf(stage.cancel), QStringLiteral("4")); // nothing of it has been sent
        stage.click(5, Qt::ControlModifier);
        stage.press("Cancel");
        stage.answer("Keep"); // several
        stage.click(1);
        stage.press("Cancel");
        QVERIFY(stage.cancel.isEmpty());
        stage.answer("Keep");
        QVERIFY(stage.cancel.isEmpty());
        QTest::keyClick(stage.list, Qt::Key_A, Qt::ControlModifier);
        stage.press("Cancel");
        QVERIFY(stage.cancel.isEmpty());
        stage.rows.remove(3);
        stage.rows.change(queueRow(2, State::done));
        stage.answer("Cancel Uploads");
        QCOMPARE(numbersOf(stage.cancel), QStringLiteral("1 4 5 6 7 8"));
        QVERIFY(stage.cancel.isEmpty());
    }

    void rowsThatWaitAreDragged() {
        Stage stage;
        QWidget* viewport = stage.list->viewport();
        const auto drag = [&](int from, const QPoint& to) {
            QTest::mousePress(viewport, Qt::LeftButton, {}, stage.middle(from));
            for (const QPoint& place : {stage.middle(from) + QPoint(0, 15), stage.middle(from) + QPoint(0, 30), to})
                QTest::mouseMove(viewport, place);
        };
        const auto drop = [&](const QPoint& at) { QTest::mouseRelease(viewport, Qt::LeftButton, {}, at); };
        const QPoint belowLast = stage.middle(7);
        drag(2, belowLast);
        // As far as those go that wait.
        const QPoint line(5, stage.list->visualRect(stage.rows.index(5)).top());
        QCOMPARE(viewport->grab().toImage().pixelColor(line), stage.list->palette().color(QPalette::Highlight));
        drop(belowLast);
        QCOMPARE(numbersOf(stage.order), QStringLiteral("4 5 3"));
        const QPoint top = stage.middle(0);
        stage.click(5);
        stage.click(4, Qt::ControlModifier);
        drag(3, top);
        drop(top);
        QCOMPARE(numbersOf(stage.order), QStringLiteral("4 5 3"));
        QCOMPARE(stage.list->selectionModel()->selectedRows().size(), 2);

        drag(2, belowLast);
        QTest::keyClick(stage.list, Qt::Key_Escape);
        drop(belowLast);
        QVERIFY(stage.window.isVisible() && stage.order.isEmpty());
        const QPoint sameGap = stage.middle(4) - QPoint(0, 5);
        drag(3, sameGap);
        drop(sameGap);
        drag(0, belowLast); // runs
        drop(belowLast);
        QVERIFY(stage.order.isEmpty());
    }

    void whatChangesIsPaintedAlone() {
        Stage stage;
        PaintWatch watch(stage.list->viewport());
        QVERIFY(settles([&watch] { return std::exchange(watch.painted, {}).isEmpty(); }));
        QueueRow faster = queueRow(1, State::running, 2 * megabyte);
        faster.bytesPerSecond = megabyte;
        stage.rows.change(faster);
        QTRY_VERIFY(stage.shows(QString(counts + QStringLiteral(" — 1 MB/s — less than a minute left"))));
        QTRY_VERIFY(!watch.painted.isEmpty());
        QCOMPARE(watch.painted.boundingRect(), stage.list->visualRect(stage.rows.index(0)));
    }

    void noUploadsAndFilesFromOutside() {
        Stage stage;
        QTRY_VERIFY(stage.shows(counts));
        stage.rows.clear();
        QTRY_VERIFY(stage.shows(QStringLiteral("No uploads")) && !stage.list->isVisible());
        QSignalSpy dropped(&stage.window, &UploadQueueWindow::filesDropped);
        QMimeData data;
        data.setUrls({QUrl(QStringLiteral("https://example.com/a"))});
        QDragEnterEvent refused(QPoint(50, 100), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        refused.ignore();
        QCoreApplication::sendEvent(&stage.window, &refused);
        QVERIFY(!refused.isAccepted());
        data.setUrls({QUrl(QStringLiteral("https://example.com/a")), QUrl::fromEncoded("file:///home/a%20%FF.txt")});
        QDragEnterEvent enter(QPoint(50, 100), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&stage.window, &enter);
        QVERIFY(enter.isAccepted());
        QDropEvent event(QPointF(50, 100), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&stage.window, &event);
        QCOMPARE(dropped.count(), 1);
        QCOMPARE(dropped.takeFirst().at(0).value<QList<QByteArray>>(), QList<QByteArray>{"/home/a \xFF.txt"});
        stage.rows.append(queueRow(1, State::waiting));
        QTRY_VERIFY(stage.list->isVisible());
    }

    void limitsAndRest() {
        Stage stage;
        QSignalSpy limits(&stage.window, &UploadQueueWindow::rateLimitRequested);
        auto* choices = stage.window.findChild<QComboBox*>();
        auto* other = stage.window.findChild<QSpinBox*>();
        stage.window.setRateLimit(1024 * 1024);
        QCOMPARE(choices->currentText(), QStringLiteral("1 MB/s"));
        stage.window.setRateLimit(777 * 1024 - 5);
        QVERIFY(other->isVisible() && other->value() == 777);
        QVERIFY(limits.isEmpty());
        other->setFocus();
        other->selectAll();
        QTest::keyClicks(other, QStringLiteral("500"));
        QVERIFY(limits.isEmpty()); // not yet whole
        QTest::keyClick(other, Qt::Key_Return);
        QCOMPARE(limits.takeFirst().at(0).toLongLong(), 500 * 1024);
        stage.window.setRateLimit(500 * 1024); // one of the choices, but whoever types goes on typing
        QVERIFY(other->isVisible());
        choices->setFocus();
        QTest::keyClick(choices, Qt::Key_Home);
        QCOMPARE(limits.takeFirst().at(0).toLongLong(), 0);
        QVERIFY(!other->isVisible() && limits.isEmpty());

        QSignalSpy metered(&stage.window, &UploadQueueWindow::restsOnMeteredRequested);
        auto* rests = stage.button<QCheckBox>("Pause on metered connections");
        stage.window.setRestsOnMetered(true);
        QVERIFY(rests->isChecked() && metered.isEmpty());
        stage.click(4); // the list's keys are the list's alone
        rests->setFocus();
        QTest::keyClick(rests, Qt::Key_Space);
        QCOMPARE(metered.takeFirst().at(0).toBool(), false);
        QVERIFY(stage.pause.isEmpty());

        QSignalSpy anyway(&stage.window, &UploadQueueWindow::uploadAnywayRequested);
        QVERIFY(!stage.button("Upload Anyway")->isVisible());
        const QString sentence = QStringLiteral("This connection is metered.");
        stage.window.setResting(sentence);
        QTRY_VERIFY(stage.shows(sentence));
        stage.press("Upload Anyway");
        QCOMPARE(anyway.count(), 1);
        stage.window.setResting({});
        QVERIFY(!stage.shows(sentence));
    }

    void whoDoesNotSeeItIsTold() {
        Stage stage;
        QAccessibleInterface* list = QAccessible::queryAccessibleInterface(stage.list);
        QVERIFY(list && list->childCount() == stage.rows.rowCount());
        QCOMPARE(list->child(0)->text(QAccessible::Name), QStringLiteral("file 1.txt, running, 10%"));
        stage.window.setRateLimit(1);
        for (QWidget* widget : stage.window.findChildren<QWidget*>()) {
            if (widget->isVisible() && widget->focusPolicy() != Qt::NoFocus && !widget->focusProxy()) {
                const QString name = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
                QVERIFY2(!name.isEmpty(), widget->metaObject()->className());
            }
        }
    }

    // However it is turned and however large its text, it can be made small, and nothing is cut off.
    void fits() {
        const QFont usual = QApplication::font();
        const auto former = qScopeGuard([&usual] { QApplication::setFont(usual); });
        for (const int points : {9, 20}) {
            QFont font = usual;
            font.setPointSize(points);
            QApplication::setFont(font);
            Stage stage;
            stage.window.setRateLimit(1);
            stage.window.resize(1200, 600);
            QCoreApplication::processEvents();
            stage.window.resize(1, 1);
            QCoreApplication::processEvents();
            if (points == 9)
                QVERIFY(stage.window.width() <= 440 && stage.window.height() <= 360);
            for (const QWidget* widget : stage.window.findChildren<QWidget*>()) {
                if (widget->isVisible() && qobject_cast<const QAbstractButton*>(widget)) {
                    QVERIFY(widget->width() >= widget->minimumSizeHint().width());
                    QVERIFY(
                        stage.window.rect().contains(QRect(widget->mapTo(&stage.window, QPoint()), widget->size())));
                }
            }
        }
    }
};

QTEST_MAIN(UploadQueueWindowTest)
#include "tst_uploadqueuewindow.moc"
