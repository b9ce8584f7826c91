#include "localdrive/server/web/PageFrame.h"

#include "localdrive/server/web/FileTexts.h"
#include "localdrive/store/ApiError.h"
#include "localdrive/store/ChangeLog.h"
#include "localdrive/store/Files.h"

#include <algorithm>

namespace quenby::localdrive {
namespace {

constexpr qint64 gaugeWidth = 1000;
constexpr double nearlyFull = 0.9;

} // namespace

PageTemplates::Values PageFrame::values(Work& work, const QString& current, const httplib::Request& request) const {
    const Account& user = work.caller().user;
    const qint64 used = quotaUsed(work.session());
    const qint64 total = std::max<qint64>(store_.settings().quotaBytesTotal, 1);
    const double part = std::min(1.0, static_cast<double>(used) / static_cast<double>(total));
    // A little is seen as a little, not as nothing.
    const auto width = std::max<qint64>(used > 0 ? 8 : 0, static_cast<qint64>(part * gaugeWidth));
    PageTemplates::Values values{
        {QStringLiteral("email"), user.emailAddress},
        {QStringLiteral("person"), user.displayName},
        {QStringLiteral("initial"), user.displayName.left(1).toUpper()},
        {QStringLiteral("key"), QString::fromLatin1(guard_.key(request))},
        {QStringLiteral("version"), QString::number(largestChangeId(work.session()))},
        {QStringLiteral("folder"), store_.rootFolderId()},
        {QStringLiteral("used"), bytesText(used)},
        {QStringLiteral("total"), bytesText(store_.settings().quotaBytesTotal)},
        {QStringLiteral("gauge"), QString::number(width)},
        {QStringLiteral("fullness"), part >= nearlyFull ? QStringLiteral("nearly-full") : QString()}};
    if (!current.isEmpty())
        values.insert(QStringLiteral("at_") + current, QStringLiteral("aria-current=\"page\""));
    return values;
}

void PageFrame::answer(const QString& current, const Show& show, const httplib::Request& request,
                       httplib::Response& response) const {
    const auto caller = guard_.visitor(request, response);
    if (!caller)
        return;
    const Result<QString> page = [&]() -> Result<QString> {
        Work work(store_, *caller, Session::Kind::read);
        PageTemplates::Values around = values(work, current, request);
        Result<QString> shown = show(work, around);
        return work.session().failure() ? Result<QString>(*work.session().failure()) : shown;
    }();
    if (page)
        return PageTemplates::sendApplication(response, 200, *page);
    if (page.error().domain() == apiErrorDomain && page.error().code() < 500) {
        return showMessage(
            404, QStringLiteral("Nothing to see here"),
            QStringLiteral("It was deleted, or nobody has shared it with %1.").arg(caller->user.emailAddress),
            response);
    }
    qWarning("A page failed: %s", qUtf8Printable(page.error().description()));
    showMessage(500, QStringLiteral("Something went wrong"),
                QStringLiteral("The local Drive can't read its database. Its log says why."), response);
}

void PageFrame::showMessage(int status, const QString& heading, const QString& text,
                            httplib::Response& response) const {
    const QString way = pages_.fill(QStringLiteral("way"), {{QStringLiteral("link"), QStringLiteral("/")},
                                                            {QStringLiteral("text"), QStringLiteral("My Drive")}});
    PageTemplates::send(response, status,
                        pages_.fill(QStringLiteral("message"), {{QStringLiteral("title"), heading},
                                                                {QStringLiteral("heading"), heading},
                                                                {QStringLiteral("text"), text},
                                                                {QStringLiteral("way"), way}}));
}

} // namespace quenby::localdrive
