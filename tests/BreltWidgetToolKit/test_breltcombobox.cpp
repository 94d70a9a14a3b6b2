#include "BreltWidgetToolKit/breltcombobox.h"

#include "BreltWidgetToolKit/fieldtest.h"
#include "support/testregistry.h"

#include <QAbstractItemView>
#include <QCompleter>

class TestBreltComboBox : public QObject
{
    Q_OBJECT

private slots:
    void returnChoosesTheTypedEntryAndEndsThere();
    void repeatedReturnDoesNothing();
    void wheelNeedsTheFocus();
    void sizeDoesNotDependOnTheEntries();
    void listIsWideEnoughForItsTexts();

private:
    static void fill(BreltComboBox *box)
    {
        box->setEditable(true);
        box->setInsertPolicy(QComboBox::NoInsert);
        box->completer()->setCompletionMode(QCompleter::PopupCompletion);
        box->addItems(
            {QStringLiteral("601001"), QStringLiteral("601002"), QStringLiteral("601003")});
    }
};

void TestBreltComboBox::returnChoosesTheTypedEntryAndEndsThere()
{
    FieldInDialog<BreltComboBox> page;
    fill(page.field);
    page.field->setFocus();
    QVERIFY(page.isReady());
    QSignalSpy chosen(page.field, QOverload<int>::of(&QComboBox::activated));
    QSignalSpy pressed(page.button, &QPushButton::clicked);
    page.field->setEditText(QStringLiteral("601002"));
    QTest::keyClick(page.field, Qt::Key_Return);
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(page.field->currentIndex(), 1);
    page.field->setEditText(QStringLiteral("没有"));
    QTest::keyClick(page.field, Qt::Key_Enter);
    QCOMPARE(chosen.count(), 1);
    QCOMPARE(page.field->count(), 3);
    QCOMPARE(pressed.count(), 0);
}

void TestBreltComboBox::repeatedReturnDoesNothing()
{
    FieldInDialog<BreltComboBox> page;
    fill(page.field);
    page.field->setFocus();
    QVERIFY(page.isReady());
    QSignalSpy chosen(page.field, QOverload<int>::of(&QComboBox::activated));
    QSignalSpy pressed(page.button, &QPushButton::clicked);
    page.field->setEditText(QStringLiteral("601003"));
    repeatReturn(page.field, 5);
    QCOMPARE(chosen.count(), 0);
    QCOMPARE(pressed.count(), 0);
}

void TestBreltComboBox::wheelNeedsTheFocus()
{
    FieldInDialog<BreltComboBox> page;
    fill(page.field);
    QVERIFY(page.isReady());
    page.other->setFocus();
    turnWheel(page.field, -1);
    QCOMPARE(page.field->currentIndex(), 0);
    page.field->setFocus();
    turnWheel(page.field, -1);
    QCOMPARE(page.field->currentIndex(), 1);
}

void TestBreltComboBox::sizeDoesNotDependOnTheEntries()
{
    BreltComboBox box;
    const QSize empty = box.sizeHint();
    box.addItem(QString(200, QChar(0x85cf)));
    QCOMPARE(box.sizeHint(), empty);
}

void TestBreltComboBox::listIsWideEnoughForItsTexts()
{
    BreltComboBox box;
    box.setFixedWidth(90);
    const QString name = QStringLiteral("二〇一六年丙申猴年生肖邮票大版张");
    box.addItems({QStringLiteral("短"), name});
    box.show();
    box.showPopup();
    QTRY_VERIFY(box.view()->isVisible());
    const int needed = box.view()->fontMetrics().horizontalAdvance(name);
    QVERIFY(needed > 90);
    QVERIFY(box.view()->viewport()->width() >= needed);
    box.hidePopup();

    box.addItem(QString(500, QChar(0x85cf)));
    box.showPopup();
    QTRY_VERIFY(box.view()->isVisible());
    QVERIFY(box.view()->minimumWidth() <= 480);
    box.hidePopup();
}

ZV_TEST(TestBreltComboBox)
#include "test_breltcombobox.moc"
