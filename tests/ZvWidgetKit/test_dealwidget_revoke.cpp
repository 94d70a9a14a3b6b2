#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_revoke.h"
#include "ZvWidgetKit/dealwidget_revoke_tableview.h"
#include "messageboxes.h"
#include "orderrows.h"
#include "record.h"
#include "support/testregistry.h"
#include "tablepagebench.h"

#include <QFrame>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QToolButton>
#include <QtTest/QtTest>

#include <memory>

using zvtest::boxesIn;
using zvtest::openOrders;
using zvtest::ShownBox;
using zvtest::tickedRows;

namespace {

using Bench = zvtest::TablePageBench<DealWidget_Revoke>;

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

const QStringList roundButtons{
    QStringLiteral("pushButton_allSelect"),      QStringLiteral("pushButton_allDiselect"),
    QStringLiteral("pushButton_withdrawal"),     QStringLiteral("pushButton_withdrawalBuy"),
    QStringLiteral("pushButton_withdrawalSell"), QStringLiteral("pushButton_withdrawalLast")};

} // namespace

class RevokePageTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Bench> m_bench;
    std::unique_ptr<zvtest::Record> m_record;

    QString said()
    {
        static const QRegularExpression time(QStringLiteral("(^|\n)\\d\\d:\\d\\d:\\d\\d\\d"));
        return m_record->take().replace(time, QStringLiteral("\\1<time>"));
    }

    // The page on the screen with orders on it, and nothing said yet.
    void fill(const QList<int> &numbers)
    {
        m_bench->show();
        cache()->storeRevokeList(openOrders(numbers));
        said();
    }

private slots:
    void init()
    {
        cache()->storeRevokeList({});
        m_record = std::make_unique<zvtest::Record>();
        m_bench = std::make_unique<Bench>();
        said();
    }

    void cleanup()
    {
        m_record.reset();
        m_bench.reset();
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::ChengHu);
    }

    void nothingIsAskedWhenThePageIsMade()
    {
        const DealWidget_Revoke page;
        QCOMPARE(said(), QString());
    }

    void formIsMadeAsRequired()
    {
        const QMap<QString, QString> texts{
            {"pushButton_allSelect", "全选"},      {"pushButton_allDiselect", "全不选"},
            {"pushButton_withdrawal", "撤单"},     {"pushButton_withdrawalBuy", "撤买"},
            {"pushButton_withdrawalSell", "撤卖"}, {"pushButton_withdrawalLast", "撤最后一笔"},
            {"pushButton_findCode", "查询代码"},   {"pushButton_select", "刷新"},
            {"toolButton_pageUp", "..."},          {"toolButton_pageDown", "..."}};
        for (auto text = texts.cbegin(); text != texts.cend(); ++text) {
            QCOMPARE(m_bench->named<QAbstractButton>(qPrintable(text.key()))->text(), text.value());
        }
        QStringList order;
        const QLayout *row = m_bench->named("frame")->layout();
        for (int i = 0; i < row->count(); ++i) {
            if (const QWidget *widget = row->itemAt(i)->widget())
                order << widget->objectName();
        }
        QCOMPARE(order,
                 roundButtons
                     + QStringList({"lineEdit_code", "pushButton_findCode", "pushButton_select",
                                    "toolButton_pageUp", "toolButton_pageDown"}));
        QCOMPARE(m_bench->page->layout()->itemAt(0)->widget(), m_bench->named("frame"));
        QCOMPARE(m_bench->page->layout()->itemAt(1)->widget(),
                 m_bench->named("widget_tableViewContainer"));
        QCOMPARE(m_bench->page->layout()->count(), 2);
    }

    void theTableFillsItsContainer()
    {
        m_bench->show();
        QWidget *container = m_bench->named("widget_tableViewContainer");
        QVERIFY(qobject_cast<DealWidget_Revoke_TableView *>(m_bench->table()));
        QCOMPARE(m_bench->table()->parentWidget(), container);
        QCOMPARE(m_bench->table()->geometry(), container->rect());
        QCOMPARE(container->layout()->spacing(), 0);
    }

    void whatHasNoUseIsHidden()
    {
        m_bench->show();
        for (const char *name :
             {"lineEdit_code", "pushButton_findCode", "toolButton_pageUp", "toolButton_pageDown"})
            QVERIFY2(m_bench->named(name)->isHidden(), name);
        for (const QString &name : roundButtons + QStringList("pushButton_select"))
            QVERIFY2(m_bench->named(qPrintable(name))->isVisible(), qPrintable(name));
        said();
        m_bench->named<QPushButton>("pushButton_findCode")->click();
        QCOMPARE(said(), QString());
    }

    void stylesAreThoseOfThePlatform_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::newRow("1") << ZvServerConfig::ChengHu;
        QTest::newRow("2") << ZvServerConfig::LanChuan;
    }
    void stylesAreThoseOfThePlatform()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
        config->setCurrentPlatform(platform);
        m_bench->page = std::make_unique<DealWidget_Revoke>();
        QCOMPARE(m_bench->page->layout()->contentsMargins(), QMargins());
        QCOMPARE(m_bench->page->layout()->spacing(), 0);
        QLayout *row = m_bench->named("frame")->layout();
        QCOMPARE(row->contentsMargins(), QMargins(3, 3, 3, 3));
        QCOMPARE(row->spacing(), 3);
        QCOMPARE(m_bench->named("frame")->styleSheet(),
                 QStringLiteral("QFrame{background-color:rgb(10,17,20)}"));
        m_bench->show();
        for (const QString &name : roundButtons) {
            const QWidget *button = m_bench->named(qPrintable(name));
            QCOMPARE(button->styleSheet(), config->getStyleOf_DealGrayRoundButton());
            QCOMPARE(button->minimumSize(), QSize(70, 24));
            QCOMPARE(button->size(), QSize(70, 24));
        }
        for (const char *name : {"pushButton_findCode", "pushButton_select"})
            QCOMPARE(m_bench->named(name)->styleSheet(), config->getStyleOf_DealCheckButton());
    }

    // A text that is cut off would read as another one.
    void textsFitTheirButtons()
    {
        const QFont usual = QApplication::font();
        QApplication::setFont(QFont(QStringLiteral("Noto Sans CJK SC"), 20));
        const DealWidget_Revoke page;
        QApplication::setFont(usual);
        for (const QString &name : roundButtons) {
            const auto *button = page.findChild<QPushButton *>(name);
            const int room = button->width() - 2 - 2 * 6; // without border and padding
            QVERIFY2(button->fontMetrics().horizontalAdvance(button->text()) <= room,
                     qPrintable(name));
        }
    }

    void showingThePageReloads()
    {
        m_bench->show();
        const int rows = m_bench->table()->height() / 22 - 1;
        QVERIFY(rows > 10);
        const QString reload
            = QStringLiteral("ZvServerEngine::sendRequest_RevokeList(1, %1)").arg(rows);
        QCOMPARE(said(), reload);
        m_bench->page->hide();
        m_bench->page->show();
        QCOMPARE(said(), reload);
        m_bench->click("pushButton_select");
        QCOMPARE(said(), reload);
        m_bench->call("slot_selectButton_clicked");
        QCOMPARE(said(), reload);
    }

    void hiddenButtonsStillTurnPages()
    {
        fill({9});
        m_bench->named<QToolButton>("toolButton_pageDown")->click();
        QVERIFY(said().startsWith(QStringLiteral("<time> ==> Down\n<time> ==> RequestPage: 2\n")));
        m_bench->named<QToolButton>("toolButton_pageUp")->click();
        QVERIFY(said().startsWith(QStringLiteral("<time> ==> Up\n<time> ==> RequestPage: 1\n")));
        m_bench->call("slot_pageDownButton_clicked");
        QVERIFY(said().contains(QStringLiteral("RequestPage: 2")));
        m_bench->call("slot_pageUpButton_clicked");
        QVERIFY(said().contains(QStringLiteral("RequestPage: 1")));
    }

    void buttonsTickAndClear()
    {
        fill({9, 8, 7});
        m_bench->click("pushButton_allSelect");
        QCOMPARE(tickedRows(m_bench->model()), QStringLiteral("0 1 2"));
        m_bench->click("pushButton_allDiselect");
        QCOMPARE(tickedRows(m_bench->model()), QString());
        QCOMPARE(said(), QString());
    }

    void buttonsTakeBack_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("question");
        QTest::addColumn<QString>("ids");
        QTest::newRow("ticked") << "pushButton_withdrawal"
                                << "确认撤掉选中？"
                                << "8";
        QTest::newRow("buys") << "pushButton_withdrawalBuy"
                              << "确认撤买？"
                              << "9, 7";
        QTest::newRow("sells") << "pushButton_withdrawalSell"
                               << "确认撤卖？"
                               << "8";
        QTest::newRow("last") << "pushButton_withdrawalLast"
                              << "确认撤掉最后一笔？"
                              << "9";
    }

    void buttonsTakeBack()
    {
        QFETCH(QString, button);
        QFETCH(QString, question);
        QFETCH(QString, ids);
        fill({9, 8, 7});
        const QRect tick = m_bench->table()->visualRect(m_bench->model()->index(1, 0));
        QTest::mouseClick(m_bench->table()->viewport(), Qt::LeftButton, {},
                          tick.center() + QPoint(3, 0));
        const QList<ShownBox> boxes = boxesIn([&] { m_bench->click(qPrintable(button)); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.at(0).text, QStringLiteral("<p align='center'>%1</p>").arg(question));
        QCOMPARE(said(),
                 QStringLiteral("ZvServerActionResult::sendRequest_trade_revoke([%1])").arg(ids));
    }

    void theLastOrderOfAnEmptyTable()
    {
        fill({});
        const QList<ShownBox> boxes = boxesIn([&] { m_bench->click("pushButton_withdrawalLast"); });
        QCOMPARE(boxes.size(), 0);
        QCOMPARE(zvtest::notices(), QStringList{QStringLiteral("当前委托列表为空！")});
        QCOMPARE(said(), QString());
    }

    // The second half of a double click falls on the box, which takes it for nothing.
    void tenFastClicksAskOnce()
    {
        fill({9});
        const QList<ShownBox> boxes
            = boxesIn([&] { m_bench->click("pushButton_withdrawalLast"); },
                      [&] {
                          QWidget *button = m_bench->named("pushButton_withdrawalLast");
                          for (int i = 0; i < 9; ++i)
                              QTest::mouseClick(m_bench->page->windowHandle(), Qt::LeftButton, {},
                                                button->geometry().center());
                          QCoreApplication::processEvents();
                      });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(said(), QStringLiteral("ZvServerActionResult::sendRequest_trade_revoke([9])"));
    }

    void slotsStandInTheirOrder()
    {
        const QMetaObject &meta = DealWidget_Revoke::staticMetaObject;
        QCOMPARE(meta.superClass(), &QWidget::staticMetaObject);
        QByteArrayList methods;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            methods << meta.method(i).methodSignature();
        QCOMPARE(methods,
                 (QByteArrayList{"slot_selectButton_clicked()", "slot_pageUpButton_clicked()",
                                 "slot_pageDownButton_clicked()"}));
    }
};

ZV_TEST(RevokePageTest)
#include "test_dealwidget_revoke.moc"
