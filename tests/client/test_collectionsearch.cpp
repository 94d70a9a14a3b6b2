#include "client/collectionsearch.h"

#include "support/testregistry.h"

#include "ZvModelKit/zvubbriefinfo.h"

#include <QtTest/QtTest>

namespace {

ZvUBBriefItem item(const QString &code, const QString &name, const QStringList &initials)
{
    ZvUBBriefItem::Data data;
    data.collectionId = QStringLiteral("9") + code;
    data.code = code;
    data.name = name;
    data.initials = initials;
    return ZvUBBriefItem(data);
}

ZvUBBriefInfo market(const QList<ZvUBBriefItem> &items)
{
    ZvUBBriefInfo::Data data;
    data.items = items;
    return ZvUBBriefInfo(data);
}

ZvUBBriefInfo usualMarket()
{
    return market({item("111001", "荷塘小型张", {"htxxz"}), item("111002", "白鹭四方连", {"blsfl"}),
                   item("111003", "长城首日封", {"ccsrf", "zcsrf"}),
                   item("111004", "重阳登高版", {"cydgb", "zydgb"}),
                   item("112005", "云溪套票", {"yxtp"}), item("220111", "小型张荷塘", {"xxzht"}),
                   item("333005", "2016年龙币", {"2016nlb"}), item("HT77", "虎头帽", {"htm"})});
}

QString codes(const QVector<CollectionMatch> &matches)
{
    QStringList list;
    for (const CollectionMatch &match : matches)
        list << match.code;
    return list.join(' ');
}

} // namespace

class CollectionSearchTest : public QObject
{
    Q_OBJECT

private slots:
    void findsTheBestFirst_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("found");
        QTest::newRow("whole code") << "112005"
                                    << "112005";
        QTest::newRow("begin of codes before their inside") << "111"
                                                            << "111001 111002 111003 111004 220111";
        QTest::newRow("end of codes") << "005"
                                      << "112005 333005";
        QTest::newRow("begin of a name with digits") << "2016"
                                                     << "333005";
        QTest::newRow("begin of a code before begins of initials, insides last")
            << "ht"
            << "HT77 111001 220111";
        QTest::newRow("whole initials before begins") << "htm"
                                                      << "HT77";
        QTest::newRow("other reading") << "zc"
                                       << "111003";
        QTest::newRow("both readings once") << "c"
                                            << "111003 111004";
        QTest::newRow("begin of a name before its inside") << "荷塘"
                                                           << "111001 220111";
        QTest::newRow("capitals") << "YXTP"
                                  << "112005";
        QTest::newRow("full width") << "ｙｘｔｐ"
                                    << "112005";
        QTest::newRow("full width digits") << "１１２"
                                           << "112005";
        QTest::newRow("unfinished composition") << "yx't p"
                                                << "112005";
        QTest::newRow("typographic apostrophe") << QStringLiteral("yx\u2019tp") << "112005";
        QTest::newRow("nothing typed") << ""
                                       << "";
        QTest::newRow("blanks alone") << "  "
                                      << "";
        QTest::newRow("nothing there") << "qqq"
                                       << "";
        QTest::newRow("no pattern") << "1.*"
                                    << "";
    }
    void findsTheBestFirst()
    {
        QFETCH(QString, typed);
        QFETCH(QString, found);
        QCOMPARE(codes(CollectionSearch(usualMarket()).find(typed, 100)), found);
    }

    void aWholeMatchStandsBeforeALongerOne()
    {
        const CollectionSearch search(market(
            {item("5001", "甲", {"ab"}), item("500", "乙", {"a"}), item("1500", "丙", {"ba"})}));
        QCOMPARE(codes(search.find("500", 9)), QStringLiteral("500 5001 1500"));
        QCOMPARE(codes(search.find("a", 9)), QStringLiteral("500 5001 1500"));
    }

    void theReadingThatAnsweredIsTold()
    {
        const CollectionSearch search(usualMarket());
        QCOMPARE(search.find("zydg", 9).value(0).initials, QStringLiteral("zydgb"));
        QCOMPARE(search.find("111004", 9).value(0).initials, QStringLiteral("cydgb"));
        QCOMPARE(search.find("zydg", 9).value(0).name, QStringLiteral("重阳登高版"));
    }

    void noMoreThanAreWanted()
    {
        QList<ZvUBBriefItem> items;
        for (int i = 0; i < 3000; ++i)
            items << item(QString::number(100000 + i), "藏品", {"cp"});
        const CollectionSearch search(market(items));
        const QVector<CollectionMatch> found = search.find("1", 100);
        QCOMPARE(found.size(), 100);
        QCOMPARE(found.last().code, QStringLiteral("100099"));
        QCOMPARE(search.find("1", 0).size(), 0);
        // The limit counts over all ranks.
        QCOMPARE(search.find("100", 100).size(), 100);
    }

    void anEmptyMarketAnswersNothing()
    {
        QVERIFY(CollectionSearch().isEmpty());
        QVERIFY(CollectionSearch(ZvUBBriefInfo()).isEmpty());
        QVERIFY(!CollectionSearch(usualMarket()).isEmpty());
        QVERIFY(CollectionSearch().find("1", 100).isEmpty());
    }

    void aYearMayBeLeftOut()
    {
        const CollectionSearch search(
            market({item("1", "甲百合", {"jbh"}), item("2", "14年百合新票", {"14nbhxp"}),
                    item("3", "2019百合", {"2019bh"})}));
        QCOMPARE(codes(search.find("bh", 9)), QStringLiteral("3 2 1"));
        QCOMPARE(codes(search.find("百合", 9)), QStringLiteral("3 2 1"));
        QCOMPARE(codes(search.find("bhxp", 9)), QStringLiteral("2"));
        QCOMPARE(search.find("bhxp", 9).first().initials, QStringLiteral("14nbhxp"));
        QCOMPARE(codes(search.find("14n", 9)), QStringLiteral("2"));
        QCOMPARE(codes(search.find("14年", 9)), QStringLiteral("2"));
    }

    void aCollectionWithoutInitialsIsFoundByTheRest()
    {
        const CollectionSearch search(market({item("600", "无名", {})}));
        QCOMPARE(codes(search.find("无", 9)), QStringLiteral("600"));
        QCOMPARE(search.find("6", 9).value(0).initials, QString());
    }
};

ZV_TEST(CollectionSearchTest)
#include "test_collectionsearch.moc"
