// What is asked of the pages in a tab.
#pragma once

#include <QString>

class QObject;

namespace quenby {

class WebView;

// Hides the web application's button that offers a program for downloading the Drive: this is one.
QString hideDownloadDriveButtonScript();
// Is answered by any page whose scripts run at all.
QString signOfLifeScript();

// The context need not outlive the call.
void hideDownloadDriveButton(WebView& page, QObject* context);
void leaveFullScreen(WebView& page, QObject* context);

} // namespace quenby
