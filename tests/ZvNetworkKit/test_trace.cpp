#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QLoggingCategory>
#include <QtTest/QtTest>

// The lines of the call trace, to the letter.
class TraceTest : public QObject
{
    Q_OBJECT

private slots:
    void isOffByDefault();
    void engineLines();
    void actionLines();
    void secretsAreMasked();
    void everyOperationWritesOneLine();
};

namespace {

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerActionResult *actions()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

} // namespace

void TraceTest::isOffByDefault()
{
    const QLoggingCategory category("zv.kit", QtWarningMsg);
    QVERIFY(!category.isDebugEnabled());
}

void TraceTest::engineLines()
{
    zvtest::CallTrace trace;
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, 100);
    engine()->setIsOptionalCollectionIds(true);
    engine()->setCollectionTypeId(-1);
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    engine()->changedToMaketDetail();
    engine()->sendRequest_Select_MoneyFlow(1, 2, QStringLiteral("2019/01/01"), QString());
    ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
        QStringLiteral("/lc/youbika/"));
    const QStringList expected{
        QStringLiteral("ZvServerEngine::sendRequest_Market_Detail(\"1001\", 1, 100)"),
        QStringLiteral("ZvServerEngine::setIsOptionalCollectionIds(true)"),
        QStringLiteral("ZvServerEngine::setCollectionTypeId(-1)"),
        QStringLiteral("ZvServerEngine::setGlobalCollectionID(\"1001\")"),
        QStringLiteral("ZvServerEngine::changedToMaketDetail()"),
        QStringLiteral("ZvServerEngine::sendRequest_Select_MoneyFlow(1, 2, \"2019/01/01\", \"\")"),
        QStringLiteral("ZvServerAccessManager::setUrlPrefix(\"/lc/youbika/\")"),
    };
    QCOMPARE(trace.take(), expected);
}

void TraceTest::actionLines()
{
    zvtest::CallTrace trace;
    actions()->sendRequest_trade_buy(QStringLiteral("1001"), 12.5F, 3);
    actions()->sendRequest_trade_revoke({1, 2});
    actions()->sendRequest_trade_revoke({});
    const QStringList expected{
        QStringLiteral("ZvServerActionResult::sendRequest_trade_buy(\"1001\", 12.5, 3)"),
        QStringLiteral("ZvServerActionResult::sendRequest_trade_revoke([1, 2])"),
        QStringLiteral("ZvServerActionResult::sendRequest_trade_revoke([])"),
    };
    QCOMPARE(trace.take(), expected);
}

void TraceTest::secretsAreMasked()
{
    zvtest::CallTrace trace;
    const QString secret = QStringLiteral("hidden1");
    actions()->sendRequest_login(QStringLiteral("13800000000"), secret);
    actions()->sendRequest_register_sendCode(QStringLiteral("13800000000"));
    actions()->sendRequest_register(QStringLiteral("13900000000"), QStringLiteral("13800000000"),
                                    secret, secret);
    actions()->sendRequest_changePasswd_sendCode(QStringLiteral("13800000000"));
    actions()->sendRequest_changePasswd(QStringLiteral("13800000000"), secret, secret);
    actions()->sendRequest_inMoney(QStringLiteral("1.00"), secret, QStringLiteral("a"),
                                   QStringLiteral("b"));
    const QStringList expected{
        QStringLiteral("ZvServerActionResult::sendRequest_login(\"13800000000\", \"***\")"),
        QStringLiteral("ZvServerActionResult::sendRequest_register_sendCode(\"13800000000\")"),
        QStringLiteral("ZvServerActionResult::sendRequest_register(\"13900000000\", "
                       "\"13800000000\", \"***\", \"***\")"),
        QStringLiteral("ZvServerActionResult::sendRequest_changePasswd_sendCode(\"13800000000\")"),
        QStringLiteral("ZvServerActionResult::sendRequest_changePasswd(\"13800000000\", \"***\", "
                       "\"***\")"),
        QStringLiteral("ZvServerActionResult::sendRequest_inMoney(\"1.00\", \"***\", \"a\", "
                       "\"b\")"),
    };
    QCOMPARE(trace.take(), expected);
}

void TraceTest::everyOperationWritesOneLine()
{
    zvtest::CallTrace trace;
    const QString s;
    const std::vector<std::function<void()>> calls{
        [] { engine()->startLoggedEngine(); },
        [] { engine()->startUnloggedEngine(); },
        [] { engine()->changedToMarketList(); },
        [] { engine()->changedToTimeLine(); },
        [] { engine()->changedToDayKLine(); },
        [] { engine()->changedToWeekKLine(); },
        [] { engine()->changedToMonthKLine(); },
        [] { engine()->changedToMaketDetail(); },
        [] { engine()->changedToTransctionVisible(); },
        [] { engine()->changedToTransctionHidden(); },
        [] { engine()->changedToGatherVisible(); },
        [] { engine()->changedToGatherHidden(); },
        [] { engine()->setDealLatestLimit(7); },
        [] { engine()->flushCurrentTop5(); },
        [] { engine()->sendRequest_Market_Collection(); },
        [] { engine()->sendRequest_Market_List(); },
        [] { engine()->sendRequest_Collection_Type(); },
        [] { engine()->sendRequest_Message(); },
        [] { engine()->sendRequest_Cap(); },
        [] { engine()->sendRequest_Mybankcard(); },
        [] { engine()->sendRequest_getURL_INOUT(); },
        [] { engine()->sendRequest_ApplyList(1); },
        [] { engine()->sendRequest_RevokeList(1, 10); },
        [s] { engine()->sendRequest_Select_DealRecord(s, s, 1, 2, 10); },
        [] { engine()->sendRequest_Select_DelegateToday(1, 10, 2); },
        [s] { engine()->sendRequest_Select_DelegateRecord(s, s, 1, 2, 10); },
        [s] { engine()->sendRequest_Select_ApplyRecord(1, s, s); },
        [s] { engine()->sendRequest_Select_DeliveryRecord(1, s, s); },
        [s] { actions()->sendRequest_register_sendCode(s); },
        [s] { actions()->sendRequest_changePasswd_sendCode(s); },
        [s] { actions()->sendRequest_addOption(s); },
        [s] { actions()->sendRequest_removeOption(s); },
        [] { actions()->sendRequest_getOptions(1, 100); },
        [s] { actions()->sendRequest_trade_sell(s, 1.0F, 1); },
        [s] { actions()->sendRequest_prepay_send(s, 1, s, 1.0F, 1); },
        [s] { actions()->sendRequest_delivery(s, 1, s, s, s); },
        [s] { actions()->sendRequest_deliveryCancel(s); },
        [s] { actions()->sendRequest_inMoney_sendCode(s); },
        [s] { actions()->sendRequest_outMoney(s); },
    };
    for (const auto &call : calls) {
        call();
        const QStringList lines = trace.take();
        QCOMPARE(lines.size(), 1);
        QVERIFY2(lines.first().startsWith(QLatin1String("ZvServer"))
                     && lines.first().endsWith(QLatin1Char(')')),
                 qPrintable(lines.first()));
    }
}

ZV_TEST(TraceTest)
#include "test_trace.moc"
