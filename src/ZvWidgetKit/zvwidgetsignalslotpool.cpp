#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QCoreApplication>

ZvWidgetSignalSLotPool *ZvWidgetSignalSLotPool::zvWidgetSignalSLotPool = nullptr;

ZvWidgetSignalSLotPool::ZvWidgetSignalSLotPool(QObject *parent) : QObject(parent) { }

ZvWidgetSignalSLotPool::~ZvWidgetSignalSLotPool()
{
    // The application object takes the pool with it; a next one in the same process starts anew.
    if (zvWidgetSignalSLotPool == this)
        zvWidgetSignalSLotPool = nullptr;
}

ZvWidgetSignalSLotPool *ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()
{
    if (!zvWidgetSignalSLotPool)
        zvWidgetSignalSLotPool = new ZvWidgetSignalSLotPool(QCoreApplication::instance());
    return zvWidgetSignalSLotPool;
}

void ZvWidgetSignalSLotPool::slot_adjustSize(QSize mainSize)
{
    emit signal_adjustSize(mainSize);
}

void ZvWidgetSignalSLotPool::slot_collectionTableView_clicked(QString collectionID)
{
    if (collectionID.isEmpty())
        return;
    // Listeners read the new id from the engine.
    ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(collectionID);
    emit signal_global_colletionId_changed(collectionID);
}

void ZvWidgetSignalSLotPool::slot_collectionTableView_clicked_and_changeToTimeLine(
    QString collectionID)
{
    if (collectionID.isEmpty())
        return;
    slot_collectionTableView_clicked(collectionID);
    emit signal_collectionTimeLine_action();
}

void ZvWidgetSignalSLotPool::slot_timeKChart_collectionID_escape_clicked(QString collectionID)
{
    emit signal_timeKChart_collectionID_escape_clicked(collectionID);
}

void ZvWidgetSignalSLotPool::slot_showCollectionInfo_clicked()
{
    emit signal_showCollectionInfo_clicked();
}

void ZvWidgetSignalSLotPool::slot_login_succeed()
{
    emit signal_login_succeed();
}

void ZvWidgetSignalSLotPool::slot_loggedOtherPlace()
{
    emit signal_loggedOtherPlace();
}

void ZvWidgetSignalSLotPool::slot_statusLogin_clicked()
{
    emit signal_statusLogin_clicked();
}

void ZvWidgetSignalSLotPool::slot_collectionTimeLine_action()
{
    emit signal_collectionTimeLine_action();
}

void ZvWidgetSignalSLotPool::slot_collectionKDayLine_action()
{
    emit signal_collectionKDayLine_action();
}

void ZvWidgetSignalSLotPool::slot_collectionKWeekLine_action()
{
    emit signal_collectionKWeekLine_action();
}

void ZvWidgetSignalSLotPool::slot_collectionKMonthLine_action()
{
    emit signal_collectionKMonthLine_action();
}

void ZvWidgetSignalSLotPool::slot_turnoverKTime_clicked()
{
    emit signal_turnoverKTime_clicked();
}

void ZvWidgetSignalSLotPool::slot_keyboardFairy_clicked(int keyNumber)
{
    emit signal_keyboardFairy_clicked(keyNumber);
}

void ZvWidgetSignalSLotPool::slot_escape_clicked()
{
    emit signal_escape_clicked();
}

void ZvWidgetSignalSLotPool::slot_pageup_clicked()
{
    emit signal_pageup_clicked();
}

void ZvWidgetSignalSLotPool::slot_pagedown_clicked()
{
    emit signal_pagedown_clicked();
}

void ZvWidgetSignalSLotPool::slot_wheelOnChart_clicked(int degrees)
{
    emit signal_wheelOnChart_clicked(degrees);
}

void ZvWidgetSignalSLotPool::slot_marketDeatil_clicked()
{
    emit signal_marketDeatil_clicked();
}

void ZvWidgetSignalSLotPool::slot_F6_clicked()
{
    emit signal_turnoverOption_clicked();
}
