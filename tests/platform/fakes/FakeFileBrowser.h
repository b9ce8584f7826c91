// A file manager that nobody sees.
#pragma once

#include "platform/FileBrowser.h"

#include <QList>

namespace quenby::testing {

class FakeFileBrowser final : public FileBrowser {
public:
    QList<QByteArray> revealed;
    bool isShown = true;

    void reveal(const QByteArray& path, QObject* context, Done done) override {
        revealed.append(path);
        CompletionGate<bool>(context, std::move(done)).deliver(isShown);
    }
};

} // namespace quenby::testing
