// The files of one run's fetch log. The run's folder, its page and the link to the newest page are made with the first
// write. Threads: one at a time.
#pragma once

#include <QByteArray>
#include <QString>

namespace quenby {

class FetchLogFolder {
public:
    // The names decide where everything lies; nothing is touched yet.
    FetchLogFolder(QString loggingDirectory, QString processName, QString dateStamp);

    // Both report the first failure of the run to the process log; whether it worked.
    bool writeFile(const QString& name, const QByteArray& contents);
    bool appendToPage(const QByteArray& html);

    // Empty before the first write.
    QString pagePath() const;

private:
    bool prepare();
    bool makeRunFolder();
    void linkNewestPage();
    bool put(const QString& path, const QByteArray& contents, bool append);
    bool report(const QString& problem, const QString& path);

    QString loggingDirectory_;
    QString processName_;
    QString dateStamp_;
    QString runFolder_; // empty until it was made
    bool hasReportedError_ = false;
};

} // namespace quenby
