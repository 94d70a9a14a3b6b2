#include "moneybench.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QtTest/QtTest>

namespace zvtest {

ZvServerActionResult *actions()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

ZvUBMyAcount accountWithPhone(const QString &phone)
{
    ZvUBMyAcount::Data data;
    data.phone = phone;
    return ZvUBMyAcount(data);
}

ZvUBCapInfo availableMoney(qint64 fen)
{
    ZvUBCapInfo::Data data;
    data.availableMoney = fen;
    return ZvUBCapInfo(data);
}

QStringList notices()
{
    return BreltGlobalFunction::getBreltGlobalFunciton()->notices();
}

void dropNotices()
{
    // What stands passes at once when enough newer ones come, and those pass by themselves.
    BreltGlobalFunction *global = BreltGlobalFunction::getBreltGlobalFunciton();
    global->setNoticeDuration(1);
    for (int i = 0; i < 5 && !notices().isEmpty(); ++i)
        global->alertMessage(QStringLiteral("-"));
    QTRY_VERIFY(notices().isEmpty());
    global->setNoticeDuration(0);
}

MoneyBench::MoneyBench()
{
    ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
        QStringLiteral("/lc/youbika/"));
    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
    cache->storeMyAccount(accountWithPhone(QStringLiteral("13912345678")));
    cache->storeCapInfo(availableMoney(123456789));
    cache->bankPicturePrefix = QStringLiteral("qrc:/icons/");
    cache->bankPictureName = QStringLiteral("appicon");
    cache->bankPictureSuffix = QStringLiteral("png");
    cache->bankCardTail = QStringLiteral("6789");
    dialog = new Small_Money_InOut(nullptr);
    dialog->show();
    if (!QTest::qWaitForWindowActive(dialog))
        QTest::qFail("the dialog does not become the active window", __FILE__, __LINE__);
}

MoneyBench::~MoneyBench()
{
    // The dialog goes first: it would show the endings as notices.
    delete dialog;
    m_kit.endActions();
    dropNotices();
}

void MoneyBench::click(const QString &name)
{
    QVERIFY2(widget(name)->isVisible(), qPrintable(name));
    QTest::mouseClick(widget(name), Qt::LeftButton);
}

void MoneyBench::typeAmount(const QString &text)
{
    amount()->setFocus();
    amount()->selectAll();
    QTest::keyClick(amount(), Qt::Key_Delete);
    QTest::keyClicks(amount(), text);
}

void MoneyBench::typeCode(const QString &text)
{
    code()->setFocus();
    code()->clear();
    QTest::keyClicks(code(), text);
}

QStringList MoneyBench::prompts() const
{
    QStringList shown;
    for (const char *name : {"label_moneyPrompt", "label_codePrompt"}) {
        if (!label(name)->text().isEmpty())
            shown << QLatin1String(name) + QStringLiteral(": ") + label(name)->text();
    }
    return shown;
}

} // namespace zvtest
