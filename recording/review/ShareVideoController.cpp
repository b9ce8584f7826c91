#include "recording/review/ShareVideoController.h"

#include "platform/Alerts.h"
#include "platform/FilePanels.h"
#include "platform/MoviePlayer.h"
#include "platform/Opener.h"
#include "recording/review/DurationText.h"
#include "recording/review/MovieSaving.h"
#include "recording/review/PlayerPane.h"
#include "recording/review/ReviewWindow.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QStandardPaths>

#include <optional>

#include <sys/stat.h>

namespace quenby {
namespace {

QString fileName(const QByteArray& path) { return QFileInfo(QFile::decodeName(path)).fileName(); }

// None: it is not there.
std::optional<qint64> fileSize(const QByteArray& path) {
    struct stat status {};
    return ::stat(path.constData(), &status) == 0 ? std::optional<qint64>(status.st_size) : std::nullopt;
}

// In the folder that people have for movies, if they have one.
QByteArray proposedPlace(const QByteArray& movie) {
    const QString movies = QStandardPaths::writableLocation(QStandardPaths::MoviesLocation);
    const QDir folder(QFileInfo(movies).isDir() ? movies : QDir::homePath());
    return QFile::encodeName(folder.filePath(fileName(movie)));
}

} // namespace

ShareVideoController::ShareVideoController(const Services& services)
    : services_(services)
    , window_(std::make_unique<ReviewWindow>())
    , ui_(*window_) {}

ShareVideoController::~ShareVideoController() { ui_.playerView->setPlayer(nullptr); }

QWidget& ShareVideoController::window() const { return *window_; }

void ShareVideoController::showInFront() {
    if (isClosed_)
        return;
    if (!std::exchange(isLoaded_, true))
        windowDidLoad();
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    window_->activateWindow();
}

bool ShareVideoController::minimizeWindow() {
    const bool isSeen = window_->isVisible() && !window_->isMinimized();
    if (isSeen)
        window_->showMinimized();
    return isSeen;
}

void ShareVideoController::windowDidLoad() {
    connectActions();
    connect(window_.get(), &ReviewWindow::closed, this, &ShareVideoController::windowClosed);
    connect(window_.get(), &ReviewWindow::fullScreenChanged, this, [this](bool isOn) { ui_.setPlayerAlone(isOn); });
    connect(ui_.playerView, &PlayerPane::fullScreenRequested, window_.get(), &ReviewWindow::toggleFullScreen);
    connect(ui_.playerView, &PlayerPane::tryAgainRequested, this, &ShareVideoController::diaplayAndsetAllDataToVideo);
    diaplayAndsetAllDataToVideo();
}

void ShareVideoController::connectActions() {
    using Self = ShareVideoController;
    connect(ui_.recordAgainButton, &QPushButton::clicked, this, &Self::newRecordingAction);
    connect(ui_.uploadButton, &QPushButton::clicked, this, &Self::shareToGoogleDirveAction);
    connect(ui_.discardButton, &QPushButton::clicked, this, &Self::discardAndCloseAction);
    connect(ui_.saveButton, &QPushButton::clicked, this, &Self::saveToLocalAction);
    connect(ui_.openButton, &QPushButton::clicked, this, &Self::openInQuickTImePlayerAction);
}

// --- The movie ------------------------------------------------------------------------------------------------------

void ShareVideoController::diaplayAndsetAllDataToVideo() {
    const QString name = fileName(urlVideo_);
    window_->setWindowTitle(name);
    ui_.setFileName(name);
    const qint64 bytes = fileSize(urlVideo_).value_or(0);
    videoFileSize().setText(QLocale().formattedDataSize(bytes, 1, QLocale::DataSizeTraditionalFormat));
    makePlayer();
    services_.moviePlayers.readFacts(urlVideo_, this, [this](const MovieFacts& facts) { showFacts(facts); });
}

void ShareVideoController::makePlayer() {
    if (!player_) {
        auto made = services_.moviePlayers.create();
        if (!made)
            return ui_.playerView->tellProblem(made.error().detail(errorKey::reason).toString());
        player_ = std::move(made).value();
    }
    ui_.playerView->setPlayer(player_.get());
    player_->open(urlVideo_);
}

void ShareVideoController::showFacts(const MovieFacts& facts) {
    videoSize().setText(QStringLiteral("%1x%2").arg(facts.naturalSize.width()).arg(facts.naturalSize.height()));
    videoDuration().setText(stringFromTimeInterval(static_cast<float>(facts.seconds)));
}

// --- The actions ----------------------------------------------------------------------------------------------------

void ShareVideoController::newRecordingAction() {
    window_->close();
    Q_EMIT newRecordingRequested();
}

void ShareVideoController::shareToGoogleDirveAction() {
    window_->close();
    Q_EMIT uploadRequested(urlVideo_);
}

void ShareVideoController::discardAndCloseAction() { window_->close(); }

void ShareVideoController::saveToLocalAction() {
    services_.filePanels.saveNewFile(window_.get(), QStringLiteral("Save a Copy"), proposedPlace(urlVideo_), this,
                                     [this](const QList<QByteArray>& paths) {
                                         if (!paths.isEmpty())
                                             save(paths.first());
                                     });
}

void ShareVideoController::save(const QByteArray& destination) {
    ui_.setSaving(true);
    const MovieSaving* saving = MovieSaving::start(urlVideo_, destination, services_.alerts, services_.fileBrowser);
    connect(saving, &MovieSaving::copyEnded, this, &ShareVideoController::copyEnded);
    Q_EMIT savingStarted(saving);
}

void ShareVideoController::copyEnded(MovieCopyResult::End end) {
    ui_.setSaving(false);
    if (end == MovieCopyResult::End::copied || end == MovieCopyResult::End::failed)
        window_->close();
}

void ShareVideoController::openInQuickTImePlayerAction() {
    if (services_.opener.openFile(urlVideo_))
        return;
    const bool isThere = fileSize(urlVideo_).has_value();
    const QString text =
        isThere ? QStringLiteral("There is no program for movies. Install a movie player and try again.")
                : QStringLiteral("The recording is not there any more. It may have been moved or deleted.");
    services_.alerts.show(window_.get(), {QStringLiteral("Alert"), text, {}, {QStringLiteral("OK")}});
}

void ShareVideoController::windowClosed() {
    if (std::exchange(isClosed_, true))
        return;
    // What is not seen is not played, and takes no memory.
    ui_.playerView->setPlayer(nullptr);
    player_.reset();
    QMetaObject::invokeMethod(this, &ShareVideoController::closed, Qt::QueuedConnection);
}

} // namespace quenby
