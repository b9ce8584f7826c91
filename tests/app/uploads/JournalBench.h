// A journal whose calls are waited for, in a folder of the test's own.
#pragma once

#include "app/uploads/journal/UploadJournal.h"
#include "tests/app/uploads/JournalSamples.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <optional>

namespace quenby::testing {

inline const QString journalFileName = QStringLiteral("uploads.sqlite");

class JournalBench {
public:
    explicit JournalBench(const QString& path)
        : journal(QFile::encodeName(path)) {
        QObject::connect(&journal, &UploadJournal::troubled, [this](const Error& error) { troubles.append(error); });
    }

    Result<QList<JournalEntry>> load() {
        std::optional<Result<QList<JournalEntry>>> answer;
        journal.load(&journal, [&](const auto& entries) { answer = entries; });
        return wait(answer) ? *answer : Error(errorDomain::posix, 0);
    }
    QList<JournalEntry> entries() { return load().valueOr({}); }
    MaybeError write(const QList<JournalEntry>& entries) {
        std::optional<MaybeError> answer;
        journal.write(entries, &journal, [&](const MaybeError& error) { answer = error; });
        return wait(answer) ? *answer : Error(errorDomain::posix, 0);
    }
    MaybeError remove(const QList<qint64>& numbers) {
        std::optional<MaybeError> answer;
        journal.remove(numbers, &journal, [&](const MaybeError& error) { answer = error; });
        return wait(answer) ? *answer : Error(errorDomain::posix, 0);
    }

    UploadJournal journal;
    QList<Error> troubles;

private:
    template <typename Answer>
    static bool wait(const Answer& answer) {
        return QTest::qWaitFor([&] { return answer.has_value(); }, 20000);
    }
};

inline QList<JournalEntry> samples(std::initializer_list<qint64> numbers) {
    QList<JournalEntry> entries;
    for (const qint64 number : numbers)
        entries.append(sampleEntry(number));
    return entries;
}

inline QByteArray contentsOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class JournalStage : public QObject {
    Q_OBJECT

protected Q_SLOTS:
    void init() {
        folder_ = std::make_unique<QTemporaryDir>();
        path_ = folder_->filePath(QStringLiteral("data/uploads/") + journalFileName); // neither folder is there
    }

protected:
    std::unique_ptr<QTemporaryDir> folder_;
    QString path_;
};

} // namespace quenby::testing
