// A movie with what plays it: the picture, and below it the button, the slider, the times, the volume and the full
// screen. Without a player, or when it fails, a sentence stands in the picture's place.
//
// Threads: the main thread.
#pragma once

#include <QWidget>

#include <chrono>

class QGridLayout;
class QLabel;
class QToolButton;

namespace quenby {

class MoviePlayer;
class MovieSlider;
class ProblemPane;

class PlayerPane final : public QWidget {
    Q_OBJECT

public:
    explicit PlayerPane(QWidget* parent = nullptr);

    // Shows its view and follows it. Not owned; null: before it goes.
    void setPlayer(MoviePlayer* player);
    void tellProblem(const QString& sentence);
    // What the button shows.
    void setFullScreen(bool isOn);

    void togglePlaying();
    void moveBy(std::chrono::milliseconds distance);
    void changeVolumeBy(int percent);

Q_SIGNALS:
    void fullScreenRequested();
    void tryAgainRequested();

protected:
    void mouseDoubleClickEvent(QMouseEvent* event) override;

private:
    void makeControls();
    void applyVolume();
    void followPosition();
    void followDuration();
    void followPlaying();
    void sliderMoved(int position);
    void sliderPressed();
    void sliderReleased();

    MoviePlayer* player_ = nullptr;
    bool playsAfterSliding_ = false;
    QGridLayout* screen_; // the picture and the problem lie on one another in its one cell
    ProblemPane* problem_;
    QWidget* controls_;
    QToolButton* play_;
    QLabel* position_;
    MovieSlider* slider_;
    QLabel* duration_;
    QToolButton* mute_;
    MovieSlider* volume_;
    QToolButton* fullScreen_;
};

} // namespace quenby
