#include "workspace/tab/PageTitle.h"

namespace quenby {

QString pageTitle(const QString& documentTitle) {
    QString title = documentTitle;
    for (const char* name :
         {" - Google Drive", " - Google Docs", " - Google Sheets", " - Google Drawings", " - Google Forms"})
        title.remove(QLatin1String(name));
    return title;
}

} // namespace quenby
