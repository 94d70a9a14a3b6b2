#include "ZvWidgetKit/collection_dealhistory_delegate.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/collection_detailwidget.h"
#include "ZvWidgetKit/collection_tableview.h"
#include "ZvWidgetKit/collectionsortfilterproxymodel.h"
#include "ZvWidgetKit/collectiontabledelegate.h"
#include "ZvWidgetKit/collectiontablemodel.h"
#include "ZvWidgetKit/dealwidget_allwidgets.h"
#include "ZvWidgetKit/dealwidget_buysell.h"
#include "ZvWidgetKit/dealwidget_buysell_captabledelegate.h"
#include "ZvWidgetKit/dealwidget_buysell_captableview.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtabledelegate.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtableview.h"
#include "ZvWidgetKit/dealwidget_delivery.h"
#include "ZvWidgetKit/dealwidget_delivery_delegate.h"
#include "ZvWidgetKit/dealwidget_delivery_model.h"
#include "ZvWidgetKit/dealwidget_delivery_tableview.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord_tableview.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord_tableview.h"
#include "ZvWidgetKit/dealwidget_select_delegate_history_tableview.h"
#include "ZvWidgetKit/dealwidget_select_delegate_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_delegate_today_tableview.h"
#include "ZvWidgetKit/dealwidget_select_delegaterecord.h"
#include "ZvWidgetKit/dealwidget_select_delegatetoday.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow_tableview.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/market_ktimewidget.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/small_deliveryhandling_dialog.h"
#include "ZvWidgetKit/small_money_inout.h"
#include "ZvWidgetKit/status_message_scrollarea.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/transaction_deal.h"
#include "ZvWidgetKit/transaction_lock.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvguidetabitem.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "support/testregistry.h"

#include <QMetaMethod>

Q_DECLARE_METATYPE(const QMetaObject *)

namespace {

// The methods that a class adds by itself, as "public signal name(QString argument)".
QStringList ownMethods(const QMetaObject &meta)
{
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        static const char *const access[] = {"private", "protected", "public"};
        static const char *const type[] = {"method", "signal", "slot", "constructor"};
        QStringList arguments;
        for (int j = 0; j < method.parameterCount(); ++j)
            arguments << QString::fromUtf8(method.parameterTypes().at(j) + ' '
                                           + method.parameterNames().at(j));
        methods << QStringLiteral("%1 %2 %3(%4)")
                       .arg(access[method.access()], type[method.methodType()],
                            QString::fromUtf8(method.name()), arguments.join(QStringLiteral(", ")));
    }
    return methods;
}

} // namespace

class MetaObjectsTest : public QObject
{
    Q_OBJECT

private slots:
    void poolMethods()
    {
        const QStringList expected{
            "public signal signal_adjustSize(QSize mainSize)",
            "public signal signal_global_colletionId_changed(QString collectionID)",
            "public signal signal_changeToTimeLine()",
            "public signal signal_timeKChart_collectionID_escape_clicked(QString collectionID)",
            "public signal signal_showCollectionInfo_clicked()",
            "public signal signal_login_succeed()",
            "public signal signal_loggedOtherPlace()",
            "public signal signal_statusLogin_clicked()",
            "public signal signal_collectionTimeLine_action()",
            "public signal signal_collectionKDayLine_action()",
            "public signal signal_collectionKWeekLine_action()",
            "public signal signal_collectionKMonthLine_action()",
            "public signal signal_turnoverKTime_clicked()",
            "public signal signal_keyboardFairy_clicked(int keyNumber)",
            "public signal signal_escape_clicked()",
            "public signal signal_pageup_clicked()",
            "public signal signal_pagedown_clicked()",
            "public signal signal_wheelOnChart_clicked(int degrees)",
            "public signal signal_marketDeatil_clicked()",
            "public signal signal_turnoverOption_clicked()",
            "public signal signal_loadTradeData_fromServer()",
            "public slot slot_adjustSize(QSize mainSize)",
            "public slot slot_collectionTableView_clicked(QString collectionID)",
            "public slot slot_collectionTableView_clicked_and_changeToTimeLine("
            "QString collectionID)",
            "public slot slot_timeKChart_collectionID_escape_clicked(QString collectionID)",
            "public slot slot_showCollectionInfo_clicked()",
            "public slot slot_login_succeed()",
            "public slot slot_loggedOtherPlace()",
            "public slot slot_statusLogin_clicked()",
            "public slot slot_collectionTimeLine_action()",
            "public slot slot_collectionKDayLine_action()",
            "public slot slot_collectionKWeekLine_action()",
            "public slot slot_collectionKMonthLine_action()",
            "public slot slot_turnoverKTime_clicked()",
            "public slot slot_keyboardFairy_clicked(int keyNumber)",
            "public slot slot_escape_clicked()",
            "public slot slot_pageup_clicked()",
            "public slot slot_pagedown_clicked()",
            "public slot slot_wheelOnChart_clicked(int degrees)",
            "public slot slot_marketDeatil_clicked()",
            "public slot slot_F6_clicked()",
        };
        const QStringList methods = ownMethods(ZvWidgetSignalSLotPool::staticMetaObject);
        QCOMPARE(methods.join('\n'), expected.join('\n'));
    }

    void classesStandBelowTheirQtClass_data()
    {
        QTest::addColumn<const QMetaObject *>("meta");
        QTest::addColumn<QString>("name");
        QTest::addColumn<const QMetaObject *>("super");
        QTest::newRow("pool") << &ZvWidgetSignalSLotPool::staticMetaObject
                              << "ZvWidgetSignalSLotPool" << &QObject::staticMetaObject;
        QTest::newRow("model") << &CollectionTableModel::staticMetaObject << "CollectionTableModel"
                               << &QAbstractTableModel::staticMetaObject;
        QTest::newRow("proxy") << &CollectionSortFilterProxyModel::staticMetaObject
                               << "CollectionSortFilterProxyModel"
                               << &QSortFilterProxyModel::staticMetaObject;
        QTest::newRow("view") << &Collection_TableView::staticMetaObject << "Collection_TableView"
                              << &QTableView::staticMetaObject;
        QTest::newRow("delegate") << &CollectionTableDelegate::staticMetaObject
                                  << "CollectionTableDelegate"
                                  << &QStyledItemDelegate::staticMetaObject;
        QTest::newRow("money in and out")
            << &Small_Money_InOut::staticMetaObject << "Small_Money_InOut"
            << &BreltFramlessMoveableDialog::staticMetaObject;
        QTest::newRow("chart page") << &Market_KTimeWidget::staticMetaObject << "Market_KTimeWidget"
                                    << &QWidget::staticMetaObject;
        QTest::newRow("market half")
            << &Market_Widget::staticMetaObject << "Market_Widget" << &QWidget::staticMetaObject;
        QTest::newRow("guide item")
            << &ZvGuideTabItem::staticMetaObject << "ZvGuideTabItem" << &QWidget::staticMetaObject;
        QTest::newRow("guide page")
            << &ZvGuideTabPage::staticMetaObject << "ZvGuideTabPage" << &QWidget::staticMetaObject;
        QTest::newRow("deals model")
            << &Collection_DealHistory_model::staticMetaObject << "Collection_DealHistory_model"
            << &QAbstractTableModel::staticMetaObject;
        QTest::newRow("deals view")
            << &Collection_DealHistory_View::staticMetaObject << "Collection_DealHistory_View"
            << &QTableView::staticMetaObject;
        QTest::newRow("deals delegate")
            << &Collection_DealHistory_Delegate::staticMetaObject
            << "Collection_DealHistory_Delegate" << &QStyledItemDelegate::staticMetaObject;
        QTest::newRow("detail panel") << &Collection_DetailWidget::staticMetaObject
                                      << "Collection_DetailWidget" << &QWidget::staticMetaObject;
        QTest::newRow("detail page") << &Market_DetailWidget::staticMetaObject
                                     << "Market_DetailWidget" << &QWidget::staticMetaObject;
        QTest::newRow("order ticket") << &DealWidget_BuySell::staticMetaObject
                                      << "DealWidget_BuySell" << &QWidget::staticMetaObject;
    }

    void classesStandBelowTheirQtClass()
    {
        QFETCH(const QMetaObject *, meta);
        QFETCH(QString, name);
        QFETCH(const QMetaObject *, super);
        QCOMPARE(QString::fromUtf8(meta->className()), name);
        QCOMPARE(meta->superClass(), super);
    }

    void guideMethods()
    {
        QCOMPARE(ownMethods(ZvGuideTabItem::staticMetaObject),
                 (QStringList{"public signal signal_ServerButtonClicked(QString serverPrefix)",
                              "private slot slot_clickedOnButton()",
                              "private slot slot_timerProgressTimeout()"}));
        QCOMPARE(ownMethods(ZvGuideTabPage::staticMetaObject),
                 (QStringList{"public signal signal_updateCollectionTypes(QString server)",
                              "public slot slot_kaiguan_clicked(bool checked)",
                              "public slot slot_ServerType_clicked(QString serverPrefix)",
                              "public slot slot_disable_timeout()"}));
    }

    void dealMethods()
    {
        QCOMPARE(ownMethods(Collection_DealHistory_model::staticMetaObject), QStringList());
        QCOMPARE(ownMethods(Collection_DealHistory_Delegate::staticMetaObject), QStringList());
        QCOMPARE(ownMethods(Collection_DealHistory_View::staticMetaObject),
                 QStringList{"public slot slot_updateLatestDeal(QString collectionID)"});
        QCOMPARE(ownMethods(Collection_DetailWidget::staticMetaObject),
                 (QStringList{"public slot slot_updateCollectionTradeTop5(QString collectionID)",
                              "public slot slot_updateCollectionProItem(QString collectionID)",
                              "public slot slot_adjustSize(QSize mainSize)",
                              "public slot slot_adjustDealLatestLimit()"}));
        QCOMPARE(ownMethods(Market_DetailWidget::staticMetaObject),
                 (QStringList{"public slot slot_updateMarketDetail()",
                              "public slot slot_clearMarketDetail()",
                              "public slot selectTiggered(QString collectionId)",
                              "public slot requestPage_whenWheelOut()",
                              "public slot requestPage_whenWheelIn()"}));
    }

    // The names are those of their classes, so a row needs no more than the class.
    void recordClassesStandBelowTheirQtClass()
    {
        const auto below = [](const QMetaObject &super, const QList<const QMetaObject *> &metas) {
            for (const QMetaObject *meta : metas)
                QVERIFY2(meta->superClass() == &super, meta->className());
        };
        below(QWidget::staticMetaObject,
              {&DealWidget_Select_DealRecord::staticMetaObject,
               &DealWidget_Select_DelegateToday::staticMetaObject,
               &DealWidget_Select_DelegateRecord::staticMetaObject,
               &DealWidget_Select_ApplyRecord::staticMetaObject,
               &DealWidget_Select_MoneyFlow::staticMetaObject});
        below(QTableView::staticMetaObject,
              {&DealWidget_Select_DealRecord_TableView::staticMetaObject,
               &DealWidget_Select_Delegate_today_TableView::staticMetaObject,
               &DealWidget_Select_Delegate_history_TableView::staticMetaObject,
               &DealWidget_Select_ApplyRecord_TableView::staticMetaObject,
               &DealWidget_Select_MoneyFlow_TableView::staticMetaObject,
               &DealWidget_BuySell_CapTableView::staticMetaObject,
               &DealWidget_BuySell_DealTableView::staticMetaObject});
        below(QAbstractTableModel::staticMetaObject,
              {&DealWidget_Select_DealRecord_TableModel::staticMetaObject,
               &DealWidget_Select_Delegate_TableModel::staticMetaObject,
               &DealWidget_Select_ApplyRecord_TableModel::staticMetaObject,
               &DealWidget_Select_MoneyFlow_TableModel::staticMetaObject,
               &DealWidget_BuySell_CapTableModel::staticMetaObject,
               &DealWidget_BuySell_DealTableModel::staticMetaObject});
        below(QStyledItemDelegate::staticMetaObject,
              {&DealWidget_Select_DealRecord_TableDelegate::staticMetaObject,
               &DealWidget_Select_Delegate_TableDelegate::staticMetaObject,
               &DealWidget_Select_ApplyRecord_TableDelegate::staticMetaObject,
               &DealWidget_Select_MoneyFlow_TableDelegate::staticMetaObject,
               &DealWidget_BuySell_CapTableDelegate::staticMetaObject,
               &DealWidget_BuySell_DealTableDelegate::staticMetaObject});
    }

    void recordMethods()
    {
        for (const QMetaObject *page : {&DealWidget_Select_DealRecord::staticMetaObject,
                                        &DealWidget_Select_DelegateToday::staticMetaObject,
                                        &DealWidget_Select_DelegateRecord::staticMetaObject,
                                        &DealWidget_Select_ApplyRecord::staticMetaObject,
                                        &DealWidget_Select_MoneyFlow::staticMetaObject}) {
            QCOMPARE(ownMethods(*page),
                     (QStringList{"public slot slot_selectButton_clicked()",
                                  "public slot slot_pageUpButton_clicked()",
                                  "public slot slot_pageDownButton_clicked()"}));
        }
        for (const QMetaObject *view :
             {&DealWidget_Select_DealRecord_TableView::staticMetaObject,
              &DealWidget_Select_Delegate_today_TableView::staticMetaObject,
              &DealWidget_Select_Delegate_history_TableView::staticMetaObject,
              &DealWidget_Select_ApplyRecord_TableView::staticMetaObject,
              &DealWidget_Select_MoneyFlow_TableView::staticMetaObject})
            QCOMPARE(ownMethods(*view), QStringList("public slot slot_recordCacheChanged()"));
        for (const QMetaObject *view : {&DealWidget_BuySell_CapTableView::staticMetaObject,
                                        &DealWidget_BuySell_DealTableView::staticMetaObject})
            QCOMPARE(ownMethods(*view),
                     QStringList("public slot slot_rowDoubleClicked(QModelIndex index)"));
    }

    void chromeMethods()
    {
        QCOMPARE(TitleBar::staticMetaObject.superClass(), &QWidget::staticMetaObject);
        QCOMPARE(StatusBar::staticMetaObject.superClass(), &QWidget::staticMetaObject);
        QCOMPARE(Status_Message_ScrollArea::staticMetaObject.superClass(),
                 &QScrollArea::staticMetaObject);
        QCOMPARE(ownMethods(TitleBar::staticMetaObject),
                 (QStringList{
                     "public signal signal_minimizeClicked()",
                     "public signal signal_normalClicked()", "public signal signal_exitClicked()",
                     "public signal signal_loginClicked()", "public signal signal_doubleClicked()",
                     "public slot slot_updateTitleWhenLoggedIn()",
                     "public slot slot_updateTitleWhenLoggedOut()"}));
        QCOMPARE(ownMethods(StatusBar::staticMetaObject),
                 (QStringList{"public signal signal_hideTransactions_toggled(bool hidden)",
                              "public signal signal_lockTransactions_clicked()",
                              "private slot slot_updateTheTime(int timestamp)",
                              "private slot slot_marketStatusChanged(bool opened)",
                              "private slot slot_myaccountChanged()",
                              "private slot slot_afterLoginSucceed()",
                              "private slot slot_afterLoginOtherPlace()",
                              "private slot slot_hideTransactions_clicked()",
                              "private slot slot_lockTransactions_clicked()"}));
        QCOMPARE(ownMethods(Status_Message_ScrollArea::staticMetaObject),
                 (QStringList{"public slot slot_updateMassage()", "public slot slot_adjustSize()",
                              "public slot slot_stepBarByStep()"}));
    }

    void marketMethods()
    {
        const QStringList expected{
            "public slot showButtonsNeedLog()",
            "public slot hideButtonsNeedLog()",
            "public slot slot_showIntroduction_clicked()",
            "public slot slot_moneyOverview_clicked()",
            "public slot slot_inputoutput_clicked()",
            "public slot slot_showInputOutput()",
            "public slot slot_showNotBankCardFind(QString qrcode)",
            "public slot slot_gotoUrl_input()",
            "public slot slot_gotoUrl_output()",
            "public slot slot_purchaseApply_clicked()",
            "public slot slot_showOpenApplyList()",
            "public slot slot_changeToPage_marketTable()",
            "public slot slot_changeToPage_TimeChart()",
            "public slot slot_changeToPage_KLine_day()",
            "public slot slot_changeToPage_KLine_week()",
            "public slot slot_changeToPage_KLine_month()",
            "public slot slot_changeToPage_marketDetail()",
            "public slot slot_turnoverOption()",
            "public slot slot_turnoverKTime()",
            "public slot slot_changePageWhenKeybordFairy(QString code)",
            "public slot slot_escapeToTimeKline()",
            "public slot slot_escapeToTableView()",
            "private slot slot_flushQrcodeWhenShow()",
        };
        const QMetaObject &meta = Market_Widget::staticMetaObject;
        QCOMPARE(ownMethods(meta).join('\n'), expected.join('\n'));
        for (const char *escape : {"slot_escapeToTimeKline()", "slot_escapeToTableView()"})
            QCOMPARE(meta.method(meta.indexOfSlot(escape)).returnType(), int(QMetaType::Bool));
    }

    void chartPageMethods()
    {
        QCOMPARE(ownMethods(Market_KTimeWidget::staticMetaObject),
                 QStringList("public slot timer_wheelCard_timeout()"));
    }

    void ticketMethods()
    {
        const QStringList expected{
            "private slot slot_buysell_licked()",
            "private slot slot_subPrice_clicked()",
            "private slot slot_addPrice_clicked()",
            "private slot slot_subCount_clicked()",
            "private slot slot_addCount_clicked()",
            "private slot slot_resetPriceCount_clicked()",
            "private slot slot_preBuyClicked()",
            "private slot slot_preSellClicked()",
            "private slot slot_prepay_deleteSelected_clicked()",
            "private slot slot_prepay_sendSelected_clicked()",
            "private slot slot_price_changed()",
            "private slot slot_count_changed()",
            "public slot slot_trade_buy_succeed()",
            "public slot slot_trade_buy_failed(QString msg)",
            "public slot slot_trade_sell_succeed()",
            "public slot slot_trade_sell_failed(QString msg)",
            "public slot slot_prepay_succeed(QString md5)",
            "public slot slot_prepay_failed(QString md5, QString msg)",
            "public slot slot_updateCapInfo()",
            "public slot slot_updateGatherInfo()",
            "public slot slot_updateTop5(QString collectionID)",
            "private slot slot_updateBriefInfo(QString server)",
            "private slot slot_comboxCode_activated()",
            "private slot slot_comboxName_activated()",
            "private slot lockBuysellLimit()",
            "private slot unlockBuysellLimit()",
            "private slot flushTopFive()",
        };
        QCOMPARE(ownMethods(DealWidget_BuySell::staticMetaObject).join('\n'), expected.join('\n'));
    }

    void transactionClassesStandBelowTheirQtClass()
    {
        const QMetaObject &widget = QWidget::staticMetaObject;
        QCOMPARE(Transaction_Widget::staticMetaObject.superClass(), &widget);
        QCOMPARE(Transaction_Deal::staticMetaObject.superClass(), &widget);
        QCOMPARE(Transaction_Lock::staticMetaObject.superClass(), &widget);
        QCOMPARE(DealWidget_AllWidgets::staticMetaObject.superClass(),
                 &QStackedWidget::staticMetaObject);
        QCOMPARE(DealWidget_Delivery::staticMetaObject.superClass(), &widget);
        QCOMPARE(DealWidget_Delivery_TableView::staticMetaObject.superClass(),
                 &QTableView::staticMetaObject);
        QCOMPARE(DealWidget_Delivery_Model::staticMetaObject.superClass(),
                 &QAbstractTableModel::staticMetaObject);
        QCOMPARE(DealWidget_Delivery_Delegate::staticMetaObject.superClass(),
                 &QStyledItemDelegate::staticMetaObject);
        QCOMPARE(Small_DeliveryHandling_Dialog::staticMetaObject.superClass(),
                 &BreltFramlessMoveableDialog::staticMetaObject);
    }

    void transactionMethods()
    {
        QCOMPARE(ownMethods(Transaction_Widget::staticMetaObject),
                 (QStringList{"public slot slot_showTransctionLock()",
                              "public slot slot_after_login_succeed()",
                              "public slot slot_after_login_failed(QString msg)",
                              "public slot slot_after_serverChanged()",
                              "public slot slot_login_LoggedOtherPlace(QString msg)",
                              "public slot slot_adjustSize(QSize mainSize)"}));
        QCOMPARE(ownMethods(Transaction_Lock::staticMetaObject),
                 QStringList("public slot slot_unlockButton_clicked()"));
        QCOMPARE(ownMethods(DealWidget_Delivery::staticMetaObject),
                 QStringList("private slot slot_updateCapInfo()"));
        QCOMPARE(
            ownMethods(Small_DeliveryHandling_Dialog::staticMetaObject),
            (QStringList{"private slot slot_ok_clicked()", "private slot slot_delivery_succeed()",
                         "private slot slot_delivery_failed(QString reason)"}));
        for (const QMetaObject *meta :
             {&Transaction_Deal::staticMetaObject, &DealWidget_AllWidgets::staticMetaObject,
              &DealWidget_Delivery_TableView::staticMetaObject,
              &DealWidget_Delivery_Model::staticMetaObject,
              &DealWidget_Delivery_Delegate::staticMetaObject})
            QCOMPARE(ownMethods(*meta), QStringList());
    }

    void moneyDialogAddsNoMethods()
    {
        QCOMPARE(ownMethods(Small_Money_InOut::staticMetaObject), QStringList());
    }

    void tableClassesAddNoMethods()
    {
        QCOMPARE(ownMethods(CollectionTableModel::staticMetaObject), QStringList());
        QCOMPARE(ownMethods(CollectionSortFilterProxyModel::staticMetaObject), QStringList());
        QCOMPARE(ownMethods(Collection_TableView::staticMetaObject), QStringList());
        QCOMPARE(ownMethods(CollectionTableDelegate::staticMetaObject), QStringList());
    }
};

ZV_TEST(MetaObjectsTest)
#include "test_metaobjects.moc"
