// Recording keys, by keyboard and pointer, in a window that has commands and buttons of its own.
#include "core/DefaultsKeys.h"
#include "preferences/shortcut/ShortcutRecorder.h"
#include "tests/platform/fakes/FakeDefaults.h"

#include <QAction>
#include <QDialog>
#include <QLineEdit>
#include <QPushButton>
#include <QShortcut>
#include <QSignalSpy>
#include <QTest>
#include <QVBoxLayout>

using namespace quenby;
using namespace quenby::testing;

class tst_shortcutrecorder : public QObject {
    Q_OBJECT

    FakeDefaults defaults_;
    std::unique_ptr<QDialog> window_;
    ShortcutRecorder* recorder_ = nullptr;
    QLineEdit* field_ = nullptr;
    QPushButton* next_ = nullptr;
    int began_ = 0;
    int ended_ = 0;
    QStringList refusals_;

    QString stored() const { return defaults_.valueForKey(defaultsKey::customShortcut).toString(); }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    void startRecording() {
        field_->setFocus();
        press(Qt::Key_Space);
        QVERIFY(recorder_->isRecording());
    }

private Q_SLOTS:
    void init() {
        defaults_.removeValueForKey(defaultsKey::customShortcut);
        window_ = std::make_unique<QDialog>();
        recorder_ = new ShortcutRecorder(defaults_, window_.get());
        recorder_->setAssociatedUserDefaultsKey(defaultsKey::customShortcut);
        next_ = new QPushButton(QStringLiteral("&Next"), window_.get());
        auto* layout = new QVBoxLayout(window_.get());
        layout->addWidget(recorder_);
        layout->addWidget(next_);
        field_ = recorder_->findChild<QLineEdit*>();
        began_ = ended_ = 0;
        refusals_.clear();
        connect(recorder_, &ShortcutRecorder::recordingBegan, this, [this] { ++began_; });
        connect(recorder_, &ShortcutRecorder::recordingEnded, this, [this] { ++ended_; });
        connect(recorder_, &ShortcutRecorder::refused, this,
                [this](const QString& sentence) { refusals_.append(sentence); });
        window_->show();
        QVERIFY(QTest::qWaitForWindowActive(window_.get()));
    }
    void cleanup() {
        window_.reset();
        QCOMPARE(ended_, began_);
    }

    void oneChordIsRecordedAndStoredAtOnce() {
        QString atTheEnd;
        QObject witness;
        connect(recorder_, &ShortcutRecorder::recordingEnded, &witness, [&] { atTheEnd = stored(); });
        QTest::mouseClick(field_, Qt::LeftButton);
        QVERIFY(recorder_->isRecording());
        const QString prompt = field_->placeholderText();
        QTest::keyPress(field_, Qt::Key_Control);
        QTest::keyPress(field_, Qt::Key_Alt, Qt::ControlModifier);
        QCOMPARE(field_->text(), QStringLiteral("Ctrl+Alt+…"));
        QKeyEvent release(QEvent::KeyRelease, Qt::Key_Alt, Qt::ControlModifier | Qt::AltModifier);
        QApplication::sendEvent(field_, &release);
        QCOMPARE(field_->text(), QStringLiteral("Ctrl+…"));
        press(Qt::Key_K, Qt::ControlModifier | Qt::AltModifier);
        QVERIFY(!recorder_->isRecording());
        QCOMPARE(stored(), QStringLiteral("Ctrl+Alt+K"));
        QCOMPARE(atTheEnd, stored());
        QCOMPARE(field_->text(), QStringLiteral("Ctrl+Alt+K"));
        QVERIFY(field_->placeholderText() != prompt);
        QVERIFY(refusals_.isEmpty());
    }

    void whatIsRefusedIsToldAndRecordingGoesOn() {
        startRecording();
        press(Qt::Key_C, Qt::ControlModifier);
        press(Qt::Key_A, Qt::ShiftModifier);
        QCOMPARE(refusals_.size(), 2);
        QVERIFY(refusals_.at(0).contains(QLatin1String("Ctrl+C")) && refusals_.at(0) != refusals_.at(1));
        QVERIFY(recorder_->isRecording() && stored().isEmpty());
        press(Qt::Key_Print);
        QCOMPARE(stored(), QStringLiteral("Print"));
        QCOMPARE(refusals_.size(), 3);
        QVERIFY(refusals_.last().isEmpty());
    }

    void cancellingLeavesTheKeysAsTheyAre_data() {
        QTest::addColumn<std::function<void()>>("cancel");
        QTest::newRow("Escape") << std::function<void()>([this] { press(Qt::Key_Escape); });
        QTest::newRow("Tab") << std::function<void()>([this] { press(Qt::Key_Tab); });
        QTest::newRow("focus") << std::function<void()>([this] { next_->setFocus(); });
        QTest::newRow("disabled") << std::function<void()>([this] { recorder_->setEnabled(false); });
        QTest::newRow("parent disabled") << std::function<void()>([this] { window_->setEnabled(false); });
        QTest::newRow("hidden") << std::function<void()>([this] { window_->hide(); });
        QTest::newRow("destroyed") << std::function<void()>([this] { delete std::exchange(recorder_, nullptr); });
    }
    void cancellingLeavesTheKeysAsTheyAre() {
        QFETCH(std::function<void()>, cancel);
        defaults_.setValueForKey(defaultsKey::customShortcut, QStringLiteral("Meta+F1"));
        startRecording();
        cancel();
        QVERIFY(!recorder_ || !recorder_->isRecording());
        QCOMPARE(ended_, 1);
        QCOMPARE(stored(), QStringLiteral("Meta+F1"));
        if (recorder_)
            QCOMPARE(field_->text(), QStringLiteral("Meta+F1"));
        QCOMPARE(window_->result(), 0);
    }

    void deletingClearsWhetherItRecordsOrNot() {
        const auto clearBy = [this](const std::function<void()>& clear) {
            defaults_.setValueForKey(defaultsKey::customShortcut, QStringLiteral("Meta+F1"));
            QCOMPARE(field_->text(), QStringLiteral("Meta+F1")); // follows whoever writes it
            clear();
            QVERIFY(!defaults_.contains(defaultsKey::customShortcut));
            QVERIFY(field_->text().isEmpty() && !recorder_->isRecording());
        };
        clearBy([this] {
            startRecording();
            press(Qt::Key_Backspace);
        });
        clearBy([this] {
            field_->setFocus();
            press(Qt::Key_Delete);
        });
        clearBy([this] { field_->actions().constFirst()->trigger(); });
        QVERIFY(!field_->actions().constFirst()->isVisible());
    }

    // The window's own commands neither steal keys from the recorder, nor does it take theirs when it rests.
    void theWindowsCommandsWaitWhileItRecords() {
        QSignalSpy pressed(next_, &QPushButton::clicked);
        QShortcut command(QKeySequence(Qt::CTRL | Qt::Key_J), window_.get());
        QSignalSpy commanded(&command, &QShortcut::activated);
        startRecording();
        press(Qt::Key_J, Qt::ControlModifier);
        QCOMPARE(stored(), QStringLiteral("Ctrl+J"));
        startRecording();
        press(Qt::Key_N, Qt::AltModifier);
        QCOMPARE(stored(), QStringLiteral("Alt+N"));
        QVERIFY(pressed.isEmpty() && commanded.isEmpty());
        press(Qt::Key_J, Qt::ControlModifier);
        QCOMPARE(commanded.size(), 1);
        // A key that is held ends the recording, and nothing more.
        startRecording();
        press(Qt::Key_Escape);
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Escape, {}, {}, true);
        QApplication::sendEvent(field_, &held);
        QVERIFY(window_->isVisible());
        press(Qt::Key_Escape);
        QVERIFY(!window_->isVisible());
    }
};

QTEST_MAIN(tst_shortcutrecorder)
#include "tst_shortcutrecorder.moc"
