#include "preferences/general/ScreenshotFoldersDialog.h"

#include "core/DefaultsKeys.h"
#include "platform/Defaults.h"
#include "platform/FilePanels.h"
#include "platform/ScreenshotQuery.h"
#include "preferences/general/AddedFolders.h"
#include "preferences/general/FolderPaths.h"
#include "preferences/general/NoticeLine.h"
#include "preferences/general/ScreenshotFoldersUi.h"

#include <QDir>
#include <QEvent>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <QShortcut>
#include <QTreeWidget>

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

namespace quenby {

ScreenshotFoldersDialog::ScreenshotFoldersDialog(Defaults& defaults, FilePanels& panels, const ScreenshotQuery& query,
                                                 QWidget* parent)
    : QDialog(parent)
    , defaults_(defaults)
    , panels_(panels)
    , query_(query)
    , ui_(std::make_unique<ScreenshotFoldersUi>(this)) {
    setWindowTitle(tr("Screenshot Folders"));
    const auto showChoice = [this] {
        ui_->remove->setEnabled(!ui_->selectedFolder().isEmpty());
        ui_->notice->tell({});
    };
    connect(ui_->list, &QTreeWidget::currentItemChanged, this, showChoice);
    connect(ui_->add, &QPushButton::clicked, this, &ScreenshotFoldersDialog::add);
    connect(ui_->remove, &QPushButton::clicked, this, &ScreenshotFoldersDialog::removeSelected);
    connect(new QShortcut(QKeySequence::Delete, ui_->list, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated,
            this, &ScreenshotFoldersDialog::removeSelected);
    connect(&defaults_, &Defaults::changed, this, [this](const QString& key) {
        if (key == defaultsKey::screenshotFolders)
            refresh();
    });
    showChoice();
    refresh();
}

ScreenshotFoldersDialog::~ScreenshotFoldersDialog() = default;

// Folders come and go in other windows.
void ScreenshotFoldersDialog::changeEvent(QEvent* event) {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        refresh();
}

QList<QByteArray> ScreenshotFoldersDialog::allFolders() const {
    return query_.knownFolders() + addedFolders(defaults_);
}

CompletionTicket ScreenshotFoldersDialog::look(const QList<QByteArray>& folders,
                                               std::function<void(const Facts&)> seen) {
    const CompletionGate<Facts> gate(this, std::move(seen));
    try {
        std::thread([gate, folders] {
            Facts facts;
            for (const QByteArray& folder : folders)
                facts.insert(folder, {QFileInfo(QFile::decodeName(folder)).isDir(), canonicalPath(folder)});
            gate.deliver(facts);
        }).detach();
    } catch (const std::system_error&) {
        gate.deliver(Facts());
    }
    return gate.ticket();
}

void ScreenshotFoldersDialog::refresh() {
    showRows();
    refreshing_.cancel();
    refreshing_ = look(allFolders(), [this](const Facts& facts) {
        facts_ = facts;
        showRows();
    });
}

// What is known of itself is shown once it is seen; what the user added stays until it is removed.
void ScreenshotFoldersDialog::showRows() {
    QList<ScreenshotFolderRow> rows;
    const QList<QByteArray> known = query_.knownFolders();
    for (const QByteArray& folder : known) {
        if (facts_.value(folder).isThere)
            rows.append({folder, ScreenshotFolderRow::Kind::known});
    }
    for (const QByteArray& folder : addedFolders(defaults_)) {
        const bool isGone = facts_.contains(folder) && !facts_.value(folder).isThere;
        rows.append({folder, isGone ? ScreenshotFolderRow::Kind::addedButNotThere : ScreenshotFolderRow::Kind::added});
    }
    ui_->showRows(rows);
}

void ScreenshotFoldersDialog::add() {
    if (panel_.isPending())
        return;
    FolderPanelRules rules;
    rules.directory = QFile::encodeName(QDir::homePath());
    panel_ =
        panels_.openFolder(this, tr("Add Screenshot Folder"), rules, this, [this](const QList<QByteArray>& chosen) {
            if (!chosen.isEmpty())
                addUnlessThere(cleanedPath(chosen.constFirst()));
        });
}

void ScreenshotFoldersDialog::addUnlessThere(const QByteArray& folder) {
    if (!canBeStored(folder)) {
        ui_->notice->tell(tr("The name of this folder cannot be stored. Rename it, and add it again."));
        return;
    }
    look(allFolders() + QList<QByteArray>{folder}, [this, folder](const Facts& facts) {
        const FolderFacts fresh = facts.value(folder);
        const QList<QByteArray> folders = allFolders();
        const auto same = std::find_if(folders.begin(), folders.end(), [&](const QByteArray& other) {
            const QByteArray canonical = facts.value(other).canonical;
            return other == folder || (!canonical.isEmpty() && canonical == fresh.canonical);
        });
        if (same == folders.end())
            setAddedFolders(defaults_, addedFolders(defaults_) + QList<QByteArray>{folder});
        ui_->select(same == folders.end() ? folder : *same);
        if (same != folders.end())
            ui_->notice->tell(tr("%1 is in the list already.").arg(QFile::decodeName(*same)));
    });
}

void ScreenshotFoldersDialog::removeSelected() {
    QList<QByteArray> folders = addedFolders(defaults_);
    if (folders.removeAll(ui_->selectedFolder()) > 0)
        setAddedFolders(defaults_, folders);
}

} // namespace quenby
