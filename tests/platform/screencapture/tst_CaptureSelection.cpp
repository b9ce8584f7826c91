// The model of choosing: the pointer and keys go in, a rectangle comes out.
#include "platform/linux/screencapture/CaptureSelection.h"

#include <QRandomGenerator>
#include <QTest>

using namespace quenby;
using Phase = CaptureSelection::Phase;

namespace {

using namespace std::chrono_literals;

// A screen of scale 1, and to its right a shorter one of scale 2 that begins lower. Two windows overlap, the small one
// above.
CaptureGround ground() {
    return {QRect(0, 0, 1000, 500),
            {{QRect(0, 0, 600, 500), 1}, {QRect(600, 100, 400, 300), 2}},
            {QRect(100, 100, 50, 50), QRect(80, 80, 300, 200)}};
}

// One word for each thing that the user does: "move 3 4", "press", "release", "keys" with their modifiers as in
// "ctrl+shift+left", "space", "unspace".
class Hand {
public:
    explicit Hand(CaptureSelection& selection)
        : selection_(selection) {}

    void does(const QString& words) {
        const QStringList list = words.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        for (qsizetype i = 0; i < list.size(); ++i) {
            time_ += 20ms;
            if (list.at(i) == QLatin1String("move")) {
                selection_.movePointer({list.at(i + 1).toInt(), list.at(i + 2).toInt()});
                i += 2;
            } else {
                doesOne(list.at(i));
            }
        }
    }

private:
    void doesOne(const QString& word) {
        CaptureModifiers modifiers;
        modifiers.control = word.contains(QLatin1String("ctrl+"));
        modifiers.shift = word.contains(QLatin1String("shift+"));
        modifiers.alt = word.contains(QLatin1String("alt+"));
        const QString name = word.section(QLatin1Char('+'), -1);
        static const QHash<QString, CaptureKey> keys{
            {QStringLiteral("left"), CaptureKey::left}, {QStringLiteral("right"), CaptureKey::right},
            {QStringLiteral("up"), CaptureKey::up},     {QStringLiteral("down"), CaptureKey::down},
            {QStringLiteral("take"), CaptureKey::take}, {QStringLiteral("space"), CaptureKey::space},
            {QStringLiteral("esc"), CaptureKey::cancel}};
        if (name == QLatin1String("press"))
            selection_.press(selection_.pointer(), time_);
        else if (name == QLatin1String("release"))
            selection_.release(selection_.pointer(), time_, modifiers);
        else if (name == QLatin1String("unspace"))
            selection_.releaseKey(CaptureKey::space);
        else if (name == QLatin1String("pause"))
            time_ += 1s;
        else if (keys.contains(name))
            selection_.pressKey(keys.value(name), modifiers);
        else
            qFatal("no such word: %s", qPrintable(word));
    }

    CaptureSelection& selection_;
    CaptureSelection::Time time_ = 0ms;
};

QString oneOf(const QStringList& words) { return words.at(QRandomGenerator::global()->bounded(words.size())); }

} // namespace

class tst_CaptureSelection : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void outcomes_data() {
        QTest::addColumn<QString>("words");
        QTest::addColumn<Phase>("phase");
        QTest::addColumn<QRect>("rectangle");
        const auto row = [](const char* name, const char* words, Phase phase, const QRect& rectangle) {
            QTest::newRow(name) << QString::fromLatin1(words) << phase << rectangle;
        };
        const QRect all(0, 0, 1000, 500);
        const QRect left(0, 0, 600, 500);
        const QRect right(600, 100, 400, 300);

        row("a drag has both of its corners", "move 10 20 press move 30 60 release", Phase::taken, {10, 20, 21, 41});
        row("to the upper left, over the edge", "move 30 60 press move -5 -9 release", Phase::taken, {0, 0, 31, 61});
        row("over the border of screens", "move 500 200 press move 700 300 release", Phase::taken,
            {500, 200, 201, 101});
        row("a click is no drag", "move 10 20 press move 12 22 release", Phase::aiming, {});
        row("six pixels are a click at scale 2", "move 700 200 press move 706 206 release", Phase::aiming, {});
        row("there and back is a drag", "move 10 20 press move 90 90 move 11 20 release", Phase::taken, {10, 20, 2, 1});
        row("a double click", "move 10 20 press release press release", Phase::taken, left);
        row("on the other screen", "move 700 200 press release press release", Phase::taken, right);
        row("two slow clicks", "move 10 20 press release pause press release", Phase::aiming, {});
        row("two clicks at two places", "move 10 20 press release move 90 20 press release", Phase::aiming, {});
        row("Enter", "move 700 50 take", Phase::taken, right);
        row("Enter with Ctrl", "move 700 200 ctrl+take", Phase::taken, all);
        row("Enter during a drag", "move 10 10 press move 20 20 take", Phase::taken, {10, 10, 11, 11});

        row("arrows before a drag", "move 10 10 right shift+down press move 99 99 release", Phase::taken,
            {11, 20, 89, 80});
        row("arrows at the edge", "move 3 499 shift+left shift+down press move 5 495 move 9 495 release", Phase::taken,
            {0, 495, 10, 5});
        row("arrows during a drag", "move 10 10 press move 20 20 right shift+down release", Phase::staying,
            {10, 10, 12, 21});
        row("then moved, resized and taken",
            "move 10 10 press move 20 20 right release left shift+up ctrl+right alt+shift+down take", Phase::taken,
            {9, 0, 13, 21});
        row("no smaller than a pixel", "move 10 10 press move 12 12 right release ctrl+shift+left ctrl+shift+up",
            Phase::staying, {10, 10, 1, 1});
        row("by keys alone", "move 50 60 ctrl+right ctrl+shift+down right take", Phase::taken, {51, 60, 2, 11});
        row("moved by the pointer", "move 10 10 press move 29 29 right release move 15 15 press move 215 115 release",
            Phase::staying, {210, 110, 21, 20});
        row("not beyond the edge", "move 10 10 press move 29 29 right release move 15 15 press move -50 900 release",
            Phase::staying, {0, 480, 21, 20});
        row("a double click takes what stays",
            "move 10 10 press move 29 29 right release move 15 15 press release press release", Phase::taken,
            {10, 10, 21, 20});
        row("a drag beside it begins anew",
            "move 10 10 press move 29 29 right release move 100 100 press move 109 109 release", Phase::taken,
            {100, 100, 10, 10});
        row("a click beside it drops it", "move 10 10 press move 29 29 right release move 100 100 press release",
            Phase::aiming, {});
        row("carried by the space bar",
            "move 100 100 press move 150 150 space space move 170 160 unspace move 180 180 release", Phase::taken,
            {120, 110, 61, 71});
        row("carried to the edge and on", "move 900 400 press move 950 450 space move 999 499 move 999 499 release",
            Phase::taken, {949, 449, 51, 51});

        row("the upper window", "move 120 120 space", Phase::aiming, {100, 100, 50, 50});
        row("the lower window", "move 90 120 space press release", Phase::taken, {80, 80, 300, 200});
        row("Enter takes a window, too", "space unspace move 90 120 take", Phase::taken, {80, 80, 300, 200});
        row("beside windows", "move 10 10 space press release", Phase::taken, left);
        row("all screens", "move 120 120 space press ctrl+release", Phase::taken, all);
        row("a held space bar changes once", "move 120 120 space space space", Phase::aiming, {100, 100, 50, 50});
        row("back to regions", "space unspace space unspace move 10 20 press move 30 60 release", Phase::taken,
            {10, 20, 21, 41});

        row("Escape", "move 10 10 press move 90 90 esc release", Phase::cancelled, {});
        row("nothing after the end", "esc move 10 10 press move 90 90 release take", Phase::cancelled, {});
    }
    void outcomes() {
        QFETCH(QString, words);
        CaptureSelection selection(ground(), QPoint(5, 5));
        Hand(selection).does(words);
        QTEST(selection.phase(), "phase");
        QTEST(selection.rectangle().value_or(QRect()), "rectangle");
    }

    // Whatever somebody does, the rectangle lies within the desktop, and so does the pointer.
    void nothingLeavesTheDesktop() {
        const QStringList words{
            QStringLiteral("press"),          QStringLiteral("press"),       QStringLiteral("release"),
            QStringLiteral("left"),           QStringLiteral("shift+right"), QStringLiteral("shift+up"),
            QStringLiteral("down"),           QStringLiteral("ctrl+left"),   QStringLiteral("ctrl+shift+right"),
            QStringLiteral("alt+shift+down"), QStringLiteral("alt+up"),      QStringLiteral("space"),
            QStringLiteral("unspace"),        QStringLiteral("pause")};
        int rectangles = 0;
        for (int round = 0; round < 300; ++round) {
            CaptureSelection selection(ground(), QPoint(500, 250));
            Hand hand(selection);
            QString done;
            for (int step = 0; step < 60 && !selection.hasEnded(); ++step) {
                const auto number = [](int from, int to) { return QRandomGenerator::global()->bounded(from, to); };
                const QString word = number(0, 3) == 0
                                         ? QStringLiteral("move %1 %2").arg(number(-50, 1100)).arg(number(-50, 600))
                                         : oneOf(words);
                done += word + QLatin1Char(' ');
                hand.does(word);
                const QRect rectangle = selection.rectangle().value_or(QRect(0, 0, 1, 1));
                rectangles += selection.rectangle().has_value();
                QVERIFY2(!rectangle.isEmpty() && ground().desktop.contains(rectangle), qPrintable(done));
                QVERIFY2(ground().desktop.contains(selection.pointer()), qPrintable(done));
            }
        }
        QVERIFY(rectangles > 1000);
    }
};

QTEST_GUILESS_MAIN(tst_CaptureSelection)
#include "tst_CaptureSelection.moc"
