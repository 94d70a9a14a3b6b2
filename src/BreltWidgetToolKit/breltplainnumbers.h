#pragma once

#include <QString>

// What the kit's fields share about typed numbers. Not part of the exported interface.
namespace brelt {

// Writes the digits of every script as 0 to 9. Input methods give them in a wide form, and some
// keyboards in that of their language.
inline void makeDigitsPlain(QString &text)
{
    for (QChar &mark : text) {
        if (mark.isDigit())
            mark = QLatin1Char(char('0' + mark.digitValue()));
    }
}

// Writes a point for every mark that stands before hundredths somewhere, or that the key beside the
// point or an input method gives for it. None of them is left to group digits, since such a mark
// counts for nothing wherever it stands: "99,98" would be 9998.
inline void makePointsPlain(QString &text)
{
    for (QChar &mark : text) {
        if (QStringLiteral(",，。．٫،").contains(mark))
            mark = QLatin1Char('.');
    }
}

} // namespace brelt
