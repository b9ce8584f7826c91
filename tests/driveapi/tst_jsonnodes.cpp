// JSON text to nodes and back: against an independent reader, with hostile texts, and the nodes' sharing and laziness.
#include "driveapi/GTLJSONParser.h"
#include "driveapi/JSONArray.h"
#include "driveapi/JSONDictionary.h"
#include "driveapi/JSONErrorLocator.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRandomGenerator>
#include <QTest>

#include <cmath>
#include <limits>

using namespace quenby;
using namespace Qt::StringLiterals;

namespace {

JSONValue parsed(const QByteArray& text) { return GTLJSONParser::objectWithData(text).valueOr(JSONValue()); }

// The other reader's document, turned into nodes by hand.
JSONValue fromOracle(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::Double:
        return value.toDouble();
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Array: {
        auto array = JSONArray::make();
        const QJsonArray elements = value.toArray();
        for (const QJsonValue element : elements)
            array->append(fromOracle(element));
        return array;
    }
    case QJsonValue::Object: {
        auto dictionary = JSONDictionary::make();
        const QJsonObject members = value.toObject();
        for (auto it = members.begin(); it != members.end(); ++it)
            dictionary->setValue(it.key(), fromOracle(it.value()));
        return dictionary;
    }
    default:
        return JSONValue::null();
    }
}

QString randomText(QRandomGenerator& random) {
    static const QString alphabet = QString::fromUtf8("aZ0 \"\\/\b\f\n\r\t\x01\x1f\x7fäßЖ漢😀𝄞{}[]:,");
    QString text;
    for (quint32 length = random.bounded(12); length > 0; --length) {
        const auto at = random.bounded(alphabet.size());
        const bool isLowHalf = alphabet.at(at).isLowSurrogate();
        text += isLowHalf ? alphabet.mid(at - 1, 2) : alphabet.mid(at, alphabet.at(at).isHighSurrogate() ? 2 : 1);
    }
    return text;
}

QJsonValue randomValue(QRandomGenerator& random, int depth) {
    switch (random.bounded(depth > 5 ? 5 : 7)) {
    case 0:
        return QJsonValue::Null;
    case 1:
        return random.bounded(2) == 1;
    case 2:
        return static_cast<qint64>(random.generate()) - (1LL << 31);
    case 3:
        // Below 2^53: above it the oracle writes integers that are not the double's own value.
        return (random.generateDouble() - 0.5) * std::pow(10.0, random.bounded(-300, 15));
    case 4:
        return randomText(random);
    case 5: {
        QJsonArray array;
        for (quint32 count = random.bounded(6); count > 0; --count)
            array.append(randomValue(random, depth + 1));
        return array;
    }
    default: {
        QJsonObject object;
        for (quint32 count = random.bounded(40); count > 0; --count) // enough to need the index
            object.insert(randomText(random), randomValue(random, depth + 2));
        return object;
    }
    }
}

QByteArray nested(int depth) { return QByteArray(depth, '[') + QByteArray(depth, ']'); }

// An ordinary literal: moc loses its way in a raw one with code escapes.
const QByteArray sample =
    "{\"a\":[1,-2.5e3,\"x\xC3\xA9\\\"\\u00fc\\ud83d\\ude00\",true,false,null],\"b\":{\"c\":{}},\"d\":[]}";

} // namespace

class TestJSONNodes : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void randomTextsReadAsTheOracleReadsThem() {
        QRandomGenerator random(20140701);
        for (int round = 0; round < 300; ++round) {
            const QJsonDocument document(QJsonArray{randomValue(random, 0)});
            const auto format = round % 2 ? QJsonDocument::Compact : QJsonDocument::Indented;
            const QByteArray text = document.toJson(format);
            const auto value = GTLJSONParser::objectWithData(text);
            QVERIFY2(value.ok(), text.constData());
            QVERIFY2(*value == fromOracle(document.array()), text.constData());
            // And the oracle reads what is written here.
            for (const auto writing : {GTLJSONParser::Format::compact, GTLJSONParser::Format::humanReadable}) {
                const QByteArray written = GTLJSONParser::dataWithObject(*value, writing);
                QVERIFY2(fromOracle(QJsonDocument::fromJson(written).array()) == *value, written.constData());
                QVERIFY2(parsed(written) == *value, written.constData());
            }
        }
    }

    void writing_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QByteArray>("compact"); // empty: unchanged
        QTest::newRow("order is kept") << QByteArray(R"({"z":1,"a":2,"m":[]})") << QByteArray();
        QTest::newRow("last duplicate counts")
            << QByteArray(R"({"a":1,"b":2,"a":3})") << QByteArray(R"({"a":3,"b":2})");
        QTest::newRow("extreme integers")
            << QByteArray("[9223372036854775807,-9223372036854775808,18446744073709551615]") << QByteArray();
        QTest::newRow("beyond 64 bits")
            << QByteArray(R"([18446744073709551616,-9223372036854775809,"99999999999999999999"])")
            << QByteArray(R"([18446744073709552000,-9223372036854775808,"99999999999999999999"])");
        QTest::newRow("shortest reals") << QByteArray("[0.1,1e+300,5e-324,-2.5]") << QByteArray();
        QTest::newRow("escapes") << QByteArray("[\"\\u0000\\u001f\\b\\f\\n\\r\\t\\\"\\\\\\/\"]")
                                 << QByteArray("[\"\\u0000\\u001f\\b\\f\\n\\r\\t\\\"\\\\/\"]");
        QTest::newRow("scalar") << QByteArray(" \"x\" ") << QByteArray("\"x\"");
    }
    void writing() {
        QFETCH(QByteArray, text);
        QFETCH(QByteArray, compact);
        const auto value = GTLJSONParser::objectWithData(text);
        QVERIFY(value.ok());
        const QByteArray written = GTLJSONParser::dataWithObject(*value);
        if (text.contains("18446744073709551616")) // written in whichever form is the shortest
            QVERIFY(parsed(written) == parsed(compact));
        else
            QCOMPARE(written, compact.isEmpty() ? text : compact);
    }

    void humanReadableText() {
        QCOMPARE(GTLJSONParser::stringWithObject(parsed(R"({"a":[1,{}],"b":{"c":null},"d":[]})"),
                                                 GTLJSONParser::Format::humanReadable),
                 u"{\n  \"a\": [\n    1,\n    {}\n  ],\n  \"b\": {\n    \"c\": null\n  },\n  \"d\": []\n}"_s);
    }

    void whatJSONCannotExpress() {
        const QString lone = u"a"_s + QChar(0xD83D) + u"b"_s + QChar(0xDE00);
        const auto array = JSONArray::make({lone, std::numeric_limits<double>::infinity(), std::nan(""), JSONValue()});
        QCOMPARE(GTLJSONParser::dataWithObject(array), QByteArray("[\"a\xEF\xBF\xBD"
                                                                  "b\xEF\xBF\xBD\",null,null,null]"));
    }

    void malformedTexts_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<int>("position");
        QTest::newRow("empty") << QByteArray() << 0;
        QTest::newRow("blank") << QByteArray(" \n") << 2;
        QTest::newRow("bare word") << QByteArray("[nil]") << 1;
        QTest::newRow("word runs on") << QByteArray("[nullx]") << 5;
        QTest::newRow("trailing comma") << QByteArray("[1,]") << 3;
        QTest::newRow("no comma") << QByteArray("[1 2]") << 3;
        QTest::newRow("trailing comma in object") << QByteArray("{\"a\":1,}") << 7;
        QTest::newRow("no colon") << QByteArray("{\"a\" 1}") << 5;
        QTest::newRow("unquoted name") << QByteArray("{a:1}") << 1;
        QTest::newRow("wrong bracket") << QByteArray("[{\"a\":1]") << 7;
        QTest::newRow("after the end") << QByteArray("{} {}") << 3;
        QTest::newRow("leading zero") << QByteArray("[01]") << 2;
        QTest::newRow("no fraction") << QByteArray("[1.]") << 3;
        QTest::newRow("no exponent") << QByteArray("[1e]") << 3;
        QTest::newRow("lone minus") << QByteArray("[-]") << 2;
        QTest::newRow("plus") << QByteArray("[+1]") << 1;
        QTest::newRow("control character") << QByteArray("[\"a\nb\"]") << 3;
        QTest::newRow("unknown escape") << QByteArray("[\"\\x\"]") << 3;
        QTest::newRow("short code") << QByteArray("[\"\\u12G4\"]") << 6;
        QTest::newRow("lone high surrogate") << QByteArray("[\"\\ud83d\"]") << 2;
        QTest::newRow("lone low surrogate") << QByteArray("[\"\\ude00\"]") << 2;
        QTest::newRow("high surrogate twice") << QByteArray("[\"\\ud83d\\ud83d\"]") << 2;
        QTest::newRow("stray continuation") << QByteArray("[\"\x80\"]") << 2;
        QTest::newRow("overlong") << QByteArray("[\"\xC0\xAF\"]") << 2;
        QTest::newRow("encoded surrogate") << QByteArray("[\"\xED\xA0\x80\"]") << 2;
        QTest::newRow("beyond Unicode") << QByteArray("[\"\xF4\x90\x80\x80\"]") << 2;
        QTest::newRow("cut character") << QByteArray("[\"\xE2\x82\"]") << 2;
        QTest::newRow("too deep") << nested(1100) << 1023;
    }
    void malformedTexts() {
        QFETCH(QByteArray, text);
        QFETCH(int, position);
        const auto result = GTLJSONParser::objectWithData(text);
        QVERIFY(!result.ok());
        QVERIFY(result.error().is(errorDomain::json, static_cast<qint64>(JSONErrorCode::malformed)));
        const QString reason = result.error().detail(errorKey::reason).toString();
        QVERIFY2(reason.contains(u"at byte %1,"_s.arg(position)), qPrintable(reason));
    }

    void numbersBeyondADoubleAreRefused() { QVERIFY(!GTLJSONParser::objectWithData("[1e999]").ok()); }

    void deepestNestingIsReadCopiedComparedAndWritten() {
        const QByteArray text = nested(1023);
        const JSONValue value = parsed(text);
        QVERIFY(value.isArray());
        QCOMPARE(GTLJSONParser::dataWithObject(value), text);
        QVERIFY(value == value.deepCopy());
    }

    void everyTruncationIsRefusedAndLocated() {
        QVERIFY(parsed(sample).isDictionary());
        QVERIFY(!locateJSONFault({sample.constData(), std::size_t(sample.size())}));
        for (qsizetype length = 0; length < sample.size(); ++length) {
            const QByteArray cut = sample.left(length);
            QVERIFY2(!GTLJSONParser::objectWithData(cut).ok(), cut.constData());
            const auto fault = locateJSONFault({cut.constData(), std::size_t(cut.size())});
            QVERIFY2(fault && fault->position <= length, cut.constData());
        }
    }

    // The fast parser and the locator must agree on what is JSON, or errors would lack their position.
    void everyChangedByteIsJudgedAlike() {
        for (qsizetype at = 0; at < sample.size(); ++at) {
            for (int byte = 0; byte < 256; ++byte) {
                QByteArray text = sample;
                text[at] = static_cast<char>(byte);
                const bool isLocated = locateJSONFault({text.constData(), std::size_t(text.size())}).has_value();
                if (GTLJSONParser::objectWithData(text).ok() == isLocated)
                    QFAIL(text.toPercentEncoding(" {}[]:,\"").constData());
            }
        }
    }

    void nodesOutliveTheirDocument() {
        JSONDictionaryPtr inner;
        QByteArray raw;
        {
            const JSONValue whole = parsed(R"({"outer":{"inner":{"text":"still here","list":[1,[2]]}}})");
            inner = whole.dictionary()->value("outer").dictionary()->value("inner").dictionary();
            raw = inner->utf8Value("text");
        }
        QCOMPARE(raw, "still here");
        QCOMPARE(inner->value("text").toString(), u"still here"_s);
        QCOMPARE(inner->value("list").array()->at(1).array()->at(0).toInt64(), 2);
    }

    void copiesShareAndDeepCopiesDoNot() {
        for (const bool isTouched : {false, true}) {
            const JSONValue original = parsed(sample);
            if (isTouched)
                QCOMPARE(original.dictionary()->value("b").dictionary()->keys(), QStringList{u"c"_s});
            const JSONValue copy = original.deepCopy();
            QVERIFY(copy == original);
            copy.dictionary()->value("b").dictionary()->setValue("c", 1);
            copy.dictionary()->value("a").array()->append(7);
            QCOMPARE(GTLJSONParser::dataWithObject(original), GTLJSONParser::dataWithObject(parsed(sample)));
            QVERIFY(!(copy == original));

            const JSONValue shared = original;
            shared.dictionary()->value("b").dictionary()->setValue("c", 1);
            QCOMPARE(original.dictionary()->value("b").dictionary()->value("c").toInt64(), 1);
        }
    }

    void largeDictionaries() {
        auto dictionary = JSONDictionary::make();
        for (int n = 0; n < 2000; ++n)
            dictionary->setValue(QString::number(n), n);
        QVERIFY(dictionary->remove("17"));
        QVERIFY(!dictionary->remove("17"));
        dictionary->setValue("1999", JSONValue()); // undefined removes
        dictionary->setValue("3", -3);
        QCOMPARE(dictionary->count(), 1998);
        QCOMPARE(dictionary->keyAt(3), std::string_view("3"));
        QCOMPARE(dictionary->value("3").toInt64(), -3);
        QCOMPARE(dictionary->value("1998").toInt64(), 1998);
        QVERIFY(!dictionary->contains("17") && !dictionary->contains("1999"));
        QVERIFY(parsed(GTLJSONParser::dataWithObject(dictionary)) == JSONValue(dictionary));
    }

    void equality_data() {
        QTest::addColumn<QByteArray>("left");
        QTest::addColumn<QByteArray>("right");
        QTest::addColumn<bool>("isEqual");
        const auto row = [](const char* left, const char* right, bool isEqual) {
            QTest::addRow("%s and %s", left, right) << QByteArray(left) << QByteArray(right) << isEqual;
        };
        row("1", "1.0", true);
        row("1", "1.5", false);
        row("9007199254740993", "9007199254740992.0", false); // 2^53 + 1 is no double
        row("18446744073709551615", "1.8446744073709551615e19", false);
        row("18446744073709549568", "18446744073709549568.0", true);
        row("-1", "18446744073709551615", false);
        row("true", "1", false);
        row("null", "0", false);
        row("\"1\"", "1", false);
        row("[1,2]", "[2,1]", false);
        row("[1]", "[1,1]", false);
        row(R"({"a":1,"b":2})", R"({"b":2,"a":1})", true);
        row(R"({"a":1,"b":null})", R"({"a":1,"c":null})", false);
    }
    void equality() {
        QFETCH(QByteArray, left);
        QFETCH(QByteArray, right);
        QFETCH(bool, isEqual);
        QCOMPARE(parsed(left) == parsed(right), isEqual);
        QCOMPARE(parsed(right) == parsed(left), isEqual);
        QVERIFY(parsed(left) == parsed(left));
    }

    void numbersFromOtherKinds_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<qint64>("asSigned");
        QTest::addColumn<quint64>("asUnsigned");
        QTest::addColumn<bool>("asBool");
        constexpr qint64 lowest = std::numeric_limits<qint64>::min();
        constexpr qint64 highest = std::numeric_limits<qint64>::max();
        constexpr quint64 top = std::numeric_limits<quint64>::max();
        QTest::newRow("text") << QByteArray("\"9007199254740993\"") << qint64(9007199254740993)
                              << quint64(9007199254740993) << false;
        QTest::newRow("negative text") << QByteArray("\"-7\"") << qint64(-7) << quint64(0) << false;
        QTest::newRow("huge text") << QByteArray("\"18446744073709551615\"") << highest << top << false;
        QTest::newRow("real") << QByteArray("-2.9") << qint64(-2) << quint64(0) << true;
        QTest::newRow("huge real") << QByteArray("1e300") << highest << top << true;
        QTest::newRow("hugely negative") << QByteArray("-1e300") << lowest << quint64(0) << true;
        QTest::newRow("true") << QByteArray("true") << qint64(1) << quint64(1) << true;
        QTest::newRow("true as text") << QByteArray("\"true\"") << qint64(0) << quint64(0) << true;
        QTest::newRow("words") << QByteArray("\"many\"") << qint64(0) << quint64(0) << false;
        QTest::newRow("infinity") << QByteArray("\"inf\"") << qint64(0) << quint64(0) << false;
        QTest::newRow("null") << QByteArray("null") << qint64(0) << quint64(0) << false;
        QTest::newRow("array") << QByteArray("[1]") << qint64(0) << quint64(0) << false;
    }
    void numbersFromOtherKinds() {
        QFETCH(QByteArray, text);
        QTEST(parsed(text).toInt64(), "asSigned");
        QTEST(parsed(text).toUInt64(), "asUnsigned");
        QTEST(parsed(text).toBool(), "asBool");
    }
};

QTEST_GUILESS_MAIN(TestJSONNodes)
#include "tst_jsonnodes.moc"
