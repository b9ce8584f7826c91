// The program's voice: results on standard output, errors, remarks and progress on standard error. Whatever is written
// is one line, printable and free of secrets.
//
// Threads: the main thread alone.
#pragma once

#include "core/Error.h"

#include <QJsonObject>
#include <QString>

namespace quenby {

class Console {
public:
    struct Settings {
        bool json = false;  // results and errors as one JSON object a line on standard output
        bool quiet = false; // no remarks and no progress
        int output = 1;     // file descriptors
        int errors = 2;
    };

    explicit Console(const Settings& settings);
    ~Console(); // clears the status line
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    void result(const QString& text, const QJsonObject& object);
    // An error that may belong to one file. Errors go to standard error also when results are JSON.
    void error(const Error& error, const QByteArray& path = {});
    void remark(const QString& text);
    // Several lines as they stand, such as the text of --help.
    void page(const QString& text, bool isError);

    // The line that stands below all others on a terminal until it is replaced or cleared; elsewhere nothing.
    void setStatus(const QString& text);
    void clearStatus() { setStatus({}); }

    bool showsProgress() const { return !settings_.quiet; }
    // Whether there is a status line, and how many columns it may take.
    bool hasStatusLine() const { return hasStatusLine_; }
    int statusColumns() const;

    // Whether standard output can no longer be written: nobody reads it, or its disk is full.
    bool isOutputLost() const { return isOutputLost_; }

private:
    void writeLine(int descriptor, const QString& text);

    Settings settings_;
    bool hasStatusLine_;
    bool isOutputLost_ = false;
    QString status_;
};

} // namespace quenby
