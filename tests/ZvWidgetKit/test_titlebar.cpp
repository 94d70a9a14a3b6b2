#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "chromebench.h"
#include "layoutitems.h"
#include "record.h"
#include "support/testregistry.h"

#include <QAccessible>
#include <QToolTip>
#include <QtTest/QtTest>

namespace {

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

QImage pictureOf(const QIcon &icon)
{
    return icon.pixmap(QSize(16, 16)).toImage();
}

// Notes each signal of the bar in a record.
class Signals : public zvtest::Record
{
public:
    explicit Signals(const TitleBar *bar)
    {
        noteSignal(bar, &TitleBar::signal_minimizeClicked, QStringLiteral("minimize"));
        noteSignal(bar, &TitleBar::signal_normalClicked, QStringLiteral("normal"));
        noteSignal(bar, &TitleBar::signal_exitClicked, QStringLiteral("exit"));
        noteSignal(bar, &TitleBar::signal_loginClicked, QStringLiteral("login"));
        noteSignal(bar, &TitleBar::signal_doubleClicked, QStringLiteral("double"));
    }
};

} // namespace

class TitleBarTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::ChromeBench> m_bench;

    TitleBar *bar() const { return m_bench->titleBar.get(); }
    QPushButton *login() const { return m_bench->titleLogin(); }
    static ZvWidgetSignalSLotPool *pool()
    {
        return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
    }

    // Half way between the title and the buttons.
    QPoint freeSpace() const
    {
        return {(m_bench->title()->geometry().right() + login()->x()) / 2, 17};
    }

private slots:
    void init() { m_bench = std::make_unique<zvtest::ChromeBench>(); }
    void cleanup() { m_bench.reset(); }

    void theRowHasItsItemsInOrder()
    {
        const auto *row = qobject_cast<QHBoxLayout *>(bar()->layout());
        QVERIFY(row);
        QCOMPARE(row->contentsMargins(), QMargins());
        QCOMPARE(row->spacing(), 0);
        QCOMPARE(zvtest::itemsOf(row),
                 QStringList({"208", "stretch 1", "", "stretch 1", "登录", "", "", ""}));
        QCOMPARE(row->itemAt(2)->widget(), m_bench->title());
    }

    void theButtonsHaveTheirSizesAndIcons()
    {
        QCOMPARE(login()->minimumHeight(), 30);
        QCOMPARE(login()->maximumHeight(), 30);
        QVERIFY(login()->icon().isNull());
        const char *const icons[] = {"icon_mini_gray", "icon_narrow_gray", "icon_close_gray"};
        for (int i = 0; i < 3; ++i) {
            const QPushButton *button = m_bench->titleButton(1 + i);
            QCOMPARE(button->minimumSize(), QSize(45, 30));
            QCOMPARE(button->maximumSize(), QSize(45, 30));
            QCOMPARE(button->text(), QString());
            const QIcon icon(QStringLiteral(":/icons/%1.png").arg(icons[i]));
            QVERIFY(!pictureOf(icon).isNull());
            QCOMPARE(pictureOf(button->icon()), pictureOf(icon));
        }
    }

    void itsLookIsThePlatforms_data()
    {
        QTest::addColumn<int>("platform");
        QTest::newRow("ch") << 1;
        QTest::newRow("lc") << 2;
    }
    void itsLookIsThePlatforms()
    {
        QFETCH(int, platform);
        m_bench = std::make_unique<zvtest::ChromeBench>(platform);
        QCOMPARE(bar()->minimumHeight(), 35);
        QCOMPARE(bar()->maximumHeight(), 35);
        QCOMPARE(bar()->height(), 35);
        for (int i = 0; i < 4; ++i) {
            QCOMPARE(m_bench->titleButton(i)->focusPolicy(), Qt::NoFocus);
            QCOMPARE(m_bench->titleButton(i)->styleSheet(),
                     config()->getStyleOf_TitleBarButtonStyle());
        }
        QCOMPARE(m_bench->title()->styleSheet(), config()->getStyleOf_TitleBarLabel());
        QCOMPARE(bar()->styleSheet(),
                 QStringLiteral("font-style: normal;font-size: 13pt;font-weight: bold;"));
        const QColor colour(config()->getStyleOf_TitleBarPaletteColor());
        QVERIFY(colour.isValid());
        QVERIFY(bar()->autoFillBackground());
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            QCOMPARE(bar()->palette().brush(group, QPalette::Window), QBrush(colour));
        // The rest of the palette is what it was.
        for (const auto role : {QPalette::WindowText, QPalette::Base, QPalette::Highlight})
            QCOMPARE(bar()->palette().color(role), QApplication::palette().color(role));
        QCOMPARE(bar()->grab().toImage().pixelColor(100, 5), colour);
    }

    void theTitleIsShownToTheLetter()
    {
        QCOMPARE(m_bench->title()->text(), QString());
        bar()->setTitle(QStringLiteral("藏品 <b>交易</b> & 中心"));
        QCOMPARE(m_bench->title()->text(), QStringLiteral("藏品 <b>交易</b> & 中心"));
        QCOMPARE(m_bench->title()->textFormat(), Qt::PlainText);
        QCOMPARE(m_bench->title()->font().pointSize(), 13);
        QVERIFY(m_bench->title()->font().bold());
    }

    // It stands in the middle of the window, or nearly so.
    void theTitleStandsInTheMiddle()
    {
        bar()->setTitle(QStringLiteral("澄湖文化交易中心"));
        QCoreApplication::processEvents();
        QVERIFY(qAbs(m_bench->title()->geometry().center().x() - bar()->width() / 2) < 20);
    }

    void eachButtonSendsItsSignal_data()
    {
        QTest::addColumn<int>("place");
        QTest::addColumn<QString>("signal");
        QTest::newRow("login") << 0 << "login";
        QTest::newRow("minimize") << 1 << "minimize";
        QTest::newRow("normal") << 2 << "normal";
        QTest::newRow("exit") << 3 << "exit";
    }
    void eachButtonSendsItsSignal()
    {
        QFETCH(int, place);
        QFETCH(QString, signal);
        Signals noted(bar());
        QTest::mouseClick(m_bench->titleButton(place), Qt::LeftButton);
        QCOMPARE(noted.take(), signal);
        QVERIFY(m_bench->isVisible());
        QVERIFY(!m_bench->isMinimized() && !m_bench->isMaximized());
        QVERIFY(m_bench->leftToTheWindow.isEmpty());
    }

    void aDoubleClickOnFreeSpaceIsTold()
    {
        bar()->setTitle(QStringLiteral("澄湖文化交易中心"));
        QCoreApplication::processEvents();
        Signals noted(bar());
        for (const QPoint &place : {freeSpace(), m_bench->title()->geometry().center()}) {
            QTest::mouseDClick(m_bench->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                               bar()->mapTo(m_bench.get(), place));
            QCOMPARE(noted.take(), QStringLiteral("double"));
            // The window hears of the first press, by which it may be dragged, and no more.
            QCOMPARE(m_bench->leftToTheWindow, QStringList{"press"});
            m_bench->leftToTheWindow.clear();
        }
    }

    void aDoubleClickOnAButtonIsTheButtons()
    {
        for (int place = 0; place < 4; ++place) {
            Signals noted(bar());
            QPushButton *button = m_bench->titleButton(place);
            QTest::mouseDClick(m_bench->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                               button->mapTo(m_bench.get(), button->rect().center()));
            const QString signals_ = noted.take();
            QVERIFY(!signals_.isEmpty());
            QVERIFY2(!signals_.contains(QStringLiteral("double")), qPrintable(signals_));
        }
        QVERIFY(m_bench->leftToTheWindow.isEmpty());
    }

    void theStatusBarsLoginButtonPressesThisOne()
    {
        Signals noted(bar());
        QTest::mouseClick(m_bench->statusLogin(), Qt::LeftButton);
        QCOMPARE(noted.take(), QStringLiteral("login"));
    }

    void thePoolPressesTheLoginButton()
    {
        Signals noted(bar());
        QSignalSpy clicked(login(), &QPushButton::clicked);
        pool()->slot_statusLogin_clicked();
        QCOMPARE(noted.take(), QStringLiteral("login"));
        QCOMPARE(clicked.count(), 1);
    }

    void theLoginButtonInvitesAgain()
    {
        const auto works = [this] {
            Signals noted(bar());
            QTest::mouseClick(login(), Qt::LeftButton);
            return login()->isVisible() && login()->isEnabled()
                && noted.take() == QStringLiteral("login");
        };
        QVERIFY(works());
        pool()->slot_login_succeed();
        QCOMPARE(login()->text(), QStringLiteral("重新登录"));
        QVERIFY(works());
        pool()->slot_login_succeed();
        QCOMPARE(login()->text(), QStringLiteral("重新登录"));
        pool()->slot_loggedOtherPlace();
        QCOMPARE(login()->text(), QStringLiteral("登录"));
        QVERIFY(works());
    }

    // Nothing but the text of the login button follows a session.
    void itsSlotsChangeTheTextAlone()
    {
        bar()->setTitle(QStringLiteral("澄湖"));
        Signals noted(bar());
        QVERIFY(QMetaObject::invokeMethod(bar(), "slot_updateTitleWhenLoggedIn"));
        QCOMPARE(login()->text(), QStringLiteral("重新登录"));
        QVERIFY(QMetaObject::invokeMethod(bar(), "slot_updateTitleWhenLoggedOut"));
        QCOMPARE(login()->text(), QStringLiteral("登录"));
        QCOMPARE(m_bench->title()->text(), QStringLiteral("澄湖"));
        QCOMPARE(noted.take(), QString());
    }

    void buttonsWithoutATextSayWhatTheyAreFor()
    {
        const QStringList names{"登录", "最小化", "最大化/还原", "关闭"};
        for (int i = 0; i < 4; ++i) {
            QAccessibleInterface *heard
                = QAccessible::queryAccessibleInterface(m_bench->titleButton(i));
            QVERIFY(heard);
            QCOMPARE(heard->text(QAccessible::Name), names.at(i));
            QCOMPARE(m_bench->titleButton(i)->toolTip(), i == 0 ? QString() : names.at(i));
        }
        // One that has a text is heard by it.
        pool()->slot_login_succeed();
        QCOMPARE(QAccessible::queryAccessibleInterface(login())->text(QAccessible::Name),
                 QStringLiteral("重新登录"));
    }

    // The bar's large bold letters are for its title.
    void toolTipsAreOfTheirUsualSize()
    {
        QPushButton *button = m_bench->titleButton(3);
        QHelpEvent asks(QEvent::ToolTip, button->rect().center(),
                        button->mapToGlobal(button->rect().center()));
        QApplication::sendEvent(button, &asks);
        const QWidget *tip = nullptr;
        for (const QWidget *each : QApplication::topLevelWidgets()) {
            if (each->isVisible() && each->inherits("QTipLabel"))
                tip = each;
        }
        QVERIFY(tip);
        QCOMPARE(tip->font().pointSize(), 10);
        QVERIFY(!tip->font().bold());
        QToolTip::hideText();
    }

    void itEndsBeforeThePool()
    {
        m_bench->titleBar.reset();
        pool()->slot_login_succeed();
        pool()->slot_statusLogin_clicked();
        pool()->slot_loggedOtherPlace();
    }
};

ZV_TEST(TitleBarTest)
#include "test_titlebar.moc"
