#include "preferences/account/OwnClientDialog.h"

#include "core/Endpoints.h"
#include "platform/FilePanels.h"
#include "platform/Opener.h"
#include "preferences/account/ClientSource.h"
#include "preferences/account/OwnClientUi.h"
#include "preferences/account/StepView.h"

#include <QClipboard>
#include <QDragEnterEvent>
#include <QFile>
#include <QGuiApplication>
#include <QLabel>
#include <QMimeData>
#include <QPushButton>
#include <QShortcut>
#include <QUrl>

#include <cerrno>
#include <system_error>
#include <thread>

namespace quenby {
namespace {

QString sentenceOf(const Error& error) { return error.detail(errorKey::reason).toString(); }

} // namespace

OwnClientDialog::OwnClientDialog(OwnClients& clients, FilePanels& panels, Opener& opener, QWidget* parent)
    : QDialog(parent)
    , clients_(clients)
    , panels_(panels)
    , opener_(opener)
    , ui_(std::make_unique<OwnClientUi>(*this)) {
    setWindowTitle(tr("Own Client"));
    setWindowModality(Qt::WindowModal);
    setAcceptDrops(true);
    connect(ui_->consoleButton, &QPushButton::clicked, this, &OwnClientDialog::openConsole);
    connect(ui_->chooseButton, &QPushButton::clicked, this, &OwnClientDialog::choose);
    connect(ui_->pasteButton, &QPushButton::clicked, this, &OwnClientDialog::paste);
    connect(new QShortcut(QKeySequence::Paste, this), &QShortcut::activated, this, &OwnClientDialog::paste);
    connect(ui_->tryButton, &QPushButton::clicked, this, &OwnClientDialog::beginTrial);
    connect(ui_->formerButton, &QPushButton::clicked, this, [this] {
        clients_.use(std::nullopt);
        accept();
    });
    connect(ui_->cancelButton, &QPushButton::clicked, this, &QDialog::reject);
    connect(ui_->useButton, &QPushButton::clicked, this, [this] {
        clients_.use(read_);
        accept();
    });
    refresh();
}

// What is on its way back answers nobody any more.
OwnClientDialog::~OwnClientDialog() {
    reading_.cancel();
    trial_.cancel();
}

// Its widgets know only now how large they are.
void OwnClientDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    ui_->fit(*this);
}

void OwnClientDialog::dragEnterEvent(QDragEnterEvent* event) {
    const bool mayDrop = event->mimeData()->hasUrls() || event->mimeData()->hasText();
    if (!mayDrop)
        return;
    event->setDropAction(Qt::CopyAction); // the file stays where it is
    event->accept();
    ui_->showDrop(true);
}

void OwnClientDialog::dragLeaveEvent(QDragLeaveEvent*) { ui_->showDrop(false); }

void OwnClientDialog::dropEvent(QDropEvent* event) {
    ui_->showDrop(false);
    event->setDropAction(Qt::CopyAction);
    event->accept();
    take(*event->mimeData());
}

void OwnClientDialog::openConsole() {
    const QUrl console = Endpoints::provider().clientConsoleURL;
    if (opener_.openURL(console))
        ui_->registerStep->setState(StepView::State::waiting);
    else
        ui_->registerStep->setState(
            StepView::State::wrong,
            tr("The browser could not be opened. The console is at %1.").arg(console.toString()));
    refresh();
}

void OwnClientDialog::choose() {
    panels_.openFiles(this, tr("Choose the File of the Client"), tr("Choose"), this,
                      [this](const QList<QByteArray>& paths) {
                          if (paths.isEmpty())
                              return;
                          QMimeData chosen;
                          QList<QUrl> urls;
                          for (const QByteArray& path : paths)
                              urls.append(QUrl::fromLocalFile(QFile::decodeName(path)));
                          chosen.setUrls(urls);
                          take(chosen);
                      });
}

void OwnClientDialog::paste() {
    if (const QMimeData* copied = QGuiApplication::clipboard()->mimeData())
        take(*copied);
}

void OwnClientDialog::take(const QMimeData& given) {
    forget();
    const Result<ClientSource> source = clientSource(given);
    if (!source) {
        ui_->fileStep->setState(StepView::State::wrong, sentenceOf(source.error()));
        return refresh();
    }
    if (source->path.isEmpty())
        return read(source->text);
    ui_->fileStep->setState(StepView::State::checking, tr("Reading the file…"));
    refresh();
    const CompletionGate<const Result<QByteArray>&> gate(this, [this](const Result<QByteArray>& bytes) {
        if (bytes)
            return read(*bytes);
        ui_->fileStep->setState(StepView::State::wrong, sentenceOf(bytes.error()));
        refresh();
    });
    reading_ = gate.ticket();
    // A thread of its own: a network folder may hold it up for minutes.
    try {
        std::thread([gate, path = source->path] { gate.deliver(readClientFile(path)); }).detach();
    } catch (const std::system_error&) {
        gate.deliver(Result<QByteArray>(Error(
            errorDomain::posix, EAGAIN, {{errorKey::reason, tr("The computer is too busy to read it. Try again.")}})));
    }
}

void OwnClientDialog::read(const QByteArray& json) {
    const Result<OwnClient> client = ownClientFromJSON(json);
    if (!client) {
        ui_->fileStep->setState(StepView::State::wrong, sentenceOf(client.error()));
        return refresh();
    }
    read_ = *client;
    ui_->registerStep->setState(StepView::State::fine);
    ui_->fileStep->setState(StepView::State::fine, tr("Client %1").arg(client->clientID));
    beginTrial();
}

void OwnClientDialog::beginTrial() {
    if (!read_)
        return;
    ui_->trialStep->setState(StepView::State::checking, tr("Asking the provider…"));
    trial_.cancel();
    trial_ = clients_.tryClient(*read_, this, [this](const MaybeError& trouble) {
        ui_->trialStep->setState(trouble ? StepView::State::wrong : StepView::State::fine,
                                 trouble ? sentenceOf(*trouble) : tr("The provider knows this client."));
        refresh();
        if (ui_->useButton->isEnabled())
            ui_->useButton->setFocus();
    });
    refresh();
}

// Another client is on its way: nothing that was found out counts any more.
void OwnClientDialog::forget() {
    reading_.cancel();
    trial_.cancel();
    read_.reset();
    for (StepView* step : {ui_->registerStep, ui_->fileStep, ui_->trialStep})
        step->setState(StepView::State::waiting);
}

void OwnClientDialog::refresh() {
    const QString elsewhere = clients_.decidedElsewhere();
    const bool isProgramsOwn = clients_.isProgramsOwn();
    QString inUse = isProgramsOwn
                        ? tr("Quenby signs in as a client of its own. With one of yours, its limits are yours alone.")
                        : tr("Quenby signs in as your client %1.").arg(clients_.clientID());
    if (!elsewhere.isEmpty())
        inUse += QLatin1Char(' ') + elsewhere;
    ui_->inUse->setText(inUse);
    ui_->useStep->setExplanation(
        (clients_.isSignedIn()
             ? tr("You are signed in. Quenby signs you out, and you sign in again with the other client.")
             : tr("The next time that you sign in, it will be with this client.")) +
        QLatin1Char(' ') + tr("Should something be missing in the console even then, Quenby says what."));
    const auto trial = ui_->trialStep->state();
    ui_->tryButton->setEnabled(read_ && trial != StepView::State::checking);
    ui_->formerButton->setVisible(!isProgramsOwn && elsewhere.isEmpty());
    ui_->useButton->setEnabled(read_ && trial == StepView::State::fine && elsewhere.isEmpty());
    ui_->fit(*this);
}

} // namespace quenby
