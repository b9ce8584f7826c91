// Where the status item stands: trays that are there, come late, go and come back, a bus that does not answer, and
// users who choose another place.
#include "platform/linux/desktop/AutomaticStatusItemHosts.h"
#include "tests/platform/fakes/FakeStatusItemHost.h"
#include "tests/support/ManualTimeSource.h"

#include <QSignalSpy>
#include <QTest>

using namespace quenby;
using namespace quenby::testing;
using namespace std::chrono_literals;
using Place = StatusItemPlace;
using State = TrayWatch::State;

namespace {

class PlayedWatch final : public TrayWatch {
public:
    explicit PlayedWatch(TrayKind kind)
        : kind_(kind) {}
    TrayKind kind() const override { return kind_; }
    using TrayWatch::setState;

private:
    TrayKind kind_;
};

} // namespace

class tst_AutomaticStatusItemHosts : public QObject {
    Q_OBJECT

    // What a test plays, and what came of it.
    struct Stage {
        explicit Stage(const StatusItemHostsOptions& options = {})
            : hosts(
                  options, time,
                  [this] {
                      ++timesLooked;
                      AutomaticStatusItemHosts::TrayWatches watches;
                      for (const TrayKind kind : {TrayKind::statusNotifier, TrayKind::xEmbed}) {
                          auto watch = std::make_unique<PlayedWatch>(kind);
                          (kind == TrayKind::xEmbed ? xEmbed : notifier) = watch.get();
                          watches.push_back(std::move(watch));
                      }
                      return watches;
                  },
                  [](std::optional<TrayKind> tray) {
                      return std::make_unique<FakeStatusItemHost>(tray ? Place::tray : Place::strip);
                  })
            , changes(&hosts, &StatusItemHosts::hostChanged) {
            hosts.start();
        }

        void tell(State ofNotifier, State ofXEmbed) {
            notifier->setState(ofNotifier);
            xEmbed->setState(ofXEmbed);
            QCoreApplication::processEvents();
        }
        void choose(std::optional<Place> place) {
            hosts.choose(place);
            QCoreApplication::processEvents();
        }
        void pass(std::chrono::milliseconds by) {
            time->advance(by);
            QCoreApplication::processEvents();
        }
        // The hosts that were chosen so far, and the present one: "2 strip".
        QByteArray now() const {
            const char* place = !hosts.host() ? " none" : hosts.host()->place() == Place::tray ? " tray" : " strip";
            return QByteArray::number(changes.count()) + place;
        }

        std::shared_ptr<ManualTimeSource> time = std::make_shared<ManualTimeSource>();
        PlayedWatch* notifier = nullptr;
        PlayedWatch* xEmbed = nullptr;
        int timesLooked = 0; // for trays
        AutomaticStatusItemHosts hosts;
        QSignalSpy changes;
    };

private Q_SLOTS:
    void aTrayThatIsThereIsUsedAtOnce() {
        Stage stage;
        QCOMPARE(stage.now(), "0 none");
        // The other kind might be there as well, and would be what the toolkit takes.
        stage.tell(State::unknown, State::there);
        QCOMPARE(stage.now(), "0 none");
        stage.tell(State::absent, State::there);
        QCOMPARE(stage.now(), "1 tray");
        stage.pass(1h);
        QCOMPARE(stage.now(), "1 tray");
    }

    void aTrayThatIsLateFindsTheStrip() {
        Stage stage;
        stage.tell(State::absent, State::absent);
        stage.pass(1499ms);
        QCOMPARE(stage.now(), "0 none");
        stage.pass(1ms);
        QCOMPARE(stage.now(), "1 strip");
        stage.tell(State::there, State::absent);
        QCOMPARE(stage.now(), "2 tray");
    }

    void aBusThatDoesNotAnswerDelaysTheStripOnlyShortly() {
        Stage stage({.place = {}, .patience = 0ms});
        stage.tell(State::unknown, State::absent);
        stage.pass(1499ms);
        QCOMPARE(stage.now(), "0 none");
        stage.pass(1ms);
        QCOMPARE(stage.now(), "1 strip");
    }

    void whoDoesNotWaitForATrayGetsTheStripOnceItIsKnownThatThereIsNone() {
        Stage stage({.place = {}, .patience = 0ms});
        stage.tell(State::unknown, State::absent);
        stage.tell(State::absent, State::absent);
        stage.pass(0ms);
        QCOMPARE(stage.now(), "1 strip");
    }

    void aPanelThatStartsAnewGetsANewHostAndNoStrip() {
        Stage stage;
        stage.tell(State::there, State::absent);
        QCOMPARE(stage.now(), "1 tray");
        stage.tell(State::absent, State::absent);
        stage.pass(1s);
        QCOMPARE(stage.now(), "1 tray");
        stage.tell(State::there, State::absent);
        QCOMPARE(stage.now(), "2 tray");
        stage.tell(State::absent, State::absent);
        stage.pass(1500ms);
        QCOMPARE(stage.now(), "3 strip");
    }

    void aTrayOfTheOtherKindIsOfNoUseOnceTheKindIsDecided() {
        Stage stage;
        stage.tell(State::there, State::there);
        stage.tell(State::absent, State::there);
        stage.pass(1500ms);
        QCOMPARE(stage.now(), "2 strip");
        stage.tell(State::there, State::there);
        QCOMPARE(stage.now(), "3 tray");
    }

    void aPlaceThatWasAskedForIsKept() {
        Stage strip({.place = Place::strip});
        QCoreApplication::processEvents();
        QVERIFY(!strip.notifier); // not even looked for
        QCOMPARE(strip.now(), "1 strip");

        Stage tray({.place = Place::tray});
        tray.tell(State::absent, State::absent);
        tray.pass(1h);
        QCOMPARE(tray.now(), "0 none");
        tray.tell(State::absent, State::there);
        QCOMPARE(tray.now(), "1 tray");
        tray.tell(State::absent, State::absent);
        tray.pass(1h);
        QCOMPARE(tray.now(), "1 tray");
    }

    void itMovesToThePlaceThatIsChosen() {
        Stage stage;
        stage.tell(State::there, State::absent);
        stage.hosts.choose(Place::strip);
        QCOMPARE(stage.now(), "1 tray"); // never from inside of the call
        QCoreApplication::processEvents();
        QCOMPARE(stage.now(), "2 strip");
        QCOMPARE(stage.timesLooked, 1);

        // Back again, once it is known that there is a tray; and nothing moves that stands where it should.
        stage.choose(Place::tray);
        QCOMPARE(stage.now(), "2 strip");
        QCOMPARE(stage.timesLooked, 2);
        stage.tell(State::there, State::absent);
        QCOMPARE(stage.now(), "3 tray");
        stage.choose({});
        stage.choose(Place::tray);
        stage.hosts.choose(Place::strip);
        stage.choose({});
        QCOMPARE(stage.now(), "3 tray");
        QCOMPARE(stage.timesLooked, 2);
    }

    void whoChoosesATrayThatIsNotThereKeepsTheStrip() {
        Stage stage({.place = Place::strip});
        QCoreApplication::processEvents();
        stage.choose(Place::tray);
        stage.tell(State::absent, State::absent);
        stage.pass(1h);
        QCOMPARE(stage.now(), "1 strip");
        stage.tell(State::absent, State::there);
        QCOMPARE(stage.now(), "2 tray");

        // A panel that starts anew is given longer than where the strip is as good.
        stage.tell(State::absent, State::absent);
        stage.pass(4999ms);
        QCOMPARE(stage.now(), "2 tray");
        stage.pass(1ms);
        QCOMPARE(stage.now(), "3 strip");

        // Not on the command line's word, but on the user's.
        Stage waiting({.place = Place::tray});
        waiting.tell(State::absent, State::absent);
        waiting.pass(1h);
        QCOMPARE(waiting.now(), "0 none");
        waiting.choose(Place::tray);
        waiting.pass(5s);
        QCOMPARE(waiting.now(), "1 strip");
    }

    void aBusThatDoesNotAnswerKeepsNobodyFromTheOtherTray() {
        Stage stage({.place = Place::strip});
        QCoreApplication::processEvents();
        stage.choose({});
        stage.tell(State::unknown, State::there);
        QCOMPARE(stage.now(), "1 strip");
        stage.pass(1500ms);
        QCOMPARE(stage.now(), "2 tray");
    }

    void anotherItemFollows() {
        Stage stage;
        stage.tell(State::there, State::there);
        Stage before;
        before.hosts.follow(stage.hosts);
        before.tell(State::there, State::there);
        QCOMPARE(before.now(), "1 tray");
        stage.choose(Place::strip);
        QCOMPARE(before.now(), "2 strip");
        Stage afterwards;
        afterwards.hosts.follow(stage.hosts);
        QCoreApplication::processEvents();
        QCOMPARE(afterwards.now(), "1 strip");
    }
};

QTEST_GUILESS_MAIN(tst_AutomaticStatusItemHosts)
#include "tst_AutomaticStatusItemHosts.moc"
