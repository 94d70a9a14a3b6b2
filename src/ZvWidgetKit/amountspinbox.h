#pragma once

#include <QDoubleSpinBox>
#include <QLocale>

// A field for an amount of money. It reads and shows numbers as the labels around it do, whatever
// the system's way of writing them is: where a point groups digits, "250.75" would be 25075. Marks
// that keys beside the point and input methods give for it are taken for the point, since a comma
// would group digits wherever it stands. It has no meta-object of its own: for style sheets it is a
// QDoubleSpinBox.
class AmountSpinBox : public QDoubleSpinBox
{
public:
    explicit AmountSpinBox(QWidget *parent = nullptr) : QDoubleSpinBox(parent)
    {
        setLocale(QLocale::c());
    }

    QValidator::State validate(QString &text, int &place) const override
    {
        for (QChar &mark : text) {
            if (QStringLiteral(",，。．").contains(mark))
                mark = QLatin1Char('.');
        }
        return QDoubleSpinBox::validate(text, place);
    }
};
