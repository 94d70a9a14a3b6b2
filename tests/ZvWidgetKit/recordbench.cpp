#include "recordbench.h"

#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord.h"
#include "ZvWidgetKit/dealwidget_select_delegaterecord.h"
#include "ZvWidgetKit/dealwidget_select_delegatetoday.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow.h"
#include "ZvWidgetKit/recordpage.h"
#include "recordrows.h"

#include <QRegularExpression>
#include <QTableView>
#include <QtTest/QtTest>

namespace zvtest {
namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

// The call of one of the engine's queries, its arguments as they are logged.
QString call(const QString &name, const QStringList &arguments)
{
    return QStringLiteral("ZvServerEngine::sendRequest_Select_%1(%2)")
        .arg(name, arguments.join(QStringLiteral(", ")));
}

QString quoted(const QString &text)
{
    return QLatin1Char('"') + text + QLatin1Char('"');
}

QString figure(int number)
{
    return QString::number(number);
}

template <typename Page>
std::unique_ptr<RecordPage> makePage()
{
    return std::make_unique<Page>();
}

QList<RecordMember> makeMembers()
{
    const QStringList sides{QStringLiteral("卖出"), QStringLiteral("买入"), QStringLiteral("全部")};
    const QStringList ways{QStringLiteral("出金"), QStringLiteral("入金"), QStringLiteral("全部")};
    const QMap<int, int> nineColumns{{0, 100}, {1, 320}, {2, 100}, {3, 100},
                                     {4, 100}, {5, 100}, {6, 100}, {7, 200}};
    const QMap<int, int> orderColumns{{1, 200}, {2, 100}, {3, 200}, {4, 50}, {6, 100}};
    QList<RecordMember> members;
    members.append({QStringLiteral("deals"),
                    makePage<DealWidget_Select_DealRecord>,
                    QStringLiteral("frame_recordPanel"),
                    QStringLiteral("frame_container_dealRecord"),
                    true,
                    sides,
                    [](const QString &start, const QString &stop, int page, int type) {
                        return call(
                            QStringLiteral("DealRecord"),
                            {quoted(start), quoted(stop), figure(page), figure(type), figure(10)});
                    },
                    [](int count, int first) {
                        cache()->storeDealRecordList(rowsOf(dealRecord, count, first));
                    },
                    [] { cache()->storeDealRecordList({longestDealRecord()}); },
                    8,
                    nineColumns,
                    {}});
    members.append(
        {QStringLiteral("orders of the day"),
         makePage<DealWidget_Select_DelegateToday>,
         QStringLiteral("frame_delegatePanel"),
         QStringLiteral("frame_container_delegateToday"),
         false,
         sides,
         [](const QString &, const QString &, int page, int type) {
             return call(QStringLiteral("DelegateToday"), {figure(page), figure(10), figure(type)});
         },
         [](int count, int first) { cache()->storeDelegateToday(rowsOf(order, count, first)); },
         [] { cache()->storeDelegateToday({longestOrder()}); },
         1,
         orderColumns,
         {0, 10, 13}});
    members.append(
        {QStringLiteral("orders of the past"),
         makePage<DealWidget_Select_DelegateRecord>,
         QStringLiteral("frame_delegatePanel"),
         QStringLiteral("frame_container_delegateRecord"),
         true,
         sides,
         [](const QString &start, const QString &stop, int page, int type) {
             return call(QStringLiteral("DelegateRecord"),
                         {quoted(start), quoted(stop), figure(page), figure(type), figure(10)});
         },
         [](int count, int first) { cache()->storeDelegateRecord(rowsOf(order, count, first)); },
         [] { cache()->storeDelegateRecord({longestOrder()}); },
         1,
         orderColumns,
         {0, 10, 13}});
    members.append(
        {QStringLiteral("applications"),
         makePage<DealWidget_Select_ApplyRecord>,
         QStringLiteral("frame_recordPanel"),
         QStringLiteral("frame_container_apply"),
         true,
         QStringList(),
         [](const QString &start, const QString &stop, int page, int) {
             return call(QStringLiteral("ApplyRecord"),
                         {figure(page), quoted(start), quoted(stop)});
         },
         [](int count, int first) { cache()->storeApplyList(rowsOf(application, count, first)); },
         [] { cache()->storeApplyList({longestApplication()}); },
         8,
         nineColumns,
         {}});
    members.append(
        {QStringLiteral("money"),
         makePage<DealWidget_Select_MoneyFlow>,
         QStringLiteral("frame_recordPanel"),
         QStringLiteral("tableView_containter_moneyFlow"),
         true,
         ways,
         [](const QString &start, const QString &stop, int page, int type) {
             return call(QStringLiteral("MoneyFlow"),
                         {figure(page), figure(type), quoted(start), quoted(stop)});
         },
         [](int count, int first) { cache()->storeMoneyFlowList(rowsOf(moneyFlow, count, first)); },
         [] { cache()->storeMoneyFlowList({longestMoneyFlow()}); },
         0,
         {{0, 100}, {1, 100}, {2, 200}, {3, 100}, {4, 200}},
         {}});
    return members;
}

} // namespace

const QList<RecordMember> &recordMembers()
{
    static const QList<RecordMember> members = makeMembers();
    return members;
}

void addRecordMembers()
{
    QTest::addColumn<int>("place");
    for (int place = 0; place < recordMembers().size(); ++place)
        QTest::newRow(qPrintable(recordMembers().at(place).name)) << place;
}

QTableView *tableOf(const RecordPage *page)
{
    return page->findChild<QTableView *>();
}

QString shownRecords(const RecordMember &member, const RecordPage *page)
{
    const QAbstractItemModel *model = tableOf(page)->model();
    QStringList numbers;
    for (int row = 0; row < model->rowCount(); ++row)
        numbers << model->index(row, member.numberColumn).data().toString();
    return numbers.join(QLatin1Char(' '));
}

QStringList withoutTimes(QStringList lines)
{
    static const QRegularExpression time(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\d"));
    for (QString &line : lines)
        line.replace(time, QStringLiteral("<time>"));
    return lines;
}

} // namespace zvtest
