#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include <QMetaMethod>

#include <memory>
#include <vector>

namespace {

using Pool = ZvWidgetSignalSLotPool;

Pool *pool()
{
    return Pool::getSignalSlotPoolInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

// Listens to every signal of the pool; each entry of `heard` is a signal's name and its arguments.
class Listener
{
public:
    Listener()
    {
        const QMetaObject &meta = Pool::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            if (meta.method(i).methodType() == QMetaMethod::Signal)
                m_spies.push_back(std::make_unique<QSignalSpy>(pool(), meta.method(i)));
        }
    }

    QVariantList heard() const
    {
        QVariantList all;
        for (const auto &spy : m_spies) {
            const QByteArray signature = spy->signal();
            for (const QVariantList &arguments : *spy)
                all.append(QVariant(QVariantList{
                    QString::fromUtf8(signature.left(signature.indexOf('('))), arguments}));
        }
        return all;
    }

private:
    std::vector<std::unique_ptr<QSignalSpy>> m_spies;
};

} // namespace

class PoolTest : public QObject
{
    Q_OBJECT

private slots:
    void isMadeAtFirstUseAsChildOfTheApplication()
    {
        QVERIFY(!Pool::zvWidgetSignalSLotPool);
        Pool *const made = Pool::getSignalSlotPoolInstance();
        QVERIFY(made);
        QCOMPARE(made->parent(), static_cast<QObject *>(QCoreApplication::instance()));
        QCOMPARE(Pool::zvWidgetSignalSLotPool, made);
        QCOMPARE(Pool::getSignalSlotPoolInstance(), made);
    }

    void anotherPoolLeavesTheInstanceAlone()
    {
        Pool *const instance = pool();
        {
            QObject parent;
            Pool other(&parent);
            QCOMPARE(other.parent(), &parent);
            QCOMPARE(Pool::zvWidgetSignalSLotPool, instance);
        }
        QCOMPARE(Pool::zvWidgetSignalSLotPool, instance);
    }

    void plainSlotsForward_data()
    {
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("signal");
        QTest::addColumn<QVariant>("argument");
        const auto row
            = [](const char *slot, const char *signal, const QVariant &argument = QVariant()) {
                  QTest::newRow(slot) << QString(slot) << QString(signal) << argument;
              };
        row("slot_adjustSize", "signal_adjustSize", QSize(1280, 720));
        row("slot_timeKChart_collectionID_escape_clicked",
            "signal_timeKChart_collectionID_escape_clicked", QStringLiteral("1001"));
        row("slot_showCollectionInfo_clicked", "signal_showCollectionInfo_clicked");
        row("slot_login_succeed", "signal_login_succeed");
        row("slot_loggedOtherPlace", "signal_loggedOtherPlace");
        row("slot_statusLogin_clicked", "signal_statusLogin_clicked");
        row("slot_collectionTimeLine_action", "signal_collectionTimeLine_action");
        row("slot_collectionKDayLine_action", "signal_collectionKDayLine_action");
        row("slot_collectionKWeekLine_action", "signal_collectionKWeekLine_action");
        row("slot_collectionKMonthLine_action", "signal_collectionKMonthLine_action");
        row("slot_turnoverKTime_clicked", "signal_turnoverKTime_clicked");
        row("slot_keyboardFairy_clicked", "signal_keyboardFairy_clicked", int(Qt::Key_7));
        row("slot_escape_clicked", "signal_escape_clicked");
        row("slot_pageup_clicked", "signal_pageup_clicked");
        row("slot_pagedown_clicked", "signal_pagedown_clicked");
        row("slot_wheelOnChart_clicked", "signal_wheelOnChart_clicked", -240);
        row("slot_marketDeatil_clicked", "signal_marketDeatil_clicked");
        row("slot_F6_clicked", "signal_turnoverOption_clicked");
    }

    void plainSlotsForward()
    {
        QFETCH(QString, slot);
        QFETCH(QString, signal);
        QFETCH(QVariant, argument);
        zvtest::CallTrace trace;
        Listener listener;

        const QByteArray name = slot.toLatin1();
        QVERIFY(argument.isValid() ? QMetaObject::invokeMethod(
                    pool(), name.constData(),
                    QGenericArgument(argument.typeName(), argument.constData()))
                                   : QMetaObject::invokeMethod(pool(), name.constData()));

        const QVariantList arguments = argument.isValid() ? QVariantList{argument} : QVariantList();
        QCOMPARE(listener.heard(), QVariantList{QVariant(QVariantList{signal, arguments})});
        QCOMPARE(trace.take(), QStringList());
    }

    void everyPlainSlotIsTried()
    {
        // The two selection slots are no forwarders; the rest of the class is the table above.
        int slotCount = 0;
        const QMetaObject &meta = Pool::staticMetaObject;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            slotCount += meta.method(i).methodType() == QMetaMethod::Slot ? 1 : 0;
        QCOMPARE(slotCount, 18 + 2);
    }

    void escapePassesAnEmptyIdOn()
    {
        Listener listener;
        pool()->slot_timeKChart_collectionID_escape_clicked(QString());
        QCOMPARE(listener.heard(),
                 QVariantList{QVariant(
                     QVariantList{QStringLiteral("signal_timeKChart_collectionID_escape_clicked"),
                                  QVariantList{QString()}})});
    }

    void emptyIdSelectsNothing()
    {
        pool()->slot_collectionTableView_clicked(QStringLiteral("1007"));
        zvtest::CallTrace trace;
        Listener listener;
        pool()->slot_collectionTableView_clicked(QString());
        pool()->slot_collectionTableView_clicked(QLatin1String(""));
        pool()->slot_collectionTableView_clicked_and_changeToTimeLine(QString());
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("1007"));
        QCOMPARE(listener.heard(), QVariantList());
        QCOMPARE(trace.take(), QStringList());
    }

    void selectionTellsTheEngineFirst()
    {
        pool()->slot_collectionTableView_clicked(QStringLiteral("1001"));
        zvtest::CallTrace trace;
        QStringList order;
        QObject context;
        connect(pool(), &Pool::signal_global_colletionId_changed, &context,
                [&order](const QString &id) {
                    order << QStringLiteral("selected ") + id + QStringLiteral(", engine ")
                            + engine()->getGlobalCollectionID();
                });
        connect(pool(), &Pool::signal_collectionTimeLine_action, &context,
                [&order] { order << QStringLiteral("time line"); });

        pool()->slot_collectionTableView_clicked(QStringLiteral("1002"));

        QCOMPARE(trace.take(),
                 QStringList{QStringLiteral("ZvServerEngine::setGlobalCollectionID(\"1002\")")});
        QCOMPARE(order, QStringList{QStringLiteral("selected 1002, engine 1002")});
    }

    void selectionWithTimeLineChangesThePageLast()
    {
        pool()->slot_collectionTableView_clicked(QStringLiteral("1001"));
        zvtest::CallTrace trace;
        QStringList order;
        QObject context;
        connect(pool(), &Pool::signal_collectionTimeLine_action, &context,
                [&order] { order << QStringLiteral("time line"); });
        connect(pool(), &Pool::signal_changeToTimeLine, &context,
                [&order] { order << QStringLiteral("never"); });
        connect(pool(), &Pool::signal_global_colletionId_changed, &context,
                [&order](const QString &id) {
                    order << QStringLiteral("selected ") + id + QStringLiteral(", engine ")
                            + engine()->getGlobalCollectionID();
                });

        pool()->slot_collectionTableView_clicked_and_changeToTimeLine(QStringLiteral("1003"));

        QCOMPARE(trace.take(),
                 QStringList{QStringLiteral("ZvServerEngine::setGlobalCollectionID(\"1003\")")});
        QCOMPARE(order,
                 (QStringList{QStringLiteral("selected 1003, engine 1003"),
                              QStringLiteral("time line")}));
    }

    void currentCollectionIsToldAgain()
    {
        pool()->slot_collectionTableView_clicked(QStringLiteral("1004"));
        zvtest::CallTrace trace;
        QSignalSpy selected(pool(), &Pool::signal_global_colletionId_changed);
        pool()->slot_collectionTableView_clicked(QStringLiteral("1004"));
        QCOMPARE(trace.take(),
                 QStringList{QStringLiteral("ZvServerEngine::setGlobalCollectionID(\"1004\")")});
        QCOMPARE(selected, (QList<QVariantList>{{QStringLiteral("1004")}}));
    }

    void listenersRunInTheOrderOfTheirConnections()
    {
        QStringList order;
        QObject table;
        QObject page;
        connect(pool(), &Pool::signal_turnoverOption_clicked, &table,
                [&order] { order << QStringLiteral("table"); });
        connect(pool(), &Pool::signal_turnoverOption_clicked, &page,
                [&order] { order << QStringLiteral("page"); });
        pool()->slot_F6_clicked();
        QCOMPARE(order, (QStringList{QStringLiteral("table"), QStringLiteral("page")}));
    }

    // The last one: what it leaves is another instance.
    void endOfTheInstanceForgetsIt()
    {
        delete pool();
        QVERIFY(!Pool::zvWidgetSignalSLotPool);
        QVERIFY(pool());
        QCOMPARE(pool()->parent(), static_cast<QObject *>(QCoreApplication::instance()));
    }
};

ZV_TEST(PoolTest)
#include "test_pool.moc"
