#include "ZvWidgetKit/collectionsortfilterproxymodel.h"
#include "ZvWidgetKit/collectiontablemodel.h"
#include "marketrows.h"
#include "support/testregistry.h"

#include <QStandardItemModel>

using zvtest::collection;

namespace {

int firstNumberColumn()
{
    return ZvUBObject::ColumnIdsForFloatSort().first();
}

QStringList column(const QAbstractItemModel &model, int columnId)
{
    QStringList texts;
    for (int row = 0; row < model.rowCount(); ++row)
        texts << model.index(row, columnId).data().toString();
    return texts;
}

// The latest price is column 3; see the header of ZvUBObject.
ZvUBObject priced(int number, qint64 fen)
{
    ZvUBObject::Data data = zvtest::collectionData(number);
    data.latest = fen;
    return ZvUBObject(data);
}

// Answers its edit role by itself, the other way round.
class NegatedModel : public CollectionTableModel
{
public:
    QVariant data(const QModelIndex &index, int role) const override
    {
        const QVariant value = CollectionTableModel::data(index, role);
        return role == Qt::EditRole && value.isValid() ? QVariant(-value.toFloat()) : value;
    }
};

} // namespace

class CollectionSortFilterProxyModelTest : public QObject
{
    Q_OBJECT

private slots:
    void numbersSortByValue()
    {
        CollectionTableModel model;
        CollectionSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        model.setMarketList({priced(1, 1000), priced(2, 900), priced(3, 20000)});
        proxy.sort(3, Qt::AscendingOrder);
        QCOMPARE(column(proxy, 3), (QStringList{"9.00", "10.00", "200.00"}));
        proxy.sort(3, Qt::DescendingOrder);
        QCOMPARE(column(proxy, 3), (QStringList{"200.00", "10.00", "9.00"}));
    }

    void textsSortByTheBaseClass()
    {
        CollectionTableModel model;
        CollectionSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        model.setMarketList({collection(3), collection(20), collection(100)});
        proxy.sort(1, Qt::AscendingOrder);
        QCOMPARE(column(proxy, 1), (QStringList{"C100", "C20", "C3"}));
    }

    void missingValueSortsByItsNumber()
    {
        ZvUBObject::Data bare = zvtest::collectionData(7);
        bare.latest = zvub::noValue;
        ZvUBObject::Data falling = zvtest::collectionData(8);
        falling.latest = falling.previousClose - 100;
        ZvUBObject::Data rising = zvtest::collectionData(9);
        rising.latest = rising.previousClose + 100;
        CollectionTableModel model;
        CollectionSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        model.setMarketList({ZvUBObject(rising), ZvUBObject(bare), ZvUBObject(falling)});
        const int change = ZvUBObject::columnIdsForZhengFuColor().first();
        proxy.sort(change, Qt::AscendingOrder);
        QCOMPARE(column(proxy, 1), (QStringList{"C8", "C7", "C9"}));
        QCOMPARE(column(proxy, change).at(1), QStringLiteral("--"));
    }

    void anotherSourceIsReadThroughItsEditRole()
    {
        QStandardItemModel model(3, firstNumberColumn() + 1);
        const QList<float> values{10, 9, 200};
        for (int row = 0; row < values.size(); ++row)
            model.setData(model.index(row, firstNumberColumn()), values.at(row), Qt::EditRole);
        CollectionSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.sort(firstNumberColumn(), Qt::AscendingOrder);
        QCOMPARE(column(proxy, firstNumberColumn()), (QStringList{"9", "10", "200"}));
    }

    void derivedSourceIsReadThroughItsEditRole()
    {
        NegatedModel model;
        CollectionSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        model.setMarketList({priced(1, 1000), priced(2, 900), priced(3, 20000)});
        proxy.sort(3, Qt::AscendingOrder);
        QCOMPARE(column(proxy, 3), (QStringList{"200.00", "10.00", "9.00"}));
    }

    void tiesKeepTheirOrder()
    {
        CollectionTableModel model;
        CollectionSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.setDynamicSortFilter(true);
        model.setMarketList({priced(1, 500), priced(2, 500), priced(3, 400), priced(4, 500)});
        proxy.sort(3, Qt::AscendingOrder);
        QCOMPARE(column(proxy, 1), (QStringList{"C3", "C1", "C2", "C4"}));
    }

    void emissionLeavesTheSwitchOfDynamicSortingAsItWas_data()
    {
        QTest::addColumn<bool>("dynamic");
        QTest::addColumn<int>("price");
        QTest::newRow("dynamic, order holds") << true << 1001;
        QTest::newRow("dynamic, order broken") << true << 50000;
        QTest::newRow("static, order holds") << false << 1001;
        QTest::newRow("static, order broken") << false << 50000;
    }

    void emissionLeavesTheSwitchOfDynamicSortingAsItWas()
    {
        QFETCH(bool, dynamic);
        QFETCH(int, price);
        CollectionTableModel model;
        CollectionSortFilterProxyModel proxy;
        proxy.setSourceModel(&model);
        proxy.setDynamicSortFilter(dynamic);
        model.setMarketList({priced(1, 1000), priced(2, 2000)});
        proxy.sort(3, Qt::AscendingOrder);
        int emissions = 0;
        bool duringEmission = false;
        model.setEmissionWrapper(
            [&](const QList<QModelIndex> &changed, const CollectionTableModel::Emission &emission) {
                proxy.keepOrder(changed, [&] {
                    ++emissions;
                    duringEmission = proxy.dynamicSortFilter();
                    emission();
                });
            });
        int layouts = 0;
        connect(&proxy, &QAbstractItemModel::layoutChanged, &proxy, [&layouts] { ++layouts; });
        model.setMarketList({priced(1, price), priced(2, 2000)});
        QCOMPARE(emissions, 1);
        QCOMPARE(proxy.dynamicSortFilter(), dynamic);
        const bool holds = price < 2000;
        QCOMPARE(duringEmission, dynamic && holds);
        QCOMPARE(layouts, dynamic && !holds ? 1 : 0);
        QCOMPARE(column(proxy, 1),
                 dynamic && !holds ? (QStringList{"C2", "C1"}) : (QStringList{"C1", "C2"}));
    }
};

ZV_TEST(CollectionSortFilterProxyModelTest)
#include "test_collectionsortfilterproxymodel.moc"
