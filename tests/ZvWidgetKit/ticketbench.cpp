#include "ticketbench.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_prepay_tableview.h"
#include "detailfigures.h"
#include "moneybench.h"

#include <QtTest/QtTest>

#include <utility>

namespace zvtest {
namespace {

QString awaited;
std::function<void()> actionOnTrace;
QtMessageHandler nextHandler = nullptr;

void watchTrace(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (actionOnTrace && text.contains(awaited))
        std::exchange(actionOnTrace, {})();
    nextHandler(type, context, text);
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

void typeOver(QWidget *widget, QLineEdit *edit, const QString &text)
{
    widget->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    if (text.toLatin1() == text) {
        QTest::keyClicks(edit, text);
        return;
    }
    // What has no key comes through an input method.
    QInputMethodEvent event;
    event.setCommitString(text);
    QCoreApplication::sendEvent(edit, &event);
}

QLineEdit *editOf(QWidget *field)
{
    return field->findChild<QLineEdit *>();
}

} // namespace

ZvUBBriefInfo briefInfo(const QList<Collection> &collections)
{
    ZvUBBriefInfo::Data data;
    for (const Collection &each : collections) {
        ZvUBBriefItem::Data item;
        item.collectionId = each.id;
        item.code = each.code;
        item.name = each.name;
        data.items << ZvUBBriefItem(item);
    }
    return ZvUBBriefInfo(data);
}

QList<Collection> threeCollections()
{
    return {{"1001", "600137", "庚申猴票"},
            {"1002", "600138", "辛酉鸡票"},
            {"1003", "600139", "壬戌狗票"}};
}

OnTrace::OnTrace(const QString &part, std::function<void()> action)
{
    awaited = part;
    actionOnTrace = std::move(action);
    nextHandler = qInstallMessageHandler(watchTrace);
}

OnTrace::~OnTrace()
{
    qInstallMessageHandler(nextHandler);
    actionOnTrace = {};
}

TicketBench::TicketBench(ZvServerConfig::Platform platform)
{
    ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(platform);
    ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
        QStringLiteral("/lc/youbika/"));
    cache()->storeMyAccount(ZvUBMyAcount());
    cache()->capInfo = ZvUBCapInfo();
    cache()->gatherInfo = ZvUBGatherInfo();
    page = std::make_unique<DealWidget_BuySell>();
    page->resize(1242, 307);
    page->show();
    if (!QTest::qWaitForWindowActive(page.get()))
        QTest::qFail("the ticket does not become the active window", __FILE__, __LINE__);
    storeBrief(threeCollections());
    storeQuote(quoteData(QStringLiteral("1001")));
    storeMoney(100000000);
    m_log.take();
}

TicketBench::~TicketBench()
{
    // The page goes first: it would show the endings as notices.
    page.reset();
    m_kit.endActions();
    dropNotices();
    ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(QString());
}

QTableView *TicketBench::prepared() const
{
    return page->findChild<DealWidget_PrePay_TableView *>();
}

void TicketBench::click(const QString &name)
{
    QVERIFY2(named(name)->isVisible(), qPrintable(name));
    QTest::mouseClick(named(name), Qt::LeftButton);
}

void TicketBench::typePrice(const QString &text)
{
    typeOver(price(), editOf(price()), text);
}

void TicketBench::typeCount(const QString &text)
{
    typeOver(count(), editOf(count()), text);
}

void TicketBench::type(QComboBox *combo, const QString &text)
{
    typeOver(combo, combo->lineEdit(), text);
}

void TicketBench::clickPrice(qint64 fen)
{
    ZvUBTopFive::Data data = quoteData(QStringLiteral("1001"));
    data.latest = fen;
    storeQuote(data);
    click("label_latest_value");
}

void TicketBench::enter(const QString &price, const QString &count)
{
    typePrice(price);
    typeCount(count);
}

QList<ShownBox> TicketBench::order(const QString &answer, const std::function<void()> &meanwhile)
{
    BreltSpinBox *field = count();
    return boxesIn([field] { QTest::keyClick(field, Qt::Key_Return); }, meanwhile, answer);
}

void TicketBench::storeQuote(const ZvUBTopFive::Data &data)
{
    cache()->storeTopFive(data.collectionId, ZvUBTopFive(data));
}

void TicketBench::storeMoney(qint64 fen)
{
    ZvUBCapInfo::Data data = cache()->capInfo.data();
    data.availableMoney = fen;
    cache()->storeCapInfo(ZvUBCapInfo(data));
}

void TicketBench::storeBrief(const QList<Collection> &collections)
{
    cache()->storeBriefInfo(briefInfo(collections));
}

ZvUBMyAcount accountWithRates(const QHash<QString, qint64> &rates)
{
    ZvUBMyAcount::Data data;
    data.poundageOf = rates;
    return ZvUBMyAcount(data);
}

QString confirmation(const QString &code, const QString &name, const QString &price,
                     const QString &count)
{
    return "<p align='center'>商品ID:&nbsp;&nbsp;&nbsp;&nbsp;" + code + "</p><p align='center'>"
        + name + "</p><p align='center'>价格:" + price + "&nbsp;&nbsp;&nbsp;&nbsp;数量：" + count
        + "</p>";
}

} // namespace zvtest
