#include "localdrive/server/web/FileTexts.h"

#include "localdrive/store/NativeTypes.h"

#include <QDateTime>
#include <QHash>
#include <QLocale>

namespace quenby::localdrive {
namespace {

const QLocale& english() {
    static const QLocale locale(QLocale::English, QLocale::UnitedKingdom);
    return locale;
}

QDateTime localTime(qint64 date) { return QDateTime::fromMSecsSinceEpoch(date); }

QString formatName(const QString& mimeType) {
    static const QHash<QString, QString> names{
        {QStringLiteral("application/vnd.openxmlformats-officedocument.wordprocessingml.document"),
         QStringLiteral("Office Open XML (.docx)")},
        {QStringLiteral("application/vnd.openxmlformats-officedocument.spreadsheetml.sheet"),
         QStringLiteral("Office Open XML (.xlsx)")},
        {QStringLiteral("application/vnd.openxmlformats-officedocument.presentationml.presentation"),
         QStringLiteral("Office Open XML (.pptx)")},
        {QStringLiteral("application/vnd.oasis.opendocument.text"), QStringLiteral("OpenDocument (.odt)")},
        {QStringLiteral("application/x-vnd.oasis.opendocument.spreadsheet"), QStringLiteral("OpenDocument (.ods)")},
        {QStringLiteral("application/pdf"), QStringLiteral("PDF (.pdf)")},
        {QStringLiteral("application/zip"), QStringLiteral("Web page (.zip)")},
        {QStringLiteral("text/plain"), QStringLiteral("Plain text (.txt)")},
        {QStringLiteral("text/csv"), QStringLiteral("Comma-separated values (.csv)")},
        {QStringLiteral("text/tab-separated-values"), QStringLiteral("Tab-separated values (.tsv)")},
        {QStringLiteral("image/jpeg"), QStringLiteral("JPEG picture (.jpg)")},
        {QStringLiteral("image/png"), QStringLiteral("PNG picture (.png)")},
        {QStringLiteral("image/svg+xml"), QStringLiteral("SVG drawing (.svg)")}};
    return names.value(mimeType, mimeType);
}

} // namespace

QString typeIcon(const QString& mimeType) {
    return mimeType == QLatin1String("application/vnd.google-apps.form") ? QStringLiteral("form") : iconName(mimeType);
}

QString typeText(const QString& mimeType) {
    static const QHash<QString, QString> texts{{QStringLiteral("folder"), QStringLiteral("Folder")},
                                               {QStringLiteral("document"), QStringLiteral("Document")},
                                               {QStringLiteral("spreadsheet"), QStringLiteral("Spreadsheet")},
                                               {QStringLiteral("presentation"), QStringLiteral("Presentation")},
                                               {QStringLiteral("drawing"), QStringLiteral("Drawing")},
                                               {QStringLiteral("form"), QStringLiteral("Form")},
                                               {QStringLiteral("image"), QStringLiteral("Picture")},
                                               {QStringLiteral("video"), QStringLiteral("Video")},
                                               {QStringLiteral("audio"), QStringLiteral("Sound")},
                                               {QStringLiteral("text"), QStringLiteral("Text")},
                                               {QStringLiteral("pdf"), QStringLiteral("PDF")},
                                               {QStringLiteral("archive"), QStringLiteral("Archive")}};
    return texts.value(typeIcon(mimeType), QStringLiteral("File"));
}

QString bytesText(qint64 bytes) {
    if (bytes == 1)
        return QStringLiteral("1 byte");
    return QLocale::c().formattedDataSize(bytes, bytes < 1024 ? 0 : 1, QLocale::DataSizeTraditionalFormat);
}

QString sizeText(const FileRecord& file) { return file.hasContent() ? bytesText(file.size) : QStringLiteral("–"); }

QString shortDateText(qint64 date, const QDateTime& now) {
    const QDateTime then = localTime(date);
    const QDate today = now.toLocalTime().date();
    if (then.date() == today)
        return then.toString(QStringLiteral("HH:mm"));
    const bool isThisYear = then.date().year() == today.year();
    return english().toString(then.date(), isThisYear ? QStringLiteral("d MMM") : QStringLiteral("d MMM yyyy"));
}

QString longDateText(qint64 date) { return english().toString(localTime(date), QStringLiteral("d MMMM yyyy, HH:mm")); }

QList<ExportChoice> exportChoices(const FileRecord& file) {
    QList<ExportChoice> choices;
    const QJsonObject links = exportLinks(QUrl(), file.mimeType, file.id);
    for (auto link = links.begin(); link != links.end(); ++link)
        choices.append({formatName(link.key()), link.value().toString()});
    return choices;
}

} // namespace quenby::localdrive
