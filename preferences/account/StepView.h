// One of several numbered steps: what is to be done, how far it is, and what came of it as a sentence.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

class QHBoxLayout;
class QLabel;
class QPushButton;
class QVBoxLayout;

namespace quenby {

class StepMarker;

class StepView final : public QWidget {
    Q_OBJECT

public:
    enum class State { waiting, checking, fine, wrong };

    // The explanation may hold several lines.
    StepView(int number, const QString& title, const QString& explanation, QWidget* parent);

    // Below the explanation, one beside the other from where lines begin.
    QPushButton* addButton(const QString& text);
    void setExplanation(const QString& explanation);
    // The sentence may be empty. A screen reader is told of a change.
    void setState(State state, const QString& sentence = {});
    State state() const { return state_; }
    QString sentence() const;
    // Marked as the one that takes what is dragged.
    void setHighlighted(bool isHighlighted);

    static constexpr int inset = 8; // from its edge to what stands in it

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const int number_;
    const QString title_;
    State state_ = State::waiting;
    bool isHighlighted_ = false;
    StepMarker* marker_;
    QLabel* explanation_;
    QLabel* sentence_;
    QVBoxLayout* lines_;
    QHBoxLayout* buttons_ = nullptr; // once there is one
};

} // namespace quenby
