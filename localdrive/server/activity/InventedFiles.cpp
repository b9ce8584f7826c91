#include "localdrive/server/activity/InventedFiles.h"

#include "localdrive/server/activity/InventedPdf.h"
#include "localdrive/server/docs/OfficeDocuments.h"
#include "localdrive/server/web/Drawing.h"
#include "localdrive/store/NativeTypes.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <vector>

namespace quenby::localdrive {
namespace {

const QString document = QStringLiteral("application/vnd.google-apps.document");
const QString spreadsheet = QStringLiteral("application/vnd.google-apps.spreadsheet");
const QString presentation = QStringLiteral("application/vnd.google-apps.presentation");
const QString png = QStringLiteral("image/png");
const QString pdf = QStringLiteral("application/pdf");
const QString text = QStringLiteral("text/plain");
const QString xlsx = QStringLiteral("application/vnd.openxmlformats-officedocument.spreadsheetml.sheet");

struct Kind {
    QString mimeType;
    QString extension; // of titles, with its dot
    QStringList titles;
};

// Pictures are the most frequent, as they are worth the most in a list.
const std::vector<Kind>& kinds() {
    static const Kind pictures{png,
                               QStringLiteral(".png"),
                               {QStringLiteral("Harbour"), QStringLiteral("Ridge trail"), QStringLiteral("Old mill"),
                                QStringLiteral("Market square"), QStringLiteral("Lighthouse"),
                                QStringLiteral("View from the tower")}};
    static const std::vector<Kind> all{
        pictures,
        pictures,
        pictures,
        {document,
         {},
         {QStringLiteral("Meeting notes"), QStringLiteral("Project outline"), QStringLiteral("Interview questions"),
          QStringLiteral("Letter to the landlord")}},
        {spreadsheet,
         {},
         {QStringLiteral("Household budget"), QStringLiteral("Guest list"), QStringLiteral("Training plan")}},
        {presentation, {}, {QStringLiteral("Quarterly review"), QStringLiteral("Workshop introduction")}},
        {pdf,
         QStringLiteral(".pdf"),
         {QStringLiteral("Invoice"), QStringLiteral("Boarding pass"), QStringLiteral("Floor plan")}},
        {text, QStringLiteral(".txt"), {QStringLiteral("To do"), QStringLiteral("Recipe")}},
        {xlsx, QStringLiteral(".xlsx"), {QStringLiteral("Expenses"), QStringLiteral("Measurements")}},
    };
    return all;
}

} // namespace

QByteArray inventedContent(const QString& mimeType, const QString& title, QRandomGenerator& random) {
    if (mimeType == png)
        return landscapePng(random.generate());
    const auto kind = std::find_if(kinds().begin(), kinds().end(),
                                   [&mimeType](const Kind& each) { return each.mimeType == mimeType; });
    if (kind == kinds().end() || kind->extension.isEmpty())
        return {};
    const QString line = QStringLiteral("%1, version %2").arg(title).arg(random.bounded(1000));
    if (mimeType == pdf)
        return inventedPdf(line);
    return mimeType == xlsx ? officeSpreadsheet({{}, {{line}}}) : line.toUtf8() + '\n';
}

InventedFile inventedFile(QRandomGenerator& random) {
    const Kind& kind = kinds()[static_cast<size_t>(random.bounded(static_cast<int>(kinds().size())))];
    const QString name = kind.titles[random.bounded(static_cast<int>(kind.titles.size()))];
    const QString title = QStringLiteral("%1 %2").arg(name).arg(random.bounded(1, 100)) + kind.extension;
    return {title, kind.mimeType, inventedContent(kind.mimeType, title, random)};
}

QList<InventedFile> inventedStart() {
    QRandomGenerator random(1); // a start is always the same
    const auto with = [&random](const QString& title, const QString& mimeType) {
        return InventedFile{title, mimeType, inventedContent(mimeType, title, random)};
    };
    return {
        with(QStringLiteral("Summer trip"), folderMimeType),
        with(QStringLiteral("Train tickets.pdf"), pdf),
        with(QStringLiteral("Packing list"), document),
        with(QStringLiteral("Travel costs"), spreadsheet),
        with(QStringLiteral("Phone numbers.txt"), text),
        with(QStringLiteral("Slides for the evening"), presentation),
        with(QStringLiteral("First morning.png"), png),
        with(QStringLiteral("Across the bay.png"), png),
        with(QStringLiteral("Shared expenses.xlsx"), xlsx),
        with(QStringLiteral("On the way home.png"), png),
    };
}

} // namespace quenby::localdrive
