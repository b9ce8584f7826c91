// The pane that says what this program is: icon, name, version, copyright, and where its makers are to be found.
//
// Threads: the main thread. What it is given outlives it.
#pragma once

#include <QIcon>
#include <QString>
#include <QWidget>

#include <memory>

namespace quenby {

class Opener;
struct AboutPaneUi;

struct ProgramFacts {
    QIcon icon;
    QString name;      // "Quenby"
    QString version;   // "0.1.0"
    QString build;     // what it was built from: a commit's first digits, or a number
    QString copyright; // "Copyright © ..."
};

class AboutPane : public QWidget {
    Q_OBJECT

public:
    AboutPane(const ProgramFacts& facts, Opener& opener, QWidget* parent = nullptr);
    ~AboutPane() override;

    // "Version %@ (%@)" with the version and the build.
    static QString versionText(const ProgramFacts& facts);
    // The report is on the clipboard, or why it is not.
    void diagnosticsCopied(const QString& trouble);

    void faqPressed();     // the makers' discussion forum
    void twitterPressed(); // their microblog
    void fanPagePressed(); // their page in a social network
    void vantrelPressed(); // their web site

Q_SIGNALS:
    void copyDiagnosticsRequested();

private:
    void open(const QUrl& page);

    Opener& opener_;
    const std::unique_ptr<AboutPaneUi> ui_;
};

} // namespace quenby
