#include "workspace/downloads/DownloadRowView.h"

#include "widgets/GlyphButton.h"
#include "widgets/Glyphs.h"
#include "widgets/SecondaryLabel.h"
#include "widgets/ThinProgressBar.h"

#include <QGridLayout>
#include <QToolButton>

namespace quenby {
namespace {

constexpr int barHeight = 6;
constexpr int glyphSide = 16;

QToolButton* makeButton(QWidget* parent, const QPainterPath& glyph, const QString& name) {
    auto* button = new GlyphButton(glyphSide, parent);
    button->setIcon(glyphIcon(glyph));
    button->setToolTip(name);
    button->setAccessibleName(name);
    return button;
}

} // namespace

DownloadRowView::DownloadRowView(QWidget* parent)
    : QWidget(parent)
    , name_(new ElidedLabel(this))
    , detail_(new SecondaryLabel(this))
    , bar_(new ThinProgressBar(barHeight, this))
    , pause_(makeButton(this, pauseGlyph(), QStringLiteral("Pause")))
    , resume_(makeButton(this, resumeGlyph(), QStringLiteral("Resume")))
    , cancel_(makeButton(this, crossGlyph(), QStringLiteral("Cancel")))
    , show_(makeButton(this, folderGlyph(), QStringLiteral("Show in Folder"))) {
    auto* layout = new QGridLayout(this);
    layout->setContentsMargins(0, 8, 0, 8);
    layout->setHorizontalSpacing(2);
    layout->setVerticalSpacing(4);
    layout->setColumnStretch(0, 1);
    layout->addWidget(name_, 0, 0);
    layout->addWidget(detail_, 1, 0);
    layout->addWidget(bar_, 2, 0);
    int column = 1;
    for (QToolButton* button : {pause_, resume_, cancel_, show_})
        layout->addWidget(button, 0, column++, 3, 1, Qt::AlignVCenter);
    connect(pause_, &QToolButton::clicked, this, &DownloadRowView::pauseRequested);
    connect(resume_, &QToolButton::clicked, this, &DownloadRowView::resumeRequested);
    connect(cancel_, &QToolButton::clicked, this, &DownloadRowView::cancelRequested);
    connect(show_, &QToolButton::clicked, this, &DownloadRowView::showInFolderRequested);
}

void DownloadRowView::setDownload(const QString& name, const DownloadProgress& progress) {
    const bool isRunning = progress.state == Arrival::State::running;
    const bool isPaused = progress.state == Arrival::State::paused;
    const QString detail = downloadText(progress);
    name_->setText(name);
    detail_->setText(detail);
    detail_->setToolTip(progress.state == Arrival::State::failed ? detail : QString());
    bar_->setVisible(isRunning || isPaused);
    bar_->setValue(std::max(downloadPercent(progress), 0));
    bar_->setAccessibleName(name);
    pause_->setVisible(isRunning);
    resume_->setVisible(isPaused);
    cancel_->setVisible(isRunning || isPaused);
    show_->setVisible(progress.state == Arrival::State::finished);
}

} // namespace quenby
