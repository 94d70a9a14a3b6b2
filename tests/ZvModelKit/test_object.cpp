#include "ZvModelKit/zvubobject.h"

#include "support/testregistry.h"

#include <QSet>
#include <QThread>
#include <QtTest>

#include <malloc.h>

#include <limits>

// Present when the program runs under AddressSanitizer, whose allocator malloc's own counters miss.
extern "C" __attribute__((weak)) std::size_t __sanitizer_get_current_allocated_bytes();

namespace {

ZvUBObject::Data stamp()
{
    ZvUBObject::Data data;
    data.collectionId = "1001";
    data.code = "100001";
    data.name = "庚申猴票";
    data.introduction = "http://127.0.0.1/introduction/1001";
    data.type = 3;
    data.latest = 1234;
    data.previousClose = 1200;
    data.open = 1210;
    data.high = 1250;
    data.low = 1190;
    data.bid = 1233;
    data.ask = 1235;
    data.bidQuantity = 40;
    data.askQuantity = 0;
    data.volume = 5000;
    data.amount = 6150000;
    data.listed = 100000;
    return data;
}

std::size_t allocatedBytes()
{
    return __sanitizer_get_current_allocated_bytes ? __sanitizer_get_current_allocated_bytes()
                                                   : mallinfo2().uordblks;
}

template <typename Entry>
QSet<Entry> asSet(const QList<Entry> &list)
{
    return QSet<Entry>(list.begin(), list.end());
}

bool isPlainNumber(const QString &text)
{
    static const QRegularExpression number("^-?[0-9]+(\\.[0-9]+)?$");
    return number.match(text).hasMatch();
}

} // namespace

// The row of the market table.
class ObjectTest : public QObject
{
    Q_OBJECT

private slots:
    void thereAreTwentyTwoColumns();
    void listsNameEachVisibleColumnOnce();
    void listsAndHeadersAreShared();
    void texts();
    void valuesAreTheTextsNumbers();
    void columnsOutsideTheRow_data();
    void columnsOutsideTheRow();
    void aDefaultRowHasNoValues();
    void missingFiguresAreDashesAndZero();
    void withoutADealTheMarketValueFollowsThePreviousClose();
    void aPreviousCloseOfZeroGivesNoRate();
    void theCompositeHasNoMoneyFigures();
    void extremeFigures();
    void colourCodes();
    void codesAgainstThePreviousCloseCompareExactly();
    void signCodes();
    void yellowAndWhite();
    void copiesShareOneRow();
    void equalityIsByData();
    void anUpdateKeepsWhatDidNotChange();
    void anUpdateEqualsARowMadeAnew();
    void equalPricesShareAText();
    void anEqualUpdateIsTheSameRow();
    void aRowMadeOnAnotherThreadIsReadHere();
    void aRowStaysWithinItsMemory();
};

void ObjectTest::thereAreTwentyTwoColumns()
{
    QCOMPARE(ZvUBObject::dataCountForModelUse(), 22);
    const QStringList headers = ZvUBObject::headerListForModelUse();
    QCOMPARE(headers.size(), 22);
    QCOMPARE(asSet<QString>(headers).size(), 22);
    QCOMPARE(headers.mid(1, 5), QStringList({"代码", "名称", "最新", "涨跌", "涨幅%"}));
}

void ObjectTest::listsNameEachVisibleColumnOnce()
{
    const QSet<int> hidden{0, 19, 20, 21};
    QSet<int> numbers;
    QSet<int> visible;
    for (int column = 0; column < 22; ++column) {
        if (!hidden.contains(column)) {
            visible.insert(column);
            if (column > 2) {
                numbers.insert(column);
            }
        }
    }
    QCOMPARE(asSet(ZvUBObject::ColumnIdsForFloatSort()), numbers);
    QCOMPARE(ZvUBObject::ColumnIdsForFloatSort().size(), numbers.size());
    QCOMPARE(asSet(ZvUBObject::avgWidthColumnIDList()), visible - QSet<int>{2});

    // The colour lists share the visible columns out among themselves.
    const QList<int> coloured = ZvUBObject::columnIdsForWhiteColor()
        + ZvUBObject::columnIdsForYellowColor() + ZvUBObject::columnIdsForZhengFuColor()
        + ZvUBObject::columnIdsForAdjustColor();
    QCOMPARE(coloured.size(), visible.size());
    QCOMPARE(asSet(coloured), visible);
    QVERIFY(ZvUBObject::columnIdsForYellowColor().contains(1));
    QVERIFY(ZvUBObject::columnIdsForYellowColor().contains(2));
    QCOMPARE(ZvUBObject::columnIdsForZhengFuColor(), QList<int>({4, 5}));

    // A triangle tells a direction, so it stands where the sign gives the colour.
    const QList<int> triangles = ZvUBObject::columnIdsForTriangleDecorate();
    QVERIFY(!triangles.isEmpty());
    for (int column : triangles) {
        QVERIFY(ZvUBObject::columnIdsForZhengFuColor().contains(column));
    }
}

void ObjectTest::listsAndHeadersAreShared()
{
    QVERIFY(ZvUBObject::ColumnIdsForFloatSort().isSharedWith(ZvUBObject::ColumnIdsForFloatSort()));
    QVERIFY(
        ZvUBObject::columnIdsForAdjustColor().isSharedWith(ZvUBObject::columnIdsForAdjustColor()));
    QVERIFY(ZvUBObject::headerListForModelUse().isSharedWith(ZvUBObject::headerListForModelUse()));
}

void ObjectTest::texts()
{
    const ZvUBObject row(stamp());
    const QStringList expected{"",      "100001", "庚申猴票",
                               "12.34", "0.34",   "2.83",
                               "12.33", "12.35",  "40",
                               "0",     "5000",   "61500.00",
                               "12.10", "12.50",  "11.90",
                               "12.00", "5.00",   "123.40万",
                               "12.30", "100000", "http://127.0.0.1/introduction/1001",
                               "1001"};
    QCOMPARE(expected.size(), 22);
    for (int column = 0; column < 22; ++column) {
        QCOMPARE(row.displayDataForModelUse(column), expected.at(column));
    }
}

void ObjectTest::valuesAreTheTextsNumbers()
{
    const ZvUBObject row(stamp());
    for (int column : ZvUBObject::ColumnIdsForFloatSort()) {
        const QString text = row.displayDataForModelUse(column);
        if (isPlainNumber(text)) {
            QCOMPARE(row.editDataForModelUse(column), text.toFloat());
        }
    }
    QCOMPARE(row.editDataForModelUse(11), 61500.0F);
    QCOMPARE(row.editDataForModelUse(17), 1234000.0F);
    QCOMPARE(row.editDataForModelUse(1), 0.0F);
}

void ObjectTest::columnsOutsideTheRow_data()
{
    QTest::addColumn<int>("column");
    QTest::newRow("negative") << -1;
    QTest::newRow("row number") << 0;
    QTest::newRow("behind the last") << 22;
    QTest::newRow("greatest") << std::numeric_limits<int>::max();
    QTest::newRow("least") << std::numeric_limits<int>::min();
}

void ObjectTest::columnsOutsideTheRow()
{
    QFETCH(int, column);
    const ZvUBObject row(stamp());
    QCOMPARE(row.displayDataForModelUse(column), QString());
    QCOMPARE(row.editDataForModelUse(column), 0.0F);
    QCOMPARE(row.resultCompareFloatWithZero(column), 0);
    QCOMPARE(row.resultCompareFloatWithLast(column), 0);
}

void ObjectTest::aDefaultRowHasNoValues()
{
    const ZvUBObject row;
    QVERIFY(row.sharesWith(ZvUBObject()));
    for (int column : {0, 1, 2, 20, 21}) {
        QCOMPARE(row.displayDataForModelUse(column), QString());
    }
    for (int column = 3; column < 20; ++column) {
        QCOMPARE(row.displayDataForModelUse(column), QString("--"));
        QCOMPARE(row.editDataForModelUse(column), 0.0F);
        QCOMPARE(row.resultCompareFloatWithZero(column), 0);
        QCOMPARE(row.resultCompareFloatWithLast(column), 0);
    }
}

void ObjectTest::missingFiguresAreDashesAndZero()
{
    ZvUBObject::Data data = stamp();
    data.latest = data.open = data.high = data.low = data.bid = data.bidQuantity = zvub::noValue;
    data.volume = data.amount = 0;
    const ZvUBObject row(data);
    // No deal yet: no latest, no change, no rate, no average. No buyer: no bid and no quantity.
    for (int column : {3, 4, 5, 6, 8, 12, 13, 14, 18}) {
        QCOMPARE(row.displayDataForModelUse(column), QString("--"));
        QCOMPARE(row.editDataForModelUse(column), 0.0F);
        QCOMPARE(row.resultCompareFloatWithZero(column), 0);
        QCOMPARE(row.resultCompareFloatWithLast(column), 0);
    }
    QCOMPARE(row.displayDataForModelUse(10), QString("0"));
    QCOMPARE(row.displayDataForModelUse(11), QString("0.00"));
    QCOMPARE(row.displayDataForModelUse(16), QString("0.00"));
    QCOMPARE(row.displayDataForModelUse(15), QString("12.00"));
}

void ObjectTest::withoutADealTheMarketValueFollowsThePreviousClose()
{
    ZvUBObject::Data data = stamp();
    data.latest = zvub::noValue;
    QCOMPARE(ZvUBObject(data).displayDataForModelUse(17), QString("120.00万"));
}

void ObjectTest::aPreviousCloseOfZeroGivesNoRate()
{
    ZvUBObject::Data data = stamp();
    data.previousClose = 0;
    data.listed = 0;
    const ZvUBObject row(data);
    for (int column : {4, 5, 16}) {
        QCOMPARE(row.displayDataForModelUse(column), QString("--"));
    }
    QCOMPARE(row.displayDataForModelUse(17), QString("0.00"));
}

void ObjectTest::theCompositeHasNoMoneyFigures()
{
    ZvUBObject::Data data = stamp();
    data.collectionId = "-1";
    const ZvUBObject row(data);
    QCOMPARE(row.displayDataForModelUse(3), QString("12.34"));
    QCOMPARE(row.displayDataForModelUse(5), QString("2.83"));
    QCOMPARE(row.displayDataForModelUse(16), QString("5.00"));
    QCOMPARE(row.displayDataForModelUse(17), QString("--"));
    QCOMPARE(row.displayDataForModelUse(18), QString("--"));
}

void ObjectTest::extremeFigures()
{
    constexpr qint64 greatest = std::numeric_limits<qint64>::max();
    ZvUBObject::Data data = stamp();
    data.latest = greatest;
    data.previousClose = 1;
    data.volume = data.amount = data.listed = greatest;
    const ZvUBObject high(data);
    QCOMPARE(high.displayDataForModelUse(3), QString("92233720368547758.07"));
    QCOMPARE(high.displayDataForModelUse(5), QString("92233720368547758.07"));
    QCOMPARE(high.displayDataForModelUse(10), QString("9223372036854775807"));
    QCOMPARE(high.displayDataForModelUse(11), QString("92233.72万亿"));
    QCOMPARE(high.displayDataForModelUse(16), QString("100.00"));
    QCOMPARE(high.displayDataForModelUse(17), QString("92233.72万亿"));
    QCOMPARE(high.displayDataForModelUse(18), QString("0.01"));
    QCOMPARE(high.editDataForModelUse(10), 9223372036854775807.0F);

    data.latest = 0;
    data.previousClose = greatest;
    const ZvUBObject low(data);
    QCOMPARE(low.displayDataForModelUse(3), QString("0.00"));
    QCOMPARE(low.displayDataForModelUse(4), QString("-92233720368547758.07"));
    QCOMPARE(low.displayDataForModelUse(5), QString("-100.00"));

    for (qint64 missing : {qint64(-1), std::numeric_limits<qint64>::min()}) {
        data.latest = data.previousClose = data.volume = data.amount = data.listed = missing;
        const ZvUBObject none(data);
        for (int column : {3, 4, 5, 10, 11, 15, 16, 17, 18, 19}) {
            QCOMPARE(none.displayDataForModelUse(column), QString("--"));
        }
    }
}

void ObjectTest::colourCodes()
{
    const ZvUBObject row(stamp());
    QCOMPARE(row.resultCompareFloatWithLast(3), 1);
    QCOMPARE(row.resultCompareFloatWithLast(14), 2);
    QCOMPARE(row.resultCompareFloatWithLast(13), 1);
    QCOMPARE(row.resultCompareFloatWithLast(18), 1);
    QCOMPARE(row.resultCompareFloatWithLast(15), 0);
    QCOMPARE(row.resultCompareFloatWithLast(10), 0);

    ZvUBObject::Data data = stamp();
    data.latest = data.previousClose;
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithLast(3), 0);
    data.previousClose = zvub::noValue;
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithLast(3), 0);
}

void ObjectTest::codesAgainstThePreviousCloseCompareExactly()
{
    ZvUBObject::Data data = stamp();
    data.previousClose = 13107199000;
    data.latest = 13107199001;
    const ZvUBObject row(data);
    QCOMPARE(row.editDataForModelUse(3), row.editDataForModelUse(15));
    QCOMPARE(row.resultCompareFloatWithLast(3), 1);
    QCOMPARE(row.resultCompareFloatWithZero(4), 1);
}

void ObjectTest::signCodes()
{
    ZvUBObject::Data data = stamp();
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithZero(4), 1);
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithZero(5), 1);
    data.latest = data.previousClose;
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithZero(4), 0);
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithZero(5), 0);
    data.latest = data.previousClose - 1;
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithZero(4), 2);
    QCOMPARE(ZvUBObject(data).resultCompareFloatWithZero(5), 2);
}

void ObjectTest::yellowAndWhite()
{
    const ZvUBObject row(stamp());
    QCOMPARE(row.resultCompareIntWithZero(1) & 0xff, 0);
    QCOMPARE(row.resultCompareIntWithZero(2) & 0xff, 0);
    QCOMPARE(row.resultCompareIntWithZero(8) & 0xff, 0);
    QVERIFY((row.resultCompareIntWithZero(9) & 0xff) != 0);
    QCOMPARE(ZvUBObject().resultCompareIntWithZero(1) & 0xff, 0);
}

void ObjectTest::copiesShareOneRow()
{
    const ZvUBObject row(stamp());
    ZvUBObject copy(row);
    QVERIFY(copy.sharesWith(row));
    QCOMPARE(static_cast<const void *>(copy.displayDataForModelUse(3).constData()),
             static_cast<const void *>(row.displayDataForModelUse(3).constData()));
    ZvUBObject assigned;
    assigned = row;
    QVERIFY(assigned.sharesWith(row));
    // Reading through a copy that is not const detaches nothing.
    QCOMPARE(copy.editDataForModelUse(3), 12.34F);
    QCOMPARE(copy.data().latest, qint64(1234));
    QVERIFY(copy.sharesWith(row));
    QCOMPARE(sizeof(ZvUBObject), sizeof(void *));
}

void ObjectTest::equalityIsByData()
{
    const ZvUBObject row(stamp());
    const ZvUBObject twin(stamp());
    QVERIFY(!row.sharesWith(twin));
    QVERIFY(row == twin);
    ZvUBObject::Data other = stamp();
    other.type = 4;
    QVERIFY(row != ZvUBObject(other));
}

void ObjectTest::anUpdateKeepsWhatDidNotChange()
{
    const ZvUBObject before(stamp());
    ZvUBObject::Data data = stamp();
    data.name = QString::fromUtf8("庚申猴票"); // equal, on memory of its own
    data.latest = 1240;
    data.volume = 5001;
    const ZvUBObject after = before.updated(data);
    QVERIFY(!after.sharesWith(before));
    const QSet<int> changed{3, 4, 5, 10, 17};
    for (int column = 1; column < 22; ++column) {
        const bool isShared = after.displayDataForModelUse(column).constData()
            == before.displayDataForModelUse(column).constData();
        // Average and turnover follow the volume too and round to the same figures here.
        QCOMPARE(isShared, !changed.contains(column));
    }
    // The row before is as it was.
    QCOMPARE(before.displayDataForModelUse(3), QString("12.34"));
}

void ObjectTest::anUpdateEqualsARowMadeAnew()
{
    QRandomGenerator random(20200101);
    ZvUBObject row;
    ZvUBObject::Data data = stamp();
    for (int round = 0; round < 2000; ++round) {
        qint64 *fields[] = {&data.latest,      &data.previousClose, &data.open,   &data.high,
                            &data.low,         &data.bid,           &data.ask,    &data.bidQuantity,
                            &data.askQuantity, &data.volume,        &data.amount, &data.listed};
        for (int change = 0; change < 3; ++change) {
            *fields[random.bounded(12)] = random.bounded(-1, 4000);
        }
        if (random.bounded(20) == 0) {
            data.collectionId = random.bounded(2) == 0 ? "-1" : "1001";
            data.name = QString::number(random.bounded(5));
        }
        row = row.updated(data);
        const ZvUBObject anew(data);
        QVERIFY(row == anew);
        for (int column = 0; column < 22; ++column) {
            QCOMPARE(row.displayDataForModelUse(column), anew.displayDataForModelUse(column));
            QCOMPARE(row.editDataForModelUse(column), anew.editDataForModelUse(column));
            QCOMPARE(row.resultCompareFloatWithLast(column),
                     anew.resultCompareFloatWithLast(column));
        }
    }
}

void ObjectTest::equalPricesShareAText()
{
    ZvUBObject::Data data = stamp();
    data.open = data.high = data.bid = data.latest;
    const ZvUBObject row(data);
    for (int column : {6, 12, 13}) {
        QCOMPARE(row.displayDataForModelUse(column), QString("12.34"));
        QCOMPARE(static_cast<const void *>(row.displayDataForModelUse(column).constData()),
                 static_cast<const void *>(row.displayDataForModelUse(3).constData()));
    }
    QCOMPARE(row.displayDataForModelUse(14), QString("11.90"));
}

void ObjectTest::anEqualUpdateIsTheSameRow()
{
    const ZvUBObject row(stamp());
    QVERIFY(row.updated(stamp()).sharesWith(row));
}

void ObjectTest::aRowMadeOnAnotherThreadIsReadHere()
{
    constexpr int rows = 500;
    QList<ZvUBObject> made;
    QScopedPointer<QThread> worker(QThread::create([&made] {
        for (int number = 0; number < rows; ++number) {
            ZvUBObject::Data data = stamp();
            data.latest = number;
            made.append(ZvUBObject(data));
        }
    }));
    worker->start();
    QVERIFY(worker->wait(30000));

    // Both threads copy, read and drop the same rows at once.
    const QList<ZvUBObject> shared = made;
    const auto readAll = [shared] {
        int right = 0;
        for (int number = 0; number < rows; ++number) {
            const ZvUBObject copy = shared.at(number);
            right += copy.displayDataForModelUse(3) == zvub::priceText(number) ? 1 : 0;
        }
        return right;
    };
    int rightThere = 0;
    QScopedPointer<QThread> reader(
        QThread::create([&rightThere, readAll] { rightThere = readAll(); }));
    reader->start();
    made.clear();
    const int rightHere = readAll();
    QVERIFY(reader->wait(30000));
    QCOMPARE(rightHere, rows);
    QCOMPARE(rightThere, rows);
}

void ObjectTest::aRowStaysWithinItsMemory()
{
    constexpr int rows = 20000;
    QList<ZvUBObject> table;
    table.reserve(rows);
    const std::size_t before = allocatedBytes();
    for (int number = 0; number < rows; ++number) {
        // No two texts of a row are equal, and all are as long as those of a dear collection.
        ZvUBObject::Data data;
        data.collectionId = QString::number(100000 + number);
        data.code = QString::number(600000 + number);
        data.name = QString("纪念邮票小型张第%1版").arg(number);
        data.introduction
            = QString("http://127.0.0.1:8080/lc/youbika/introduction/%1.html").arg(number);
        data.latest = 120000 + number;
        data.previousClose = 120010 + number;
        data.open = data.latest + 1;
        data.high = data.latest + 2;
        data.low = data.latest - 1;
        data.bid = data.latest - 2;
        data.ask = data.latest + 3;
        data.bidQuantity = 10000 + number;
        data.askQuantity = 20000 + number;
        data.volume = 10000 + number;
        data.amount = data.volume * data.latest;
        data.listed = 1000000 + number;
        table.append(ZvUBObject(data));
    }
    const std::size_t each = (allocatedBytes() - before) / rows;
    QVERIFY2(each <= 1536, qPrintable(QString("%1 bytes a row").arg(each)));
    QVERIFY2(each > 500, "the count of allocated bytes does not see the rows");
}

ZV_TEST(ObjectTest)
#include "test_object.moc"
