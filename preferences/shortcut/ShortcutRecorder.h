// The view in which keys are recorded: shows the stored shortcut, records one chord when it is clicked or entered with
// Space, and stores it under its setting at once.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include <QKeySequence>
#include <QString>
#include <QWidget>

#include <memory>

class QKeyEvent;

namespace quenby {

class Defaults;
struct ShortcutRecorderUi;

class ShortcutRecorder : public QWidget {
    Q_OBJECT

public:
    explicit ShortcutRecorder(Defaults& defaults, QWidget* parent = nullptr);
    ~ShortcutRecorder() override;

    // Shows the setting's value, follows it, and writes it.
    void setAssociatedUserDefaultsKey(const QString& key);
    bool isRecording() const;

Q_SIGNALS:
    // While it records, a shortcut that is bound must not act. Always in pairs.
    void recordingBegan();
    void recordingEnded();
    // What was pressed cannot be a global shortcut; a sentence for people, empty once that is over.
    void refused(const QString& sentence);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    // Whether the key was for the recorder.
    bool keyWasPressed(const QKeyEvent& event);
    bool keyWasPressedAtRest(const QKeyEvent& event);
    void record(const QKeyEvent& event);
    void begin();
    void end();
    void store(const QKeySequence& keys);
    void refuse(const QString& sentence);
    void refresh();
    QKeySequence keys() const;

    Defaults& defaults_;
    const std::unique_ptr<ShortcutRecorderUi> ui_;
    QString key_; // of the setting
    bool isRecording_ = false;
    bool hasRefused_ = false;
    Qt::KeyboardModifiers held_; // while it records
};

} // namespace quenby
