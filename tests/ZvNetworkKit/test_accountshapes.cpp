#include "kitbench.h"

#include "ZvNetworkKit/zvdecoder.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "support/testregistry.h"

#include <QtTest/QtTest>

#include <random>

namespace {

using Task = ZvDecodeTask;

constexpr qint64 mostFen = 9000000000000000;

bool decode(const QByteArray &data, Task::Shape shape, ZvReply &reply, QString &error)
{
    Task task;
    task.shape = shape;
    task.server = QStringLiteral("/ch/youbika/");
    return ZvDecoder().decode(ZvScriptedTransport::ok(data, 7), task, reply, error);
}

QByteArray goodCap()
{
    return KitBench::cap(500000, {KitBench::holding("1001"), KitBench::holding("1002", 7, 1003)});
}

QByteArray goodGather()
{
    return KitBench::gather({"1001", "1002"});
}

QByteArray good(Task::Shape shape)
{
    switch (shape) {
    case Task::Account:
        return KitBench::account();
    case Task::Cap:
        return goodCap();
    default:
        return goodGather();
    }
}

} // namespace

// What the exchange says of an account: taken exactly, or refused as a whole.
class AccountShapesTest : public QObject
{
    Q_OBJECT

private slots:
    void accountIsTakenExactly();
    void capIsTakenExactly();
    void gatherIsTakenExactly();
    void endsOfTheRangesAreTaken();
    void brokenShapes_data();
    void brokenShapes();
    void everyMemberIsNeeded_data();
    void everyMemberIsNeeded();
    void unknownMembersAreSkipped();
    void thousandsOfHoldings();
    void mutations_data();
    void mutations();
};

void AccountShapesTest::accountIsTakenExactly()
{
    ZvReply reply;
    QString error;
    QVERIFY2(decode(KitBench::account("0080001"), Task::Account, reply, error), qPrintable(error));
    const ZvUBMyAcount::Data &data = reply.account->data();
    QCOMPARE(data.accountNumber, QStringLiteral("0080001"));
    QCOMPARE(data.phone, QStringLiteral("13800000000"));
    QCOMPARE(data.name, QStringLiteral("张三"));
    QCOMPARE(data.poundage, qint64(3000));
    QCOMPARE(data.poundageOf.size(), 1);
    QCOMPARE(data.poundageOf.value(QStringLiteral("1002")), qint64(1500));
}

void AccountShapesTest::capIsTakenExactly()
{
    ZvReply reply;
    QString error;
    QVERIFY2(decode(goodCap(), Task::Cap, reply, error), qPrintable(error));
    QCOMPARE(reply.cap->version, qint64(7));
    const ZvUBCapInfo::Data &data = reply.cap->data->data();
    QCOMPARE(data.heldMarketValue, qint64(30000));
    QCOMPARE(data.profit, qint64(-300));
    QCOMPARE(data.availableMoney, qint64(500000));
    QCOMPARE(data.frozenMoney, qint64(700));
    QCOMPARE(data.totalAssets, qint64(530700));
    QCOMPARE(data.items.size(), 2);
    const ZvUBCapItem::Data &first = data.items.first().data();
    QCOMPARE(first.collectionId, QStringLiteral("1001"));
    QCOMPARE(first.code, QStringLiteral("101001"));
    QCOMPARE(first.name, QStringLiteral("藏品1001"));
    QCOMPARE(first.quantity, qint64(30));
    QCOMPARE(first.sellable, qint64(15));
    QCOMPARE(first.cost, qint64(29700));
    QCOMPARE(first.latest, qint64(1000));
    QCOMPARE(data.items.first().displayDataForModelUse(5), QStringLiteral("9.90"));
    QCOMPARE(data.items.first().displayDataForModelUse(8), QStringLiteral("3.00"));
    // What was paid for seven pieces is taken to the fen, whatever one of them cost.
    QCOMPARE(data.items.last().data().cost, qint64(1003));
    QCOMPARE(data.items.last().displayDataForModelUse(5), QStringLiteral("1.43"));
    QCOMPARE(data.items.last().displayDataForModelUse(8), QStringLiteral("59.97"));

    QVERIFY(
        decode(goodCap().replace("\"latest\": 1000", "\"latest\": null"), Task::Cap, reply, error));
    QCOMPARE(reply.cap->data->data().items.first().data().latest, zvub::noValue);
}

void AccountShapesTest::gatherIsTakenExactly()
{
    ZvReply reply;
    QString error;
    QVERIFY2(decode(goodGather(), Task::Gather, reply, error), qPrintable(error));
    const ZvUBGatherInfo::Data &data = reply.gather->data();
    QCOMPARE(data.items.size(), 2);
    const ZvUBGatherItem::Data &first = data.items.first().data();
    QCOMPARE(first.collectionId, QStringLiteral("1001"));
    QCOMPARE(first.buyQuantity, qint64(5));
    QCOMPARE(first.buyAmount, qint64(5000));
    QCOMPARE(first.buyFee, qint64(15));
    QCOMPARE(first.sellQuantity, qint64(2));
    QCOMPARE(first.sellAmount, qint64(1800));
    QCOMPARE(first.sellFee, qint64(6));
    QCOMPARE(first.sellProfit, qint64(-120));
    QCOMPARE(data.kindCount, qint64(2));
    QCOMPARE(data.totalQuantity, qint64(14));
    QCOMPARE(data.totalFee, qint64(42));
    QCOMPARE(data.positionChange, qint64(6));
    QCOMPARE(data.sellProfit, qint64(-240));
}

void AccountShapesTest::endsOfTheRangesAreTaken()
{
    ZvReply reply;
    QString error;
    const auto takes = [&](Task::Shape shape, const QByteArray &before, const QByteArray &after) {
        const QByteArray data = good(shape).replace(before, after);
        return data != good(shape) && decode(data, shape, reply, error);
    };
    QVERIFY(takes(Task::Account, "3000", "0"));
    QVERIFY(takes(Task::Account, "3000", "1000000"));
    QVERIFY(takes(Task::Account, "[[\"1002\", 1500]]", "[]"));
    QVERIFY(takes(Task::Cap, "\"available\": 500000", "\"available\": 9000000000000000"));
    QCOMPARE(reply.cap->data->data().availableMoney, mostFen);
    // One more than what a double holds exactly.
    QVERIFY(takes(Task::Cap, "\"frozen\": 700", "\"frozen\": 8999999999999999"));
    QCOMPARE(reply.cap->data->data().frozenMoney, mostFen - 1);
    QVERIFY(takes(Task::Cap, "\"profit\": -300", "\"profit\": -9000000000000000"));
    QVERIFY(takes(Task::Cap, "\"quantity\": 30, \"sellable\": 15, \"cost\": 29700",
                  "\"quantity\": 1, \"sellable\": 0, \"cost\": 9000000000000000"));
    QCOMPARE(reply.cap->data->data().items.first().data().cost, mostFen);
    QVERIFY(takes(Task::Gather, "\"sellProfit\": -120", "\"sellProfit\": -9000000000000000"));
    QCOMPARE(reply.gather->data().sellProfit, -2 * mostFen);
}

void AccountShapesTest::brokenShapes_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, Task::Shape shape, const QByteArray &before,
                        const QByteArray &after, const char *reason) {
        const QByteArray data = good(shape).replace(before, after);
        // A row that changes nothing would prove nothing.
        QVERIFY2(data != good(shape), name);
        QTest::newRow(name) << int(shape) << data << QString::fromLatin1(reason);
    };
    for (const Task::Shape shape : {Task::Account, Task::Cap, Task::Gather}) {
        for (const char *data : {"null", "[]", "1", "\"\"", "{}", "true"}) {
            QTest::addRow("shape %d is %s", int(shape), data)
                << int(shape) << QByteArray(data) << QString();
        }
    }

    row("account is a number", Task::Account, "\"80001\"", "80001", "account");
    row("account is empty", Task::Account, "\"80001\"", "\"\"", "account");
    row("phone is null", Task::Account, "\"13800000000\"", "null", "phone");
    row("name is a list", Task::Account, "\"张三\"", "[]", "name");
    row("rate below zero", Task::Account, "3000", "-1", "poundage");
    row("rate above all", Task::Account, "3000", "1000001", "poundage");
    row("rate with a fraction", Task::Account, "3000", "3000.5", "poundage");
    row("rate as a float", Task::Account, "3000", "3e3", "poundage");
    row("rate is null", Task::Account, "3000", "null", "poundage");
    row("rates are no list", Task::Account, "[[\"1002\", 1500]]", "{\"1002\": 1500}", "poundageOf");
    row("rate alone", Task::Account, "[\"1002\", 1500]", "1500", "poundageOf");
    row("pair of three", Task::Account, "1500]", "1500, 1]", "poundageOf");
    row("pair of one", Task::Account, "\"1002\", 1500", "\"1002\"", "poundageOf");
    row("collection is a number", Task::Account, "\"1002\"", "1002", "poundageOf");
    row("collection is the composite", Task::Account, "\"1002\"", "\"-1\"", "poundageOf");
    row("rate for one twice", Task::Account, "[\"1002\", 1500]",
        "[\"1002\", 1500], [\"1002\", 1600]", "poundageOf");
    row("rate for one above all", Task::Account, "1500", "9223372036854775807", "poundageOf");
    row("key twice", Task::Account, "\"phone\":", "\"phone\": \"1\", \"phone\":", "twice");

    row("money is null", Task::Cap, "\"available\": 500000", "\"available\": null", "available");
    row("money below zero", Task::Cap, "\"available\": 500000", "\"available\": -1", "available");
    row("money is a text", Task::Cap, "\"frozen\": 700", "\"frozen\": \"700\"", "frozen");
    row("money with a fraction", Task::Cap, "\"frozen\": 700", "\"frozen\": 700.01", "frozen");
    row("money is huge", Task::Cap, "\"total\": 530700", "\"total\": 9000000000000001", "total");
    row("money beyond 64 bits", Task::Cap, "\"total\": 530700", "\"total\": 18446744073709551616",
        "total");
    row("profit beyond its range", Task::Cap, "-300", "-9000000000000001", "profit");
    row("profit is null", Task::Cap, "-300", "null", "profit");
    row("items are an object", Task::Cap, "\"items\": [", "\"items\": {}, \"x\": [", "items");
    row("holding is a list", Task::Cap, "\"items\": [", "\"items\": [[], ", "collection");
    row("holding twice", Task::Cap, "\"collection\": \"1002\"", "\"collection\": \"1001\"",
        "collection");
    row("holding of the composite", Task::Cap, "\"collection\": \"1002\"",
        "\"collection\": \"-1002\"", "collection");
    row("holding of a word", Task::Cap, "\"collection\": \"1002\"", "\"collection\": \"x\"",
        "collection");
    row("code is a number", Task::Cap, "\"101002\"", "101002", "code");
    row("pieces below zero", Task::Cap, "\"quantity\": 30", "\"quantity\": -30", "quantity");
    row("pieces are null", Task::Cap, "\"quantity\": 30", "\"quantity\": null", "quantity");
    row("more to sell than held", Task::Cap, "\"sellable\": 15", "\"sellable\": 31", "sellable");
    row("cost below zero", Task::Cap, "\"cost\": 29700", "\"cost\": -1", "cost");
    row("cost beyond its range", Task::Cap, "\"cost\": 29700", "\"cost\": 9000000000000001",
        "cost");
    row("cost with a fraction", Task::Cap, "\"cost\": 29700", "\"cost\": 29700.5", "cost");
    row("price below zero", Task::Cap, "\"latest\": 1000", "\"latest\": -1", "latest");

    row("sum is null", Task::Gather, "\"buyFee\": 15", "\"buyFee\": null", "buyFee");
    row("sum below zero", Task::Gather, "\"buyAmount\": 5000", "\"buyAmount\": -5000", "buyAmount");
    row("sum is a text", Task::Gather, "\"sellFee\": 6", "\"sellFee\": \"6\"", "sellFee");
    row("sum is huge", Task::Gather, "\"sellQuantity\": 2", "\"sellQuantity\": 9000000000000001",
        "sellQuantity");
    row("loss beyond its range", Task::Gather, "-120", "-9000000000000001", "sellProfit");
    row("collection twice", Task::Gather, "\"collection\": \"1002\"", "\"collection\": \"1001\"",
        "collection");
    row("name is null", Task::Gather, "\"藏品1001\"", "null", "name");
}

void AccountShapesTest::brokenShapes()
{
    QFETCH(int, shape);
    QFETCH(QByteArray, data);
    QFETCH(QString, reason);
    ZvReply reply;
    QString error;
    QVERIFY(!decode(data, Task::Shape(shape), reply, error));
    QVERIFY(!error.isEmpty());
    QVERIFY2(error.contains(reason), qPrintable(error));
    QVERIFY(!reply.account && !reply.cap && !reply.gather);
}

void AccountShapesTest::everyMemberIsNeeded_data()
{
    QTest::addColumn<int>("shape");
    QTest::addColumn<QByteArray>("key");
    static const QRegularExpression member(QStringLiteral("\"([A-Za-z]+)\":"));
    for (const Task::Shape shape : {Task::Account, Task::Cap, Task::Gather}) {
        QSet<QString> seen;
        for (auto it = member.globalMatch(QString::fromUtf8(good(shape))); it.hasNext();) {
            const QString key = it.next().captured(1);
            if (!seen.contains(key))
                QTest::newRow(qPrintable(QString::number(shape) + key))
                    << int(shape) << key.toUtf8();
            seen.insert(key);
        }
    }
}

void AccountShapesTest::everyMemberIsNeeded()
{
    QFETCH(int, shape);
    QFETCH(QByteArray, key);
    ZvReply reply;
    QString error;
    const QByteArray data
        = good(Task::Shape(shape)).replace("\"" + key + "\":", "\"x" + key + "\":");
    QVERIFY(!decode(data, Task::Shape(shape), reply, error));
    QVERIFY2(error.contains(QLatin1String("missing")) && error.contains(QString::fromUtf8(key)),
             qPrintable(error));
}

void AccountShapesTest::unknownMembersAreSkipped()
{
    ZvReply reply;
    QString error;
    for (const Task::Shape shape : {Task::Account, Task::Cap, Task::Gather}) {
        const QByteArray data
            = good(shape).replace("\"name\":", "\"later\": [1.5, {}, null], \"name\":");
        QVERIFY2(decode(data, shape, reply, error), qPrintable(error));
    }
}

void AccountShapesTest::thousandsOfHoldings()
{
    QList<QByteArray> holdings;
    for (int i = 0; i < 5000; ++i)
        holdings.append(KitBench::holding(QByteArray::number(100000 + i)));
    ZvReply reply;
    QString error;
    QVERIFY2(decode(KitBench::cap(1, holdings), Task::Cap, reply, error), qPrintable(error));
    QCOMPARE(reply.cap->data->items().size(), 5000);
    QCOMPARE(reply.cap->data->getCapItem(QStringLiteral("10104999")).quantity(), 30);
}

void AccountShapesTest::mutations_data()
{
    QTest::addColumn<int>("shape");
    QTest::newRow("account") << int(Task::Account);
    QTest::newRow("cap") << int(Task::Cap);
    QTest::newRow("gather") << int(Task::Gather);
}

// Whatever comes is refused with a reason, or keeps every promise of the shape.
void AccountShapesTest::mutations()
{
    QFETCH(int, shape);
    const quint32 seed = qEnvironmentVariableIsSet("ZV_SEED")
        ? qEnvironmentVariable("ZV_SEED").toUInt()
        : 20200101;
    std::mt19937 random(seed + static_cast<quint32>(shape));
    const auto below = [&random](int bound) {
        return static_cast<int>(random() % static_cast<unsigned>(std::max(1, bound)));
    };
    const QByteArrayList pieces{"null",
                                "true",
                                "-1",
                                "0",
                                "1.5",
                                "1e3",
                                "1e400",
                                "-0",
                                "9000000000000000",
                                "9000000000000001",
                                "-9000000000000000",
                                "9223372036854775807",
                                "9223372036854775808",
                                "-9223372036854775808",
                                "18446744073709551615",
                                "\"\"",
                                "\"1001\"",
                                "\"-1\"",
                                "\"\\u0000\"",
                                "\"\\ud800\"",
                                "{}",
                                "[]",
                                "[[]]",
                                "[\"1001\", 1]",
                                "\xff"};
    const QByteArray whole = good(Task::Shape(shape));
    int refused = 0;
    int accepted = 0;
    for (int i = 0; i < 3000; ++i) {
        QByteArray data = whole;
        for (int change = below(2); change >= 0 && !data.isEmpty(); --change) {
            const int at = below(data.size());
            switch (below(8)) {
            case 0:
                data.truncate(at);
                break;
            case 1:
                data[at] = static_cast<char>(below(256));
                break;
            case 2:
                data.remove(at, 1 + below(20));
                break;
            case 3:
                data.insert(at, data.mid(below(data.size()), 1 + below(60)));
                break;
            case 4: // a figure becomes another
            case 5: {
                int digit = at;
                while (digit < data.size() && (data.at(digit) < '0' || data.at(digit) > '9'))
                    ++digit;
                if (digit < data.size())
                    data.replace(digit, 1,
                                 QByteArray::number(quint64(random())).left(1 + below(10)));
                break;
            }
            default: { // a whole value becomes another
                const int colon = data.indexOf(": ", at);
                int end = colon + 2;
                while (end < data.size() && !QByteArray(",}]").contains(data.at(end)))
                    ++end;
                if (colon > 0)
                    data.replace(colon + 2, end - colon - 2, pieces.at(below(pieces.size())));
                break;
            }
            }
        }
        ZvReply reply;
        QString error;
        if (!decode(data, Task::Shape(shape), reply, error)) {
            ++refused;
            QVERIFY2(!error.isEmpty(), data);
            QVERIFY2(!reply.account && !reply.cap && !reply.gather, data);
            continue;
        }
        ++accepted;
        if (reply.account) {
            QVERIFY2(!reply.account->accountNumber().isEmpty(), data);
            for (const char *id : {"1001", "1002", "-1", ""}) {
                const double rate = reply.account->getPoundageRage(QString::fromLatin1(id));
                QVERIFY2(rate >= 0 && rate <= 1, data);
            }
        }
        if (reply.cap) {
            const ZvUBCapInfo::Data &cap = reply.cap->data->data();
            for (const qint64 fen :
                 {cap.heldMarketValue, cap.availableMoney, cap.frozenMoney, cap.totalAssets})
                QVERIFY2(fen >= 0 && fen <= mostFen, data);
            QVERIFY2(std::abs(cap.profit) <= mostFen, data);
            QSet<QString> ids;
            for (const ZvUBCapItem &item : cap.items) {
                const ZvUBCapItem::Data &held = item.data();
                QVERIFY2(held.quantity >= 0 && held.sellable >= 0 && held.sellable <= held.quantity,
                         data);
                QVERIFY2(held.cost >= 0 && held.cost <= mostFen && held.latest >= -1, data);
                QVERIFY2(!ids.contains(held.collectionId), data);
                ids.insert(held.collectionId);
                for (int column = 0; column < 13; ++column)
                    item.displayDataForModelUse(column);
            }
        }
        if (reply.gather) {
            const ZvUBGatherInfo::Data &sums = reply.gather->data();
            QCOMPARE(sums.kindCount, qint64(sums.items.size()));
            QVERIFY2(sums.buyQuantity >= 0 && sums.totalFee >= 0, data);
        }
    }
    qInfo("%d refused, %d accepted", refused, accepted);
    QVERIFY(refused > 1000);
    QVERIFY(accepted > 200);
}

ZV_TEST(AccountShapesTest)
#include "test_accountshapes.moc"
