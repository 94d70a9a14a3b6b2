#include "BreltWidgetToolKit/breltdoublespinbox.h"
#include "BreltWidgetToolKit/fieldtest.h"
#include "support/testregistry.h"

class TestBreltDoubleSpinBox : public QObject
{
    Q_OBJECT

private slots:
    void returnSignalsWithTheTypedValue()
    {
        m_rules.typedTextIsInterpretedBeforeTheSignal(Qt::Key_Return);
    }
    void keypadEnterCountsToo() { m_rules.typedTextIsInterpretedBeforeTheSignal(Qt::Key_Enter); }
    void repeatedReturnSendsNothing() { m_rules.repeatedReturnSendsNothing(); }
    void returnNeverReachesTheDefaultButton() { m_rules.returnNeverReachesTheDefaultButton(); }
    void otherKeysSendNothing() { m_rules.otherKeysSendNothing(); }
    void emptyTextKeepsTheLastValue() { m_rules.emptyTextKeepsTheLastValue(); }
    void wheelNeedsTheFocus() { m_rules.wheelNeedsTheFocus(); }

private:
    SpinBoxRules<BreltDoubleSpinBox, double> m_rules{QStringLiteral("88.25"), 88.25};
};

ZV_TEST(TestBreltDoubleSpinBox)
#include "test_breltdoublespinbox.moc"
