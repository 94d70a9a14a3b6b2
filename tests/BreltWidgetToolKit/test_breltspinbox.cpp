#include "BreltWidgetToolKit/breltspinbox.h"
#include "BreltWidgetToolKit/fieldtest.h"
#include "support/testregistry.h"

class TestBreltSpinBox : public QObject
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
    SpinBoxRules<BreltSpinBox, int> m_rules{QStringLiteral("125"), 125};
};

ZV_TEST(TestBreltSpinBox)
#include "test_breltspinbox.moc"
