#include "BreltWidgetToolKit/breltamountspinbox.h"
#include "BreltWidgetToolKit/breltcountspinbox.h"
#include "BreltWidgetToolKit/breltdoublespinbox.h"
#include "BreltWidgetToolKit/breltspinbox.h"
#include "support/testregistry.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QLineEdit>
#include <QLocale>
#include <QtTest/QtTest>

#include <memory>

namespace {

template <typename Field>
std::unique_ptr<Field> shown()
{
    auto field = std::make_unique<Field>();
    field->setMaximum(100000000);
    field->show();
    field->activateWindow();
    field->setFocus();
    return QTest::qWaitForWindowActive(field.get()) ? std::move(field) : nullptr;
}

// Keys of any keyboard, each with the text that it gives.
void type(QWidget *field, const QString &text)
{
    for (const QChar mark : text)
        QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, QString(mark), Qt::NoModifier);
}

void typeOver(QAbstractSpinBox *field, const QString &text)
{
    field->selectAll();
    type(field, text);
}

} // namespace

// Numbers are typed and shown alike, whatever the system's way of writing them is. Each test runs
// once for each of some ways that differ.
class TestBreltPlainNumbers : public QObject
{
    Q_OBJECT

private:
    QLocale m_usual;

    void amountsAreRead(QDoubleSpinBox *field)
    {
        QFETCH(QString, typed);
        QFETCH(QString, shows);
        QVERIFY(field);
        typeOver(field, typed);
        QCOMPARE(field->value(), shows.toDouble());
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(field->text(), shows);
        QCOMPARE(field->value(), shows.toDouble());
    }

    static void addAmounts()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("shows");
        QTest::newRow("point") << "99.98"
                               << "99.98";
        QTest::newRow("comma") << "99,98"
                               << "99.98";
        QTest::newRow("comma with an input method") << "99，98"
                                                    << "99.98";
        QTest::newRow("full stop with an input method") << "99。98"
                                                        << "99.98";
        QTest::newRow("wide") << "９９．９８"
                              << "99.98";
        QTest::newRow("arabic") << "٩٩٫٩٨"
                                << "99.98";
        QTest::newRow("arabic with a comma") << "٩٩،٩٨"
                                             << "99.98";
        QTest::newRow("thousands") << "12345.6"
                                   << "12345.60";
        // The second mark is refused, and what follows it is more than hundredths.
        QTest::newRow("two marks") << "1,234.56"
                                   << "1.23";
        QTest::newRow("two marks the other way") << "1.234,56"
                                                 << "1.23";
        QTest::newRow("blanks between thousands") << "1 234,5"
                                                  << "1234.50";
        QTest::newRow("narrow blanks") << "1\u202f234,5"
                                       << "1234.50";
        QTest::newRow("no digits by name only") << "9²9"
                                                << "99.00";
    }

    void pastedAmountsAreRead(QDoubleSpinBox *field)
    {
        QFETCH(QString, pasted);
        QFETCH(QString, shows);
        QVERIFY(field);
        field->setValue(7);
        field->selectAll();
        QGuiApplication::clipboard()->setText(pasted);
        QTest::keySequence(field, QKeySequence::Paste);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(field->text(), shows);
    }

    static void addPastedAmounts()
    {
        QTest::addColumn<QString>("pasted");
        QTest::addColumn<QString>("shows");
        QTest::newRow("point") << "99.98"
                               << "99.98";
        QTest::newRow("comma") << "99,98"
                               << "99.98";
        // Whether 1234 or 1.234 is meant cannot be known: the field stays.
        QTest::newRow("three digits behind") << "1,234"
                                             << "7.00";
        QTest::newRow("two marks") << "1,234.56"
                                   << "7.00";
        QTest::newRow("two marks the other way") << "1.234,56"
                                                 << "7.00";
    }

    static void partsAreNoPieces(QSpinBox *field, const QString &typed)
    {
        QVERIFY(field);
        typeOver(field, typed);
        QVERIFY(!field->hasAcceptableInput());
        QCOMPARE(field->text(), QStringLiteral("2.5"));
        QCOMPARE(field->value(), 2);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(field->value(), 2);
        QCOMPARE(field->text(), QStringLiteral("2"));
    }

private slots:
    void initTestCase_data()
    {
        QTest::addColumn<QLocale>("system");
        QTest::newRow("C") << QLocale::c();
        QTest::newRow("zh_CN") << QLocale(QLocale::Chinese, QLocale::China);
        QTest::newRow("de_DE") << QLocale(QLocale::German, QLocale::Germany);
        QTest::newRow("fr_FR") << QLocale(QLocale::French, QLocale::France);
        QTest::newRow("ar_EG") << QLocale(QLocale::Arabic, QLocale::Egypt);
    }

    void init()
    {
        QFETCH_GLOBAL(QLocale, system);
        QLocale::setDefault(system);
    }

    void cleanup() { QLocale::setDefault(m_usual); }

    void amounts_data() { addAmounts(); }
    void amounts() { amountsAreRead(shown<BreltAmountSpinBox>().get()); }

    void prices_data() { addAmounts(); }
    void prices() { amountsAreRead(shown<BreltDoubleSpinBox>().get()); }

    void pastedAmounts_data() { addPastedAmounts(); }
    void pastedAmounts() { pastedAmountsAreRead(shown<BreltAmountSpinBox>().get()); }

    void pastedPrices_data() { addPastedAmounts(); }
    void pastedPrices() { pastedAmountsAreRead(shown<BreltDoubleSpinBox>().get()); }

    void amountsAreShown()
    {
        BreltAmountSpinBox field;
        field.setMaximum(100000000);
        field.setValue(1234567.89);
        QCOMPARE(field.text(), QStringLiteral("1234567.89"));
    }

    void counts_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("usual") << "12345";
        QTest::newRow("wide") << "１２３４５";
        QTest::newRow("arabic") << "١٢٣٤٥";
    }
    void counts()
    {
        QFETCH(QString, typed);
        const auto field = shown<BreltSpinBox>();
        QVERIFY(field);
        typeOver(field.get(), typed);
        QCOMPARE(field->value(), 12345);
        QCOMPARE(field->text(), QStringLiteral("12345"));
        QTest::keyClick(field.get(), Qt::Key_Up);
        QCOMPARE(field->text(), QStringLiteral("12346"));
    }

    // Neither counts a mark for nothing, nor refuses its key: both would make 25 of it.
    void partsOfPieces_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::newRow("comma") << "2,5";
        QTest::newRow("point") << "2.5";
        QTest::newRow("comma with an input method") << "2，5";
        QTest::newRow("wide point") << "２．５";
        QTest::newRow("arabic") << "٢٫٥";
    }
    void partsOfPieces()
    {
        QFETCH(QString, typed);
        partsAreNoPieces(shown<BreltSpinBox>().get(), typed);
        partsAreNoPieces(shown<BreltCountSpinBox>().get(), typed);
    }

    void pastedPartsOfPieces_data()
    {
        QTest::addColumn<QString>("pasted");
        for (const char *pasted : {"2,5", "2.5", "1,000", "1,000,000", ",5", "2,"})
            QTest::newRow(pasted) << pasted;
    }
    void pastedPartsOfPieces()
    {
        QFETCH(QString, pasted);
        const auto field = shown<BreltSpinBox>();
        QVERIFY(field);
        field->setValue(7);
        field->selectAll();
        QGuiApplication::clipboard()->setText(pasted);
        QTest::keySequence(field.get(), QKeySequence::Paste);
        QVERIFY(!field->hasAcceptableInput());
        QCOMPARE(field->value(), 7);
        QTest::keyClick(field.get(), Qt::Key_Return);
        QCOMPARE(field->value(), 7);
        QCOMPARE(field->text(), QStringLiteral("7"));
    }

    // What is wrong without its marks is not better with them.
    void otherMarksAreRefused()
    {
        const auto field = shown<BreltSpinBox>();
        QVERIFY(field);
        typeOver(field.get(), QStringLiteral("2,a5"));
        QCOMPARE(field->text(), QStringLiteral("2.5"));
        field->setMaximum(99);
        typeOver(field.get(), QStringLiteral("2,34"));
        QCOMPARE(field->text(), QStringLiteral("2.3"));
    }
};

ZV_TEST(TestBreltPlainNumbers)
#include "test_breltplainnumbers.moc"
