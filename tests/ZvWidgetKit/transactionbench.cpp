#include "transactionbench.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_allwidgets.h"
#include "moneybench.h"

#include <QtTest/QtTest>

namespace zvtest {

const QStringList navigationButtons{
    QStringLiteral("pushButton_purchase"),
    QStringLiteral("pushButton_sell"),
    QStringLiteral("pushButton_withdrawal"),
    QStringLiteral("pushButton_select"),
    QStringLiteral("pushButton_select_historyDeal"),
    QStringLiteral("pushButton_select_currentDelegate"),
    QStringLiteral("pushButton_select_currentDeal"),
    QStringLiteral("pushButton_select_historyDelegate"),
    QStringLiteral("pushButton_select_purchaseApplyRecord"),
    QStringLiteral("pushButton_select_deliveryRecord"),
    QStringLiteral("pushButton_select_inputOutputRecord"),
    QStringLiteral("pushButton_prePay"),
    QStringLiteral("pushButton_deliveryHandling"),
};

TransactionBench::TransactionBench(int platform, const QSize &size)
{
    static int benches = 0;
    ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(
        ZvServerConfig::Platform(platform));
    ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
        QStringLiteral("/trading/%1/").arg(++benches));
    trading = std::make_unique<Transaction_Widget>();
    trading->resize(size);
    trading->show();
    if (!QTest::qWaitForWindowActive(trading.get()))
        QTest::qFail("the trading half does not become the active window", __FILE__, __LINE__);
    QCoreApplication::processEvents();
}

TransactionBench::~TransactionBench()
{
    trading.reset();
    m_kit.endActions();
    dropNotices();
}

void TransactionBench::click(const QString &name)
{
    // The column scrolls where it is higher than the window.
    QCoreApplication::processEvents();
    QVERIFY2(button(name)->isVisible(), qPrintable(name));
    QTest::mouseClick(button(name), Qt::LeftButton);
}

QStringList TransactionBench::checked() const
{
    QStringList names;
    for (const QString &name : navigationButtons) {
        if (button(name)->isChecked())
            names << name;
    }
    return names;
}

QStringList TransactionBench::shown() const
{
    QStringList names;
    for (const QString &name : navigationButtons) {
        if (button(name)->isVisible())
            names << name;
    }
    return names;
}

bool TransactionBench::isSelectOpen() const
{
    return !named<QFrame>(QStringLiteral("frame_select"))->isHidden();
}

QStackedWidget *TransactionBench::pages() const
{
    return trading->findChild<DealWidget_AllWidgets *>();
}

QString TransactionBench::page() const
{
    return QString::fromLatin1(pages()->currentWidget()->metaObject()->className());
}

QStackedWidget *TransactionBench::stack() const
{
    return trading->findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

bool TransactionBench::isLocked() const
{
    return stack()->currentIndex() == 1;
}

void TransactionBench::call(const char *slot)
{
    QVERIFY2(QMetaObject::invokeMethod(trading.get(), slot), slot);
}

} // namespace zvtest
