#include "workspace/tab/PageScripts.h"

#include "platform/WebView.h"

namespace quenby {

QString hideDownloadDriveButtonScript() {
    return QStringLiteral("if(document.querySelectorAll('.a-Yygnk-ee-Qe.Vb-Ma-wc').length > 0){var t = "
                          "document.querySelectorAll('.a-Yygnk-ee-Qe.Vb-Ma-wc')[0]; if(t){t.style.display = 'none';}}");
}

QString signOfLifeScript() { return QStringLiteral("0"); }

void hideDownloadDriveButton(WebView& page, QObject* context) {
    page.evaluate(hideDownloadDriveButtonScript(), context, [](const QVariant&) {});
}

void leaveFullScreen(WebView& page, QObject* context) {
    page.evaluate(QStringLiteral("if (document.fullscreenElement) document.exitFullscreen();"), context,
                  [](const QVariant&) {});
}

} // namespace quenby
