#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvModelKit/zvubmyacount.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"

#include <QAbstractButton>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QTableView>
#include <QtTest/QtTest>

using endtoend::BoxReader;
using endtoend::patience;

namespace {

constexpr int idColumn = 21;
const QString firstServer = QStringLiteral("/lc/youbika/");
const QString secondServer = QStringLiteral("/lc/chajiu/");
const QString phone = QStringLiteral("13912345678");
const QString password = QStringLiteral("qing-shi-7");
const QString newPassword = QStringLiteral("bai-lu-88");

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

QString currentServer()
{
    return cache()->currentServer();
}

} // namespace

// A person at the real window: registers, signs in, keeps favourites, changes the server, and is
// told of a second sign-in. The steps build on each other, in the order in which they stand.
class PeopleTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QVERIFY(m_exchange.start(m_state, 0, 20));
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1600, 700);
        m_window->show();
        m_table = endtoend::marketTable(*m_window);
        QVERIFY(m_table);
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void cleanup() { delete m_dialog; }

    void withoutASignInFavouritesStayHere()
    {
        choose(QStringLiteral("2102"), QStringLiteral("添加自选"));
        QCOMPARE(cache()->getMarketListOption(QString()), QStringList("2102"));
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("自选")));
        QTRY_COMPARE(shownIds(), QStringList("2102"));
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("行情")));
        // What the exchange knows of favourites it knows of an account.
        QVERIFY(!engine()->isLogged);
    }

    void aWrongCodeIsRefusedAndNothingIsLost()
    {
        openPage("pushButton_login_immediatelyRegister");
        type("lineEdit_register_PhoneNumber", phone);
        click("pushButton_register_getVerificationCode");
        QTRY_VERIFY_WITH_TIMEOUT(
            !m_dialog->findChild<QAbstractButton *>("pushButton_register_getVerificationCode")
                 ->isEnabled(),
            patience);
        m_code = endtoend::lastCode(m_state, phone, 4);
        QVERIFY2(!m_code.isEmpty(), "the outbox holds no code");
        type("lineEdit_register_password", password);
        type("lineEdit_register_confirmPassword", password);
        type("lineEdit_register_verificationCode", endtoend::otherCode(m_code));
        BoxReader boxes;
        click("pushButton_register");
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
        QVERIFY2(boxes.texts().first().contains(QStringLiteral("验证码"))
                     || boxes.texts().first().contains(QStringLiteral("校验码")),
                 qPrintable(boxes.texts().first()));
        QCOMPARE(edit("lineEdit_register_PhoneNumber")->text(), phone);
        QCOMPARE(edit("lineEdit_register_password")->text(), password);

        // The right one is still good.
        edit("lineEdit_register_verificationCode")->clear();
        type("lineEdit_register_verificationCode", m_code);
        click("pushButton_register");
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 2, patience);
        QCOMPARE(boxes.texts().last(), QStringLiteral("<p align='center'>注册成功</p>"));
        QTRY_COMPARE(m_dialog->findChild<QLabel *>("label_page_title")->text(),
                     QStringLiteral("用户登录"));
    }

    void aUsedCodeIsRefused()
    {
        openPage("pushButton_login_immediatelyRegister");
        type("lineEdit_register_PhoneNumber", phone);
        type("lineEdit_register_verificationCode", m_code);
        type("lineEdit_register_password", password);
        type("lineEdit_register_confirmPassword", password);
        BoxReader boxes;
        click("pushButton_register");
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
        QVERIFY(boxes.texts().first() != QStringLiteral("<p align='center'>注册成功</p>"));
        QCOMPARE(edit("lineEdit_register_verificationCode")->text(), m_code);
    }

    void aWrongPasswordKeepsThePhone()
    {
        BoxReader boxes;
        signIn(QStringLiteral("not-the-one"));
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
        QVERIFY2(boxes.texts().first().contains(QStringLiteral("密码")),
                 qPrintable(boxes.texts().first()));
        QTRY_COMPARE(edit("lineEdit_login_password")->text(), QString());
        QCOMPARE(edit("lineEdit_login_phoneNumber")->text(), phone);
        QVERIFY(!engine()->isLogged);
    }

    void aSignInBringsAccountAndFavourites()
    {
        BoxReader boxes;
        signIn(password);
        QTRY_VERIFY_WITH_TIMEOUT(engine()->isLogged, patience);
        QTRY_VERIFY(!m_dialog || !m_dialog->isVisible());
        QVERIFY(boxes.texts().isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(cache()->myAccount.phone(), phone, patience);
        // The exchange's list, which is empty, takes the place of the one that was kept here.
        QTRY_VERIFY_WITH_TIMEOUT(cache()->getMarketListOption(QString()).isEmpty(), patience);
    }

    void favouritesAreTheExchangesNow()
    {
        for (const char *id : {"2105", "2101", "2106"}) {
            const int before = cache()->getMarketListOption(QString()).size();
            choose(QString(id), QStringLiteral("添加自选"));
            QTRY_COMPARE_WITH_TIMEOUT(cache()->getMarketListOption(QString()).size(), before + 1,
                                      patience);
        }
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("自选")));
        QTRY_COMPARE(shownIds(), QStringList({"2101", "2105", "2106"}));
        choose(QStringLiteral("2105"), QStringLiteral("删除自选"));
        QTRY_COMPARE_WITH_TIMEOUT(shownIds(), QStringList({"2101", "2106"}), patience);
    }

    void aChangeOfServerMixesNothing()
    {
        QSignalSpy ticks(cache(), &ZvServerCache::signal_cache_MarketList_changed);
        QStringList strangers;
        const auto watch
            = connect(cache(), &ZvServerCache::signal_cache_MarketList_changed, this, [&] {
                  const QString digit = currentServer() == firstServer ? "2" : "3";
                  for (const QString &id : shownIds()) {
                      if (!id.startsWith(digit) && id != QLatin1String("-1"))
                          strangers += currentServer() + ' ' + id;
                  }
              });
        for (int round = 0; round < 2; ++round) {
            QTRY_VERIFY_WITH_TIMEOUT(press(serverButton(secondServer)), patience);
            QTRY_COMPARE_WITH_TIMEOUT(currentServer(), secondServer, patience);
            QTRY_COMPARE_WITH_TIMEOUT(shownIds(), QStringList({"3100", "3101", "3102", "3103"}),
                                      patience);
            QVERIFY(endtoend::choose(*m_window, QStringLiteral("自选")));
            QTRY_VERIFY_WITH_TIMEOUT(shownIds().isEmpty(), patience);
            // A button of the strip is blocked for a moment after a change.
            QTRY_VERIFY_WITH_TIMEOUT(serverButton(firstServer)->isEnabled(), patience);
            press(serverButton(firstServer));
            QTRY_COMPARE_WITH_TIMEOUT(currentServer(), firstServer, patience);
            QTRY_COMPARE_WITH_TIMEOUT(shownIds(), QStringList({"2100", "2101", "2102", "2103"}),
                                      patience);
            QVERIFY(endtoend::choose(*m_window, QStringLiteral("自选")));
            QTRY_COMPARE_WITH_TIMEOUT(shownIds(), QStringList({"2101", "2106"}), patience);
            QTRY_VERIFY_WITH_TIMEOUT(serverButton(secondServer)->isEnabled(), patience);
        }
        disconnect(watch);
        QVERIFY(ticks.count() > 4);
        QVERIFY2(strangers.isEmpty(), qPrintable(strangers.join('\n')));
        QVERIFY(endtoend::choose(*m_window, QStringLiteral("行情")));
    }

    void theSessionOutlivesTheService()
    {
        const int port = m_exchange.port();
        m_exchange.kill();
        QVERIFY(m_exchange.start(m_state, port, 20));
        QSignalSpy ended(cache(), &ZvServerCache::signal_cache_LoggedOtherPlace);
        QSignalSpy ticks(cache(), &ZvServerCache::signal_cache_MarketList_changed);
        QVERIFY(ticks.wait(patience));
        QSignalSpy added(ZvServerActionResult::getZvServerActionResultInstance(),
                         &ZvServerActionResult::signal_addOption_succeed);
        choose(QStringLiteral("2107"), QStringLiteral("添加自选"));
        QTRY_COMPARE_WITH_TIMEOUT(added.count(), 1, patience);
        QCOMPARE(ended.count(), 0);
    }

    void aSecondSignInIsTold()
    {
        QSignalSpy ended(cache(), &ZvServerCache::signal_cache_LoggedOtherPlace);
        BoxReader boxes;
        QElapsedTimer since;
        since.start();
        const auto other = endtoend::signIn(m_exchange.address(), firstServer, phone, password);
        QCOMPARE(other.value("status").toString(), QStringLiteral("ok"));
        QTRY_COMPARE_WITH_TIMEOUT(ended.count(), 1, patience);
        QVERIFY2(since.elapsed() < 5000, qPrintable(QString::number(since.elapsed())));
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
        QVERIFY(boxes.texts().first().contains(QStringLiteral("登录")));
        QVERIFY(!engine()->isLogged);
        // Said once, and the market goes on.
        QSignalSpy ticks(cache(), &ZvServerCache::signal_cache_MarketList_changed);
        QVERIFY(ticks.wait(patience));
        QCOMPARE(ended.count(), 1);
        QCOMPARE(boxes.texts().size(), 1);
    }

    void aForgottenPasswordIsSetAnew()
    {
        openPage("pushButton_login_immediatelyChange");
        type("lineEdit_changePassword_PhoneNumber", phone);
        click("pushButton_changePassword_getVerificationCode");
        QTRY_VERIFY_WITH_TIMEOUT(
            !m_dialog->findChild<QAbstractButton *>("pushButton_changePassword_getVerificationCode")
                 ->isEnabled(),
            patience);
        type("lineEdit_changePassword_verificationCode", endtoend::lastCode(m_state, phone, 4));
        type("lineEdit_changePassword_password", newPassword);
        type("lineEdit_changePassword_confirmPassword", newPassword);
        BoxReader boxes;
        click("pushButton_changePassword");
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts(), QStringList("<p align='center'>修改密码成功</p>"),
                                  patience);
        QTRY_VERIFY(edit("lineEdit_login_phoneNumber")->isVisible());
        signInHere(password);
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 2, patience);
        QVERIFY(!engine()->isLogged);
        signInHere(newPassword);
        QTRY_VERIFY_WITH_TIMEOUT(engine()->isLogged, patience);
        QTRY_COMPARE_WITH_TIMEOUT(cache()->getMarketListOption(QString()),
                                  QStringList({"2101", "2106", "2107"}), patience);
    }

    void noSecretIsInAnyLog()
    {
        for (const QString &secret : {password, newPassword, m_code}) {
            const QString log = m_state.log();
            // Four digits may stand in a log by chance, within a longer number.
            const QRegularExpression alone(
                QStringLiteral("(?<![0-9.:])%1(?![0-9])").arg(QRegularExpression::escape(secret)));
            QVERIFY2(!log.contains(alone), qPrintable(secret));
        }
    }

private:
    // The button of a server on the guide strip, found by the item that holds its prefix.
    QAbstractButton *serverButton(const QString &prefix) const
    {
        return endtoend::serverButton(*m_window, prefix);
    }

    static bool press(QAbstractButton *target)
    {
        if (!target || !target->isEnabled())
            return false;
        QTest::mouseClick(target, Qt::LeftButton);
        return true;
    }

    QStringList shownIds() const
    {
        QStringList ids;
        for (int row = 0; row < m_table->model()->rowCount(); ++row)
            ids.append(m_table->model()->index(row, idColumn).data().toString());
        ids.sort();
        return ids;
    }

    // Takes an entry of the menu of a collection's row.
    void choose(const QString &id, const QString &entry)
    {
        int row = 0;
        while (row < m_table->model()->rowCount()
               && m_table->model()->index(row, idColumn).data().toString() != id)
            ++row;
        const QModelIndex cell = m_table->model()->index(row, 1);
        QVERIFY2(cell.isValid(), qPrintable(id));
        m_table->scrollTo(cell);
        const QPoint place = m_table->visualRect(cell).center();
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QContextMenuEvent ask(QContextMenuEvent::Mouse, place,
                              m_table->viewport()->mapToGlobal(place));
        QApplication::sendEvent(m_table->viewport(), &ask);
        const QPointer<QMenu> menu = m_table->findChild<QMenu *>();
        QVERIFY(menu);
        QTRY_VERIFY(menu->isVisible());
        for (QAction *action : menu->actions()) {
            if (menu && action->text() == entry)
                QTest::mouseClick(menu, Qt::LeftButton, Qt::NoModifier,
                                  menu->actionGeometry(action).center());
        }
        QTRY_VERIFY(!menu);
    }

    void open()
    {
        endtoend::askForSignIn(*m_window);
        m_dialog = m_window->findChild<LoginDialog *>();
        if (!m_dialog)
            m_dialog = qobject_cast<LoginDialog *>(QApplication::activeWindow());
        QVERIFY(m_dialog);
    }

    void openPage(const char *jump)
    {
        open();
        click(jump);
    }

    QLineEdit *edit(const char *name) const { return m_dialog->findChild<QLineEdit *>(name); }

    void type(const char *name, const QString &text) const
    {
        QLineEdit *field = edit(name);
        QVERIFY2(field && field->isVisible(), name);
        field->setFocus();
        QTest::keyClicks(field, text);
        QCOMPARE(field->text(), text);
    }

    void click(const char *name) const
    {
        auto *target = m_dialog->findChild<QAbstractButton *>(name);
        QVERIFY2(target && target->isVisible() && target->isEnabled(), name);
        QTest::mouseClick(target, Qt::LeftButton);
    }

    void signIn(const QString &word)
    {
        open();
        signInHere(word);
    }

    void signInHere(const QString &word) const
    {
        edit("lineEdit_login_phoneNumber")->clear();
        type("lineEdit_login_phoneNumber", phone);
        type("lineEdit_login_password", word);
        click("pushButton_login");
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<MainWindow> m_window;
    QTableView *m_table = nullptr;
    QPointer<LoginDialog> m_dialog;
    QString m_code;
};

ZV_TEST(PeopleTest)
#include "test_people.moc"
