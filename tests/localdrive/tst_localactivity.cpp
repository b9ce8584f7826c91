// The invented people of the local Drive: their story, what it leaves alone, and what the running program makes of it.
#include "localdrive/server/activity/Activity.h"
#include "tests/localdrive/LocalClient.h"
#include "tests/localdrive/LocalDrive.h"

#include <QSet>

using namespace quenby;
using namespace quenby::localdrive;
using namespace quenby::testing;

namespace {

QJsonArray items(const QJsonObject& list) { return list[QLatin1String("items")].toArray(); }

QStringList story(LocalDrive& drive, quint32 seed, int length) {
    const ServerClock clock;
    Activity activity(drive.store(), clock, testBase, seed);
    if (const auto prepared = activity.prepare(); !prepared)
        qFatal("%s", qPrintable(prepared.error().description()));
    QStringList lines;
    for (int i = 0; i < length; ++i)
        lines.append(activity.step());
    return lines;
}

qsizetype linesWith(const QStringList& lines, const char* verb) {
    return lines.filter(QLatin1Char(' ') + QLatin1String(verb) + QLatin1Char(' ')).size();
}

} // namespace

class TestLocalActivity final : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void theSameSeedTellsTheSameStory() {
        LocalDrive one;
        LocalDrive same;
        LocalDrive other;
        const QStringList told = story(one, 7, 120);
        QCOMPARE(story(same, 7, 120), told);
        QVERIFY(story(other, 8, 120) != told);
        for (const char* verb : {"added", "edited", "trashed", "restored", "deleted"})
            QVERIFY2(linesWith(told, verb) > 0, verb);
        QVERIFY(!told.contains(QString()));
        // A restart goes on with the files that are there instead of making a start once more.
        const qsizetype files = items(one.result(QStringLiteral("files.list"))).size();
        one.reopen();
        story(one, 9, 0);
        QCOMPARE(items(one.result(QStringLiteral("files.list"))).size(), files);
        const QStringList sequel = story(one, 9, 60);
        QVERIFY(linesWith(sequel, "edited") > 0 && !sequel.contains(QString()));
    }

    void theOwnerSeesEveryEventAsAChange() {
        LocalDrive drive;
        const ServerClock clock;
        Activity activity(drive.store(), clock, testBase, 3);
        QVERIFY(activity.prepare());
        const auto changesSince = [&drive](qint64 id) {
            return items(
                drive.result(QStringLiteral("changes.list"), {{QStringLiteral("startChangeId"), QString::number(id)},
                                                              {QStringLiteral("maxResults"), 1000}}));
        };
        qint64 last = changesSince(0).last()[QLatin1String("id")].toString().toLongLong();
        QSet<QString> known = [&] {
            const QStringList ids = column(drive.result(QStringLiteral("files.list")));
            return QSet<QString>(ids.begin(), ids.end());
        }();
        for (int i = 0; i < 80; ++i) {
            const QString event = activity.step();
            const QJsonArray changes = changesSince(last + 1);
            QCOMPARE(changes.size(), 1);
            const QJsonObject change = changes.first().toObject();
            last = change[QLatin1String("id")].toString().toLongLong();
            const QString id = change[QLatin1String("fileId")].toString();
            QCOMPARE(change[QLatin1String("deleted")].toBool(), event.contains(QLatin1String(" deleted ")));
            QCOMPARE(!known.contains(id), event.contains(QLatin1String(" added ")));
            known.insert(id);
            const QJsonObject file = change[QLatin1String("file")].toObject();
            QCOMPARE(file[QLatin1String("labels")][QLatin1String("trashed")].toBool(),
                     event.contains(QLatin1String(" trashed ")));
            if (!file.isEmpty())
                QVERIFY(event.endsWith(file[QLatin1String("title")].toString()));
        }
    }

    void othersFilesAreLeftAlone() {
        LocalDrive drive;
        const QString mine = drive.upload(QStringLiteral("mine"), "content");
        const QJsonObject guest{{QStringLiteral("role"), QStringLiteral("writer")},
                                {QStringLiteral("type"), QStringLiteral("user")},
                                {QStringLiteral("value"), QStringLiteral("mina.okafor@example.com")}};
        drive.result(QStringLiteral("permissions.insert"), {{fileId, mine}, {body, guest}});
        const QJsonObject before = drive.file(mine);
        story(drive, 1, 60);
        QCOMPARE(drive.file(mine), before);
        // Nor does a full Drive stop anything but what needs room.
        LocalDrive full(3'000);
        const QStringList told = story(full, 1, 60);
        QVERIFY(told.contains(QString()) && linesWith(told, "trashed") > 0);
    }

    void theProgramServesPicturesAndIcons() {
        LocalDriveProcess drive({QStringLiteral("--activity"), QStringLiteral("6000"),
                                 QStringLiteral("--activity-seed"), QStringLiteral("5")});
        QVERIFY2(drive.start(), drive.log());
        const LocalClient client(drive);
        const auto list = [&client] {
            return jsonOf(client.call(QStringLiteral("drive.files.list")).body)[QLatin1String("result")].toObject();
        };
        const QJsonArray files = items(list());
        QVERIFY(files.size() >= 10);
        const auto fetched = [&](const QJsonValue& link) {
            const QByteArray target = QUrl(link.toString()).toEncoded(QUrl::RemoveScheme | QUrl::RemoveAuthority);
            return RawHttp::exchange(drive.url(), RawHttp::request("GET", target, {client.authorization()}));
        };
        int pictures = 0;
        for (const QJsonValue file : files) {
            QVERIFY(fetched(file[QLatin1String("iconLink")]).body.startsWith("\x89PNG"));
            const QJsonValue thumbnail = file[QLatin1String("thumbnailLink")];
            const bool isPicture = file[QLatin1String("mimeType")] == QLatin1String("image/png");
            QCOMPARE(thumbnail.isString(), isPicture);
            // The picture may be deleted by the time.
            pictures += isPicture && fetched(thumbnail).body.startsWith("\x89PNG") ? 1 : 0;
        }
        QVERIFY(pictures > 0);
        QTRY_VERIFY(drive.log().contains(" added "));
        QCOMPARE(drive.terminate(), 0);
    }
};

QTEST_GUILESS_MAIN(TestLocalActivity)
#include "tst_localactivity.moc"
