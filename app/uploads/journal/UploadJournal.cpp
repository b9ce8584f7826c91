#include "app/uploads/journal/UploadJournal.h"

#include "app/uploads/journal/JournalTrouble.h"
#include "app/uploads/journal/JournalWriter.h"
#include "core/Mailbox.h"

namespace quenby {

UploadJournal::UploadJournal(const QByteArray& path)
    : path_(path)
    , writer_(std::make_unique<Writer>(path, [this, box = Mailbox::forContext(this)](const Error& error) {
        box->post([this, error] { Q_EMIT troubled(error); });
    })) {}

UploadJournal::~UploadJournal() = default;

void UploadJournal::load(QObject* context, Loaded loaded) {
    Writer::Order order;
    order.loaded = Writer::LoadedGate(context, std::move(loaded));
    writer_->order(std::move(order));
}

void UploadJournal::write(const QList<JournalEntry>& entries, QObject* context, Written written) {
    writer_->order({.written = entries, .done = Writer::WrittenGate(context, std::move(written))});
}

void UploadJournal::write(const QList<JournalEntry>& entries) { writer_->order({.written = entries}); }

void UploadJournal::remove(const QList<qint64>& numbers, QObject* context, Written written) {
    writer_->order({.removed = numbers, .done = Writer::WrittenGate(context, std::move(written))});
}

void UploadJournal::remove(const QList<qint64>& numbers) { writer_->order({.removed = numbers}); }

void UploadJournal::tellUnreadable() { Q_EMIT troubled(unreadableUploads(path_)); }

void UploadJournal::flush() {
    writer_->order({}); // once more for what could not be written
    writer_->wait();
}

} // namespace quenby
