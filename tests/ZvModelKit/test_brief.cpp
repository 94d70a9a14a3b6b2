#include "ZvModelKit/zvubbriefinfo.h"

#include "support/testregistry.h"

#include <QtTest>

namespace {

ZvUBBriefItem item(const QString &id, const QString &code, const QString &name,
                   const QStringList &initials = {})
{
    return ZvUBBriefItem(ZvUBBriefItem::Data{id, code, name, initials});
}

ZvUBBriefInfo market()
{
    return ZvUBBriefInfo(ZvUBBriefInfo::Data{{item("1003", "100003", "长城银币", {"ccyb", "zcyb"}),
                                              item("1001", "100001", "庚申猴票", {"gshp"}),
                                              item("1002", "100002", "梅兰芳")}});
}

} // namespace

// The names of a server's collections.
class BriefTest : public QObject
{
    Q_OBJECT

private slots:
    void looksUpInAllDirections();
    void unknownKeysGiveEmptyTexts();
    void listsKeepTheServersOrder();
    void initialsHoldEveryReading();
    void theFirstOfTwinsAnswers();
    void aDefaultListIsEmpty();
    void copiesShareAndCompareEqual();
};

void BriefTest::looksUpInAllDirections()
{
    const ZvUBBriefInfo info = market();
    QCOMPARE(info.getCodeFromCollectionID("1001"), QString("100001"));
    QCOMPARE(info.getNameFromCollectionID("1003"), QString("长城银币"));
    QCOMPARE(info.getCollectionIDFromCode("100002"), QString("1002"));
    QCOMPARE(info.getCollectionIDFromName("梅兰芳"), QString("1002"));
}

void BriefTest::unknownKeysGiveEmptyTexts()
{
    const ZvUBBriefInfo info = market();
    for (const QString &key : {QString(), QString("-1"), QString("9"), QString("100001 ")}) {
        QCOMPARE(info.getCodeFromCollectionID(key), QString());
        QCOMPARE(info.getNameFromCollectionID(key), QString());
        QCOMPARE(info.getCollectionIDFromCode(key), QString());
        QCOMPARE(info.getCollectionIDFromName(key), QString());
        QCOMPARE(info.initialsOf(key), QStringList());
    }
}

void BriefTest::listsKeepTheServersOrder()
{
    const ZvUBBriefInfo info = market();
    QCOMPARE(info.getIDList(), QStringList({"1003", "1001", "1002"}));
    QCOMPARE(info.getCodeList(), QStringList({"100003", "100001", "100002"}));
    QCOMPARE(info.getNameList(), QStringList({"长城银币", "庚申猴票", "梅兰芳"}));
}

void BriefTest::initialsHoldEveryReading()
{
    QCOMPARE(market().initialsOf("1003"), QStringList({"ccyb", "zcyb"}));
    QCOMPARE(market().initialsOf("1002"), QStringList());
}

void BriefTest::theFirstOfTwinsAnswers()
{
    const ZvUBBriefInfo info(ZvUBBriefInfo::Data{
        {item("1", "a", "同名"), item("2", "a", "同名"), item("1", "b", "异名")}});
    QCOMPARE(info.getCollectionIDFromName("同名"), QString("1"));
    QCOMPARE(info.getCollectionIDFromCode("a"), QString("1"));
    QCOMPARE(info.getCodeFromCollectionID("1"), QString("a"));
    QCOMPARE(info.getCodeList().size(), 3);
}

void BriefTest::aDefaultListIsEmpty()
{
    const ZvUBBriefInfo info;
    QVERIFY(info.getIDList().isEmpty());
    QVERIFY(info.getCodeList().isEmpty());
    QVERIFY(info.getNameList().isEmpty());
    QCOMPARE(info.getCodeFromCollectionID(""), QString());
}

void BriefTest::copiesShareAndCompareEqual()
{
    const ZvUBBriefInfo info = market();
    const ZvUBBriefInfo copy = info;
    QVERIFY(copy.getCodeList().isSharedWith(info.getCodeList()));
    QVERIFY(copy == info);
    QVERIFY(market() == info);
    QVERIFY(ZvUBBriefInfo() != info);
    QVERIFY(item("1", "a", "n", {"x"}) != item("1", "a", "n", {"y"}));
    const ZvUBBriefItem first = info.data().items.first();
    QCOMPARE(first.collectionId(), QString("1003"));
    QCOMPARE(first.code(), QString("100003"));
    QCOMPARE(first.name(), QString("长城银币"));
    QCOMPARE(first.initials().size(), 2);
    QCOMPARE(ZvUBBriefItem().name(), QString());
}

ZV_TEST(BriefTest)
#include "test_brief.moc"
