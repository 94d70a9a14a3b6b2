#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/collectiontablemodel.h"
#include "marketrows.h"
#include "support/identityproxy.h"
#include "support/testregistry.h"

#include <QAbstractItemModelTester>

#include <memory>

using zvtest::collection;
using zvtest::collections;
using zvtest::moved;

namespace {

constexpr int FlashRole = Qt::BackgroundRole;
const QVector<int> ChangeRoles{Qt::EditRole, Qt::DisplayRole, Qt::BackgroundRole};
const QVector<int> EndRoles{Qt::BackgroundRole};

// One dataChanged as "row,column [roles]"; a range of more than one cell shows both ends.
QStringList changes(const QSignalSpy &spy)
{
    QStringList all;
    for (const QVariantList &arguments : spy) {
        const auto from = arguments.at(0).toModelIndex();
        const auto to = arguments.at(1).toModelIndex();
        QString text = QStringLiteral("%1,%2").arg(from.row()).arg(from.column());
        if (to != from)
            text += QStringLiteral("-%1,%2").arg(to.row()).arg(to.column());
        QStringList roles;
        for (const int role : arguments.at(2).value<QVector<int>>())
            roles << QString::number(role);
        all << text + QStringLiteral(" [") + roles.join(' ') + QStringLiteral("]");
    }
    return all;
}

QStringList announced(int row, const QList<int> &columns, const QString &roles)
{
    QStringList all;
    for (const int column : columns)
        all << QStringLiteral("%1,%2 [%3]").arg(row).arg(column).arg(roles);
    return all;
}

// The number columns in which two rows differ, in the order of the list.
QList<int> differing(const ZvUBObject &a, const ZvUBObject &b)
{
    QList<int> columns;
    for (const int column : ZvUBObject::ColumnIdsForFloatSort()) {
        if (a.editDataForModelUse(column) != b.editDataForModelUse(column))
            columns << column;
    }
    return columns;
}

QStringList blueCells(const CollectionTableModel &model)
{
    QStringList cells;
    for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
            const QVariant value = model.data(model.index(row, column), FlashRole);
            if (value == QVariant(QColor(Qt::blue)))
                cells << QStringLiteral("%1,%2").arg(row).arg(column);
            else if (value.isValid())
                cells << QStringLiteral("not blue");
        }
    }
    return cells;
}

QStringList cells(int row, const QList<int> &columns)
{
    QStringList all;
    for (const int column : columns)
        all << QStringLiteral("%1,%2").arg(row).arg(column);
    all.sort();
    return all;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

// The colour rule as a chain over the column lists.
QColor expectedColour(const ZvUBObject &item, int column)
{
    const auto byCode = [](int code) {
        return QColor(code == 1 ? Qt::red : code == 2 ? Qt::green : Qt::white);
    };
    if (item.displayDataForModelUse(column) == QLatin1String("--"))
        return Qt::white;
    if (ZvUBObject::columnIdsForWhiteColor().contains(column))
        return Qt::white;
    if (ZvUBObject::columnIdsForYellowColor().contains(column))
        return (item.resultCompareIntWithZero(column) & 0xff) == 0 ? Qt::yellow : Qt::white;
    if (ZvUBObject::columnIdsForZhengFuColor().contains(column))
        return byCode(item.resultCompareFloatWithZero(column));
    if (ZvUBObject::columnIdsForAdjustColor().contains(column))
        return byCode(item.resultCompareFloatWithLast(column));
    return Qt::yellow;
}

// A rising row, a falling one, one that stands, one without any figure, and one without deals.
QList<ZvUBObject> oneOfEachKind()
{
    ZvUBObject::Data bare;
    bare.collectionId = QStringLiteral("2000");
    bare.code = QStringLiteral("C2000");
    bare.name = QStringLiteral("未上市");
    ZvUBObject::Data idle = zvtest::collectionData(1002);
    idle.volume = 0;
    idle.amount = 0;
    idle.bidQuantity = 0;
    return {collection(1002), collection(1003), collection(1001), ZvUBObject(bare),
            ZvUBObject(idle)};
}

} // namespace

class CollectionTableModelTest : public QObject
{
    Q_OBJECT

private slots:
    void countsIgnoreTheParent()
    {
        CollectionTableModel model;
        QCOMPARE(model.rowCount(), 0);
        QCOMPARE(model.columnCount(), ZvUBObject::dataCountForModelUse());
        model.setMarketList(collections(3));
        QCOMPARE(model.rowCount(), 3);
        QCOMPARE(model.rowCount(model.index(0, 0)), 3);
        QCOMPARE(model.columnCount(model.index(0, 0)), ZvUBObject::dataCountForModelUse());
    }

    void invalidIndexHasNoData()
    {
        CollectionTableModel model;
        model.setMarketList(collections(1));
        for (const int role : {0, 2, 7, 8, 9, 256})
            QVERIFY(!model.data(QModelIndex(), role).isValid());
        QCOMPARE(model.collectionId(QModelIndex()), QString());
        QCOMPARE(model.introductionUrl(QModelIndex()), QString());
    }

    void displayIsTheItemsTextAndTheRowNumber()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> rows = oneOfEachKind();
        model.setMarketList(rows);
        for (int row = 0; row < rows.size(); ++row) {
            const QVariant number = model.data(model.index(row, 0));
            QCOMPARE(number.userType(), int(QMetaType::Int));
            QCOMPARE(number.toInt(), row + 1);
            for (int column = 1; column < model.columnCount(); ++column) {
                const QVariant text = model.data(model.index(row, column), 0);
                QCOMPARE(text.userType(), int(QMetaType::QString));
                QCOMPARE(text.toString(), rows.at(row).displayDataForModelUse(column));
            }
        }
    }

    void editIsAFloatInNumberColumnsOnly()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> rows = oneOfEachKind();
        model.setMarketList(rows);
        const QList<int> numbers = ZvUBObject::ColumnIdsForFloatSort();
        QVERIFY(!numbers.isEmpty());
        for (int row = 0; row < rows.size(); ++row) {
            for (int column = 0; column < model.columnCount(); ++column) {
                const QVariant value = model.data(model.index(row, column), 2);
                QCOMPARE(value.isValid(), numbers.contains(column));
                if (!value.isValid())
                    continue;
                QCOMPARE(value.userType(), int(QMetaType::Float));
                QCOMPARE(value.toFloat(), rows.at(row).editDataForModelUse(column));
            }
        }
    }

    void cellsAlign()
    {
        CollectionTableModel model;
        model.setMarketList(collections(1));
        for (int column = 0; column < model.columnCount(); ++column) {
            const QVariant value = model.data(model.index(0, column), 7);
            QCOMPARE(value.userType(), int(QMetaType::Int));
            QCOMPARE(value.toInt(), column <= 1 ? 132 : column == 2 ? 129 : 130);
        }
    }

    void foregroundFollowsTheChain()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> rows = oneOfEachKind();
        model.setMarketList(rows);
        QSet<QRgb> seen;
        for (int row = 0; row < rows.size(); ++row) {
            for (int column = 0; column < model.columnCount(); ++column) {
                const QVariant value = model.data(model.index(row, column), 9);
                QCOMPARE(value.userType(), int(QMetaType::QColor));
                QCOMPARE(value.value<QColor>(), expectedColour(rows.at(row), column));
                seen.insert(value.value<QColor>().rgb());
            }
        }
        QCOMPARE(seen.size(), 4);
    }

    void redIsUpAndGreenIsDown()
    {
        CollectionTableModel model;
        model.setMarketList({moved(collection(1001), 10000), moved(collection(1001), -5000)});
        const int column = ZvUBObject::columnIdsForZhengFuColor().first();
        QCOMPARE(model.data(model.index(0, column), 9).value<QColor>(), QColor(Qt::red));
        QCOMPARE(model.data(model.index(1, column), 9).value<QColor>(), QColor(Qt::green));
    }

    void missingValueIsWhiteAndWithoutTriangle()
    {
        CollectionTableModel model;
        model.setMarketList({oneOfEachKind().at(3)});
        int missing = 0;
        for (int column = 0; column < model.columnCount(); ++column) {
            const QModelIndex index = model.index(0, column);
            if (model.data(index).toString() != QLatin1String("--"))
                continue;
            ++missing;
            QCOMPARE(model.data(index, 9).value<QColor>(), QColor(Qt::white));
            QVERIFY(model.data(index, 256).value<QImage>().isNull());
        }
        QVERIFY(missing >= ZvUBObject::columnIdsForTriangleDecorate().size());
        for (const int column : ZvUBObject::columnIdsForTriangleDecorate())
            QCOMPARE(model.data(model.index(0, column)).toString(), QStringLiteral("--"));
    }

    void trianglesPointWithTheSign()
    {
        const QImage up(QStringLiteral(":/icons/TriangleUpRed.png"));
        const QImage down(QStringLiteral(":/icons/TriangleDownGreen.png"));
        QVERIFY(!up.isNull());
        QVERIFY(!down.isNull());
        CollectionTableModel model;
        const QList<ZvUBObject> rows = oneOfEachKind();
        model.setMarketList(rows);
        const QList<int> columns = ZvUBObject::columnIdsForTriangleDecorate();
        for (int row = 0; row < rows.size(); ++row) {
            for (int column = 0; column < model.columnCount(); ++column) {
                const QVariant value = model.data(model.index(row, column), 256);
                QCOMPARE(value.isValid(), columns.contains(column));
                if (!value.isValid())
                    continue;
                QCOMPARE(value.userType(), int(QMetaType::QImage));
                const int code = rows.at(row).resultCompareFloatWithZero(column);
                QCOMPARE(value.value<QImage>(), code == 1 ? up : code == 2 ? down : QImage());
            }
        }
    }

    void otherRolesAreEmpty()
    {
        CollectionTableModel model;
        model.setMarketList(collections(1));
        for (const int role : {1, 3, 4, 5, 6, 10, 13, 257}) {
            QVERIFY(!model.data(model.index(0, 3), role).isValid());
            QVERIFY(!model.headerData(3, Qt::Horizontal, role).isValid());
        }
    }

    void header()
    {
        CollectionTableModel model;
        const QStringList texts = ZvUBObject::headerListForModelUse();
        QCOMPARE(texts.size(), model.columnCount());
        for (int section = 0; section < texts.size(); ++section) {
            QCOMPARE(model.headerData(section, Qt::Horizontal, 0).toString(), texts.at(section));
            const QVariant alignment = model.headerData(section, Qt::Horizontal, 7);
            QCOMPARE(alignment.userType(), int(QMetaType::Int));
            QCOMPARE(alignment.toInt(), section <= 2 ? 132 : 130);
            const QVariant foreground = model.headerData(section, Qt::Horizontal, 9);
            QCOMPARE(foreground.userType(), int(QMetaType::QColor));
            QCOMPARE(
                foreground.value<QColor>(),
                QColor(
                    ZvServerConfig::getZvServerConfigInstance()->getStyleOf_MarketTableHeader()));
            QCOMPARE(model.headerData(section, Qt::Horizontal, 8), QVariant(QColor(Qt::black)));
            for (const int role : {0, 7, 8, 9})
                QVERIFY(!model.headerData(section, Qt::Vertical, role).isValid());
        }
    }

    void idAndIntroductionComeFromAnyColumn()
    {
        CollectionTableModel model;
        model.setMarketList({collection(1001), zvtest::composite()});
        QCOMPARE(model.collectionId(model.index(0, 5)), QStringLiteral("1001"));
        QCOMPARE(model.introductionUrl(model.index(0, 5)),
                 collection(1001).displayDataForModelUse(20));
        QCOMPARE(model.collectionId(model.index(1, 0)), QStringLiteral("-1"));
        QCOMPARE(model.introductionUrl(model.index(1, 0)), QString());
    }

    void firstListResetsAndFlashesNothing()
    {
        CollectionTableModel model;
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setMarketList(collections(4));
        QCOMPARE(reset.size(), 1);
        QCOMPARE(changed.size(), 0);
        QCOMPARE(blueCells(model), QStringList());
    }

    void listOfAnotherLengthResets_data()
    {
        QTest::addColumn<int>("count");
        QTest::newRow("longer") << 5;
        QTest::newRow("shorter") << 3;
        QTest::newRow("empty") << 0;
    }

    void listOfAnotherLengthResets()
    {
        QFETCH(int, count);
        CollectionTableModel model;
        model.setMarketList(collections(4));
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QList<ZvUBObject> rows = collections(count);
        if (count > 0)
            rows[0] = moved(rows[0], 100);
        model.setMarketList(rows);
        QCOMPARE(reset.size(), 1);
        QCOMPARE(changed.size(), 0);
        QCOMPARE(model.rowCount(), count);
        QCOMPARE(blueCells(model), QStringList());
    }

    void unchangedPollReplacesAndEmitsNothing()
    {
        CollectionTableModel model;
        model.setMarketList(collections(4));
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

        QList<ZvUBObject> renamed = collections(4);
        ZvUBObject::Data data = renamed.at(2).data();
        const QString before = data.name;
        data.name = QStringLiteral("另一个名字");
        renamed[2] = ZvUBObject(data);
        model.setMarketList(renamed);

        QCOMPARE(reset.size() + changed.size(), 0);
        QCOMPARE(model.data(model.index(2, 2)).toString(), before);
    }

    void changedNumbersAreAnnouncedCellByCell()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> before = collections(4);
        model.setMarketList(before);
        QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);

        QList<ZvUBObject> after = before;
        after[1] = moved(after[1], 100);
        after[3] = moved(after[3], -100);
        model.setMarketList(after);

        const QList<int> first = differing(before.at(1), after.at(1));
        const QList<int> second = differing(before.at(3), after.at(3));
        QVERIFY(first.size() > 1);
        QCOMPARE(reset.size(), 0);
        QCOMPARE(changes(changed),
                 announced(1, first, QStringLiteral("2 0 8"))
                     + announced(3, second, QStringLiteral("2 0 8")));
        QCOMPARE(sorted(blueCells(model)), sorted(cells(1, first) + cells(3, second)));
        QCOMPARE(model.data(model.index(1, first.first())).toString(),
                 after.at(1).displayDataForModelUse(first.first()));
    }

    void flashEndsAfterASecond()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> before = collections(2);
        model.setMarketList(before);
        const QList<ZvUBObject> after{before.at(0), moved(before.at(1), 100)};
        QElapsedTimer clock;
        clock.start();
        model.setMarketList(after);
        QSignalSpy ended(&model, &QAbstractItemModel::dataChanged);
        QTRY_VERIFY_WITH_TIMEOUT(!ended.isEmpty(), 5000);
        QVERIFY2(clock.elapsed() >= 990, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(changes(ended),
                 announced(1, differing(before.at(1), after.at(1)), QStringLiteral("8")));
        QCOMPARE(blueCells(model), QStringList());
    }

    void secondUpdateAnnouncesAllAndTheFirstTimerEndsAll()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> start = collections(3);
        model.setMarketList(start);
        const QList<ZvUBObject> first{moved(start.at(0), 100), start.at(1), start.at(2)};
        const QList<ZvUBObject> second{first.at(0), first.at(1), moved(start.at(2), 100)};
        const QList<int> firstCells = differing(start.at(0), first.at(0));
        const QList<int> secondCells = differing(start.at(2), second.at(2));

        QElapsedTimer clock;
        clock.start();
        model.setMarketList(first);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QEventLoop pause;
        QTimer::singleShot(500, &pause, &QEventLoop::quit);
        pause.exec();
        QVERIFY2(clock.elapsed() < 950, "the machine was too slow for this test");
        const qint64 secondStart = clock.elapsed();
        model.setMarketList(second);

        QCOMPARE(changes(changed),
                 announced(0, firstCells, QStringLiteral("2 0 8"))
                     + announced(2, secondCells, QStringLiteral("2 0 8")));
        QCOMPARE(sorted(blueCells(model)), sorted(cells(0, firstCells) + cells(2, secondCells)));

        changed.clear();
        QTRY_VERIFY_WITH_TIMEOUT(!changed.isEmpty(), 5000);
        QVERIFY2(clock.elapsed() - secondStart < 990, "ended by the timer of the second update");
        QCOMPARE(changes(changed),
                 announced(0, firstCells, QStringLiteral("8"))
                     + announced(2, secondCells, QStringLiteral("8")));
        QCOMPARE(blueCells(model), QStringList());

        // The second timer finds nothing to end.
        changed.clear();
        QTimer::singleShot(1100, &pause, &QEventLoop::quit);
        pause.exec();
        QCOMPARE(changed.size(), 0);
    }

    void pollWithoutChangeDuringAFlashAnnouncesTheFlashingCells()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> start = collections(2);
        model.setMarketList(start);
        const QList<ZvUBObject> after{moved(start.at(0), 100), start.at(1)};
        model.setMarketList(after);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        model.setMarketList(after);
        QCOMPARE(changes(changed),
                 announced(0, differing(start.at(0), after.at(0)), QStringLiteral("2 0 8")));
    }

    void resetEndsTheFlash()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> start = collections(3);
        model.setMarketList(start);
        model.setMarketList({moved(start.at(0), 100), start.at(1), start.at(2)});
        QVERIFY(!blueCells(model).isEmpty());
        model.setMarketList(collections(2));
        QCOMPARE(blueCells(model), QStringList());
        model.setMarketList(collections(3));
        QCOMPARE(blueCells(model), QStringList());

        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QEventLoop pause;
        QTimer::singleShot(1100, &pause, &QEventLoop::quit);
        pause.exec();
        QCOMPARE(changed.size(), 0);
    }

    void anotherCollectionInARowIsComparedLikeAnyOther()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> before = collections(2);
        model.setMarketList(before);
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        const QList<ZvUBObject> after{before.at(0), collection(1500)};
        model.setMarketList(after);
        QCOMPARE(changes(changed),
                 announced(1, differing(before.at(1), after.at(1)), QStringLiteral("2 0 8")));
        QCOMPARE(model.collectionId(model.index(1, 0)), QStringLiteral("1500"));
    }

    void backgroundAsksForTheVeryModel()
    {
        CollectionTableModel model;
        CollectionTableModel other;
        const QList<ZvUBObject> start = collections(2);
        other.setMarketList(start);
        model.setMarketList(start);
        model.setMarketList({moved(start.at(0), 100), start.at(1)});
        const int column = differing(start.at(0), moved(start.at(0), 100)).first();
        QVERIFY(model.data(model.index(0, column), FlashRole).isValid());
        QVERIFY(!model.data(other.index(0, column), FlashRole).isValid());
    }

    void backgroundAsksForTheVeryIndex()
    {
        // Makes indexes of its own that hold a pointer.
        class PointingModel : public CollectionTableModel
        {
        public:
            QModelIndex pointing(int row, int column)
            {
                return createIndex(row, column, static_cast<void *>(this));
            }
        };
        PointingModel model;
        const QList<ZvUBObject> start = collections(1);
        model.setMarketList(start);
        model.setMarketList({moved(start.at(0), 100)});
        const int column = differing(start.at(0), moved(start.at(0), 100)).first();
        QVERIFY(model.data(model.index(0, column), FlashRole).isValid());
        QVERIFY(!model.data(model.pointing(0, column), FlashRole).isValid());
    }

    void listenersOfAResetSeeNoFlash()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> start = collections(2);
        model.setMarketList(start);
        model.setMarketList({moved(start.at(0), 100), start.at(1)});
        QVERIFY(!blueCells(model).isEmpty());
        QStringList seen{QStringLiteral("not asked")};
        connect(&model, &QAbstractItemModel::modelReset, &model, [&] { seen = blueCells(model); });
        model.setMarketList(collections(9));
        QCOMPARE(seen, QStringList());
    }

    void timerEndsWithTheModel()
    {
        auto model = std::make_unique<CollectionTableModel>();
        const QList<ZvUBObject> start = collections(1);
        model->setMarketList(start);
        model->setMarketList({moved(start.at(0), 100)});
        model.reset();
        QEventLoop pause;
        QTimer::singleShot(1100, &pause, &QEventLoop::quit);
        pause.exec();
    }

    void wrapperRunsOnceForATickAfterTheRowsAreReplaced()
    {
        CollectionTableModel model;
        const QList<ZvUBObject> start = collections(2);
        model.setMarketList(start);
        const QList<ZvUBObject> after{moved(start.at(0), 100), start.at(1)};
        const int column = differing(start.at(0), after.at(0)).first();
        QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
        QStringList heard;
        model.setEmissionWrapper(
            [&](const QList<QModelIndex> &, const CollectionTableModel::Emission &emission) {
                heard << QString::number(changed.size())
                      << model.data(model.index(0, column)).toString();
                emission();
                heard << (changed.isEmpty() ? "silent" : "announced");
            });
        model.setMarketList(start);
        QCOMPARE(heard, QStringList());
        model.setMarketList(after);
        QCOMPARE(heard,
                 (QStringList{QStringLiteral("0"), after.at(0).displayDataForModelUse(column),
                              QStringLiteral("announced")}));
    }

    void staysAValidModelThroughTicksAndResets()
    {
        CollectionTableModel model;
        zvtest::FlatIdentityProxy proxy(&model);
        QAbstractItemModelTester tester(&proxy,
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        QRandomGenerator random(20200101);
        // The tester walks through the whole table at each changed cell, so the table is small.
        for (const int count : {12, 12, 0, 5}) {
            QList<ZvUBObject> rows = collections(count);
            model.setMarketList(rows);
            for (int i = 0; i < 3; ++i) {
                rows = zvtest::tick(rows, 3, random);
                model.setMarketList(rows);
                for (int row = 0; row < count; ++row) {
                    for (int column = 1; column < model.columnCount(); ++column)
                        QCOMPARE(proxy.data(proxy.index(row, column)).toString(),
                                 rows.at(row).displayDataForModelUse(column));
                }
            }
        }
    }
};

ZV_TEST(CollectionTableModelTest)
#include "test_collectiontablemodel.moc"
