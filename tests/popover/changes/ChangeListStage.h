// A change list on a screen that is not there, for tests that look at it, point at it or type into it: with pictures
// that the test has, in time that stands still, and without motion.
#pragma once

#include "popover/changes/RowPictures.h"
#include "popover/changes/ScrollView.h"
#include "popover/changes/TableRow.h"
#include "popover/changes/TableView.h"
#include "tests/support/ManualTimeSource.h"

#include <QProxyStyle>
#include <QTest>

namespace quenby::testing {

class FakeRowPictures final : public RowPictures {
public:
    QImage picture(const ChangeRecord& record) const override { return inMemory.value(record.identifier); }
    void want(const ChangeRecord& record) override { wanted.append(record.identifier); }

    QHash<QString, QImage> inMemory;
    QStringList wanted;
};

class StillStyle final : public QProxyStyle {
public:
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* returned) const override {
        return hint == SH_Widget_Animation_Duration ? 0 : QProxyStyle::styleHint(hint, option, widget, returned);
    }
};

// "File 3", with the identifier "f3".
inline ChangeRecord addedFile(int number) {
    ChangeRecord record;
    record.status = ChangeRecord::Status::added;
    record.title = QStringLiteral("File %1").arg(number);
    record.identifier = QStringLiteral("f%1").arg(number);
    record.share = QStringLiteral("http://127.0.0.1/share?token=t&id=") + record.identifier;
    record.modifiedDate = QDateTime(QDate(2026, 1, 1), QTime(11, 0), Qt::UTC);
    return record;
}

inline QList<ChangeRecord> addedFiles(int count) {
    QList<ChangeRecord> records;
    for (int number = 0; number < count; ++number)
        records.append(addedFile(number));
    return records;
}

// Five rows high.
struct ChangeListStage {
    StillStyle still;
    std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
    FakeRowPictures pictures;
    ScrollView view{pictures, Endpoints::localDrive(QUrl(QStringLiteral("http://127.0.0.1:4711"))), time};

    ChangeListStage() {
        view.setStyle(&still);
        view.tableView().setStyle(&still);
        view.resize(330, 5 * rowHeight);
    }
    void show(const QList<ChangeRecord>& records) {
        view.setRecords(records);
        view.show();
        view.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&view));
        QTest::qWait(0);
    }
    int numberOfRows() { return view.tableView().numberOfRows(); }
    TableRow& row(int index) { return view.tableView().row(index); }
    QColor colourAt(int index, const QPoint& place) { return row(index).grab().toImage().pixelColor(place); }
};

} // namespace quenby::testing
