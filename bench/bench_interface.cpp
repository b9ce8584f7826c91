// What a person at the window feels while files are uploaded: how late the main thread draws its frames.
//
//   bench_interface upload DATA FOLDER [COUNT]   drops all files of the folder on the workspace window at once, uploads
//                                                them to the local Drive with this data folder, and cancels what is
//                                                left when COUNT of them have ended
//   bench_interface watch                        the same windows with nothing to upload
//
// The second is the first one's peer: it runs at the same time, so that whatever else the machine does, this program's
// own uploads included, comes to it from another process. Both draw the window and the gauge anew in every frame, as
// they would while somebody resizes them. Prints a line a figure, those of the peer with "peer_" before their names;
// answer_ms is the time from the drop until the event loop answers.

#include "app/account/AccountSummary.h"
#include "app/agent/UploadListing.h"
#include "app/cli/Console.h"
#include "app/cli/Session.h"
#include "app/dropview/dragFileImageView.h"
#include "app/statusitem/ApplicationIcon.h"
#include "app/statusitem/StatusItem.h"
#include "app/statusitem/StatusItemInputs.h"
#include "app/statusitem/StatusMenus.h"
#include "app/uploads/UploadPipeline.h"
#include "bench/FrameMeter.h"
#include "platform/linux/LinuxPlatform.h"
#include "workspace/window/AccountView.h"
#include "workspace/window/UploadRows.h"
#include "workspace/window/WorkspaceWindow.h"

#include <QApplication>
#include <QDir>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QMimeData>
#include <QPainter>
#include <QProcess>
#include <QTimer>
#include <QUrl>

#include <cstdio>

#include <unistd.h>

using namespace quenby;

namespace {

using namespace std::chrono_literals;

constexpr auto settlingTime = 2s; // the tray's and the window manager's, with the windows just shown

// An account whose gauge follows the uploads.
class Inputs final : public StatusItemInputs {
public:
    explicit Inputs(const UploadPipeline& uploads)
        : uploads_(uploads) {}

    bool isSignedIn() const override { return true; }
    AccountSummary accountSummary() const override {
        return {QStringLiteral("Ada"), QStringLiteral("ada@example.com"), QStringLiteral("15 GB"),
                QStringLiteral("37%")};
    }
    bool isUploadInProgress() const override { return !uploads_.uploadStatusPath().isNull(); }
    int uploadStatusPer() const override { return uploads_.uploadStatusPer(); }
    bool isPopoverVisible() const override { return false; }

private:
    const UploadPipeline& uploads_;
};

// The desktop program's windows and uploads, with the services of this desktop, put together as the program does it.
class Interface {
public:
    Interface(DriveServiceProvider driveService, const std::shared_ptr<TimeSource>& timeSource)
        : platform_(makeLinuxPlatform({QStringLiteral("quenby-bench"), {}, {}, false}, timeSource))
        , window_(*platform_.defaults)
        , uploads_({std::move(driveService), timeSource, *platform_.defaults, *platform_.notifications,
                    *platform_.alerts, *platform_.filePanels, *platform_.pasteboard, *platform_.opener},
                   [this] { return &window_; })
        , listing_(uploads_.queue(), rows_)
        , inputs_(uploads_)
        , menus_(inputs_, *platform_.defaults)
        , statusItem_(*platform_.statusItemHosts, *platform_.defaults, inputs_, timeSource, menus_.statusMenu(),
                      applicationIcon())
        , dropView_(new dragFileImageView) {
        QObject::connect(dropView_, &dragFileImageView::filesDropped, &uploads_, &UploadPipeline::UploadFilesToServer);
        QObject::connect(&uploads_, &UploadPipeline::statusItemRefreshWanted, &statusItem_,
                         [this] { statusItem_.createAndSetIconOfStatusBarIsInstant(u"y"); });
        const AccountSummary account = inputs_.accountSummary();
        window_.accountView().setAccount({account.displayName, account.emailAddress, quotaText(account), 37});
        window_.accountView().setDropView(dropView_);
        window_.accountView().setUploads(&rows_);
    }
    ~Interface() {
        platform_.statusItemHosts.reset();
        window_.accountView().setUploads(nullptr);
    }

    void show() {
        window_.showAccount();
        window_.bringToFront();
        platform_.statusItemHosts->start();
        statusItem_.createAndSetIconOfStatusBarIsInstant(u"n");
    }

    void draw() {
        window_.repaint();
        if (!statusItem_.view())
            return;
        QImage picture(statusItem_.view()->size(), QImage::Format_ARGB32_Premultiplied);
        QPainter painter(&picture);
        statusItem_.view()->paint(painter, picture.rect(), false);
    }

    void drop(const QList<QUrl>& files) {
        QMimeData data;
        data.setUrls(files);
        const QPoint middle = dropView_->rect().center();
        QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(dropView_, &enter);
        QDropEvent drop(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(dropView_, &drop);
    }

    UploadPipeline& uploads() { return uploads_; }

private:
    PlatformServices platform_;
    WorkspaceWindow window_;
    UploadPipeline uploads_;
    UploadRows rows_;
    UploadListing listing_;
    Inputs inputs_;
    StatusMenus menus_;
    StatusItem statusItem_;
    dragFileImageView* const dropView_; // the window's
};

// --- The peer -------------------------------------------------------------------------------------------------------

int watch() {
    Interface interface([] { return nullptr; }, makeSystemTimeSource());
    interface.show();
    FrameMeter meter([&interface] { interface.draw(); });
    // A line begins the measurement, and the end of the input ends it.
    QSocketNotifier orders(STDIN_FILENO, QSocketNotifier::Read);
    QObject::connect(&orders, &QSocketNotifier::activated, &meter, [&meter] {
        char order = 0;
        if (::read(STDIN_FILENO, &order, 1) == 1)
            return meter.start();
        meter.stop();
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    printLateness("peer_", meter.lateness());
    return 0;
}

class Peer {
public:
    Peer() {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QCoreApplication::applicationFilePath(), {QStringLiteral("watch")});
    }

    void start() { process_.write("\n"); }
    // Its figures.
    QByteArray stop() {
        process_.closeWriteChannel();
        process_.waitForFinished();
        return process_.readAllStandardOutput();
    }

private:
    QProcess process_;
};

// --- The uploads ----------------------------------------------------------------------------------------------------

class Measurement {
public:
    Measurement(const QByteArray& data, const QString& folder, int mostUploads)
        : session_(console_, {.local = true, .localData = data, .httpLog = {}},
                   {Endpoints::provider(), [] { return AccountStorage(); }}, timeSource_)
        , interface_([this] { return session_.driveService(); }, timeSource_)
        , meter_([this] { interface_.draw(); })
        , leftToEnd_(mostUploads) {
        const QFileInfoList files = QDir(folder).entryInfoList(QDir::Files, QDir::Name);
        for (const QFileInfo& file : files)
            files_.append(QUrl::fromLocalFile(file.absoluteFilePath()));
        if (leftToEnd_ <= 0)
            leftToEnd_ = static_cast<int>(files_.size());
        QObject::connect(&interface_.uploads().queue(), &UploadQueue::finished, &context_,
                         [this](const UploadRequest&, const Result<UploadRun::Outcome>& outcome) { ended(outcome); });
    }

    int run() {
        session_.open(&context_, [this](const MaybeError& error) {
            if (error)
                return fail(*error);
            interface_.show();
            QTimer::singleShot(settlingTime, &context_, [this] { begin(); });
        });
        return QCoreApplication::exec();
    }

private:
    void begin() {
        peer_.start();
        meter_.start();
        sinceDrop_.start();
        interface_.drop(files_);
        QTimer::singleShot(0, &context_, [this] { answerTime_ = sinceDrop_.nsecsElapsed(); });
    }

    void ended(const Result<UploadRun::Outcome>& outcome) {
        if (!outcome)
            return fail(outcome.error());
        if (--leftToEnd_ == 0)
            QTimer::singleShot(0, &context_, [this] { end(); });
    }

    void end() {
        interface_.uploads().cancelEverything();
        meter_.stop();
        const QByteArray peers = peer_.stop();
        printLateness("", meter_.lateness());
        std::printf("answer_ms %.3f\n%s", static_cast<double>(answerTime_) / 1e6, peers.constData());
        QCoreApplication::exit(0);
    }

    void fail(const Error& error) {
        std::fprintf(stderr, "bench_interface: %s\n", qUtf8Printable(error.description()));
        QCoreApplication::exit(1);
    }

    const std::shared_ptr<TimeSource> timeSource_ = makeSystemTimeSource();
    Console console_{{}};
    Session session_;
    Interface interface_;
    Peer peer_;
    FrameMeter meter_;
    QList<QUrl> files_;
    int leftToEnd_;
    QElapsedTimer sinceDrop_;
    qint64 answerTime_ = 0; // nanoseconds
    QObject context_;
};

} // namespace

int main(int argc, char** argv) {
    QLoggingCategory::setFilterRules(QStringLiteral("*.info=false")); // a line an upload
    const QApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("quenby-bench"));
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == QLatin1String("watch"))
        return watch();
    if (arguments.value(1) == QLatin1String("upload") && arguments.size() >= 4)
        return Measurement(arguments.at(2).toLocal8Bit(), arguments.at(3), arguments.value(4).toInt()).run();
    std::fputs("usage: bench_interface upload DATA FOLDER [COUNT] | watch\n", stderr);
    return 2;
}
