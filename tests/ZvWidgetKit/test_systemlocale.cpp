#include "ZvWidgetKit/recordpage.h"
#include "ZvWidgetKit/small_deliveryhandling_dialog.h"
#include "moneybench.h"
#include "pagelog.h"
#include "record.h"
#include "recordbench.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QDateEdit>
#include <QLocale>
#include <QRegularExpression>
#include <QSpinBox>
#include <QToolButton>
#include <QtTest/QtTest>

using zvtest::TicketBench;

// The system's way of writing numbers, dates and times has no say in what is typed, shown and sent:
// where a point groups digits, 99.98 would be 9998, and some systems have digits of their own.
//
// A system's way cannot be changed while a program runs, so this class runs several times, each
// time told by the environment which way it is.
class SystemLocaleTest : public QObject
{
    Q_OBJECT

private:
    // A date edit or a clock shows digits that everybody reads.
    static bool isTime(const QString &text)
    {
        static const QRegularExpression time(QStringLiteral("^[0-9]{2}:[0-9]{2}:[0-9]{2}$"));
        return time.match(text).hasMatch();
    }

private slots:
    void initTestCase()
    {
        if (qEnvironmentVariableIsSet("ZV_SYSTEM_LOCALE"))
            QCOMPARE(QLocale::system().name(), qEnvironmentVariable("ZV_SYSTEM_LOCALE"));
    }

    void prices_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("point") << "99.98";
        QTest::newRow("comma") << "99,98";
        QTest::newRow("comma of an input method") << "99，98";
    }
    void prices()
    {
        QFETCH(QString, typed);
        TicketBench bench;
        QCOMPARE(bench.price()->text(), QStringLiteral("0.00"));
        bench.clickPrice(10002);
        QCOMPARE(bench.price()->text(), bench.text("label_latest_value"));
        bench.typePrice(typed);
        QCOMPARE(bench.price()->text(), QStringLiteral("99.98"));
        bench.typeCount("3");
        QCOMPARE(bench.count()->text(), QStringLiteral("3"));
        const auto boxes = bench.order();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, zvtest::confirmation("600137", "庚申猴票", "99.98", "3"));
        QCOMPARE(bench.calls(),
                 QStringList{"ZvServerActionResult::sendRequest_trade_buy(\"1001\", 99.98, 3)"});
    }

    // The count has room for more than 999 pieces, where some systems group digits by a comma.
    void partsOfPieces_data()
    {
        QTest::addColumn<QString>("typed");
        for (const char *typed : {"2,5", "2.5", "2，5"})
            QTest::newRow(typed) << typed;
    }
    void partsOfPieces()
    {
        QFETCH(QString, typed);
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount(QStringLiteral("2"));
        for (const QChar mark : typed.mid(1))
            QTest::sendKeyEvent(QTest::Click, bench.count(), Qt::Key_unknown, QString(mark),
                                Qt::NoModifier);
        QCOMPARE(bench.count()->value(), 2);
        const auto boxes = bench.order();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, zvtest::confirmation("600137", "庚申猴票", "100", "2"));
        QCOMPARE(bench.count()->text(), QStringLiteral("2"));
        QCOMPARE(bench.calls(),
                 QStringList{"ZvServerActionResult::sendRequest_trade_buy(\"1001\", 100, 2)"});
    }

    void preparedOrders()
    {
        TicketBench bench;
        bench.clickPrice(10002);
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        bench.enter("99,98", "3");
        bench.order();
        const QAbstractItemModel *model = bench.prepared()->model();
        QCOMPARE(model->rowCount(), 1);
        QStringList texts;
        for (int column = 0; column < model->columnCount(); ++column)
            texts << model->index(0, column).data().toString();
        QVERIFY2(texts.contains(QStringLiteral("99.98")), qPrintable(texts.join(' ')));
        QVERIFY2(isTime(texts.at(6)), qPrintable(texts.join(' ')));
    }

    void amounts()
    {
        zvtest::MoneyBench bench;
        QCOMPARE(bench.amount()->text(), QStringLiteral("¥ 0.00"));
        bench.click("pushButton_out");
        bench.typeAmount("250,75");
        QCOMPARE(bench.amount()->text(), QStringLiteral("¥ 250.75"));
        zvtest::Record record;
        bench.click("pushButton_ok");
        const QString calls = record.take();
        QVERIFY2(calls.contains("sendRequest_outMoney(\"250.75\")"), qPrintable(calls));
    }

    void pieces()
    {
        KitBench kit;
        Small_DeliveryHandling_Dialog dialog(nullptr);
        dialog.setAvailableNum(30);
        auto *field = dialog.findChild<QSpinBox *>(QStringLiteral("spinBox_num"));
        QCOMPARE(field->text(), QStringLiteral("30"));
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        field->selectAll();
        QTest::keyClicks(field, "12");
        QCOMPARE(field->text(), QStringLiteral("12"));
        kit.endActions();
    }

    void dates_data() { zvtest::addRecordMembers(); }
    void dates()
    {
        QFETCH(int, place);
        const zvtest::RecordMember &member = zvtest::recordMembers().at(place);
        KitBench kit;
        const std::unique_ptr<RecordPage> page = member.make();
        for (auto *edit : page->findChildren<QDateEdit *>())
            QCOMPARE(edit->text(), QStringLiteral("2020/01/01"));
        const QString day = QStringLiteral("2020/01/01");
        zvtest::PageLog log;
        page->slot_selectButton_clicked();
        QCOMPARE(log.take(), QStringList{member.asks(day, day, 1, 0)});
        member.answer(10, 1);
        page->findChild<QToolButton *>(QStringLiteral("toolButton_pageDown"))->click();
        QCOMPARE(zvtest::withoutTimes(log.take()),
                 (QStringList{"<time> ==> Down", "<time> ==> RequestPage: 2",
                              member.asks(day, day, 2, 0)}));
        member.answer(0, 1);
    }

    // A key at a time, as it is typed.
    void typedDates()
    {
        KitBench kit;
        const std::unique_ptr<RecordPage> page = zvtest::recordMembers().first().make();
        page->show();
        page->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(page.get()));
        auto *start = page->findChild<QDateEdit *>(QStringLiteral("dateEdit_startDate"));
        start->setFocus();
        start->setSelectedSection(QDateTimeEdit::YearSection);
        QTest::keyClicks(start, "20180504");
        QCOMPARE(start->date(), QDate(2018, 5, 4));
        QCOMPARE(start->text(), QStringLiteral("2018/05/04"));
    }
};

ZV_TEST(SystemLocaleTest)
#include "test_systemlocale.moc"
