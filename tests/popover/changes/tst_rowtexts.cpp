// What a row says, for the eye and the ear, and where it leads.
#include "popover/changes/RowTexts.h"

#include <QTest>

using namespace quenby;

class TestRowTexts final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void texts_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QByteArray>("status"); // a letter, or nothing
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("spoken");
        QTest::addColumn<bool>("isOpenable");
        const auto row = [](const QString& title, const char* status, int count, const char* shown, const char* spoken,
                            bool isOpenable) {
            QTest::addRow("%s %.30s", status, shown) << title << QByteArray(status) << count << QString::fromUtf8(shown)
                                                     << QString::fromUtf8(spoken) << isOpenable;
        };
        const QString plan = QStringLiteral("Plan.pdf");
        row(plan, "A", 0, "Plan.pdf Added.", "Plan.pdf added, now", true);
        row(plan, "U", 0, "Plan.pdf Updated.", "Plan.pdf updated, now", true);
        row(plan, "R", 0, "Plan.pdf Restored.", "Plan.pdf restored, now", true);
        row(plan, "", 0, "Plan.pdf", "Plan.pdf, now", true);
        row(plan, "T", 0, "Plan.pdf Trashed.", "Plan.pdf trashed, now", false);
        row(plan, "D", 0, "Plan.pdf Deleted.", "Plan.pdf deleted, now", false);
        row({}, "D", 1, "1 file Deleted.", "1 file deleted, now", false);
        row({}, "D", 3, "3 files Deleted.", "3 files deleted, now", false);
        row({}, "D", 0, "0 files Deleted.", "0 files deleted, now", false);
        row(QStringLiteral(" a\n\n<b>b</b>\t&amp;\u0007c\u2028d "), "A", 0, "a <b>b</b> &amp; c d Added.",
            "a <b>b</b> &amp; c d added, now", true);
        row(QStringLiteral("\u202Efdp.\u2066exe\u2069"), "", 0, "fdp.exe", "fdp.exe, now", true);
    }
    void texts() {
        QFETCH(QString, title);
        QFETCH(QByteArray, status);
        QFETCH(int, count);
        QFETCH(bool, isOpenable);
        ChangeRecord record;
        record.title = title;
        record.share = QStringLiteral("http://127.0.0.1/share?id=f1"); // also where there should be none
        record.count = count;
        if (!status.isEmpty())
            record.status = static_cast<ChangeRecord::Status>(status.at(0));
        const RowTexts texts = rowTexts(record);
        QTEST(texts.title(), "shown");
        QTEST(texts.spoken(QStringLiteral("now")), "spoken");
        QCOMPARE(texts.isOpenable(), isOpenable);
    }

    void pages() {
        const auto address = [](const QString& share, const QString& webURL) {
            return rowPage({QStringLiteral("a.txt"), QStringLiteral("Added."), share}, QUrl(webURL))
                .url.toString(QUrl::FullyEncoded);
        };
        const QString web = QStringLiteral("https://drive.example/");
        QCOMPARE(address(QStringLiteral("https://x/share?token=t&id=f_1-A"), web),
                 QStringLiteral("https://drive.example/file/d/f_1-A/view"));
        QCOMPARE(address(QStringLiteral("https://x/?id=a/../b?c#d%2Fid=e"), web),
                 QStringLiteral("https://drive.example/file/d/a%2F..%2Fb%3Fc%23d%252Fid%3De/view"));
        ChangeRecord shared; // by its link
        shared.resourceKey = QStringLiteral("0-k&y");
        shared.share = QStringLiteral("https://x/share?id=f&resourcekey=0-k%26y");
        QCOMPARE(rowPage(rowTexts(shared), QUrl(web)).url.toString(QUrl::FullyEncoded),
                 QStringLiteral("https://drive.example/file/d/f/view?resourcekey=0-k%26y"));
        QCOMPARE(address(QStringLiteral("abcdef"), web.chopped(1)),
                 QStringLiteral("https://drive.example/file/d/def/view"));
    }
};

QTEST_GUILESS_MAIN(TestRowTexts)
#include "tst_rowtexts.moc"
