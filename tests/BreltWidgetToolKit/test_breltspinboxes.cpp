#include "BreltWidgetToolKit/breltdoublespinbox.h"
#include "BreltWidgetToolKit/breltspinbox.h"
#include "BreltWidgetToolKit/fieldtest.h"
#include "support/testregistry.h"

namespace {

// The rules that both spin boxes keep. `typed` is a text of keys, `value` what it means.
template <typename Field, typename Value>
class SpinBoxRules
{
public:
    SpinBoxRules(const QString &typed, Value value) : m_typed(typed), m_value(value) { }

    void typedTextIsInterpretedBeforeTheSignal(Qt::Key key)
    {
        FieldInDialog<Field> page;
        QVERIFY(page.isReady());
        page.field->setKeyboardTracking(false); // the value waits for the Return
        page.field->setMaximum(100000000);
        page.field->selectAll();
        QTest::keyClicks(page.field, m_typed);
        QCOMPARE(page.field->value(), Value(0));

        QList<Value> seen;
        QObject::connect(page.field, &Field::signal_returnClicked, page.field,
                         [&seen, &page] { seen.append(page.field->value()); });
        QTest::keyClick(page.field, key);
        QCOMPARE(seen, QList<Value>{m_value});
    }

    void repeatedReturnSendsNothing()
    {
        FieldInDialog<Field> page;
        QVERIFY(page.isReady());
        QSignalSpy told(page.field, &Field::signal_returnClicked);
        QSignalSpy pressed(page.button, &QPushButton::clicked);
        QTest::keyPress(page.field, Qt::Key_Return);
        repeatReturn(page.field, 20);
        repeatReturn(page.field, 20, Qt::Key_Enter);
        repeatReturn(page.field->template findChild<QLineEdit *>(), 20);
        QTest::keyRelease(page.field, Qt::Key_Return);
        QCOMPARE(told.count(), 1);
        QCOMPARE(pressed.count(), 0);
    }

    void returnNeverReachesTheDefaultButton()
    {
        FieldInDialog<Field> page;
        QVERIFY(page.isReady());
        QSignalSpy pressed(page.button, &QPushButton::clicked);
        QTest::keyClick(page.field, Qt::Key_Return);
        QTest::keyClick(page.field, Qt::Key_Enter, Qt::KeypadModifier);
        QTest::keyClick(page.field->template findChild<QLineEdit *>(), Qt::Key_Return);
        QCOMPARE(pressed.count(), 0);
        QVERIFY(page.dialog.isVisible());

        page.other->setFocus();
        QTest::keyClick(page.other, Qt::Key_Return); // an ordinary field beside it does reach it
        QCOMPARE(pressed.count(), 1);
    }

    void otherKeysSendNothing()
    {
        FieldInDialog<Field> page;
        QVERIFY(page.isReady());
        QSignalSpy told(page.field, &Field::signal_returnClicked);
        QTest::keyClicks(page.field, m_typed);
        QTest::keyClick(page.field, Qt::Key_Up);
        QTest::keyClick(page.field, Qt::Key_Space);
        QTest::keyClick(page.field, Qt::Key_Tab);
        QCOMPARE(told.count(), 0);
    }

    void emptyTextKeepsTheLastValue()
    {
        FieldInDialog<Field> page;
        QVERIFY(page.isReady());
        page.field->setValue(7);
        page.field->selectAll();
        QTest::keyClick(page.field, Qt::Key_Delete);
        QSignalSpy told(page.field, &Field::signal_returnClicked);
        QTest::keyClick(page.field, Qt::Key_Return);
        QCOMPARE(told.count(), 1);
        QCOMPARE(page.field->value(), Value(7));
        QVERIFY(!page.field->text().isEmpty());
    }

    void wheelNeedsTheFocus()
    {
        FieldInDialog<Field> page;
        QVERIFY(page.isReady());
        page.field->setValue(10);
        page.other->setFocus();
        turnWheel(page.field, 1);
        QCOMPARE(page.field->value(), Value(10));
        QVERIFY(!page.field->hasFocus());
        page.field->setFocus();
        turnWheel(page.field, 1);
        QVERIFY(page.field->value() > Value(10));
    }

private:
    QString m_typed;
    Value m_value;
};

} // namespace

// Each test runs once for either spin box.
class TestBreltSpinBoxes : public QObject
{
    Q_OBJECT

private:
    template <typename Rule>
    static void hold(Rule rule)
    {
        QFETCH_GLOBAL(bool, isForWholeNumbers);
        if (isForWholeNumbers)
            rule(SpinBoxRules<BreltSpinBox, int>(QStringLiteral("125"), 125));
        else
            rule(SpinBoxRules<BreltDoubleSpinBox, double>(QStringLiteral("88.25"), 88.25));
    }

private slots:
    void initTestCase_data()
    {
        QTest::addColumn<bool>("isForWholeNumbers");
        QTest::newRow("BreltSpinBox") << true;
        QTest::newRow("BreltDoubleSpinBox") << false;
    }

    void returnSignalsWithTheTypedValue()
    {
        hold([](auto rules) { rules.typedTextIsInterpretedBeforeTheSignal(Qt::Key_Return); });
    }
    void keypadEnterCountsToo()
    {
        hold([](auto rules) { rules.typedTextIsInterpretedBeforeTheSignal(Qt::Key_Enter); });
    }
    void repeatedReturnSendsNothing()
    {
        hold([](auto rules) { rules.repeatedReturnSendsNothing(); });
    }
    void returnNeverReachesTheDefaultButton()
    {
        hold([](auto rules) { rules.returnNeverReachesTheDefaultButton(); });
    }
    void otherKeysSendNothing()
    {
        hold([](auto rules) { rules.otherKeysSendNothing(); });
    }
    void emptyTextKeepsTheLastValue()
    {
        hold([](auto rules) { rules.emptyTextKeepsTheLastValue(); });
    }
    void wheelNeedsTheFocus()
    {
        hold([](auto rules) { rules.wheelNeedsTheFocus(); });
    }
};

ZV_TEST(TestBreltSpinBoxes)
#include "test_breltspinboxes.moc"
