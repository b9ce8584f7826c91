#include "workspace/tab/TabNotices.h"

#include "workspace/tab/NoticeBar.h"

#include <QVBoxLayout>

namespace quenby {
namespace {

struct Choice {
    QString text;
    TabNoticeAction action;
};

QString textOf(TabNotice notice) {
    switch (notice) {
    case TabNotice::windowBlocked:
        return QStringLiteral("This page tried to open more windows.");
    case TabNotice::downloadBlocked:
        return QStringLiteral("This page tried to download more files.");
    case TabNotice::refusal:
        return QStringLiteral("This page does not support this window.");
    case TabNotice::notAnswering:
        return QStringLiteral("This page is not answering.");
    }
    Q_UNREACHABLE();
}

QList<Choice> choicesOf(TabNotice notice) {
    switch (notice) {
    case TabNotice::windowBlocked:
        return {{QStringLiteral("&Allow"), TabNoticeAction::allowWindows}};
    case TabNotice::downloadBlocked:
        return {{QStringLiteral("&Allow"), TabNoticeAction::allowDownloads}};
    case TabNotice::refusal:
        return {{QStringLiteral("&Open in Browser"), TabNoticeAction::openInBrowser}};
    case TabNotice::notAnswering:
        return {{QStringLiteral("&Wait"), TabNoticeAction::wait},
                {QStringLiteral("&End Page"), TabNoticeAction::endPage}};
    }
    Q_UNREACHABLE();
}

} // namespace

TabNotices::TabNotices(QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
}

void TabNotices::tell(TabNotice notice) {
    NoticeBar*& bar = bars_[notice];
    if (!bar)
        bar = makeBar(notice);
    bar->tell();
}

void TabNotices::withdraw(TabNotice notice) {
    if (NoticeBar* bar = bars_.value(notice))
        bar->hide();
}

void TabNotices::withdrawAll() {
    for (NoticeBar* bar : std::as_const(bars_))
        bar->hide();
}

NoticeBar* TabNotices::makeBar(TabNotice notice) {
    auto* bar = new NoticeBar(textOf(notice), this);
    for (const Choice& choice : choicesOf(notice))
        bar->addButton(choice.text, [this, action = choice.action] { Q_EMIT chosen(action); });
    bar->setClosable(notice != TabNotice::notAnswering); // to wait is to close
    layout()->addWidget(bar);
    return bar;
}

} // namespace quenby
