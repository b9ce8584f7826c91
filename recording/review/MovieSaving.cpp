#include "recording/review/MovieSaving.h"

#include "core/CompletionGate.h"
#include "platform/Alerts.h"
#include "platform/FileBrowser.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QThreadPool>

namespace quenby {
namespace {

// Not the toolkit's own: the main thread lends that one's threads for painting, and would wait for a long copy.
QThreadPool& copyThreads() {
    static QThreadPool threads;
    return threads;
}

QString alertTitle() { return QStringLiteral("Alert"); }

} // namespace

MovieSaving* MovieSaving::start(const QByteArray& movie, const QByteArray& destination, Alerts& alerts,
                                FileBrowser& fileBrowser) {
    auto* saving = new MovieSaving(movie, destination, alerts, fileBrowser);
    saving->copy();
    return saving;
}

MovieSaving::MovieSaving(const QByteArray& movie, const QByteArray& destination, Alerts& alerts,
                         FileBrowser& fileBrowser)
    : QObject(QCoreApplication::instance())
    , movie_(movie)
    , destination_(destination)
    , alerts_(alerts)
    , fileBrowser_(fileBrowser)
    , isStopped_(std::make_shared<std::atomic_bool>(false)) {
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, [this] { delete this; });
}

MovieSaving::~MovieSaving() { *isStopped_ = true; }

void MovieSaving::copy() {
    const CompletionGate<const MovieCopyResult&> gate(this, [this](const MovieCopyResult& result) { ended(result); });
    copyThreads().start([movie = movie_, destination = destination_, isStopped = isStopped_, gate] {
        gate.deliver(copyMovie(movie, destination, *isStopped));
    });
}

void MovieSaving::ended(const MovieCopyResult& result) {
    Q_EMIT copyEnded(result.end);
    switch (result.end) {
    case MovieCopyResult::End::copied:
        return offerToReveal();
    case MovieCopyResult::End::failed:
        alerts_.show(nullptr,
                     {alertTitle(), QStringLiteral("Error in file saving"), result.reason, {QStringLiteral("Ok")}});
        break;
    case MovieCopyResult::End::movieGone:
    case MovieCopyResult::End::stopped:
        break;
    }
    deleteLater();
}

void MovieSaving::offerToReveal() {
    const QString name = QFileInfo(QFile::decodeName(movie_)).fileName();
    const Alert alert{alertTitle(),
                      QStringLiteral("%1 successfully saved.").arg(name),
                      {},
                      {QStringLiteral("Show in Finder"), QStringLiteral("Close")}};
    alerts_.show(nullptr, alert, this, [this](int button) {
        if (button == 0)
            reveal();
        else
            deleteLater();
    });
}

void MovieSaving::reveal() {
    fileBrowser_.reveal(destination_, this, [this](bool isShown) {
        if (!isShown) {
            alerts_.show(nullptr, {alertTitle(),
                                   QStringLiteral("No file manager could be opened. The file is “%1”.")
                                       .arg(QFile::decodeName(destination_)),
                                   {},
                                   {QStringLiteral("Close")}});
        }
        deleteLater();
    });
}

} // namespace quenby
