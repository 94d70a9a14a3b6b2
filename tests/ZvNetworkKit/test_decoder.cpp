#include "kitbench.h"

#include "ZvNetworkKit/zvdecoder.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "support/testregistry.h"

#include <QElapsedTimer>
#include <QtTest/QtTest>

#include <random>

namespace {

using Task = ZvDecodeTask;

Task taskOf(Task::Shape shape)
{
    Task task;
    task.shape = shape;
    task.server = QStringLiteral("/ch/youbika/");
    return task;
}

struct Sample {
    Task::Shape shape;
    QByteArray body;
};

// One valid answer of each shape.
QList<Sample> samples()
{
    const auto ok = [](const QByteArray &data) { return ZvScriptedTransport::ok(data, 7); };
    const QByteArray poll
        = "{\"topics\": {\"check\": {\"version\": 2, \"data\": " + KitBench::check(true)
        + "}, \"list\": {\"version\": 8, \"base\": 7, \"changes\": [[0, "
          "{\"latest\": 1200, \"volume\": 52}], [1, {\"bid\": null}]]}, \"brief\": {\"version\": "
          "3, "
          "\"gap\": true}, \"item\": {\"version\": 3, \"data\": "
        + KitBench::item("1001")
        + "}, \"trade\": {\"version\": 4, \"data\": " + KitBench::trade("1001")
        + "}, \"latest\": {\"version\": 5, \"data\": " + KitBench::latest("1001", 3)
        + "}, \"composite\": {\"version\": 2, \"data\": " + KitBench::row("-1", 0)
        + "}, \"cap\": {\"version\": 5, \"gap\": true}}}";
    return {
        {Task::List, ok(KitBench::rows({KitBench::row("1001"), KitBench::row("1002", 2)}))},
        {Task::Poll, ok(poll)},
        {Task::Market, ok("{\"servers\": [{\"name\": \"邮币\", \"prefix\": \"/lc/youbika/\"}]}")},
        {Task::Message,
         ok("{\"messages\": [{\"text\": \"公告\", \"link\": \"http://example.com/1\"}]}")},
        {Task::Check, ok(KitBench::check(false))},
        {Task::Composite, ok("null")},
        {Task::Brief, ok(KitBench::brief({"1001", "1002"}))},
        {Task::Type, ok("{\"types\": [{\"id\": 1, \"name\": \"邮票\"}]}")},
        {Task::Item, ok(KitBench::item("1001"))},
        {Task::Trade, ok(KitBench::trade("1001"))},
        {Task::Latest, ok(KitBench::latest("1001", 4))},
        {Task::Action, ok("{\"first\": \"abc\", \"order\": 4711, \"collections\": [\"1\"]}")},
        {Task::SignIn, ok(KitBench::signedIn("abc"))},
        {Task::Account, ok(KitBench::account())},
        {Task::Cap, ok(KitBench::cap(500000, {KitBench::holding("1001")}))},
        {Task::Gather, ok(KitBench::gather({"1001"}))},
        {Task::Favourites, ok(KitBench::favourites({"1001", "1002"}))},
        {Task::TimeLine,
         ok(KitBench::timeLine("1001", {KitBench::minute(0), KitBench::minute(3)}))},
        {Task::KLine, ok(KitBench::kLine("1001", {KitBench::bar("2019-12-31")}))},
        {Task::Detail, ok(KitBench::detail("1001", 2, 3))},
        {Task::Envelope, ZvScriptedTransport::refusal("refused", QStringLiteral("不行"), "closed")},
    };
}

} // namespace

class DecoderTest : public QObject
{
    Q_OBJECT

private slots:
    void validAnswers();
    void brokenAnswers_data();
    void brokenAnswers();
    void refusedAnswerLeavesTheRows();
    void longAnswerIsRefusedUnread();
    void snapshotThatWasOvertakenKeepsTheNewerRows();
    void otherServerHasRowsOfItsOwn();
    void linksThatAreNoWebAddressesAreDropped();
    void unknownKeysAreSkipped();
    void exactIntegers();
    void mutations();
};

void DecoderTest::validAnswers()
{
    ZvDecoder decoder;
    for (const Sample &sample : samples()) {
        ZvReply reply;
        QString error;
        QVERIFY2(decoder.decode(sample.body, taskOf(sample.shape), reply, error),
                 qPrintable(error));
    }
    ZvReply reply;
    QString error;
    QVERIFY(decoder.decode(samples().last().body, taskOf(Task::Poll), reply, error));
    QCOMPARE(reply.envelope.status, QStringLiteral("refused"));
    QCOMPARE(reply.envelope.message, QStringLiteral("不行"));
    QCOMPARE(reply.envelope.reason, QStringLiteral("closed"));
}

void DecoderTest::brokenAnswers_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("reason");
    const QByteArray list = samples().first().body;
    const auto with = [&list](const QByteArray &before, const QByteArray &after) {
        QByteArray body = list;
        const int at = body.indexOf(before);
        return at < 0 ? QByteArray() : body.replace(at, before.size(), after);
    };
    QTest::newRow("empty") << QByteArray() << "no JSON";
    QTest::newRow("truncated") << list.left(list.size() / 2) << "no JSON";
    QTest::newRow("something behind") << list + "x"
                                      << "no JSON";
    QTest::newRow("gzip") << QByteArray::fromHex("1f8b0800000000000003ab56") << "no JSON";
    QTest::newRow("HTML") << QByteArray("<html></html>") << "no JSON";
    QTest::newRow("bad UTF-8") << with("藏品", "\xC3\x28") << "no JSON";
    QTest::newRow("array") << QByteArray("[]") << "status";
    QTest::newRow("other protocol") << with("\"protocol\": 1", "\"protocol\": 2") << "protocol";
    QTest::newRow("unknown status") << with("\"ok\"", "\"fine\"") << "status";
    QTest::newRow("no data") << with("\"data\"", "\"date\"") << "data";
    QTest::newRow("missing field") << with("\"volume\"", "\"vloume\"") << "volume";
    QTest::newRow("duplicate key")
        << with("\"latest\": 1000", "\"latest\": 1000, \"latest\": 1") << "\"latest\" twice";
    QTest::newRow("duplicate unknown key")
        << with("\"latest\": 1000", "\"latest\": 1000, \"x\": 1, \"x\": 1") << "\"x\" twice";
    QTest::newRow("text for a number") << with("\"latest\": 1000", "\"latest\": \"5\"") << "latest";
    QTest::newRow("fraction") << with("\"latest\": 1000", "\"latest\": 1.5") << "latest";
    QTest::newRow("float without fraction")
        << with("\"latest\": 1000", "\"latest\": 1e3") << "latest";
    QTest::newRow("infinite") << with("\"latest\": 1000", "\"latest\": 1e400") << "no JSON";
    QTest::newRow("negative price") << with("\"latest\": 1000", "\"latest\": -1") << "latest";
    QTest::newRow("huge price") << with("\"latest\": 1000", "\"latest\": 9000000000000001")
                                << "latest";
    QTest::newRow("beyond 64 bits")
        << with("\"latest\": 1000", "\"latest\": 18446744073709551616") << "latest";
    QTest::newRow("beyond signed 64 bits")
        << with("\"latest\": 1000", "\"latest\": 9223372036854775808") << "latest";
    QTest::newRow("type beyond int") << with("\"type\": 1", "\"type\": 2147483648") << "type";
    QTest::newRow("id is a word") << with("\"id\": \"1001\"", "\"id\": \"abc\"") << "id";
    QTest::newRow("id is a number") << with("\"id\": \"1001\"", "\"id\": 1001") << "id";
    QTest::newRow("negative id in the list") << with("\"id\": \"1001\"", "\"id\": \"-5\"") << "id";
    QTest::newRow("id twice") << with("\"id\": \"1002\"", "\"id\": \"1001\"") << "id";
    QTest::newRow("rows is no list") << with("\"rows\": [", "\"rows\": {}, \"x\": [") << "rows";
    QTest::newRow("deep nesting") << with("\"latest\": 1000",
                                          "\"latest\": 1000, \"x\": " + QByteArray(200, '[')
                                              + QByteArray(200, ']'))
                                  << "deeply";
    QTest::newRow("endless nesting") << QByteArray(1000000, '[') << "deeply";
    QTest::newRow("too many members") << with(
        "\"latest\": 1000", "\"latest\": 1000" + [] {
            QByteArray members;
            for (int i = 0; i < 100; ++i)
                members += ", \"k" + QByteArray::number(i) + "\": 1";
            return members;
        }()) << "members";
    QTest::newRow("too many values") << with(
        "\"latest\": 1000", "\"latest\": 1000, \"x\": [" + QByteArray("1,").repeated(600000) + "1]")
                                     << "too many values";
}

void DecoderTest::brokenAnswers()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, reason);
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    QVERIFY(!decoder.decode(body, taskOf(Task::List), reply, error));
    QVERIFY2(error.contains(reason), qPrintable(error));
    QVERIFY(reply.envelope.status.isEmpty());
}

void DecoderTest::refusedAnswerLeavesTheRows()
{
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    QVERIFY(decoder.decode(samples().first().body, taskOf(Task::List), reply, error));
    const auto poll = [](const QByteArray &changes) {
        return ZvScriptedTransport::ok(
            "{\"topics\": {\"list\": {\"version\": 8, \"base\": 7, \"changes\": " + changes
            + "}}}");
    };
    for (const char *changes :
         {"[[0, {\"latest\": 5}], [9, {\"latest\": 5}]]", "[[0, {\"latest\": 5}], [-1, {}]]",
          "[[0, {\"latest\": 5}], [0]]", "[[0, {\"latest\": 5}], [1, {\"id\": \"1003\"}]]",
          "[[0, {\"latest\": 5}], 3]", "[[0, {\"latest\": 5}], [1, []]]"}) {
        QVERIFY2(!decoder.decode(poll(changes), taskOf(Task::Poll), reply, error), changes);
    }
    QVERIFY(decoder.decode(poll("[[1, {\"volume\": 6}]]"), taskOf(Task::Poll), reply, error));
    QVERIFY(reply.list && reply.list->data);
    QCOMPARE(reply.list->data->rows.at(0).data().latest, qint64(1000));
    QCOMPARE(reply.list->data->rows.at(1).data().volume, qint64(6));
}

void DecoderTest::longAnswerIsRefusedUnread()
{
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    const QByteArray body(100 * 1024 * 1024, ' ');
    QElapsedTimer timer;
    timer.start();
    QVERIFY(!decoder.decode(body, taskOf(Task::List), reply, error));
    QVERIFY(timer.elapsed() < 100);
    QVERIFY(error.contains(QStringLiteral("longer than")));
}

void DecoderTest::snapshotThatWasOvertakenKeepsTheNewerRows()
{
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    const QByteArray rows = KitBench::rows({KitBench::row("1001", 1, 500)});
    QVERIFY(decoder.decode(ZvScriptedTransport::ok(rows, 9), taskOf(Task::List), reply, error));
    const QByteArray older = KitBench::rows({KitBench::row("1001", 1, 400)});
    QVERIFY(decoder.decode(ZvScriptedTransport::ok(older, 8), taskOf(Task::List), reply, error));
    QCOMPARE(reply.list->version, qint64(9));
    QCOMPARE(reply.list->data->rows.first().data().latest, qint64(500));
    // Of another run, lower versions are newer.
    QVERIFY(decoder.decode(ZvScriptedTransport::ok(older, 1, "b002"), taskOf(Task::List), reply,
                           error));
    QCOMPARE(reply.list->data->rows.first().data().latest, qint64(400));
}

void DecoderTest::otherServerHasRowsOfItsOwn()
{
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    QVERIFY(decoder.decode(samples().first().body, taskOf(Task::List), reply, error));
    Task other = taskOf(Task::Poll);
    other.server = QStringLiteral("/ch/baoyushi/");
    QVERIFY(decoder.decode(
        ZvScriptedTransport::ok("{\"topics\": {\"list\": {\"version\": 8, \"base\": 7, "
                                "\"changes\": [[0, {\"latest\": 5}]]}}}"),
        other, reply, error));
    QVERIFY(reply.list->gap);
    QVERIFY(!reply.list->data);
}

void DecoderTest::linksThatAreNoWebAddressesAreDropped()
{
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    const QByteArray body = ZvScriptedTransport::ok(
        "{\"messages\": [{\"text\": \"a\", \"link\": \"file:///etc/passwd\"}, {\"text\": \"b\", "
        "\"link\": \"https://example.com\"}]}");
    QVERIFY(decoder.decode(body, taskOf(Task::Message), reply, error));
    QCOMPARE(reply.message->data->at(0).second, QString());
    QCOMPARE(reply.message->data->at(1).second, QStringLiteral("https://example.com"));
    const QByteArray servers = ZvScriptedTransport::ok(
        "{\"servers\": [{\"name\": \"a\", \"prefix\": \"//evil.example/\"}]}");
    QVERIFY(!decoder.decode(servers, taskOf(Task::Market), reply, error));
}

void DecoderTest::unknownKeysAreSkipped()
{
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    QByteArray body = samples().first().body;
    body.replace("\"type\": 1", "\"type\": 1, \"later\": {\"a\": [1.5, null, 1e3]}");
    QVERIFY2(decoder.decode(body, taskOf(Task::List), reply, error), qPrintable(error));
    QCOMPARE(reply.list->data->rows.size(), 2);
}

void DecoderTest::exactIntegers()
{
    ZvDecoder decoder;
    ZvReply reply;
    QString error;
    // 2^53 + 1, which a double would lose.
    QByteArray body = samples().first().body;
    body.replace("\"version\": 7", "\"version\": 9007199254740993");
    QVERIFY(decoder.decode(body, taskOf(Task::List), reply, error));
    QCOMPARE(reply.envelope.version, qint64(9007199254740993));
}

// Whatever comes, the decoder says yes or no and is still the same afterwards.
void DecoderTest::mutations()
{
    const quint32 seed = qEnvironmentVariableIsSet("ZV_SEED")
        ? qEnvironmentVariable("ZV_SEED").toUInt()
        : std::random_device()();
    qInfo("seed %u; repeat with ZV_SEED=%u ZvNetworkKitTests decoder mutations", seed, seed);
    std::mt19937 random(seed);
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(std::max(1, bound)));
    };
    const QList<Sample> corpus = samples();
    const QByteArrayList pieces{"null",
                                "true",
                                "-1",
                                "1.5",
                                "1e400",
                                "9223372036854775808",
                                "\"\"",
                                "{}",
                                "[]",
                                "\"1001\"",
                                "\"\\u0000\"",
                                "[[[[",
                                "}}",
                                ",",
                                "\xff",
                                "\"id\": \"1\",",
                                "18446744073709551615",
                                "\"\\ud800\"",
                                "1e-400",
                                "\"id\""};
    const QByteArray good = corpus.first().body;

    ZvDecoder decoder;
    int refused = 0;
    int accepted = 0;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 6000 && timer.elapsed() < 15000; ++i) {
        const Sample &sample = corpus.at(below(corpus.size()));
        QByteArray body = sample.body;
        for (int change = below(3); change >= 0 && !body.isEmpty(); --change) {
            const int at = below(body.size());
            switch (below(7)) {
            case 0:
                body.truncate(at);
                break;
            case 1:
                body[at] = static_cast<char>(below(256));
                break;
            case 2:
                body.insert(at, pieces.at(below(pieces.size())));
                break;
            case 3:
                body.remove(at, 1 + below(20));
                break;
            case 4:
                body.insert(at, body.mid(below(body.size()), 1 + below(60)));
                break;
            case 5: { // a whole value becomes another
                const int colon = body.indexOf(": ", at);
                const int end = body.indexOf(',', colon);
                if (colon > 0 && end > colon)
                    body.replace(colon + 2, end - colon - 2, pieces.at(below(pieces.size())));
                break;
            }
            default:
                body = qCompress(body).mid(4);
            }
        }
        // The answer may also be that of another path.
        const Task::Shape shape
            = below(4) == 0 ? Task::Shape(below(Task::Favourites + 1)) : sample.shape;
        ZvReply reply;
        QString error;
        if (decoder.decode(body, taskOf(shape), reply, error)) {
            ++accepted;
            QVERIFY(!reply.envelope.status.isEmpty());
        } else {
            ++refused;
            QVERIFY(!error.isEmpty());
            QVERIFY(reply.envelope.status.isEmpty());
        }
    }
    qInfo("%d refused, %d accepted in %lld ms", refused, accepted, timer.elapsed());
    QVERIFY(refused > 500);
    QVERIFY(accepted > 50);
    ZvReply reply;
    QString error;
    Task other = taskOf(Task::List);
    other.server = QStringLiteral("/ch/after/");
    QVERIFY(decoder.decode(good, other, reply, error));
    QCOMPARE(reply.list->data->rows.size(), 2);
    QCOMPARE(reply.list->data->rows.first().data().latest, qint64(1000));
}

ZV_TEST(DecoderTest)
#include "test_decoder.moc"
