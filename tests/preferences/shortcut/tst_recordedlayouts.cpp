// Recording what a real keyboard sends, in layouts with and without Latin letters.
#include "core/DefaultsKeys.h"
#include "preferences/shortcut/ShortcutRecorder.h"
#include "tests/platform/desktop/VirtualDesktop.h"
#include "tests/platform/fakes/FakeDefaults.h"

#include <QTest>

using namespace quenby;
using namespace quenby::testing;

class tst_recordedlayouts : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanupTestCase() { outputOf(QStringLiteral("setxkbmap"), {QStringLiteral("us")}); }

    void keysAreRecordedAsTheLayoutHasThem_data() {
        QTest::addColumn<QString>("layout");
        QTest::addColumn<QString>("letter");
        QTest::newRow("Latin") << QStringLiteral("us") << QStringLiteral("Ctrl+Alt+Q");
        QTest::newRow("Cyrillic") << QStringLiteral("ru") << QStringLiteral("Ctrl+Alt+Й");
    }
    // By the keys' places: Ctrl with that of C is refused in both, those of Q and the digit 1 are what stands on them.
    void keysAreRecordedAsTheLayoutHasThem() {
        QFETCH(const QString, layout);
        QFETCH(const QString, letter);
        outputOf(QStringLiteral("setxkbmap"), {layout});
        FakeDefaults defaults;
        ShortcutRecorder recorder(defaults);
        recorder.setAssociatedUserDefaultsKey(defaultsKey::customShortcut);
        QStringList refusals;
        connect(&recorder, &ShortcutRecorder::refused, this,
                [&refusals](const QString& sentence) { refusals.append(sentence); });
        const auto stored = [&defaults] { return defaults.valueForKey(defaultsKey::customShortcut).toString(); };
        recorder.show();
        recorder.setFocus();
        QVERIFY(QTest::qWaitForWindowActive(&recorder));

        useInput(QStringLiteral("key space"));
        QTRY_VERIFY(recorder.isRecording());
        useInput(QStringLiteral("keydown 37 key 54 keyup 37"));
        QTRY_COMPARE(refusals.size(), 1);
        QVERIFY(recorder.isRecording());
        useInput(QStringLiteral("keydown 37 keydown 64 key 24 keyup 64 keyup 37"));
        QTRY_COMPARE(stored(), letter);

        useInput(QStringLiteral("key space"));
        QTRY_VERIFY(recorder.isRecording());
        useInput(QStringLiteral("keydown 37 keydown 50 key 10 keyup 50 keyup 37"));
        QTRY_COMPARE(stored(), QStringLiteral("Ctrl+!"));
        QVERIFY(!recorder.isRecording());
    }
};

QTEST_MAIN(tst_recordedlayouts)
#include "tst_recordedlayouts.moc"
