#include "ZvNetworkKit/zvscriptedtransport.h"
#include "support/testregistry.h"

#include <QtTest/QtTest>

// The promises that every transport gives, tried on the scripted one.
class TransportTest : public QObject
{
    Q_OBJECT

private slots:
    void answersComeThroughTheEventLoop();
    void silenceIsTheDefault();
    void deadlineEndsACall();
    void cancelEndsACallOnce();
    void transportEndsItsCalls();
    void deadContextHearsNothing();
    void manualClockFiresInOrder();
    void timerMayOutliveItsClock();
};

namespace {

ZvRequest requestFor(const QString &path)
{
    ZvRequest request;
    request.path = path;
    request.deadline = 5000;
    return request;
}

} // namespace

void TransportTest::answersComeThroughTheEventLoop()
{
    ZvScriptedTransport transport;
    QObject context;
    QList<ZvAnswer> answers;
    transport.answer(QStringLiteral("a.html"), "first");
    transport.send(requestFor(QStringLiteral("a.html")), &context,
                   [&](const ZvAnswer &answer) { answers.append(answer); });
    QCOMPARE(answers.size(), 0);
    QTRY_COMPARE(answers.size(), 1);
    QCOMPARE(answers.first().ending, ZvAnswer::Answered);
    QCOMPARE(answers.first().body, QByteArray("first"));

    transport.send(requestFor(QStringLiteral("a.html")), &context,
                   [&](const ZvAnswer &answer) { answers.append(answer); });
    transport.answer(QStringLiteral("a.html"), "second");
    QCOMPARE(answers.size(), 1);
    QTRY_COMPARE(answers.size(), 2);
    QCOMPARE(answers.last().body, QByteArray("second"));
}

void TransportTest::silenceIsTheDefault()
{
    ZvManualClock clock;
    ZvScriptedTransport transport;
    transport.setClock(&clock);
    QObject context;
    int endings = 0;
    transport.send(requestFor(QStringLiteral("a.html")), &context,
                   [&](const ZvAnswer &) { ++endings; });
    clock.advance(4999);
    QCoreApplication::processEvents();
    QCOMPARE(endings, 0);
    QCOMPARE(transport.openCount(QStringLiteral("a.html")), 1);
    QCOMPARE(transport.requestedPaths(), QStringList{QStringLiteral("a.html")});
}

void TransportTest::deadlineEndsACall()
{
    ZvManualClock clock;
    ZvScriptedTransport transport;
    transport.setClock(&clock);
    QObject context;
    QList<ZvAnswer::Ending> endings;
    transport.send(requestFor(QStringLiteral("a.html")), &context,
                   [&](const ZvAnswer &answer) { endings.append(answer.ending); });
    clock.advance(5000);
    QCOMPARE(endings.size(), 0);
    QTRY_COMPARE(endings, QList<ZvAnswer::Ending>{ZvAnswer::TimedOut});
    QCOMPARE(transport.openCalls(), 0);
    QCOMPARE(transport.openCount(), 0);
}

void TransportTest::cancelEndsACallOnce()
{
    ZvScriptedTransport transport;
    QObject context;
    QList<ZvAnswer::Ending> endings;
    const ZvCallId id
        = transport.send(requestFor(QStringLiteral("a.html")), &context,
                         [&](const ZvAnswer &answer) { endings.append(answer.ending); });
    transport.cancel(id);
    transport.cancel(id);
    QCOMPARE(endings.size(), 0);
    QTRY_COMPARE(endings, QList<ZvAnswer::Ending>{ZvAnswer::Cancelled});
    QCoreApplication::processEvents();
    QCOMPARE(endings.size(), 1);
}

void TransportTest::transportEndsItsCalls()
{
    QObject context;
    QList<ZvAnswer::Ending> endings;
    {
        ZvScriptedTransport transport;
        for (int i = 0; i < 3; ++i) {
            transport.send(requestFor(QStringLiteral("a.html")), &context,
                           [&](const ZvAnswer &answer) { endings.append(answer.ending); });
        }
    }
    QTRY_COMPARE(endings.size(), 3);
    QCOMPARE(endings.count(ZvAnswer::Cancelled), 3);
}

void TransportTest::deadContextHearsNothing()
{
    ZvScriptedTransport transport;
    auto context = std::make_unique<QObject>();
    int endings = 0;
    transport.send(requestFor(QStringLiteral("a.html")), context.get(),
                   [&](const ZvAnswer &) { ++endings; });
    transport.answer(QStringLiteral("a.html"), "late");
    context.reset();
    QCoreApplication::processEvents();
    QCOMPARE(endings, 0);
}

void TransportTest::manualClockFiresInOrder()
{
    ZvManualClock clock;
    QStringList fired;
    const ZvTimer late = clock.after(20, [&] { fired.append(QStringLiteral("late")); });
    const ZvTimer early = clock.after(10, [&] { fired.append(QStringLiteral("early")); });
    ZvTimer stopped = clock.after(5, [&] { fired.append(QStringLiteral("stopped")); });
    QCOMPARE(clock.untilNext(), qint64(5));
    stopped.reset();
    QCOMPARE(clock.untilNext(), qint64(10));
    clock.advance(15);
    QCOMPARE(fired, QStringList{QStringLiteral("early")});
    clock.advance(5);
    QCOMPARE(fired, QStringList({QStringLiteral("early"), QStringLiteral("late")}));
    QCOMPARE(clock.untilNext(), qint64(-1));
}

void TransportTest::timerMayOutliveItsClock()
{
    auto clock = std::make_unique<ZvManualClock>();
    ZvTimer timer = clock->after(10, [] {});
    QVERIFY(bool(timer));
    clock.reset();
    QVERIFY(!timer);
    timer.reset();
}

ZV_TEST(TransportTest)
#include "test_transport.moc"
