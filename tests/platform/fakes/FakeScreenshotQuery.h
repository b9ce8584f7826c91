// Screenshots that a test makes up.
#pragma once

#include "platform/ScreenshotQuery.h"

#include <utility>

namespace quenby::testing {

class FakeScreenshotQuery final : public ScreenshotQuery {
public:
    static constexpr ScreenshotFacts freshFacts =
        ScreenshotFact::isScreenCapture | ScreenshotFact::captureType | ScreenshotFact::capturedRectangle;

    bool isStarted = false;
    QString trouble; // why there is none
    QList<QByteArray> known;
    QList<QByteArray> added;

    // For tests: these are the results now, oldest first.
    void setResults(QList<ScreenshotItem> results) {
        results_ = std::move(results);
        Q_EMIT updated();
    }

    void start() override { isStarted = true; }
    QList<QByteArray> knownFolders() const override { return known; }
    void setAddedFolders(const QList<QByteArray>& folders) override { added = folders; }
    QList<ScreenshotItem> results() const override { return results_; }
    QString unavailableBecause() const override { return trouble; }

private:
    QList<ScreenshotItem> results_;
};

} // namespace quenby::testing
