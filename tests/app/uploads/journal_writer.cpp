// Writes uploads down until it is killed, from the round that its second argument names. A line of its output tells
// what is on the disk.

#include "app/uploads/journal/UploadJournal.h"
#include "tests/app/uploads/JournalSamples.h"

#include <QCoreApplication>

#include <functional>

#include <unistd.h>

using namespace quenby;
using namespace quenby::testing;

namespace {

void tell(char what, qint64 round) {
    const QByteArray line = what + (' ' + QByteArray::number(round)) + '\n';
    if (::write(STDOUT_FILENO, line.constData(), size_t(line.size())) < 0)
        ::_exit(1);
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication application(argc, argv);
    UploadJournal journal(argv[1]);
    qint64 next = QByteArray(argv[2]).toLongLong();
    const std::function<void()> go = [&] {
        const qint64 round = next++;
        const qint64 first = round * samplesInACall;
        QList<JournalEntry> entries;
        for (qint64 number = first; number < first + samplesInACall; ++number)
            entries.append(sampleEntry(number));
        journal.write(entries, &application, [&, round, first](const MaybeError& error) {
            if (error)
                ::_exit(2);
            tell('w', round);
            journal.remove({first + 1}, &application, [round](const MaybeError& failure) {
                if (!failure)
                    tell('r', round);
            });
            go();
        });
    };
    journal.load(&application, [&](const auto& entries) {
        if (!entries)
            ::_exit(3);
        for (int strand = 0; strand < 4; ++strand)
            go();
    });
    return QCoreApplication::exec();
}
