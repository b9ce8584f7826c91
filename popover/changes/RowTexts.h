// What a row says and offers, from its record. Pure functions.
#pragma once

#include "core/ChangeRecord.h"
#include "core/PageOpenRecord.h"

#include <QString>
#include <QUrl>

namespace quenby {

struct RowTexts {
    QString name; // the file's title on one clean line, or "3 files"
    QString verb; // "Added."; empty for files that were there at the first poll
    QString
        share; // the file's link; empty when the row can be neither opened nor shared. Carries a secret: show nowhere

    QString resourceKey = {}; // that the file's page asks for; mostly empty

    bool isOpenable() const { return !share.isEmpty(); }
    // "Report.pdf Added."
    QString title() const;
    // The title for the eye, with the name or what is left of it: in any direction, it keeps the verb behind it.
    QString shownTitle(const QString& shownName) const;
    // For who hears the row: "Report.pdf added, 5 minutes ago".
    QString spoken(const QString& when) const;
};

RowTexts rowTexts(const ChangeRecord& record);

// Deletions of files that nobody knows the names of, summed up in one row.
bool isSummary(const ChangeRecord& record);

// The page of an openable row's file, below the address of the Drive's web application.
PageOpenRecord rowPage(const RowTexts& texts, const QUrl& webURL);

} // namespace quenby
