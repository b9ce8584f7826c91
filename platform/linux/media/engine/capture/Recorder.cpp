#include "platform/linux/media/engine/capture/Recorder.h"

#include "core/Mailbox.h"
#include "platform/linux/media/engine/capture/CaptureLog.h"
#include "platform/linux/media/engine/capture/GstSetup.h"

namespace quenby {
namespace {

// What has been recorded takes much less than this to be encoded and written.
constexpr std::chrono::seconds patienceWithScreen(2);
constexpr std::chrono::seconds patienceWithEncoder(20);
constexpr std::chrono::seconds patienceAfterFailure(1);
constexpr std::chrono::seconds patienceWithFile(20);

// What every recording takes, besides its source and its encoder.
const QByteArray neededElements =
    "videotestsrc ! videoconvert ! capsfilter ! videocrop ! videorate ! queue ! appsink ! "
    "appsrc ! qtmux ! fdsink ! fakesink";

constexpr const char* laterElements[] = {"ximagesrc", "videocrop", "videorate", "queue",
                                         "appsink",   "appsrc",    "qtmux",     "fdsink"};

// Their plug-ins are read from the disk now and stay.
void loadPlugins() {
    for (const char* name : laterElements)
        if (const GstHandle<GstElementFactory> factory(gst_element_factory_find(name)); factory)
            GstHandle<GstPluginFeature>(gst_plugin_feature_load(GST_PLUGIN_FEATURE(factory.get())));
}

QString withDetails(const QString& sentence, const QString& details) {
    return details.isEmpty() ? sentence : QStringLiteral("%1 Details: %2").arg(sentence, details);
}

} // namespace

Recorder::Recorder(CaptureOptions options)
    : options_(std::move(options))
    , patience_(this) {
    patience_.setSingleShot(true);
    connect(&patience_, &QTimer::timeout, this, &Recorder::patienceEnded);
}

Recorder::~Recorder() { release(); }

void Recorder::warmUp() {
    if (const auto framework = startFramework(); framework) {
        encoders_ = installedEncoders(options_.encoders);
        QByteArray missing = missingElement(neededElements);
        if (missing.isEmpty() && encoders_.isEmpty())
            missing = preferredEncoder;
        if (missing.isEmpty()) {
            loadPlugins();
            dropIdleEncoders();
        } else {
            // Without it no encoder works either, which is not what people should be told then.
            notReadyBecause_ = missingElementReason(missing);
        }
    } else {
        notReadyBecause_ = framework.error().detail(errorKey::reason).toString();
    }
    Q_EMIT ready();
}

// The first one that is left works; those behind it are tried when they are needed.
void Recorder::dropIdleEncoders() {
    while (!encoders_.isEmpty()) {
        trouble_ = encoderTrouble(encoders_.first());
        if (trouble_.isEmpty())
            return;
        qCInfo(captureLog, "%s does not work here: %s", encoders_.first().name.constData(), qUtf8Printable(trouble_));
        encoders_.removeFirst();
    }
}

void Recorder::start(const CaptureFeed& feed, int frameRate, const QByteArray& path) {
    if (state_ != State::ready || isRetired_)
        return;
    if (!notReadyBecause_.isEmpty())
        return fail(notReadyBecause_);
    auto file = MovieOnDisk::create(path);
    if (!file)
        return fail(file.error());
    file_ = std::move(file).value();
    freeSpace_ = std::make_unique<FreeSpaceWatch>([this] { return file_->freeSpace(); }, options_.leastFreeSpace,
                                                  [this] { end(RecordingEnd::diskFull); });
    if (freeSpace_->isFull())
        return fail(QStringLiteral("The disk is too full for a recording. Make room on it and try again."));

    frameRate_ = frameRate;
    keptOpen_ = feed.keptOpen;
    handover_ = std::make_shared<PictureHandover>(
        [box = Mailbox::forContext(this), this] { box->post([this] { firstCame(); }); });
    screen_ = std::make_unique<PicturePipeline>(handover_, [this](const QString& text) { screenEnded(text); });
    state_ = State::waiting;
    startMovie();
    if (state_ != State::waiting)
        return;
    if (const auto taking = screen_->start(feed, frameRate); !taking)
        fail(taking.error());
}

// With the first encoder that starts.
void Recorder::startMovie() {
    QString reason = trouble_;
    while (!encoders_.isEmpty()) {
        movie_ = std::make_unique<MoviePipeline>([this, number = ++movieNumber_](auto end, const QString& text) {
            if (number == movieNumber_)
                movieEnded(end, text);
        });
        const Encoder encoder = encoders_.first();
        const auto making = movie_->start(encoder, frameRate_, file_->descriptor());
        if (making) {
            qCInfo(captureLog, "encoding with %s", encoder.name.constData());
            trouble_.clear();
            handover_->connectTo(movie_->pictures(), frameRate_);
            return;
        }
        reason = making.error().detail(errorKey::reason).toString();
        qCWarning(captureLog, "%s", qUtf8Printable(reason));
        encoders_.removeFirst();
    }
    fail(withDetails(QStringLiteral("The recording cannot be encoded: no encoder for H.264 works. Install one (on "
                                    "Debian the package gstreamer1.0-plugins-ugly) and try again."),
                     reason));
}

void Recorder::firstCame() {
    if (state_ != State::waiting)
        return;
    state_ = State::recording;
    freeSpace_->start();
    Q_EMIT started();
}

void Recorder::end(RecordingEnd end) {
    if (state_ == State::waiting)
        return fail(end == RecordingEnd::asked
                        ? QStringLiteral("The recording was stopped before its first picture. There is no movie.")
                        : withDetails(QStringLiteral("The screen cannot be read. Try again."), trouble_));
    if (state_ != State::recording)
        return;
    end_ = end;
    freeSpace_->stop();
    if (end == RecordingEnd::sourceGone || end == RecordingEnd::encoderFailed)
        return finishMovie();
    state_ = State::handingOn;
    screen_->finish();
    patience_.start(patienceWithScreen);
}

void Recorder::finishMovie() {
    state_ = State::encoding;
    // The screen is stopped only when the movie has been: that would wait for an encoder that hangs.
    handover_->connectTo(nullptr, frameRate_);
    movie_->finish();
    patience_.start(end_ == RecordingEnd::encoderFailed ? patienceAfterFailure : patienceWithEncoder);
}

void Recorder::movieEnded(MoviePipeline::End end, const QString& text) {
    if (state_ == State::over || state_ == State::ready)
        return;
    if (!text.isEmpty() && trouble_.isEmpty())
        trouble_ = text;
    switch (end) {
    case MoviePipeline::End::whole:
        return conclude(true);
    case MoviePipeline::End::encoderFailed:
        return encoderFailed(text);
    case MoviePipeline::End::diskFull:
    case MoviePipeline::End::writingFailed:
        // Nothing more can be written: not even its end.
        end_ = RecordingEnd::diskFull;
        return conclude(false);
    }
}

void Recorder::encoderFailed(const QString& text) {
    if (end_ == RecordingEnd::encoderFailed)
        return; // the consequences of the first failure
    // Less than a second is no recording yet.
    if (movie_->recorded() < frameRate_ && !isEnding())
        return tryNextEncoder(text);
    qCWarning(captureLog, "the encoder fails: %s", qUtf8Printable(text));
    if (!isEnding())
        return end(RecordingEnd::encoderFailed);
    end_ = RecordingEnd::encoderFailed;
    finishMovie();
}

void Recorder::tryNextEncoder(const QString& text) {
    qCWarning(captureLog, "%s fails at once: %s", encoders_.first().name.constData(), qUtf8Printable(text));
    handover_->connectTo(nullptr, frameRate_);
    movie_->stop();
    failedMovies_.push_back(std::move(movie_));
    encoders_.removeFirst();
    if (!file_->startAgain())
        return fail(QStringLiteral("The recording cannot be written. Make sure that the disk works."));
    startMovie();
}

void Recorder::screenEnded(const QString& text) {
    if (state_ == State::handingOn)
        return finishMovie();
    if (state_ != State::waiting && state_ != State::recording)
        return;
    qCWarning(captureLog, "no more pictures: %s", qUtf8Printable(text));
    trouble_ = text;
    end(RecordingEnd::sourceGone);
}

void Recorder::patienceEnded() {
    switch (state_) {
    case State::handingOn:
        return finishMovie();
    case State::encoding:
        if (end_ == RecordingEnd::asked)
            end_ = RecordingEnd::encoderFailed;
        state_ = State::writing;
        movie_->finishWithoutEncoder();
        return patience_.start(patienceWithFile);
    case State::writing:
        qCWarning(captureLog, "the end of the movie cannot be written in time");
        return conclude(false);
    default:
        return;
    }
}

void Recorder::conclude(bool isWhole) {
    patience_.stop();
    handover_->connectTo(nullptr, frameRate_);
    movie_->stop();
    screen_->stop();
    if (movie_->recorded() == 0 || (!isWhole && !file_->keepWholePieces()))
        return fail(withDetails(QStringLiteral("There is no movie, because the recording failed at once. Make sure "
                                               "that the disk has room, and try again."),
                                trouble_));
    const auto named = file_->giveName();
    if (!named)
        return fail(named.error());
    state_ = State::over;
    release();
    Q_EMIT finished(*named, end_);
    if (isRetired_)
        Q_EMIT idle();
}

void Recorder::fail(const QString& reason) { fail(Error(URLErrorCode::unknown, {{errorKey::reason, reason}})); }

void Recorder::fail(const Error& error) {
    state_ = State::over;
    release();
    Q_EMIT failed(error);
    if (isRetired_)
        Q_EMIT idle();
}

// Only what works: the objects may be the ones that tell of the end, and stay until this one goes.
void Recorder::release() {
    patience_.stop();
    if (freeSpace_)
        freeSpace_->stop();
    if (handover_)
        handover_->connectTo(nullptr, frameRate_);
    if (movie_)
        movie_->stop();
    if (screen_)
        screen_->stop();
    file_.reset();
    keptOpen_.reset();
}

void Recorder::retire() {
    isRetired_ = true;
    end(RecordingEnd::asked);
    if (state_ == State::ready || state_ == State::over)
        Q_EMIT idle();
}

} // namespace quenby
