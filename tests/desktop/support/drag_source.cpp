// drag_source X Y SIDE <ADDRESSES: a window at that place from which the pointer drags the files whose addresses were
// read. It tells what happens on its standard output: shown, pressed, begun, "action N" whenever the target's mind
// changes, "ended N"; N as in Qt::DropAction.

#include <QApplication>
#include <QDrag>
#include <QFile>
#include <QMimeData>
#include <QMouseEvent>
#include <QPointer>
#include <QWidget>

#include <cstdio>

namespace {

void tell(const char* word) {
    std::puts(word);
    std::fflush(stdout);
}

void tell(const char* word, int number) {
    std::printf("%s %d\n", word, number);
    std::fflush(stdout);
}

class Source final : public QWidget {
public:
    explicit Source(QByteArray addresses)
        : addresses_(std::move(addresses)) {
        // Out of the window manager's hands, so that it is where it was wanted.
        setWindowFlags(Qt::FramelessWindowHint | Qt::BypassWindowManagerHint | Qt::WindowStaysOnTopHint);
    }

protected:
    void paintEvent(QPaintEvent*) override {
        if (!isShown_)
            tell("shown");
        isShown_ = true;
    }
    void mousePressEvent(QMouseEvent* event) override {
        pressed_ = event->position().toPoint();
        activateWindow(); // for Escape
        tell("pressed");
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        if ((event->position().toPoint() - pressed_).manhattanLength() < QApplication::startDragDistance())
            return;
        auto* drag = new QDrag(this); // Qt deletes it
        auto* files = new QMimeData;
        files->setData(QStringLiteral("text/uri-list"), addresses_);
        drag->setMimeData(files);
        connect(drag, &QDrag::actionChanged, this, [](Qt::DropAction action) { tell("action", action); });
        tell("begun");
        const QPointer<QDrag> watched(drag);
        const auto action = drag->exec(Qt::CopyAction | Qt::MoveAction | Qt::LinkAction, Qt::CopyAction);
        // After a drop, the drag lives until the target has said that it needs the data no more.
        if (action == Qt::IgnoreAction || !watched)
            tell("ended", action);
        else
            connect(watched, &QObject::destroyed, this, [action] { tell("ended", action); });
    }

private:
    const QByteArray addresses_;
    QPoint pressed_;
    bool isShown_ = false;
};

} // namespace

int main(int argc, char** argv) {
    // The place is meant in pixels of the screen.
    qunsetenv("QT_SCALE_FACTOR");
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    QFile input;
    if (arguments.size() != 4 || !input.open(stdin, QIODevice::ReadOnly))
        return 2;
    Source source(input.readAll());
    const int side = arguments[3].toInt();
    source.setGeometry(arguments[1].toInt(), arguments[2].toInt(), side, side);
    source.show();
    return QApplication::exec();
}
