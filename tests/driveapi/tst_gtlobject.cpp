// The object model: which class a reply becomes, what parent and child share, what the accessors keep, and the texts
// and patches made from an object.
#include "driveapi/GTLCollectionObject.h"
#include "driveapi/GTLErrorObject.h"
#include "driveapi/GTLJSONParser.h"

#include <QTest>

#include <thread>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

class Part : public GTLObject {
    GTL_OBJECT(Part);

public:
    GTL_PROPERTY(QString, identifier, setIdentifier, "id");
    GTL_PROPERTY(qint64, size, setSize, "size");
};

class SpecialPart : public Part {
    GTL_OBJECT(SpecialPart);

public:
    GTL_PROPERTY(bool, special, setSpecial, "special");
};

class Whole : public GTLObject {
    GTL_OBJECT(Whole);

public:
    GTL_PROPERTY(QString, title, setTitle, "title");
    GTL_PROPERTY(quint64, weight, setWeight, "weight");
    GTL_PROPERTY(double, ratio, setRatio, "ratio");
    GTL_PROPERTY(GTLDateTime, made, setMade, "made");
    GTL_PROPERTY(Part, part, setPart, "part");
    GTL_PROPERTY(GTLObject, anything, setAnything, "anything");
    GTL_PROPERTY(GTLArray<Part>, parts, setParts, "parts");
    GTL_PROPERTY(GTLArray<QString>, names, setNames, "names");
    GTL_PROPERTY(GTLArray<qint64>, counts, setCounts, "counts");
};

class PartList : public GTLCollectionOf<Part> {
    GTL_OBJECT(PartList);

public:
    GTL_PROPERTY(GTLArray<Part>, items, setItems, "items");
};

const GTLClass& Part::classDescriptor() { return gtlDefineClass<Part, GTLObject>("Part"); }
const GTLClass& SpecialPart::classDescriptor() { return gtlDefineClass<SpecialPart, Part>("SpecialPart"); }
const GTLClass& Whole::classDescriptor() { return gtlDefineClass<Whole, GTLObject>("Whole", &Part::classDescriptor()); }
const GTLClass& PartList::classDescriptor() { return gtlDefineClass<PartList, GTLCollectionObject>("PartList"); }

// Single quotes stand for double ones: moc loses its way in a raw string with a "#" in it.
JSONValue json(const char* text) {
    return GTLJSONParser::objectWithData(QByteArray(text).replace('\'', '"')).valueOr(JSONValue());
}

template <typename T>
std::shared_ptr<T> object(const char* text, const GTLSurrogates& surrogates = {}) {
    return std::dynamic_pointer_cast<T>(GTLObject::objectForJSON(json(text), &T::classDescriptor(), surrogates));
}

QByteArray compact(const GTLObject& made) { return GTLJSONParser::dataWithObject(made.JSON()); }

} // namespace

class TestGTLObject : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { GTLObject::registerObjectClassForKind(Part::classDescriptor(), u"test#part"_s); }

    void classOfJSON_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<const GTLClass*>("defaultClass");
        QTest::addColumn<const GTLClass*>("made");
        const GTLClass* const none = nullptr;
        const GTLClass* const base = &GTLObject::classDescriptor();
        const GTLClass* const part = &Part::classDescriptor();
        const GTLClass* const whole = &Whole::classDescriptor();
        QTest::newRow("kind wins") << QByteArray("{'kind':'test#part'}") << whole << part;
        QTest::newRow("kind without default") << QByteArray("{'kind':'test#part'}") << none << part;
        QTest::newRow("unknown kind") << QByteArray("{'kind':'test#other'}") << whole << whole;
        QTest::newRow("empty kind") << QByteArray(R"({"kind":""})") << whole << whole;
        QTest::newRow("kind is no text") << QByteArray("{'kind':['test#part']}") << whole << whole;
        QTest::newRow("neither") << QByteArray(R"({"a":1})") << none << base;
        QTest::newRow("empty") << QByteArray("{}") << whole << whole;
        QTest::newRow("empty without default") << QByteArray("{}") << none << none;
        QTest::newRow("null") << QByteArray("null") << whole << whole;
        QTest::newRow("null without default") << QByteArray("null") << none << none;
        QTest::newRow("no JSON") << QByteArray("") << whole << none;
        QTest::newRow("a text") << QByteArray("\"done\"") << whole << whole;
        QTest::newRow("bare array") << QByteArray("[1]") << &GTLResultArray::classDescriptor()
                                    << &GTLResultArray::classDescriptor();
    }
    void classOfJSON() {
        QFETCH(QByteArray, text);
        QFETCH(const GTLClass*, defaultClass);
        const auto result = GTLObject::objectForJSON(json(text.constData()), defaultClass);
        QTEST(result ? &result->objectClass() : nullptr, "made");
    }

    void surrogatesReachGrandchildren() {
        const auto surrogates = std::make_shared<GTLSurrogateMap>(
            GTLSurrogateMap{{&Part::classDescriptor(), &SpecialPart::classDescriptor()}});
        const auto whole =
            object<Whole>("{'part':{'id':'a'},'parts':[{'id':'b'}],'extra':{'kind':'test#part'}}", surrogates);
        QVERIFY(std::dynamic_pointer_cast<SpecialPart>(whole->part()));
        QVERIFY(std::dynamic_pointer_cast<SpecialPart>(whole->parts()->at(0)));
        const auto extra = std::get<GTLObjectPtr>(whole->additionalPropertyForName(u"extra"_s));
        QVERIFY(std::dynamic_pointer_cast<SpecialPart>(extra));
        QCOMPARE(std::static_pointer_cast<Whole>(whole->copy())->surrogates(), GTLSurrogates(surrogates));
    }

    void aKindRegisteredAgainReplaces() {
        const QString kind = u"test#replaced"_s;
        QVERIFY(!GTLObject::registeredObjectClassForKind(kind));
        GTLObject::registerObjectClassForKind(Whole::classDescriptor(), kind);
        GTLObject::registerObjectClassForKind(Part::classDescriptor(), kind);
        QCOMPARE(GTLObject::registeredObjectClassForKind(kind), &Part::classDescriptor());
    }

    void parentAndChildShareOneDictionary() {
        for (const char* text : {R"({"part":{"id":"a"},"parts":[{"id":"b"}]})", R"({"part":{},"parts":[{}]})"}) {
            const auto whole = object<Whole>(text);
            whole->part()->setSize(5);
            whole->parts()->at(0)->setSize(6);
            const JSONDictionaryPtr tree = json(GTLJSONParser::dataWithObject(whole->JSON())).dictionary();
            QCOMPARE(tree->value("part").dictionary()->value("size").toInt64(), 5);
            QCOMPARE(tree->value("parts").array()->at(0).dictionary()->value("size").toInt64(), 6);
        }
        const auto whole = Whole::object();
        const auto part = std::make_shared<Part>(); // has no JSON yet
        whole->setPart(part);
        part->setIdentifier(u"late"_s);
        QCOMPARE(compact(*whole), R"({"part":{"id":"late"}})");
        QCOMPARE(whole->part(), part);
    }

    void repeatedReadsGiveTheSameInstance() {
        const auto whole = object<Whole>(R"({"part":{"id":"a"},"parts":[{"id":"b"},[],3],"names":["x"]})");
        QVERIFY(whole->part() && whole->part() == whole->part());
        QVERIFY(whole->parts() && whole->parts() == whole->parts());
        QVERIFY(whole->parts()->at(0) == whole->parts()->at(0));
        QVERIFY(whole->names() && whole->names() == whole->names());

        const auto replacement = GTLArray<Part>::make({Part::object(), Part::object()});
        whole->setParts(replacement);
        QCOMPARE(whole->parts(), replacement);
        // Raw changes are seen as well.
        const auto before = whole->parts()->at(1);
        whole->parts()->JSON()->removeAt(0);
        QVERIFY(whole->parts()->count() == 1 && whole->parts()->at(0)->JSON() == before->JSON());
        whole->setJSONValue(json("{\"id\":\"raw\"}"), "part");
        QCOMPARE(whole->part()->identifier(), u"raw"_s);
        whole->setPart(nullptr);
        QVERIFY(!whole->part() && !whole->JSON()->contains("part"));
    }

    void iterationPassesOverStrangers() {
        const auto whole = object<Whole>("{'parts':[{'id':'a'},7,null,{'kind':'drive#file'},[{}],{'id':'b'}]}");
        QStringList identifiers;
        for (const auto& part : *whole->parts())
            identifiers.append(part->identifier());
        QCOMPARE(identifiers, (QStringList{u"a"_s, u"b"_s}));
        QVERIFY(!whole->parts()->at(1) && !whole->parts()->at(3) && !whole->parts()->at(99));
        QVERIFY(whole->parts()->objectAtIndex(3)); // of its own class
        QCOMPARE(whole->parts()->arrayAtIndex(4)->objectAtIndex(0)->objectClass().name(), "Part");
    }

    void valuesInAndOut() {
        const auto whole = Whole::object();
        whole->setTitle(u"t"_s);
        whole->setWeight(18446744073709551615ULL);
        whole->setRatio(0.1);
        whole->setMade(GTLDateTime::dateTimeWithRFC3339String(u"2014-07-01T10:20:30.5Z"_s));
        whole->setNames(GTLArray<QString>::make({u"x"_s, u"y"_s}));
        whole->setCounts(GTLArray<qint64>::make({1, -2}));
        const QByteArray text = R"({"title":"t","weight":18446744073709551615,"ratio":0.1,)"
                                R"("made":"2014-07-01T10:20:30.500Z","names":["x","y"],"counts":[1,-2]})";
        QCOMPARE(compact(*whole), text);

        const auto read = object<Whole>(text.constData());
        QVERIFY(read->isEqual(*whole));
        QCOMPARE(read->weight(), 18446744073709551615ULL);
        QCOMPARE(read->ratio(), 0.1);
        QVERIFY(read->made() == whole->made());
        QCOMPARE(read->names()->at(1), u"y"_s);
        QCOMPARE(std::vector<qint64>(read->counts()->begin(), read->counts()->end()), (std::vector<qint64>{1, -2}));

        whole->setTitle(QString());
        whole->setMade({});
        whole->setNames(nullptr);
        QCOMPARE(whole->JSON()->keys(), (QStringList{u"weight"_s, u"ratio"_s, u"counts"_s}));
    }

    void anythingGoesByItsKind() {
        const auto whole = object<Whole>("{'anything':{'kind':'test#part','id':'k'}}");
        QVERIFY(std::dynamic_pointer_cast<Part>(whole->anything()));
        QVERIFY(!object<Whole>("{'part':{'kind':'drive#file'}}")->part());
    }

    void additionalProperties() {
        const auto whole = object<Whole>(R"({"title":"t","link":"here","more":{"id":"m"},"list":[{"id":"n"}]})");
        QCOMPARE(whole->additionalJSONKeys(), (QStringList{u"link"_s, u"more"_s, u"list"_s}));
        const auto all = whole->additionalProperties();
        QCOMPARE(std::get<JSONValue>(all.at(u"link"_s)).toString(), u"here"_s);
        const auto more = std::get<GTLObjectPtr>(all.at(u"more"_s));
        QCOMPARE(&more->objectClass(), &Part::classDescriptor());
        const auto list = std::get<GTLArrayBasePtr>(all.at(u"list"_s));
        QCOMPARE(&list->objectAtIndex(0)->objectClass(), &Part::classDescriptor());

        whole->setAdditionalProperty(GTLObjectPtr(Part::object()), u"more"_s);
        whole->setAdditionalProperty(JSONValue(), u"link"_s);
        QCOMPARE(compact(*whole), R"({"title":"t","more":{},"list":[{"id":"n"}]})");
        // A class that declares none gives raw values.
        const auto part = object<Part>(R"({"more":{"a":1}})");
        QVERIFY(std::get<JSONValue>(part->additionalPropertyForName(u"more"_s)).isDictionary());
    }

    void classTables() {
        const GTLClass& special = SpecialPart::classDescriptor();
        QCOMPARE(special.propertyToJSONKeyMap(), (QHash<QString, QString>{{u"identifier"_s, u"id"_s}}));
        QVERIFY(special.propertyForJSONKey("special") && special.propertyForJSONKey("size"));
        QVERIFY(!Part::classDescriptor().propertyForJSONKey("special"));
        QVERIFY(special.isSubclassOf(GTLObject::classDescriptor()) && !Part::classDescriptor().isSubclassOf(special));
        const auto arrays = Whole::classDescriptor().arrayPropertyToClassMap();
        QCOMPARE(arrays.size(), 3);
        QCOMPARE(arrays.value(u"parts"_s), &Part::classDescriptor());
        QVERIFY(arrays.contains(u"names"_s) && !arrays.value(u"names"_s));
    }

    void fieldsDescription() {
        QCOMPARE(
            object<Whole>(R"({"a":1,"b":{"c":2},"d":{"e":{"f":1,"g":{}},"h":[{"i":1}]},"j":{}})")->fieldsDescription(),
            u"a,b/c,d(e(f,g),h),j"_s);
        QCOMPARE(Whole::object()->fieldsDescription(), QString());
    }

    void patch_data() {
        QTest::addColumn<QByteArray>("original");
        QTest::addColumn<QByteArray>("changed");
        QTest::addColumn<QByteArray>("patch");
        const auto row = [](const char* name, const char* original, const char* changed, const char* patch) {
            QTest::newRow(name) << QByteArray(original) << QByteArray(changed) << QByteArray(patch);
        };
        row("nothing", R"({"a":1,"b":{"c":[1]}})", R"({"b":{"c":[1]},"a":1})", "{}");
        row("changed, new and removed", R"({"a":1,"b":2})", R"({"a":3,"c":4})", R"({"a":3,"c":4,"b":null})");
        row("inside", R"({"a":{"b":1,"c":2,"d":{"e":1}}})", R"({"a":{"b":1,"c":3,"d":{}}})",
            R"({"a":{"c":3,"d":{"e":null}}})");
        row("arrays as a whole", R"({"a":[1,2]})", R"({"a":[1]})", R"({"a":[1]})");
        row("another type", R"({"a":{"b":1}})", R"({"a":"b"})", R"({"a":"b"})");
        row("null already", R"({"a":null})", R"({"a":null})", "{}");
    }
    void patch() {
        QFETCH(QByteArray, original);
        QFETCH(QByteArray, changed);
        const auto now = object<Whole>(changed.constData());
        const auto patch = now->patchObjectFromOriginal(*object<Whole>(original.constData()));
        QTEST(compact(*patch), "patch");
        QCOMPARE(&patch->objectClass(), &Whole::classDescriptor());
        QCOMPARE(compact(*now), changed);
    }

    void copyAndEquality() {
        const auto whole = object<Whole>(R"({"part":{"id":"a"}})");
        whole->setUserData(5);
        const auto copy = gtlCopy(whole);
        QVERIFY(copy->isEqual(*whole));
        QVERIFY(!copy->userData().isValid());
        copy->part()->setIdentifier(u"b"_s);
        QCOMPARE(whole->part()->identifier(), u"a"_s);
        QVERIFY(!copy->isEqual(*whole));
        QVERIFY(!object<Part>("{\"id\":\"1\"}")->isEqual(*object<SpecialPart>("{\"id\":\"1\"}")));
        QCOMPARE(Part::hash(), Whole::hash());
    }

    void userProperties() {
        const auto whole = Whole::object();
        whole->setProperty(u"v"_s, u"k"_s);
        whole->setUserData(7);
        QCOMPARE(whole->propertyForKey(u"k"_s).toString(), u"v"_s);
        QCOMPARE(whole->userData().toInt(), 7);
        QCOMPARE(whole->userProperties().size(), 2);
        whole->setProperty({}, u"k"_s);
        QVERIFY(!whole->propertyForKey(u"k"_s).isValid());
        QCOMPARE(compact(*whole), "{}");
    }

    void description() {
        const auto whole = object<Whole>(R"({"title":"t","x":{"a":1,"b":2},"names":["m","n"],"weight":3,"y":null})");
        const QString text = whole->description();
        const auto address = QString::number(reinterpret_cast<quintptr>(whole.get()), 16);
        QCOMPARE(text, u"Whole 0x%1: {title:\"t\" x?:{a,b} names:[2] weight:3 y?:null}"_s.arg(address));
        QCOMPARE(object<Whole>("{\"title\":\"t\"}")->JSONString(), u"{\n  \"title\": \"t\"\n}"_s);
    }

    void collections() {
        const auto list = object<PartList>(R"({"items":[{"id":"a"},{"size":1},{"id":7},{"id":"a","size":2},null]})");
        QCOMPARE(list->count(), 5);
        QVERIFY(list->itemAtIndex(0) == list->items()->at(0));
        QVERIFY(!(*list)[4] && !list->itemAtIndex(5) && !list->itemAtIndex(-1));
        QVERIFY(list->itemForIdentifier(u"a"_s) == list->itemAtIndex(3)); // the last one counts
        QVERIFY(list->itemForIdentifier(u"7"_s) == list->itemAtIndex(2));
        QVERIFY(!list->itemForIdentifier(QString()));

        qsizetype seen = 0;
        for (const auto& part : *list)
            QCOMPARE(part, list->items()->at(seen++));
        QCOMPARE(seen, 4); // all but the null
        const GTLCollectionObject& untyped = *list;
        QCOMPARE(std::distance(untyped.begin(), untyped.end()), 4);

        list->setItems(nullptr);
        list->resetIdentifierMap();
        QVERIFY(!list->itemForIdentifier(u"a"_s));
        QCOMPARE(PartList::object()->count(), 0);
        QVERIFY(!object<PartList>(R"({"items":[{"size":1}]})")->itemForIdentifier(u"a"_s));
    }

    void bareArrays() {
        const auto result = object<GTLResultArray>(R"([{"id":"a"},{"id":"b"}])");
        QVERIFY(result->JSON()->value("result_array_items").isArray());
        const auto items = result->itemsWithItemClass(Part::classDescriptor());
        QCOMPARE(result->itemsWithItemClass(Part::classDescriptor()), items);
        QCOMPARE(std::static_pointer_cast<Part>(items->objectAtIndex(1))->identifier(), u"b"_s);
        QCOMPARE(&result->itemsWithItemClass(SpecialPart::classDescriptor())->objectAtIndex(1)->objectClass(),
                 &SpecialPart::classDescriptor());
        QCOMPARE(result->count(), 2);
    }

    void serverErrors() {
        const auto structured = object<GTLErrorObject>(
            R"({"code":404,"message":"File not found","data":[{"domain":"global","reason":"notFound"}]})");
        QCOMPARE(structured->data()->at(0)->reason(), u"notFound"_s);
        const Error error = structured->foundationError();
        QVERIFY(error.is(errorDomain::jsonRPC, 404));
        QCOMPARE(error.detail(errorKey::error).toString(), u"File not found"_s);
        QCOMPARE(error.detail(errorKey::reason).toString(), u"(File not found)"_s);
        QCOMPARE(GTLErrorObject::underlyingObjectForError(error), structured);

        const Error echo = object<GTLErrorObject>(R"({"message":"access_token=s3cret is unknown"})")->foundationError();
        QVERIFY(!echo.detail(errorKey::reason).toString().contains(u"s3cret"_s));
        const Error silent = object<GTLErrorObject>(R"({"code":"500","message":9})")->foundationError();
        QVERIFY(silent.is(errorDomain::jsonRPC, 500) && !silent.details().contains(errorKey::error));
        QVERIFY(!GTLErrorObject::underlyingObjectForError(Error(URLErrorCode::timedOut)));
        GTLErrorObject onTheStack;
        onTheStack.setCode(3);
        QCOMPARE(GTLErrorObject::underlyingObjectForError(onTheStack.foundationError())->code(), 3);
    }

    // Parsed on one thread and read on another, while the registry is used by both.
    void handedFromThreadToThread() {
        std::shared_ptr<Whole> whole;
        std::thread parser([&whole] {
            whole = object<Whole>("{'parts':[{'kind':'test#part','id':'a'}]}");
            GTLObject::registerObjectClassForKind(Whole::classDescriptor(), u"test#thread"_s);
        });
        for (int n = 0; n < 100; ++n)
            QVERIFY(GTLObject::registeredObjectClassForKind(u"test#part"_s));
        parser.join();
        QCOMPARE(whole->parts()->at(0)->identifier(), u"a"_s);
    }
};

QTEST_GUILESS_MAIN(TestGTLObject)
#include "tst_gtlobject.moc"
