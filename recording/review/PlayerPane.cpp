#include "recording/review/PlayerPane.h"

#include "platform/MoviePlayer.h"
#include "recording/review/DurationText.h"
#include "recording/review/MovieSlider.h"
#include "widgets/GlyphButton.h"
#include "widgets/Glyphs.h"
#include "widgets/ProblemPane.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include <algorithm>

namespace quenby {
namespace {

using namespace std::chrono_literals;
using std::chrono::milliseconds;

constexpr int glyphSide = 20;
constexpr int controlsMargin = 8;
constexpr int keyStepMs = 1000;
constexpr int pageStepMs = 10'000;
constexpr int volumeStep = 5; // of 100
constexpr int mostVolumeWidth = 72;

GlyphButton* glyphButton(QWidget* parent, const QPainterPath& glyph, const QString& name, const QString& tip) {
    auto* button = new GlyphButton(glyphSide, parent);
    button->setIcon(glyphIcon(glyph));
    button->setAccessibleName(name);
    button->setToolTip(tip);
    return button;
}

} // namespace

PlayerPane::PlayerPane(QWidget* parent)
    : QWidget(parent)
    , screen_(new QGridLayout)
    , problem_(new ProblemPane(this))
    , controls_(new QWidget(this))
    , play_(glyphButton(controls_, resumeGlyph(), QStringLiteral("Play"), QStringLiteral("Play (Space)")))
    , position_(new QLabel(controls_))
    , slider_(new MovieSlider(controls_))
    , duration_(new QLabel(controls_))
    , mute_(glyphButton(controls_, soundGlyph(), QStringLiteral("Mute"), QStringLiteral("Mute")))
    , volume_(new MovieSlider(controls_))
    , fullScreen_(
          glyphButton(controls_, fullScreenGlyph(), QStringLiteral("Full Screen"), QStringLiteral("Full Screen (F)"))) {
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(QStringLiteral("Movie"));
    problem_->setClosable(false);
    problem_->hide();
    screen_->setContentsMargins(0, 0, 0, 0);
    screen_->addWidget(problem_, 0, 0);
    makeControls();
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addLayout(screen_, 1);
    layout->addWidget(controls_);
    setPlayer(nullptr);

    connect(problem_, &ProblemPane::tryAgainRequested, this, &PlayerPane::tryAgainRequested);
    connect(play_, &QToolButton::clicked, this, &PlayerPane::togglePlaying);
    connect(fullScreen_, &QToolButton::clicked, this, &PlayerPane::fullScreenRequested);
    connect(slider_, &QSlider::valueChanged, this, &PlayerPane::sliderMoved);
    connect(slider_, &QSlider::sliderPressed, this, &PlayerPane::sliderPressed);
    connect(slider_, &QSlider::sliderReleased, this, &PlayerPane::sliderReleased);
    connect(mute_, &QToolButton::toggled, this, &PlayerPane::applyVolume);
    connect(volume_, &QSlider::valueChanged, this, [this] {
        mute_->setChecked(false);
        applyVolume();
    });
}

void PlayerPane::makeControls() {
    fullScreen_->setCheckable(true);
    slider_->setSingleStep(keyStepMs);
    slider_->setPageStep(pageStepMs);
    slider_->setRange(0, 0);
    slider_->setAccessibleName(QStringLiteral("Position"));
    volume_->setRange(0, 100);
    volume_->setSingleStep(volumeStep);
    volume_->setValue(100);
    volume_->setMaximumWidth(mostVolumeWidth);
    volume_->setAccessibleName(QStringLiteral("Volume"));
    volume_->setToolTip(QStringLiteral("Volume"));
    mute_->setCheckable(true);
    position_->setText(clockText(0ms));
    position_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    duration_->setText(clockText(0ms));
    auto* layout = new QHBoxLayout(controls_);
    layout->setContentsMargins(controlsMargin, controlsMargin / 2, controlsMargin, controlsMargin / 2);
    layout->setSpacing(controlsMargin);
    layout->addWidget(play_);
    layout->addWidget(position_);
    layout->addWidget(slider_, 1);
    layout->addWidget(duration_);
    layout->addWidget(mute_);
    layout->addWidget(volume_);
    layout->addWidget(fullScreen_);
}

void PlayerPane::setPlayer(MoviePlayer* player) {
    if (player_)
        player_->disconnect(this);
    player_ = player;
    problem_->hide();
    followDuration();
    followPosition();
    followPlaying();
    if (!player_)
        return;
    QWidget* const view = player_->view();
    view->setAccessibleName(QStringLiteral("Picture"));
    screen_->addWidget(view, 0, 0);
    view->show();
    applyVolume();
    connect(player_, &MoviePlayer::positionChanged, this, &PlayerPane::followPosition);
    connect(player_, &MoviePlayer::durationChanged, this, &PlayerPane::followDuration);
    connect(player_, &MoviePlayer::playingChanged, this, &PlayerPane::followPlaying);
    connect(player_, &MoviePlayer::failed, this, &PlayerPane::tellProblem);
}

void PlayerPane::tellProblem(const QString& sentence) {
    controls_->setEnabled(false);
    problem_->tell(QStringLiteral("The movie cannot be shown"), sentence, true);
}

void PlayerPane::setFullScreen(bool isOn) {
    const QString name = isOn ? QStringLiteral("Leave Full Screen") : QStringLiteral("Full Screen");
    fullScreen_->setChecked(isOn);
    fullScreen_->setAccessibleName(name);
    fullScreen_->setToolTip(isOn ? QStringLiteral("Leave Full Screen (Esc)") : QStringLiteral("Full Screen (F)"));
}

void PlayerPane::togglePlaying() {
    if (!player_ || !controls_->isEnabled())
        return;
    if (player_->isPlaying())
        player_->pause();
    else
        player_->play();
}

void PlayerPane::moveBy(milliseconds distance) {
    if (player_ && controls_->isEnabled())
        player_->setPosition(std::clamp<milliseconds>(player_->position() + distance, 0ms, player_->duration()));
}

void PlayerPane::changeVolumeBy(int percent) { volume_->setValue(volume_->value() + percent); }

void PlayerPane::applyVolume() {
    mute_->setIcon(glyphIcon(mute_->isChecked() ? mutedGlyph() : soundGlyph()));
    if (player_)
        player_->setVolume(mute_->isChecked() ? 0 : volume_->value() / 100.0);
}

void PlayerPane::mouseDoubleClickEvent(QMouseEvent* event) {
    const bool isOnPicture = !controls_->geometry().contains(event->position().toPoint());
    if (event->button() == Qt::LeftButton && isOnPicture)
        Q_EMIT fullScreenRequested();
}

// --- Following the player -------------------------------------------------------------------------------------------

void PlayerPane::followPosition() {
    const milliseconds position = player_ ? player_->position() : 0ms;
    position_->setText(clockText(position));
    if (slider_->isSliderDown())
        return;
    const QSignalBlocker ours(slider_);
    slider_->setValue(static_cast<int>(position.count()));
}

void PlayerPane::followDuration() {
    const milliseconds duration = player_ ? player_->duration() : 0ms;
    const bool hasSound = player_ && player_->hasSound();
    duration_->setText(clockText(duration));
    // The slider keeps its place while the digits change.
    position_->setMinimumWidth(duration_->sizeHint().width());
    {
        const QSignalBlocker ours(slider_);
        slider_->setMaximum(static_cast<int>(duration.count()));
    }
    controls_->setEnabled(duration > 0ms);
    volume_->setVisible(hasSound);
    mute_->setVisible(hasSound);
}

void PlayerPane::followPlaying() {
    const bool isPlaying = player_ && player_->isPlaying();
    const QString name = isPlaying ? QStringLiteral("Pause") : QStringLiteral("Play");
    play_->setIcon(glyphIcon(isPlaying ? pauseGlyph() : resumeGlyph()));
    play_->setAccessibleName(name);
    play_->setToolTip(name + QStringLiteral(" (Space)"));
}

// --- The slider -----------------------------------------------------------------------------------------------------

void PlayerPane::sliderMoved(int position) {
    if (player_)
        player_->setPosition(milliseconds(position));
}

void PlayerPane::sliderPressed() {
    playsAfterSliding_ = player_ && player_->isPlaying();
    if (playsAfterSliding_)
        player_->pause();
}

void PlayerPane::sliderReleased() {
    if (std::exchange(playsAfterSliding_, false) && player_)
        player_->play();
}

} // namespace quenby
