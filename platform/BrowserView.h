// A web view that a person browses with: history, windows, downloads, search in the page, zoom, print, and a rest for
// pages that nobody looks at.
//
// Threads: the main thread. As with WebView, everything but the policy's and the download's questions is told through
// the event loop, so that whoever hears it may destroy the view.
#pragma once

#include "platform/WebDownload.h"
#include "platform/WebView.h"

#include <QImage>
#include <QPoint>

namespace quenby {

enum class WebCommand {
    forward,
    reload,
    reloadFromOrigin, // without the cache
    cut,
    copy,
    paste,
    pasteAsText,
    selectAll,
    undo,
    redo,
    copyImage, // these three act on what the last contextMenuRequested() was about
    downloadLink,
    downloadImage,
};

// A page nobody looks at costs nothing while it is frozen (it stays as it is, but does not run), and less than that
// when it is discarded (it is loaded again when it is next looked at; scripts yield nothing until then).
enum class WebLifecycle { active, frozen, discarded };

// Another window that the page or its reader asked for.
struct WebWindowRequest {
    enum class Place { tab, backgroundTab, window };

    QUrl url; // empty for one that a script opens and fills by itself
    Place place = Place::tab;
    bool isUserInitiated = false; // by a click or key that just happened
};

// What a context menu is about.
struct WebContext {
    QPoint position; // global
    QUrl link;       // empty: none
    QUrl image;      // empty: none
    QString selectedText;
    bool isEditable = false;
};

class BrowserView : public WebView {
    Q_OBJECT

public:
    // Called for each file that the page sends, PDFs among them; a download on which begin() was not called within the
    // call is dropped. Without a handler all are.
    using DownloadHandler = std::function<void(std::shared_ptr<WebDownload> download)>;

    virtual void perform(WebCommand command) = 0;
    virtual bool canPerform(WebCommand command) const = 0;
    // The next place of the text, either way, or none (an empty text ends the search); found() says which.
    virtual void find(const QString& text, bool backward) = 0;
    virtual qreal zoomFactor() const = 0; // 1 is the page's own size; 0.25 to 5
    virtual void setZoomFactor(qreal factor) = 0;
    // A view that is visible stays active.
    virtual void setLifecycle(WebLifecycle lifecycle) = 0;
    virtual WebLifecycle lifecycle() const = 0;
    // Lets the user choose a printer or a PDF file, then prints. Does not block.
    virtual void print() = 0;
    // Ends the page's process, for a page that does not answer any more; processGone() follows.
    virtual void endProcess() = 0;
    virtual void setDownloadHandler(DownloadHandler handler) = 0;
    // Asks the server for a file that the policy decided is one; it arrives at the download handler.
    virtual void download(const QUrl& url) = 0;

Q_SIGNALS:
    void progressChanged(int percent);
    // url(), or whether there is something before or after it.
    void historyChanged();
    // Null when the page has none.
    void iconChanged(const QImage& icon);
    // What the page writes to its console, without secrets.
    void consoleMessage(const QString& message);
    // In place of newWindowRequested(), which is not told by browser views. None is opened.
    void windowRequested(const quenby::WebWindowRequest& request);
    void contextMenuRequested(const quenby::WebContext& context);
    // Which of how many places of the text is marked; 0 of 0: there is none.
    void found(int current, int total);
    // By the page; print() does it.
    void printRequested();
    // The page wants to be all that is on the screen, or no longer. The view has to agree, or to be told otherwise by
    // evaluate("document.exitFullscreen()").
    void fullScreenRequested(bool isOn);
    // The address under the pointer; empty: none.
    void linkHovered(const QUrl& url);
};

} // namespace quenby
