#include "client/keyboardsprite.h"

#include "support/testregistry.h"
#include "windowbench.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/transaction_widget.h"

#include <QComboBox>
#include <QDateEdit>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableView>
#include <QtTest/QtTest>

using zvtest::WindowBench;

// Digits and letters find a collection wherever nothing is typed, and belong to a field that has
// the focus: in the window with all the fields that a user meets there.
class SpriteFocusTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowBench> m_bench;
    MainWindow *m_window = nullptr;

    Transaction_Widget *trading() const { return m_window->findChild<Transaction_Widget *>(); }
    bool isSpriteOpen() const { return m_window->findChild<KeyboardSprite *>()->isVisible(); }

    // The field of this name that is on the screen.
    template <typename Field>
    Field *shown(const QString &name) const
    {
        for (auto *each : trading()->findChildren<Field *>(name)) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    }

    void click(const QString &button)
    {
        auto *found = shown<QPushButton>(button);
        QVERIFY2(found, qPrintable(button));
        QTest::mouseClick(found, Qt::LeftButton);
    }

    // As the window system reports keys: to the window, which knows who has the focus.
    void type(const QString &text)
    {
        for (const QChar key : text)
            QTest::keyClick(m_window->windowHandle(), Qt::Key(key.toUpper().unicode()),
                            Qt::NoModifier);
    }

private slots:
    void init()
    {
        m_bench = std::make_unique<WindowBench>(QSize(1366, 800));
        m_window = m_bench->window.get();
        m_bench->show();
        ZvUBBriefItem::Data item;
        item.collectionId = QStringLiteral("1001");
        item.code = QStringLiteral("600137");
        item.name = QStringLiteral("庚申猴票");
        ZvUBBriefInfo::Data data;
        data.items << ZvUBBriefItem(item);
        ZvServerCache::getZvServerCacheInstance()->storeBriefInfo(ZvUBBriefInfo(data));
    }

    void cleanup() { m_bench.reset(); }

    void whereNothingIsTypedTheSpriteComes()
    {
        auto *table = m_window->findChild<QStackedWidget *>()->findChild<QTableView *>();
        QVERIFY(table);
        table->setFocus();
        type("6");
        QVERIFY(isSpriteOpen());
    }

    void theTicketKeepsItsDigits()
    {
        auto *price = shown<QDoubleSpinBox>("doubleSpinBox_buysellPrice");
        QVERIFY(price);
        price->setFocus();
        price->selectAll();
        type("12");
        QVERIFY(!isSpriteOpen());
        QCOMPARE(price->value(), 12.0);

        auto *count = shown<QSpinBox>("spinBox_buysellNumber");
        count->setFocus();
        count->selectAll();
        type("7");
        QVERIFY(!isSpriteOpen());
        QCOMPARE(count->value(), 7);

        for (const char *name : {"comboBox_goodsCode", "comboBox_goodsName"}) {
            auto *combo = shown<QComboBox>(name);
            combo->setFocus();
            combo->lineEdit()->selectAll();
            type("9h");
            QVERIFY2(!isSpriteOpen(), name);
            QCOMPARE(combo->currentText(), QStringLiteral("9h"));
        }
    }

    void datesKeepTheirDigits()
    {
        click("pushButton_select");
        for (const char *name : {"dateEdit_startDate", "dateEdit_stopDate"}) {
            auto *date = shown<QDateEdit>(name);
            QVERIFY2(date, name);
            date->setFocus();
            date->setSelectedSection(QDateTimeEdit::YearSection);
            type("2018");
            QVERIFY2(!isSpriteOpen(), name);
            QCOMPARE(date->date().year(), 2018);
        }
    }

    void thePasswordStaysUnseen()
    {
        QVERIFY(QMetaObject::invokeMethod(trading(), "slot_showTransctionLock"));
        auto *password = shown<QLineEdit>(QString());
        QVERIFY(password);
        password->setFocus();
        type("abc123");
        QVERIFY(!isSpriteOpen());
        QCOMPARE(password->text(), QStringLiteral("abc123"));
    }
};

ZV_TEST(SpriteFocusTest)
#include "test_spritefocus.moc"
