#include "client/keyboardsprite.h"
#include "client/marketkeys.h"

#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QComboBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStackedWidget>
#include <QStandardItemModel>
#include <QTableView>
#include <QTextEdit>
#include <QVBoxLayout>
#include <QtTest/QtTest>

#include <limits>

namespace {

constexpr int idColumn = 21;
constexpr int rows = 200;

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

// A chart that takes some keys and no wheel.
class Chart : public QWidget
{
public:
    explicit Chart(QWidget *parent) : QWidget(parent)
    {
        setFocusPolicy(Qt::StrongFocus);
        setGeometry(0, 0, 200, 200);
    }
    int wheels = 0;

protected:
    void wheelEvent(QWheelEvent *event) override
    {
        ++wheels;
        event->ignore();
    }
};

} // namespace

// What the window makes of keys and wheel, on pages of the three kinds.
class MarketKeysTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    QStackedWidget *m_pages = nullptr;
    QTableView *m_table = nullptr;
    Chart *m_chart = nullptr;
    QTableView *m_deals = nullptr;
    KeyboardSprite *m_sprite = nullptr;
    QStandardItemModel m_model{rows, idColumn + 1};
    QStringList m_heard;

    // Adds what the pool says to the list of what was heard.
    void listen()
    {
        const auto note = [this](const QString &word) { return [this, word] { m_heard << word; }; };
        QObject *self = m_window.get();
        using Pool = ZvWidgetSignalSLotPool;
        connect(pool(), &Pool::signal_turnoverKTime_clicked, self, note("F5"));
        connect(pool(), &Pool::signal_turnoverOption_clicked, self, note("F6"));
        connect(pool(), &Pool::signal_escape_clicked, self, note("Escape"));
        connect(pool(), &Pool::signal_pageup_clicked, self, note("PageUp"));
        connect(pool(), &Pool::signal_pagedown_clicked, self, note("PageDown"));
        connect(pool(), &Pool::signal_keyboardFairy_clicked, self,
                [this](int key) { m_heard << QStringLiteral("key %1").arg(QChar(key)); });
        connect(pool(), &Pool::signal_wheelOnChart_clicked, self,
                [this](int degrees) { m_heard << QStringLiteral("wheel %1").arg(degrees); });
        connect(pool(), &Pool::signal_global_colletionId_changed, self,
                [this](const QString &id) { m_heard << QStringLiteral("id %1").arg(id); });
    }

    QString heard()
    {
        const QString words = m_heard.join(", ");
        m_heard.clear();
        return words;
    }

    void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(m_window->focusWidget(), Qt::Key(key), modifiers);
    }

    void pressHeld(int key)
    {
        QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_window->focusWidget(), &event);
    }

    bool turn(QWidget *widget, const QPoint &by, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        const QPointF place = widget->rect().center();
        QWheelEvent event(place, widget->mapToGlobal(place.toPoint()), QPoint(), by, Qt::NoButton,
                          modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &event);
        return event.isAccepted();
    }

    // Puts a widget of the trading half in front of the keys.
    template <typename Widget>
    Widget *focusOnNew()
    {
        auto *widget = new Widget;
        m_window->layout()->addWidget(widget);
        widget->show();
        widget->setFocus();
        return widget;
    }

private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_pages = new QStackedWidget;
        auto *tablePage = new QWidget;
        m_table = new QTableView;
        m_table->setModel(&m_model);
        m_table->setSelectionBehavior(QAbstractItemView::SelectRows);
        m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
        for (int row = 0; row < rows; ++row) {
            auto *cell = new QStandardItem(QString::number(1000 + row));
            cell->setEditable(false);
            m_model.setItem(row, 0, cell);
            m_model.setItem(row, idColumn, new QStandardItem(QString::number(1000 + row)));
        }
        (new QVBoxLayout(tablePage))->addWidget(m_table);
        auto *chartPage = new QWidget;
        m_chart = new Chart(chartPage);
        m_deals = new QTableView(chartPage);
        auto *dealsPage = new QWidget;
        for (QWidget *page : {tablePage, chartPage, dealsPage})
            m_pages->addWidget(page);
        auto *layout = new QVBoxLayout(m_window.get());
        layout->addWidget(m_pages);
        m_sprite = new KeyboardSprite(m_pages);
        new MarketKeys(m_window.get(), m_pages, m_sprite);
        m_window->resize(500, 400);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_table->setFocus();
        listen();
    }

    void cleanup()
    {
        m_window.reset();
        m_heard.clear();
    }

    void keysGoToThePool_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("words");
        QTest::newRow("F5 on the table") << int(Qt::Key_F5) << 0 << "F5";
        QTest::newRow("F5 on the chart") << int(Qt::Key_F5) << 1 << "F5";
        QTest::newRow("F6 on the table") << int(Qt::Key_F6) << 0 << "F6";
        QTest::newRow("F6 on the chart") << int(Qt::Key_F6) << 1 << "F6";
        QTest::newRow("Escape on the table") << int(Qt::Key_Escape) << 0 << "Escape";
        QTest::newRow("Escape on the chart") << int(Qt::Key_Escape) << 1 << "Escape";
        QTest::newRow("Escape on the deals") << int(Qt::Key_Escape) << 2 << "Escape";
        QTest::newRow("Page Up on the chart") << int(Qt::Key_PageUp) << 1 << "PageUp";
        QTest::newRow("Page Down on the chart") << int(Qt::Key_PageDown) << 1 << "PageDown";
        QTest::newRow("Page Up on the deals") << int(Qt::Key_PageUp) << 2 << "PageUp";
        QTest::newRow("Page Down on the deals") << int(Qt::Key_PageDown) << 2 << "PageDown";
        QTest::newRow("digit on the table") << int(Qt::Key_1) << 0 << "key 1";
        QTest::newRow("letter on the table") << int(Qt::Key_H) << 0 << "key H";
        QTest::newRow("letter on the chart") << int(Qt::Key_Z) << 1 << "key Z";
        QTest::newRow("digit on the deals") << int(Qt::Key_0) << 2 << "key 0";
        QTest::newRow("another sign") << int(Qt::Key_Slash) << 1 << "";
        QTest::newRow("F7") << int(Qt::Key_F7) << 1 << "";
    }
    void keysGoToThePool()
    {
        QFETCH(int, key);
        QFETCH(int, page);
        QFETCH(QString, words);
        m_pages->setCurrentIndex(page);
        if (page == 1)
            m_chart->setFocus();
        press(key);
        QCOMPARE(heard(), words);
    }

    // As the window system reports them: not accepted until somebody does so.
    void eachKeyIsTakenOnce()
    {
        m_pages->setCurrentIndex(1);
        m_chart->setFocus();
        QWindow *handle = m_window->windowHandle();
        for (const Qt::Key key : {Qt::Key_F5, Qt::Key_Escape, Qt::Key_PageDown})
            QTest::keyClick(handle, key);
        QCOMPARE(heard(), QStringLiteral("F5, Escape, PageDown"));
        QTest::keyClick(handle, Qt::Key_H);
        QCOMPARE(heard(), QStringLiteral("key H"));
    }

    void lettersDoNotSearchTheTable()
    {
        m_table->selectRow(0);
        press(Qt::Key_1);
        QCOMPARE(m_table->currentIndex().row(), 0);
        QCOMPARE(heard(), QStringLiteral("key 1"));
    }

    void modifiersMeanOtherThings()
    {
        m_pages->setCurrentIndex(1);
        m_chart->setFocus();
        for (const auto modifier : {Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier}) {
            for (const int key : {Qt::Key_H, Qt::Key_5, Qt::Key_F5, Qt::Key_F6, Qt::Key_Escape,
                                  Qt::Key_PageUp, Qt::Key_PageDown})
                press(key, modifier);
        }
        press(Qt::Key_F5, Qt::ShiftModifier);
        QCOMPARE(heard(), QString());
        // Capitals are letters, and the keys of the numeric block are what they say.
        press(Qt::Key_H, Qt::ShiftModifier);
        press(Qt::Key_5, Qt::KeypadModifier);
        press(Qt::Key_PageDown, Qt::KeypadModifier);
        QCOMPARE(heard(), QStringLiteral("key H, key 5, PageDown"));
    }

    void aHeldKeyTurnsOnePageAndWalksOn()
    {
        m_pages->setCurrentIndex(1);
        m_chart->setFocus();
        for (const int key : {Qt::Key_F5, Qt::Key_F6, Qt::Key_Escape}) {
            pressHeld(key);
            pressHeld(key);
        }
        QCOMPARE(heard(), QString());
        pressHeld(Qt::Key_PageDown);
        pressHeld(Qt::Key_PageDown);
        QCOMPARE(heard(), QStringLiteral("PageDown, PageDown"));
    }

    void fieldsKeepTheKeysOfTyping()
    {
        m_pages->setCurrentIndex(1);
        auto *line = focusOnNew<QLineEdit>();
        QTest::keyClicks(line, "h1");
        press(Qt::Key_PageDown);
        QCOMPARE(line->text(), QStringLiteral("h1"));
        auto *price = focusOnNew<QDoubleSpinBox>();
        price->selectAll();
        QTest::keyClicks(price, "12");
        QCOMPARE(price->value(), 12.0);
        press(Qt::Key_PageUp);
        QCOMPARE(price->value(), 22.0);
        auto *text = focusOnNew<QTextEdit>();
        QTest::keyClicks(text, "a");
        QCOMPARE(text->toPlainText(), QStringLiteral("a"));
        auto *code = focusOnNew<QComboBox>();
        code->setEditable(true);
        code->setFocus();
        QTest::keyClicks(code->lineEdit(), "7");
        QCOMPARE(code->currentText(), QStringLiteral("7"));
        QCOMPARE(heard(), QString());
        // The keys of the pages are none of theirs.
        line->setFocus();
        press(Qt::Key_F5);
        press(Qt::Key_F6);
        press(Qt::Key_Escape);
        QCOMPARE(heard(), QStringLiteral("F5, F6, Escape"));
    }

    void aListBesideThePagesKeepsItsPageKeys()
    {
        m_pages->setCurrentIndex(1);
        auto *list = focusOnNew<QTableView>();
        list->setModel(&m_model);
        list->setCurrentIndex(m_model.index(0, 0));
        press(Qt::Key_PageDown);
        QVERIFY(list->currentIndex().row() > 0);
        QCOMPARE(heard(), QString());
        press(Qt::Key_F5);
        press(Qt::Key_Escape);
        press(Qt::Key_7);
        QCOMPARE(heard(), QStringLiteral("F5, Escape, key 7"));
        // One on a page is a page's.
        m_deals->setFocus();
        press(Qt::Key_PageDown);
        QCOMPARE(heard(), QStringLiteral("PageDown"));
    }

    void buttonsAndReadOnlyFieldsKeepNothing()
    {
        focusOnNew<QPushButton>();
        press(Qt::Key_H);
        auto *line = focusOnNew<QLineEdit>();
        line->setReadOnly(true);
        press(Qt::Key_8);
        QCOMPARE(heard(), QStringLiteral("key H, key 8"));
    }

    void nothingIsTakenUnderADialog()
    {
        QDialog dialog(m_window.get());
        dialog.setModal(true);
        QPushButton button(&dialog);
        dialog.show();
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        for (const int key : {Qt::Key_H, Qt::Key_F5, Qt::Key_PageDown}) {
            QTest::keyClick(&button, Qt::Key(key));
            // Such a key may still be under way to the window.
            QTest::keyClick(m_table, Qt::Key(key));
        }
        m_pages->setCurrentIndex(1);
        turn(m_chart, QPoint(0, 120));
        QCOMPARE(heard(), QString());
    }

    void nothingIsTakenOfAnotherWindow()
    {
        QWidget other;
        other.show();
        QTest::keyClick(&other, Qt::Key_H);
        QTest::keyClick(&other, Qt::Key_F6);
        // A child window is a window of its own.
        QDialog dialog(m_window.get());
        dialog.show();
        QTest::keyClick(&dialog, Qt::Key_H);
        QTest::keyClick(&dialog, Qt::Key_F5);
        QCOMPARE(heard(), QString());
    }

    void nothingIsTakenUnderAMenu()
    {
        QMenu menu(m_window.get());
        menu.addAction("a");
        menu.popup(m_window->mapToGlobal(QPoint(10, 10)));
        QTRY_VERIFY(menu.isVisible());
        QTest::keyClick(&menu, Qt::Key_H);
        QTest::keyClick(m_table, Qt::Key_F5);
        QCOMPARE(heard(), QString());
        menu.close();
        press(Qt::Key_F5);
        QCOMPARE(heard(), QStringLiteral("F5"));
    }

    void theSpriteHasAllKeysWhileItIsOpen()
    {
        m_pages->setCurrentIndex(1);
        m_sprite->begin(Qt::Key_H);
        press(Qt::Key_T);
        press(Qt::Key_F5);
        press(Qt::Key_PageDown);
        QCOMPARE(m_sprite->findChild<QLineEdit *>()->text(), QStringLiteral("ht"));
        press(Qt::Key_Escape);
        QVERIFY(m_sprite->isHidden());
        QCOMPARE(heard(), QString());
        press(Qt::Key_Escape);
        QCOMPARE(heard(), QStringLiteral("Escape"));
    }

    void theTableMovesByPagesAndTellsTheCollectionAtTheEnd()
    {
        zvtest::CallTrace trace;
        m_table->selectRow(0);
        QTest::keyPress(m_table, Qt::Key_PageDown);
        const int row = m_table->currentIndex().row();
        QVERIFY(row > 1);
        QCOMPARE(heard(), QString());
        QTest::keyRelease(m_table, Qt::Key_PageDown);
        QCOMPARE(heard(), QStringLiteral("id %1").arg(1000 + row));
        QTest::keyClick(m_table, Qt::Key_End, Qt::ControlModifier);
        QCOMPARE(heard(), QStringLiteral("id %1").arg(1000 + rows - 1));
        QTest::keyClick(m_table, Qt::Key_PageUp);
        QVERIFY(!heard().isEmpty());
        QTest::keyClick(m_table, Qt::Key_Home, Qt::ControlModifier);
        QCOMPARE(heard(), QStringLiteral("id 1000"));
        QCOMPARE(trace.take().filter("setGlobalCollectionID").last(),
                 QStringLiteral("ZvServerEngine::setGlobalCollectionID(\"1000\")"));
    }

    void aHeldPageKeyOnTheTableTellsItOnce()
    {
        m_table->selectRow(0);
        QKeyEvent repeated(QEvent::KeyRelease, Qt::Key_PageDown, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(m_table, &repeated);
        QCOMPARE(heard(), QString());
        QTest::keyRelease(m_table, Qt::Key_PageDown);
        QCOMPARE(heard(), QStringLiteral("id 1000"));
        // Other tables have nothing to do with it.
        m_pages->setCurrentIndex(1);
        QTest::keyRelease(m_deals, Qt::Key_PageDown);
        QCOMPARE(heard(), QString());
    }

    void anEmptyTableTellsNothing()
    {
        m_table->setModel(nullptr);
        QTest::keyClick(m_table, Qt::Key_PageDown);
        QCOMPARE(heard(), QString());
    }

    void theWheelOverTheChartGoesToThePool()
    {
        m_pages->setCurrentIndex(1);
        QVERIFY(turn(m_chart, QPoint(0, -120)));
        QVERIFY(turn(m_pages->widget(1), QPoint(0, 240)));
        QVERIFY(turn(m_deals->viewport(), QPoint(0, 120)));
        QCOMPARE(heard(), QStringLiteral("wheel -120, wheel 240, wheel 120"));
        // Each of them once, and the page does not hear it again.
        QCOMPARE(m_chart->wheels, 0);
    }

    void theWheelElsewhereIsNotTaken()
    {
        m_table->selectRow(0);
        turn(m_table->viewport(), QPoint(0, -120));
        turn(m_window.get(), QPoint(0, -120));
        m_pages->setCurrentIndex(2);
        turn(m_pages->widget(2), QPoint(0, -120));
        QCOMPARE(heard(), QString());
    }

    void otherTurnsAreTheChartsOwn()
    {
        m_pages->setCurrentIndex(1);
        turn(m_chart, QPoint(0, 120), Qt::ControlModifier);
        turn(m_chart, QPoint(0, 120), Qt::ShiftModifier);
        turn(m_chart, QPoint(120, 0));
        QCOMPARE(heard(), QString());
        QCOMPARE(m_chart->wheels, 3);
    }

    void aFineWheelIsGatheredToNotches()
    {
        m_pages->setCurrentIndex(1);
        turn(m_chart, QPoint(0, 119));
        QCOMPARE(heard(), QString());
        turn(m_chart, QPoint(0, 1));
        QCOMPARE(heard(), QStringLiteral("wheel 120"));
        for (int i = 0; i < 8; ++i)
            turn(m_chart, QPoint(0, -15));
        QCOMPARE(heard(), QStringLiteral("wheel -120"));
        // What was turned back does not count.
        turn(m_chart, QPoint(0, 100));
        turn(m_chart, QPoint(0, -100));
        turn(m_chart, QPoint(0, 100));
        QCOMPARE(heard(), QString());
        turn(m_chart, QPoint(0, 200));
        QCOMPARE(heard(), QStringLiteral("wheel 240"));
    }

    void theWheelMayTurnAsFarAsItCan()
    {
        m_pages->setCurrentIndex(1);
        const int most = std::numeric_limits<int>::max();
        turn(m_chart, QPoint(0, 119));
        QVERIFY(turn(m_chart, QPoint(0, most)));
        QCOMPARE(heard(), QStringLiteral("wheel 120000"));
        QVERIFY(turn(m_chart, QPoint(0, -most)));
        QCOMPARE(heard(), QStringLiteral("wheel -120000"));
    }
};

ZV_TEST(MarketKeysTest)
#include "test_marketkeys.moc"
