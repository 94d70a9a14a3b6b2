#pragma once

#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <QObject>
#include <QSize>
#include <QString>

// The signal bus of the application. Widgets that do not know each other, and the host, meet here:
// a sender calls a slot, the slot emits the pool's signal, and the listeners have connected
// themselves to that signal. Listeners of one signal run in the order of their connections.
//
// The pool holds no state. The current collection lives in ZvServerEngine, and the two selection
// slots are the only place in the library that writes it. Used from the GUI thread alone.
class ZVWIDGETKIT_EXPORT ZvWidgetSignalSLotPool : public QObject
{
    Q_OBJECT

public:
    explicit ZvWidgetSignalSLotPool(QObject *parent);
    ~ZvWidgetSignalSLotPool() override;

    // The pool of the application, made at the first call as a child of the application object.
    // Call it only once the application object exists.
    static ZvWidgetSignalSLotPool *getSignalSlotPoolInstance();

    // What the accessor gives; null before its first call and after the end of the application.
    static ZvWidgetSignalSLotPool *zvWidgetSignalSLotPool;

signals:
    void signal_adjustSize(QSize mainSize);
    void signal_global_colletionId_changed(QString collectionID);
    void signal_changeToTimeLine(); // kept for its listeners, and never emitted
    void signal_timeKChart_collectionID_escape_clicked(QString collectionID);
    void signal_showCollectionInfo_clicked();
    void signal_login_succeed();
    void signal_loggedOtherPlace();
    void signal_statusLogin_clicked();
    void signal_collectionTimeLine_action();
    void signal_collectionKDayLine_action();
    void signal_collectionKWeekLine_action();
    void signal_collectionKMonthLine_action();
    void signal_turnoverKTime_clicked();
    void signal_keyboardFairy_clicked(int keyNumber);
    void signal_escape_clicked();
    void signal_pageup_clicked();
    void signal_pagedown_clicked();
    void signal_wheelOnChart_clicked(int degrees);
    void signal_marketDeatil_clicked();
    void signal_turnoverOption_clicked();
    void signal_loadTradeData_fromServer(); // emitted without a slot, after a change of server

public slots:
    // The host reports the size of its main frame here, in pixels.
    void slot_adjustSize(QSize mainSize);

    // Makes a collection the current one: the engine learns of it first, the listeners second.
    // An empty id is dropped; the id that is already current is told again.
    void slot_collectionTableView_clicked(QString collectionID);

    // The same, and then the page changes to the time line.
    void slot_collectionTableView_clicked_and_changeToTimeLine(QString collectionID);

    // Escape on the chart page; the id is passed on as it is, empty or not.
    void slot_timeKChart_collectionID_escape_clicked(QString collectionID);

    void slot_showCollectionInfo_clicked();
    void slot_login_succeed();
    void slot_loggedOtherPlace();
    void slot_statusLogin_clicked();
    void slot_collectionTimeLine_action();
    void slot_collectionKDayLine_action();
    void slot_collectionKWeekLine_action();
    void slot_collectionKMonthLine_action();
    void slot_turnoverKTime_clicked();

    // A digit or letter typed into the host's window, as Qt's key code.
    void slot_keyboardFairy_clicked(int keyNumber);

    void slot_escape_clicked();
    void slot_pageup_clicked();
    void slot_pagedown_clicked();

    // The wheel over a chart, in eighths of a degree as QWheelEvent counts them.
    void slot_wheelOnChart_clicked(int degrees);

    void slot_marketDeatil_clicked();

    // The F6 key turns over to the favourites: emits signal_turnoverOption_clicked().
    void slot_F6_clicked();
};
