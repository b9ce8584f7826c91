#include "workspace/tab/PageMenu.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMenu>
#include <QPointer>

namespace quenby {
namespace {

class Maker {
public:
    Maker(QMenu& menu, BrowserView& page, const PageMenuActions& actions)
        : menu_(menu)
        , page_(&page)
        , actions_(actions) {}

    void addLinkActions(const QUrl& link) {
        menu_.addAction(QStringLiteral("Open Link in New &Tab"), [open = actions_.openInNewTab, link] { open(link); });
        menu_.addAction(QStringLiteral("Copy &Link"),
                        [link] { QGuiApplication::clipboard()->setText(link.toString(QUrl::FullyEncoded)); });
        addDownload(QStringLiteral("&Save Link As…"), WebCommand::downloadLink);
        menu_.addSeparator();
    }

    void addImageActions(const QUrl& image) {
        menu_.addAction(QStringLiteral("Open &Image in New Tab"),
                        [open = actions_.openInNewTab, image] { open(image); });
        addDownload(QStringLiteral("Sa&ve Image As…"), WebCommand::downloadImage);
        addCommand(QStringLiteral("Copy I&mage"), WebCommand::copyImage);
        menu_.addSeparator();
    }

    void addEditActions() {
        addCommand(QStringLiteral("&Undo"), WebCommand::undo);
        addCommand(QStringLiteral("&Redo"), WebCommand::redo);
        menu_.addSeparator();
        addCommand(QStringLiteral("Cu&t"), WebCommand::cut);
        addCommand(QStringLiteral("&Copy"), WebCommand::copy);
        addCommand(QStringLiteral("&Paste"), WebCommand::paste);
        addCommand(QStringLiteral("Paste as Te&xt"), WebCommand::pasteAsText);
        addCommand(QStringLiteral("Select &All"), WebCommand::selectAll);
    }

    void addSelectionActions() {
        addCommand(QStringLiteral("&Copy"), WebCommand::copy);
        addCommand(QStringLiteral("Select &All"), WebCommand::selectAll);
    }

    void addPageActions() {
        QAction* back = menu_.addAction(QStringLiteral("&Back"), page_, &WebView::back);
        back->setEnabled(page_->canGoBack());
        addCommand(QStringLiteral("&Forward"), WebCommand::forward);
        addCommand(QStringLiteral("&Reload"), WebCommand::reload);
        menu_.addSeparator();
        menu_.addAction(QStringLiteral("&Print…"), page_, &BrowserView::print);
    }

private:
    void addCommand(const QString& text, WebCommand command) {
        QAction* action = menu_.addAction(text, page_, [page = page_, command] { page->perform(command); });
        action->setEnabled(page_->canPerform(command));
    }
    void addDownload(const QString& text, WebCommand command) {
        menu_.addAction(text, [download = actions_.download, command] { download(command); });
    }

    QMenu& menu_;
    BrowserView* page_;
    const PageMenuActions& actions_;
};

} // namespace

std::unique_ptr<QMenu> makePageMenu(const WebContext& context, BrowserView& page, const PageMenuActions& actions) {
    auto menu = std::make_unique<QMenu>();
    Maker maker(*menu, page, actions);
    if (!context.link.isEmpty())
        maker.addLinkActions(context.link);
    if (!context.image.isEmpty())
        maker.addImageActions(context.image);
    if (context.isEditable)
        maker.addEditActions();
    else if (!context.selectedText.isEmpty())
        maker.addSelectionActions();
    else if (context.link.isEmpty() && context.image.isEmpty())
        maker.addPageActions();
    // No separator at the end.
    if (const QList<QAction*> all = menu->actions(); all.last()->isSeparator())
        menu->removeAction(all.last());
    return menu;
}

} // namespace quenby
