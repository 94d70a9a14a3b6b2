#include "BreltWidgetToolKit/breltlayoutline.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "chromebench.h"
#include "layoutitems.h"
#include "record.h"
#include "support/testregistry.h"

#include <QAccessible>
#include <QPaintEvent>
#include <QScrollBar>
#include <QtTest/QtTest>

#include <ctime>
#include <limits>

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

ZvUBMyAcount accountNumbered(const QString &number)
{
    ZvUBMyAcount::Data data;
    data.accountNumber = number;
    return ZvUBMyAcount(data);
}

// Where something was painted inside a widget, in its coordinates.
class PaintedRegion : public QObject
{
public:
    explicit PaintedRegion(QWidget *widget) : m_widget(widget) { qApp->installEventFilter(this); }

    QRegion take() { return std::exchange(m_region, QRegion()); }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        auto *painted = event->type() == QEvent::Paint ? qobject_cast<QWidget *>(object) : nullptr;
        if (painted && (painted == m_widget || m_widget->isAncestorOf(painted))) {
            m_region += static_cast<QPaintEvent *>(event)->region().translated(
                painted->mapTo(m_widget, QPoint()));
        }
        return false;
    }

private:
    QWidget *m_widget;
    QRegion m_region;
};

} // namespace

class StatusBarTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::ChromeBench> m_bench;

    StatusBar *bar() const { return m_bench->statusBar.get(); }
    void click(QPushButton *button)
    {
        QCoreApplication::processEvents(); // the row has made room for it
        QVERIFY(button->isVisible());
        QTest::mouseClick(button, Qt::LeftButton);
    }

    // The four that change together, as "1111" when all are shown.
    QString logged() const
    {
        QString shown;
        for (const QWidget *each :
             std::initializer_list<const QWidget *>{m_bench->hideButton(), m_bench->lockButton(),
                                                    m_bench->loggedLine(), m_bench->account()})
            shown += each->isVisible() ? QLatin1Char('1') : QLatin1Char('0');
        return shown;
    }

    // Notes both signals, the first one with the button's text at that moment.
    void note(zvtest::Record &record, QObject *context)
    {
        connect(bar(), &StatusBar::signal_hideTransactions_toggled, context,
                [this, &record](bool hidden) {
                    record.note(QStringLiteral("%1 while the button reads %2")
                                    .arg(hidden ? "hide" : "show", m_bench->hideButton()->text()));
                });
        record.noteSignal(bar(), &StatusBar::signal_lockTransactions_clicked,
                          QStringLiteral("lock"));
    }

private slots:
    void init()
    {
        cache()->storeMyAccount(ZvUBMyAcount());
        m_bench = std::make_unique<zvtest::ChromeBench>();
    }
    void cleanup() { m_bench.reset(); }

    void theRowHasItsItemsInOrder()
    {
        cache()->storeGlobalTime(1577840400);
        const auto *row = qobject_cast<QHBoxLayout *>(bar()->layout());
        QVERIFY(row);
        QCOMPARE(row->contentsMargins(), QMargins());
        QCOMPARE(row->spacing(), 0);
        QCOMPARE(zvtest::itemsOf(row),
                 QStringList({"20",
                              "登录",
                              "交易商：000000000000",
                              "10",
                              "结算日: 2020-01-01",
                              "70",
                              "|",
                              "20",
                              "市场状态",
                              "20",
                              "|",
                              "[]",
                              "|",
                              "6",
                              "隐藏交易",
                              "锁定交易",
                              "6",
                              "|",
                              "20",
                              "09:00:00",
                              "20"}));
        QCOMPARE(m_bench->messages()->sizePolicy().horizontalPolicy(), QSizePolicy::Expanding);
        for (const auto *line : bar()->findChildren<BreltLayoutLine *>()) {
            QCOMPARE(line->color(), QColor(0x24, 0x29, 0x31));
            QCOMPARE(line->frameShape(), QFrame::VLine);
            QVERIFY(line->isHidden() || line->height() == bar()->height());
        }
    }

    void itStartsSignedOut()
    {
        QVERIFY(m_bench->statusLogin()->isVisible());
        QCOMPARE(logged(), QStringLiteral("0000"));
        for (const QWidget *each : std::initializer_list<const QWidget *>{
                 m_bench->settlement(), m_bench->market(), m_bench->messages(), m_bench->clock()})
            QVERIFY(each->isVisible());
    }

    void itStartsWithTheMachinesTime()
    {
        const QDateTime before = QDateTime::currentDateTime().addSecs(-1);
        const StatusBar fresh(nullptr);
        const QDateTime after = QDateTime::currentDateTime();
        const auto textAt = [&fresh](int place) {
            return qobject_cast<QLabel *>(fresh.layout()->itemAt(place)->widget())->text();
        };
        const QDateTime shown
            = QDateTime::fromString(textAt(4) + QLatin1Char(' ') + textAt(19),
                                    QStringLiteral("结算日: yyyy-MM-dd hh:mm:ss"));
        QVERIFY2(shown >= before && shown <= after, qPrintable(shown.toString()));
    }

    void itsStyleIsThereToTheLetter_data()
    {
        QTest::addColumn<int>("platform");
        QTest::newRow("ch") << 1;
        QTest::newRow("lc") << 2;
    }
    void itsStyleIsThereToTheLetter()
    {
        QFETCH(int, platform);
        m_bench = std::make_unique<zvtest::ChromeBench>(platform);
        QCOMPARE(m_bench->statusLogin()->styleSheet(),
                 ZvServerConfig::getZvServerConfigInstance()->getStyleOf_StatusBarLoginButton());
        for (const QLabel *label : {m_bench->clock(), m_bench->account(), m_bench->settlement()})
            QCOMPARE(label->styleSheet(),
                     QStringLiteral("color:rgb(255,255,255);background-color:rgb(30,33,38)"));
        for (const QPushButton *button : {m_bench->hideButton(), m_bench->lockButton()})
            QCOMPARE(button->styleSheet(),
                     QStringLiteral(
                         "QPushButton{background-color:rgb(22,25,34); color:rgb(255,255,255);}"));
        QVERIFY(bar()->autoFillBackground());
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            QCOMPARE(bar()->palette().color(group, QPalette::Window), QColor(30, 33, 38));
        QCOMPARE(bar()->grab().toImage().pixelColor(5, 5), QColor(30, 33, 38));
        QCOMPARE(bar()->minimumHeight(), 37);
        QCOMPARE(bar()->height(), 37);
    }

    void theTickerHasTheGroundOfTheBar()
    {
        const QRect place = m_bench->messages()->geometry();
        const QImage look = bar()->grab().toImage();
        for (const QPoint &at : {place.topLeft(), place.center(), place.bottomRight()})
            QCOMPARE(look.pixelColor(at), QColor(30, 33, 38));
    }

    // The server's seconds in local time.
    void theClockIsTheServers_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("day");
        QTest::addColumn<QString>("time");
        QTest::newRow("nothing") << 0 << "结算日: 1970-01-01"
                                 << "08:00:00";
        QTest::newRow("morning") << 1577840400 << "结算日: 2020-01-01"
                                 << "09:00:00";
        QTest::newRow("before midnight") << 1577807999 << "结算日: 2019-12-31"
                                         << "23:59:59";
        QTest::newRow("midnight") << 1577808000 << "结算日: 2020-01-01"
                                  << "00:00:00";
        QTest::newRow("leap day") << 1582930496 << "结算日: 2020-02-29"
                                  << "06:54:56";
        // The seconds have no sign, and what has one is far ahead.
        QTest::newRow("negative") << -1 << "结算日: 2106-02-07"
                                  << "14:28:15";
        QTest::newRow("last") << std::numeric_limits<int>::max() << "结算日: 2038-01-19"
                              << "11:14:07";
    }
    void theClockIsTheServers()
    {
        QFETCH(int, seconds);
        QFETCH(QString, day);
        QFETCH(QString, time);
        cache()->storeGlobalTime(seconds);
        QCOMPARE(m_bench->settlement()->text(), day);
        QCOMPARE(m_bench->clock()->text(), time);
    }

    void theClockIsOfThePlaceOfTheMachine()
    {
        const auto moveTo = [](const QByteArray &zone) {
            qputenv("TZ", zone);
            tzset();
        };
        const QByteArray here = qgetenv("TZ");
        const auto goHome = qScopeGuard([&] { moveTo(here); });
        moveTo("EST5");
        cache()->storeGlobalTime(1577840400);
        QCOMPARE(m_bench->settlement()->text(), QStringLiteral("结算日: 2019-12-31"));
        QCOMPARE(m_bench->clock()->text(), QStringLiteral("20:00:00"));
    }

    void theClockMovesWithTheCacheAlone()
    {
        QVERIFY(bar()->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly).isEmpty());
        cache()->storeGlobalTime(1577840400);
        QTest::qWait(1200); // longer than a clock of its own would stand
        QCOMPARE(m_bench->clock()->text(), QStringLiteral("09:00:00"));
    }

    void theMarketIsUnknownAtFirst()
    {
        QCOMPARE(m_bench->market()->text(), QStringLiteral("市场状态"));
        QCOMPARE(m_bench->market()->styleSheet(), QString());
    }

    void theOpenMarketIsRedAndTheClosedOneGreen()
    {
        for (int round = 0; round < 2; ++round) {
            cache()->storeMarketCheck(true);
            QCOMPARE(m_bench->market()->text(), QStringLiteral("开市"));
            QCOMPARE(m_bench->market()->styleSheet(),
                     QStringLiteral("color:#ff3c38;background-color:rgb(30,33,38)"));
            cache()->storeMarketCheck(false);
            QCOMPARE(m_bench->market()->text(), QStringLiteral("闭市"));
            QCOMPARE(m_bench->market()->styleSheet(),
                     QStringLiteral("color:#4bff57;background-color:rgb(30,33,38)"));
        }
    }

    void theTradersNumberIsShown()
    {
        cache()->storeMyAccount(accountNumbered(QStringLiteral("880012345678")));
        QCOMPARE(m_bench->account()->text(), QStringLiteral("交易商：880012345678"));
        QCOMPARE(logged(), QStringLiteral("0000")); // the account alone signs nobody in
        cache()->storeMyAccount(ZvUBMyAcount());
        QCOMPARE(m_bench->account()->text(), QStringLiteral("交易商："));
    }

    void theNumberIsNoMarkup()
    {
        cache()->storeMyAccount(accountNumbered(QStringLiteral("<b>1</b>&amp;")));
        QCOMPARE(m_bench->account()->text(), QStringLiteral("交易商：<b>1</b>&amp;"));
        QCOMPARE(m_bench->account()->textFormat(), Qt::PlainText);
    }

    void signingInShowsTheAccount()
    {
        zvtest::Record record;
        QObject context;
        note(record, &context);
        m_bench->signIn();
        QVERIFY(!m_bench->statusLogin()->isVisible());
        QCOMPARE(logged(), QStringLiteral("1111"));
        QCOMPARE(m_bench->hideButton()->text(), QStringLiteral("隐藏交易"));
        m_bench->signIn();
        QCOMPARE(logged(), QStringLiteral("1111"));
        m_bench->signInElsewhere();
        QVERIFY(m_bench->statusLogin()->isVisible());
        QCOMPARE(logged(), QStringLiteral("0000"));
        QCOMPARE(record.take(), QString());
    }

    void theNumberStaysInTheHiddenLabel()
    {
        m_bench->signIn();
        cache()->storeMyAccount(accountNumbered(QStringLiteral("880012345678")));
        m_bench->signInElsewhere();
        QVERIFY(!m_bench->account()->isVisible());
        QCOMPARE(m_bench->account()->text(), QStringLiteral("交易商：880012345678"));
        cache()->storeMyAccount(accountNumbered(QStringLiteral("880087654321")));
        QCOMPARE(m_bench->account()->text(), QStringLiteral("交易商：880087654321"));
    }

    void hidingTurnsWithEachClick()
    {
        m_bench->signIn();
        zvtest::Record record;
        QObject context;
        note(record, &context);
        click(m_bench->hideButton());
        QCOMPARE(record.take(), QStringLiteral("hide while the button reads 显示交易"));
        QCOMPARE(m_bench->hideButton()->text(), QStringLiteral("显示交易"));
        click(m_bench->hideButton());
        QCOMPARE(record.take(), QStringLiteral("show while the button reads 隐藏交易"));
        QCOMPARE(m_bench->hideButton()->text(), QStringLiteral("隐藏交易"));
    }

    // The text is the state, whoever wrote it.
    void hidingReadsItsStateFromTheButton()
    {
        m_bench->signIn();
        QSignalSpy toggled(bar(), &StatusBar::signal_hideTransactions_toggled);
        m_bench->hideButton()->setText(QStringLiteral("别的"));
        click(m_bench->hideButton());
        QCOMPARE(toggled.takeFirst().first().toBool(), false);
        QCOMPARE(m_bench->hideButton()->text(), QStringLiteral("隐藏交易"));
    }

    void aNewSignInSetsTheButtonBackInSilence()
    {
        m_bench->signIn();
        click(m_bench->hideButton());
        zvtest::Record record;
        QObject context;
        note(record, &context);
        m_bench->signInElsewhere();
        QCOMPARE(m_bench->hideButton()->text(), QStringLiteral("显示交易"));
        m_bench->signIn();
        QCOMPARE(m_bench->hideButton()->text(), QStringLiteral("隐藏交易"));
        QCOMPARE(record.take(), QString());
        // The host may still hide the trading side; the next click asks for that once more.
        click(m_bench->hideButton());
        QCOMPARE(record.take(), QStringLiteral("hide while the button reads 显示交易"));
    }

    void lockingOnlyTells()
    {
        m_bench->signIn();
        zvtest::Record record;
        QObject context;
        note(record, &context);
        click(m_bench->lockButton());
        QCOMPARE(record.take(), QStringLiteral("lock"));
        QCOMPARE(m_bench->lockButton()->text(), QStringLiteral("锁定交易"));
        QCOMPARE(logged(), QStringLiteral("1111"));
    }

    void theLoginButtonAsksThroughThePool()
    {
        QSignalSpy asked(pool(), &ZvWidgetSignalSLotPool::signal_statusLogin_clicked);
        click(m_bench->statusLogin());
        QCOMPARE(asked.count(), 1);
        QVERIFY(m_bench->statusLogin()->isVisible()); // nobody has signed in by that
    }

    void messagesReachTheTicker()
    {
        cache()->storeMessageList({{"第一条", "http://127.0.0.1/1"}, {"第二条", ""}});
        QStringList texts;
        for (const QLabel *label : m_bench->messages()->widget()->findChildren<QLabel *>()) {
            if (!label->text().isEmpty())
                texts << label->text();
        }
        QCOMPARE(texts.size(), 2);
        QVERIFY(texts.first().contains(QStringLiteral("第一条")));
    }

    void theTickerFollowsTheSizeOfTheWindow()
    {
        m_bench->adjustSize();
        const auto *lead = m_bench->messages()->findChild<QLabel *>("label_start");
        const int before = m_bench->messages()->width();
        QCOMPARE(lead->minimumWidth(), before - 2);
        m_bench->resize(1760, 120);
        m_bench->adjustSize();
        QVERIFY(m_bench->messages()->width() >= before + 1760 - 1366);
        QCOMPARE(lead->minimumWidth(), m_bench->messages()->width() - 2);
    }

    // Neither many messages nor a wide lead-in ask for a wider window.
    void whatTheServerSaysNeverWidensTheWindow()
    {
        m_bench->signIn();
        cache()->storeMyAccount(accountNumbered(QStringLiteral("880012345678")));
        m_bench->adjustSize();
        const int needed = bar()->minimumSizeHint().width();
        QVERIFY(needed <= 1366);
        QList<QPair<QString, QString>> messages;
        for (int i = 0; i < 50; ++i)
            messages.append({QString(40, QChar(0x85CF)), QString()});
        cache()->storeMessageList(messages);
        cache()->storeMyAccount(accountNumbered(QString(400, QLatin1Char('8'))));
        QCoreApplication::processEvents();
        QCOMPARE(bar()->minimumSizeHint().width(), needed);
        QCOMPARE(m_bench->width(), 1366);
    }

    void aUsualNumberIsWholeInTheNarrowestWindow()
    {
        m_bench->signIn();
        cache()->storeMyAccount(accountNumbered(QStringLiteral("888888888888")));
        cache()->storeMessageList({{QString(200, QChar(0x85CF)), QString()}});
        m_bench->resize(m_bench->minimumSizeHint());
        m_bench->adjustSize();
        const QLabel *label = m_bench->account();
        QVERIFY(label->width() >= label->fontMetrics().horizontalAdvance(label->text()));
    }

    void buttonsAreHeardByTheirTexts()
    {
        m_bench->signIn();
        click(m_bench->hideButton());
        const auto heard = [](QWidget *widget) {
            return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
        };
        QCOMPARE(heard(m_bench->statusLogin()), QStringLiteral("登录"));
        QCOMPARE(heard(m_bench->hideButton()), QStringLiteral("显示交易"));
        QCOMPARE(heard(m_bench->lockButton()), QStringLiteral("锁定交易"));
    }

    // The table or the field that has the keys keeps them.
    void clicksLeaveTheKeysAlone()
    {
        m_bench->setFocusPolicy(Qt::StrongFocus);
        m_bench->setFocus();
        QVERIFY(m_bench->hasFocus());
        cache()->storeMessageList({{"没有链接的消息", QString()}});
        click(m_bench->statusLogin());
        QVERIFY(m_bench->hasFocus());
        m_bench->signIn();
        for (QPushButton *button : {m_bench->hideButton(), m_bench->lockButton()})
            click(button);
        QVERIFY(m_bench->hasFocus());
        const QWidget *ticker = m_bench->messages();
        QTest::mouseClick(m_bench->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          ticker->mapTo(m_bench.get(), ticker->rect().center()));
        QVERIFY(m_bench->hasFocus());
    }

    void theTabKeyComesBy()
    {
        m_bench->signIn();
        m_bench->setFocusPolicy(Qt::StrongFocus);
        m_bench->setFocus();
        QTest::keyClick(m_bench.get(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), m_bench->hideButton());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), m_bench->lockButton());
        QSignalSpy locked(bar(), &StatusBar::signal_lockTransactions_clicked);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
        QCOMPARE(locked.count(), 1);
    }

    // The sheet of the two buttons says nothing about their states, the style does.
    void theButtonsOfTheTradingSideShowTheirStates()
    {
        m_bench->signIn();
        QCoreApplication::processEvents();
        for (QPushButton *button : {m_bench->hideButton(), m_bench->lockButton()}) {
            m_bench->takeMouseAway();
            const QImage normal = button->grab().toImage();
            m_bench->moveMouseTo(button);
            QVERIFY(button->grab().toImage() != normal);
            const QImage hovered = button->grab().toImage();
            QTest::mousePress(button, Qt::LeftButton);
            QVERIFY(button->grab().toImage() != normal);
            QVERIFY(button->grab().toImage() != hovered);
            QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, QPoint(-50, -50));
        }
    }

    void onlyTickerAndClockArePaintedAtRest()
    {
        m_bench->signIn();
        m_bench->adjustSize();
        m_bench->stopTicker();
        m_bench->takeMouseAway();
        QCoreApplication::processEvents();
        const QRect ticker = m_bench->messages()->geometry();
        const QRect clock = m_bench->clock()->geometry();

        PaintedRegion painted(m_bench.get());
        const auto paintedOf = [&] {
            QCoreApplication::processEvents();
            return painted.take().translated(-bar()->pos());
        };
        m_bench->step();
        const QRegion byStep = paintedOf();
        QVERIFY(!byStep.isEmpty());
        QVERIFY((byStep - ticker).isEmpty());

        cache()->storeGlobalTime(1577840400);
        paintedOf(); // the day may have changed
        cache()->storeGlobalTime(1577840401);
        const QRegion bySecond = paintedOf();
        QVERIFY(!bySecond.isEmpty());
        QVERIFY((bySecond - clock).isEmpty());
    }

    void itEndsBeforeThePoolAndTheCache()
    {
        m_bench->statusBar.reset();
        m_bench->signIn();
        m_bench->signInElsewhere();
        pool()->slot_adjustSize(QSize(1366, 768));
        cache()->storeGlobalTime(1);
        cache()->storeMarketCheck(true);
        cache()->storeMyAccount(ZvUBMyAcount());
        cache()->storeMessageList({});
    }
};

ZV_TEST(StatusBarTest)
#include "test_statusbar.moc"
