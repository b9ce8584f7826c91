#include "platform/linux/desktop/FolderPanel.h"

#include "core/LocalPaths.h"

#include <QAccessible>
#include <QFileSystemModel>
#include <QGridLayout>
#include <QHash>
#include <QIdentityProxyModel>
#include <QLabel>
#include <QLineEdit>

#include <utility>

namespace quenby {
namespace {

// Shows what may not be chosen as something that cannot be used.
class RuledFolders final : public QIdentityProxyModel {
public:
    using MayBeChosen = std::function<bool(const QByteArray& path)>;

    RuledFolders(MayBeChosen mayBeChosen, QObject* parent)
        : QIdentityProxyModel(parent)
        , mayBeChosen_(std::move(mayBeChosen)) {}

    Qt::ItemFlags flags(const QModelIndex& index) const override {
        const Qt::ItemFlags flags = QIdentityProxyModel::flags(index);
        return isChoice(index) ? flags : flags & ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
    }

private:
    // Asked for each row at each painting: a rule may look at the disk, so it is asked once for each folder.
    bool isChoice(const QModelIndex& index) const {
        const QString path = index.data(QFileSystemModel::FilePathRole).toString();
        const auto known = answers_.constFind(path);
        if (known != answers_.constEnd())
            return *known;
        return *answers_.insert(path, mayBeChosen_(QFile::encodeName(path)));
    }

    const MayBeChosen mayBeChosen_;
    mutable QHash<QString, bool> answers_;
};

} // namespace

bool FolderPanel::isNeededFor(const FolderPanelRules& rules) {
    return rules.panel_shouldEnableURL || rules.panel_validateURL || rules.panel_didChangeToDirectoryURL;
}

FolderPanel::FolderPanel(QWidget* parent, const QString& title, const FolderPanelRules& rules)
    : QFileDialog(parent, title)
    , rules_(rules)
    , refusal_(new QLabel(this)) {
    setOption(DontUseNativeDialog);
    setOption(ReadOnly); // folders are chosen here, not made or removed
    setFileMode(Directory);
    if (rules_.panel_shouldEnableURL)
        setProxyModel(new RuledFolders(rules_.panel_shouldEnableURL, this));

    refusal_->setWordWrap(true);
    refusal_->setTextFormat(Qt::PlainText);
    refusal_->hide();
    if (auto* grid = qobject_cast<QGridLayout*>(layout()))
        grid->addWidget(refusal_, grid->rowCount(), 0, 1, grid->columnCount());
    // Not directoryEntered(): it is silent about some of the ways to another folder.
    for (QFileSystemModel* const model : findChildren<QFileSystemModel*>())
        connect(model, &QFileSystemModel::rootPathChanged, this, &FolderPanel::followRules);
    for (QLineEdit* const name : findChildren<QLineEdit*>())
        connect(name, &QLineEdit::textEdited, this, [this] { tell({}); });
    connect(this, &QFileDialog::currentChanged, this, [this] { tell({}); });
}

void FolderPanel::followRules(const QString& folder) {
    if (!rules_.panel_didChangeToDirectoryURL)
        return;
    // The place above all others has no path here.
    const QByteArray entered = folder.isEmpty() ? QByteArray("/") : QFile::encodeName(folder);
    const QByteArray target = rules_.panel_didChangeToDirectoryURL(entered);
    if (target.isNull() || target == entered)
        return;
    // Once the panel is done with going there.
    QMetaObject::invokeMethod(
        this, [this, target] { setDirectory(QFile::decodeName(target)); }, Qt::QueuedConnection);
}

void FolderPanel::accept() {
    const QList<QUrl> urls = selectedUrls();
    const QByteArray path = urls.isEmpty() ? QByteArray() : localPath(urls.constFirst());
    const QString sentence = rules_.panel_validateURL && !path.isEmpty() ? rules_.panel_validateURL(path) : QString();
    tell(sentence);
    if (sentence.isEmpty())
        QFileDialog::accept();
}

void FolderPanel::tell(const QString& sentence) {
    refusal_->setText(sentence);
    refusal_->setVisible(!sentence.isEmpty());
    if (sentence.isEmpty())
        return;
    QAccessibleEvent event(refusal_, QAccessible::Alert);
    QAccessible::updateAccessibility(&event);
}

} // namespace quenby
