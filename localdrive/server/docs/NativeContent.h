// What a native document holds, as its pages send it and exports read it: {"sections": [{"title", "text"}]} for all
// kinds but spreadsheets, {"rows": [["cell", ...], ...]} for these.
#pragma once

#include "core/Result.h"

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

namespace quenby::localdrive {

// A slide; the whole of a document, drawing or form. Documents use the text alone.
struct Section {
    QString title;
    QString text; // lines end with "\n"
};

struct NativeContent {
    QList<Section> sections;
    QList<QStringList> rows; // of different lengths

    // 400 "invalid" when it is not of the form, or larger than our pages can handle. Characters that XML can't carry
    // are dropped.
    static Result<NativeContent> fromJson(const QJsonObject& json);
    QJsonObject toJson() const;

    // What a document holds that nobody has written to: its title.
    static NativeContent initial(const QString& kindPath, const QString& title);
    // What one holds that was just made by a person: nothing.
    static NativeContent empty(const QString& kindPath);

    qsizetype columnCount() const;
};

// One line of it, for titles: without what XML can't carry, and without line ends.
QString printable(const QString& title);

} // namespace quenby::localdrive
