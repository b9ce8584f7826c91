// A page to open in a tab of the workspace, as it is kept in the settings between runs.
#pragma once

#include <QString>
#include <QUrl>

namespace quenby {

struct PageOpenRecord {
    QString title;
    QUrl url;
    QString account = QStringLiteral("main");
    QString windowName = QStringLiteral("WindowName");

    friend bool operator==(const PageOpenRecord&, const PageOpenRecord&) = default;
};

} // namespace quenby
