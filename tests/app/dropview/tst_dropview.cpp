// Drags and drops on the picture, told to it as the window system tells them.

#include "app/dropview/DroppedFiles.h"
#include "app/dropview/dragFileImageView.h"

#include <QCoreApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace quenby;

namespace {

class Drag {
public:
    explicit Drag(const QList<QByteArray>& urls) { data_.setData(QStringLiteral("text/uri-list"), urls.join("\r\n")); }

    bool enter(QWidget& view) {
        QDragEnterEvent event({5, 5}, actions, &data_, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QCoreApplication::sendEvent(&view, &event);
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    }
    void leave(QWidget& view) {
        QDragLeaveEvent event;
        QCoreApplication::sendEvent(&view, &event);
    }
    bool drop(QWidget& view) {
        QDropEvent event({5, 5}, actions, &data_, Qt::LeftButton, Qt::NoModifier);
        event.ignore();
        QCoreApplication::sendEvent(&view, &event);
        return event.isAccepted() && event.dropAction() == Qt::CopyAction;
    }
    const QMimeData& data() const { return data_; }

private:
    static constexpr Qt::DropActions actions = Qt::CopyAction | Qt::MoveAction;
    QMimeData data_;
};

} // namespace

class DropViewTest : public QObject {
    Q_OBJECT

public:
    static void initMain() { qputenv("QT_QPA_PLATFORM", "offscreen"); }

private Q_SLOTS:
    void paths_data() {
        QTest::addColumn<QByteArray>("url");
        QTest::addColumn<QByteArray>("path"); // empty: none
        const auto row = [](const char* url, const char* path) {
            QTest::newRow(url) << QByteArray(url) << QByteArray(path);
        };
        row("file:///tmp/a%20b", "/tmp/a b");
        row("file:///tmp/caf%E9", "/tmp/caf\xE9");
        row("file:///tmp/%F0%9F%90%A6", "/tmp/\xF0\x9F\x90\xA6");
        row("file:///tmp/100%2525%23%3F", "/tmp/100%25#?");
        row("file://localhost/tmp/a", "/tmp/a");
        row("file://elsewhere.example/tmp/a", "");
        row("https://localhost/tmp/a", "");
        row("file:///tmp/a%00b", "");
    }
    void paths() {
        QFETCH(QByteArray, url);
        QFETCH(QByteArray, path);
        const QList<QByteArray> expected = path.isEmpty() ? QList<QByteArray>{} : QList<QByteArray>{path};
        QCOMPARE(droppedPaths(Drag({url}).data()), expected);
    }

    void dragAndDrop_data() {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<bool>("taken");
        const QString file = QStringLiteral("file"), folder = QStringLiteral("sub");
        QTest::newRow("file") << QStringList{file} << true;
        QTest::newRow("folder") << QStringList{folder} << false;
        QTest::newRow("folder, then file") << QStringList{folder, file} << true;
        QTest::newRow("nothing that exists") << QStringList{QStringLiteral("missing")} << false;
    }
    void dragAndDrop() {
        QFETCH(QStringList, names);
        QFETCH(bool, taken);
        QTemporaryDir home;
        QFile file(home.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        QVERIFY(QDir(home.path()).mkdir(QStringLiteral("sub")));
        QList<QByteArray> paths, urls;
        for (const QString& name : names) {
            paths.append(QFile::encodeName(home.filePath(name)));
            urls.append("file://" + paths.constLast());
        }

        dragFileImageView view;
        QSignalSpy raised(&view, &dragFileImageView::raiseRequested);
        QList<QList<QByteArray>> dropped;
        connect(&view, &dragFileImageView::filesDropped, this,
                [&dropped](const QList<QByteArray>& files) { dropped.append(files); });
        const QColor clear = view.backgroundColour();
        Drag drag(urls);
        QCOMPARE(drag.enter(view), taken);
        QCOMPARE(raised.count(), int(taken));
        QCOMPARE(view.backgroundColour() != clear, taken);
        drag.leave(view);
        QCOMPARE(view.backgroundColour(), clear);

        QCOMPARE(drag.enter(view), taken);
        QCOMPARE(drag.drop(view), taken);
        QCOMPARE(dropped, taken ? QList<QList<QByteArray>>{paths} : QList<QList<QByteArray>>{});
        QCOMPARE(view.backgroundColour(), clear);
    }

    void textIsRefused() {
        dragFileImageView view;
        Drag drag({"https://example.com/file"});
        QVERIFY(!drag.enter(view));
        QVERIFY(!drag.drop(view));
    }

    void highlightIsSeen() {
        QTemporaryDir home;
        QFile file(home.filePath(QStringLiteral("file")));
        QVERIFY(file.open(QIODevice::WriteOnly));
        dragFileImageView view;
        view.resize(200, 100);
        Drag drag({"file://" + QFile::encodeName(file.fileName())});
        QVERIFY(drag.enter(view));
        QCOMPARE(view.grab().toImage().pixelColor(20, 20), QColor(170, 170, 170));
    }

    // In a button's place there is an arrow still, and it keeps clear of the frame.
    void aSmallOneHasItsArrow() {
        dragFileImageView view;
        view.setFixedSize(28, 28);
        const QImage picture = view.grab().toImage();
        const QColor ground = picture.pixelColor(14, 3);
        int different = 0;
        for (int y = 4; y < 24; ++y)
            different += picture.pixelColor(14, y) != ground;
        QVERIFY2(different >= 10, qPrintable(QString::number(different)));
        for (int x = 9; x < 19; ++x)
            QCOMPARE(picture.pixelColor(x, 4), ground);
    }
};

QTEST_MAIN(DropViewTest)
#include "tst_dropview.moc"
