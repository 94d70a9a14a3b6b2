#include "BreltWidgetToolKit/breltglobalfunction.h"

#include "support/testregistry.h"

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QScreen>
#include <QThread>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <memory>

namespace {

BreltGlobalFunction *global()
{
    return BreltGlobalFunction::getBreltGlobalFunciton();
}

QList<QLabel *> noticeWindows()
{
    QList<QLabel *> found;
    const QWidgetList windows = QApplication::topLevelWidgets();
    for (QWidget *window : windows) {
        if (window->isVisible() && window->objectName() == QLatin1String("BreltNotice"))
            found.append(qobject_cast<QLabel *>(window));
    }
    std::sort(found.begin(), found.end(),
              [](const QLabel *a, const QLabel *b) { return a->y() < b->y(); });
    return found;
}

// Calls from destructors that run after the application and every test: nothing may happen.
struct LateCaller {
    bool armed = false;
    ~LateCaller()
    {
        if (!armed)
            return;
        global()->alertMessage(QStringLiteral("太晚"));
        if (!global()->notices().isEmpty())
            std::abort();
    }
};
LateCaller lateCaller;

} // namespace

class TestBreltGlobalFunction : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void isOneObject();
    void decimalOfEveryFen();
    void decimal_data();
    void decimal();
    void moneyValue_data();
    void moneyValue();
    void moneyString_data();
    void moneyString();

    void noticeShowsItsText();
    void emptyTextShowsNothing();
    void noticesStackWithoutCoveringEachOther();
    void onlyFiveStand();
    void noticePassesByItself();
    void theRestMovesUp();
    void noticeTakesNoFocus();
    void noticeStandsOverTheWindowInUse();
    void dialogInUseIsNotCovered();
    void longTextWrapsOnTheScreen();
    void signsOfRichTextAreShownAsTheyCome();
    void noticeFromAnotherThread();
    void noticesEndWithTheApplication();
};

void TestBreltGlobalFunction::cleanup()
{
    if (qstrcmp(QTest::currentTestFunction(), "noticesEndWithTheApplication") == 0)
        return;
    // What stands passes at once when enough newer ones come, and those pass by themselves.
    global()->setNoticeDuration(1);
    for (int i = 0; i < 5 && !global()->notices().isEmpty(); ++i)
        global()->alertMessage(QStringLiteral("-"));
    QTRY_VERIFY(global()->notices().isEmpty());
    global()->setNoticeDuration(0);
}

void TestBreltGlobalFunction::isOneObject()
{
    QVERIFY(global());
    QCOMPARE(global(), BreltGlobalFunction::getBreltGlobalFunciton());
}

void TestBreltGlobalFunction::decimalOfEveryFen()
{
    // Floats hold every fen below 131072.00 apart; a step that shares no factor with 100 meets
    // all endings.
    for (qint64 fen = 0; fen < 13107200; fen += 197) {
        const QString expected
            = QString::number(fen / 100) + '.' + QString::number(fen % 100 + 100).mid(1);
        QCOMPARE(BreltGlobalFunction::float2Decimal(float(double(fen) / 100)), expected);
    }
}

void TestBreltGlobalFunction::decimal_data()
{
    QTest::addColumn<float>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0f << "0.00";
    QTest::newRow("minus zero") << -0.0f << "0.00";
    QTest::newRow("a fen") << 0.01f << "0.01";
    QTest::newRow("less than half a fen") << 0.0049f << "0.00";
    QTest::newRow("minus less than half a fen") << -0.0049f << "0.00";
    QTest::newRow("negative") << -12.5f << "-12.50";
    QTest::newRow("minus a fen") << -0.01f << "-0.01";
    QTest::newRow("carry") << 9.999f << "10.00";
    QTest::newRow("largest of the money dialog") << 10000000.0f << "10000000.00";
    QTest::newRow("beyond six digits") << 1234567.5f << "1234567.50";
    QTest::newRow("no exponent") << 1e20f << "100000002004087734272.00";
    QTest::newRow("infinity") << std::numeric_limits<float>::infinity() << "0.00";
    QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << "0.00";
}

void TestBreltGlobalFunction::decimal()
{
    QFETCH(float, value);
    QTEST(BreltGlobalFunction::float2Decimal(value), "text");
}

void TestBreltGlobalFunction::moneyValue_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("number");
    QTest::addColumn<QString>("unit");
    const QString none;
    const QString wan = QStringLiteral("万");
    const QString yi = QStringLiteral("亿");
    const QString wanYi = QStringLiteral("万亿");
    QTest::newRow("zero") << 0.0 << "0.00" << none;
    QTest::newRow("minus zero") << -0.0 << "0.00" << none;
    QTest::newRow("a fen") << 0.01 << "0.01" << none;
    QTest::newRow("just below 万") << 9999.99 << "9999.99" << none;
    QTest::newRow("rounds up to 万") << 9999.999 << "1.00" << wan;
    QTest::newRow("万") << 10000.0 << "1.00" << wan;
    QTest::newRow("half goes up") << 10050.0 << "1.01" << wan;
    QTest::newRow("half of a half") << 123450.0 << "12.35" << wan;
    QTest::newRow("below half") << 123449.99 << "12.34" << wan;
    QTest::newRow("just below 亿") << 99999949.99 << "9999.99" << wan;
    QTest::newRow("rounds up to 亿") << 99999950.0 << "1.00" << yi;
    QTest::newRow("nearly 亿") << 99999999.999 << "1.00" << yi;
    QTest::newRow("亿") << 1e8 << "1.00" << yi;
    QTest::newRow("many 亿") << 123456789012.0 << "1234.57" << yi;
    QTest::newRow("rounds up to 万亿") << 999999500000.0 << "1.00" << wanYi;
    QTest::newRow("万亿") << 1e12 << "1.00" << wanYi;
    QTest::newRow("90 万亿") << 9e13 << "90.00" << wanYi;
    QTest::newRow("beyond") << 1e18 << "1000000.00" << wanYi;
    QTest::newRow("negative") << -123450.0 << "-12.35" << wan;
    QTest::newRow("negative at the border") << -9999.999 << "-1.00" << wan;
    QTest::newRow("infinity") << std::numeric_limits<double>::infinity() << "--" << none;
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << "--" << none;
}

void TestBreltGlobalFunction::moneyValue()
{
    QFETCH(double, value);
    QString number = QStringLiteral("old");
    QString unit = QStringLiteral("old");
    BreltGlobalFunction::getMoneyValue(value, number, unit);
    QTEST(number, "number");
    QTEST(unit, "unit");
}

void TestBreltGlobalFunction::moneyString_data()
{
    QTest::addColumn<double>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("zero") << 0.0 << "0.00";
    QTest::newRow("no separator") << 999.99 << "999.99";
    QTest::newRow("rounds to a separator") << 999.999 << "1,000.00";
    QTest::newRow("one separator") << 100000.5 << "100,000.50";
    QTest::newRow("two separators") << 1234567.5 << "1,234,567.50";
    QTest::newRow("negative") << -123.0 << "-123.00";
    QTest::newRow("negative with separator") << -1234.56 << "-1,234.56";
    QTest::newRow("large") << 9e15 << "9,000,000,000,000,000.00";
    QTest::newRow("infinity") << -std::numeric_limits<double>::infinity() << "--";
    QTest::newRow("no number") << std::numeric_limits<double>::quiet_NaN() << "--";
}

void TestBreltGlobalFunction::moneyString()
{
    QFETCH(double, value);
    QTEST(BreltGlobalFunction::getMoneyString(value), "text");
}

void TestBreltGlobalFunction::noticeShowsItsText()
{
    global()->alertMessage(QStringLiteral("买入委托成功"));
    QCOMPARE(global()->notices(), QStringList{QStringLiteral("买入委托成功")});
    const QList<QLabel *> windows = noticeWindows();
    QCOMPARE(windows.size(), 1);
    QCOMPARE(windows.first()->text(), QStringLiteral("买入委托成功"));
    QVERIFY(windows.first()->windowFlags() & Qt::FramelessWindowHint);
    QVERIFY(windows.first()->height() >= windows.first()->heightForWidth(windows.first()->width()));
}

void TestBreltGlobalFunction::emptyTextShowsNothing()
{
    global()->alertMessage(QString());
    global()->alertMessage(QStringLiteral("  \n"));
    QVERIFY(global()->notices().isEmpty());
    QVERIFY(noticeWindows().isEmpty());
}

void TestBreltGlobalFunction::noticesStackWithoutCoveringEachOther()
{
    const QStringList texts{QStringLiteral("入金成功"), QStringLiteral("出金成功"),
                            QStringLiteral("入金成功"), QString(120, QChar(0x85cf))};
    for (const QString &text : texts)
        global()->alertMessage(text);
    QCOMPARE(global()->notices(), texts);
    const QList<QLabel *> windows = noticeWindows();
    QCOMPARE(windows.size(), 4);
    for (int i = 0; i < windows.size(); ++i) {
        QCOMPARE(windows.at(i)->text(), texts.at(i));
        QVERIFY(windows.at(i)->screen()->availableGeometry().contains(windows.at(i)->geometry()));
        for (int j = 0; j < i; ++j)
            QVERIFY(!windows.at(i)->geometry().intersects(windows.at(j)->geometry()));
    }
}

void TestBreltGlobalFunction::onlyFiveStand()
{
    for (int i = 0; i < 50; ++i)
        global()->alertMessage(QString::number(i));
    QCOMPARE(global()->notices(), QStringList({"45", "46", "47", "48", "49"}));
    QCOMPARE(noticeWindows().size(), 5);
}

void TestBreltGlobalFunction::noticePassesByItself()
{
    global()->setNoticeDuration(20);
    global()->alertMessage(QStringLiteral("撤单成功"));
    QPointer<QLabel> window = noticeWindows().value(0);
    QVERIFY(window);
    QTRY_VERIFY(global()->notices().isEmpty());
    QVERIFY(noticeWindows().isEmpty());
    QTRY_VERIFY(!window);
}

void TestBreltGlobalFunction::theRestMovesUp()
{
    global()->setNoticeDuration(20);
    global()->alertMessage(QStringLiteral("先"));
    global()->setNoticeDuration(60000);
    global()->alertMessage(QStringLiteral("后"));
    const int top = noticeWindows().first()->y();
    QTRY_COMPARE(global()->notices(), QStringList{QStringLiteral("后")});
    QCOMPARE(noticeWindows().first()->y(), top);
}

void TestBreltGlobalFunction::noticeTakesNoFocus()
{
    QLineEdit field;
    field.show();
    field.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&field));
    field.setFocus();
    global()->alertMessage(QStringLiteral("卖出委托成功"));
    QCoreApplication::processEvents();
    QCOMPARE(QApplication::focusWidget(), &field);
    QCOMPARE(QApplication::activeWindow(), &field);
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(!QApplication::activePopupWidget());
    QTest::keyClicks(QApplication::focusWidget(), "12");
    QCOMPARE(field.text(), QStringLiteral("12"));
    QVERIFY(noticeWindows().first()->testAttribute(Qt::WA_TransparentForMouseEvents));
    QVERIFY(!noticeWindows().first()->testAttribute(Qt::WA_QuitOnClose));
}

void TestBreltGlobalFunction::noticeStandsOverTheWindowInUse()
{
    QWidget window;
    window.setGeometry(350, 200, 400, 300);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    global()->alertMessage(QStringLiteral("暂无可申购藏品！"));
    QVERIFY(window.frameGeometry().contains(noticeWindows().first()->geometry()));
}

void TestBreltGlobalFunction::dialogInUseIsNotCovered()
{
    QWidget window;
    window.setGeometry(0, 0, 780, 580);
    window.show();
    QDialog dialog(&window);
    dialog.setGeometry(300, 350, 200, 150);
    dialog.show();
    dialog.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    global()->alertMessage(QStringLiteral("入金成功"));
    QVERIFY(!dialog.frameGeometry().intersects(noticeWindows().first()->geometry()));
    QVERIFY(window.frameGeometry().contains(noticeWindows().first()->geometry()));
}

void TestBreltGlobalFunction::longTextWrapsOnTheScreen()
{
    global()->alertMessage(QString(20000, QLatin1Char('8')));
    const QLabel *notice = noticeWindows().first();
    QVERIFY(notice->text().size() <= 501);
    QVERIFY(notice->text().endsWith(QChar(0x2026)));
    QVERIFY(notice->width() <= 420);
    QVERIFY(notice->height() >= notice->heightForWidth(notice->width()));
    QVERIFY(notice->height() > 4 * notice->fontMetrics().height());
    QVERIFY(notice->screen()->availableGeometry().contains(notice->geometry()));
}

void TestBreltGlobalFunction::signsOfRichTextAreShownAsTheyCome()
{
    global()->alertMessage(QStringLiteral("<b>余额</b> < 100"));
    const QLabel *notice = noticeWindows().first();
    QCOMPARE(notice->text(), QStringLiteral("<b>余额</b> < 100"));
    QCOMPARE(notice->textFormat(), Qt::PlainText);
}

void TestBreltGlobalFunction::noticeFromAnotherThread()
{
    std::unique_ptr<QThread> thread(
        QThread::create([] { global()->alertMessage(QStringLiteral("远方")); }));
    thread->start();
    QVERIFY(thread->wait(5000));
    QTRY_COMPARE(global()->notices(), QStringList{QStringLiteral("远方")});
}

// Leaves notices behind, one standing and one waiting for its deletion: the application's end must
// take both, and later calls must do nothing. A crash or a leak there fails the process.
void TestBreltGlobalFunction::noticesEndWithTheApplication()
{
    global()->setNoticeDuration(60000);
    for (int i = 0; i < 6; ++i)
        global()->alertMessage(QStringLiteral("仍在"));
    QCOMPARE(global()->notices().size(), 5);
    lateCaller.armed = true;
}

ZV_TEST(TestBreltGlobalFunction)
#include "test_breltglobalfunction.moc"
