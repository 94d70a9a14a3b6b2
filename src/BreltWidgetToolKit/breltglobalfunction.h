#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QString>
#include <QStringList>

#include <memory>

class BreltNoticeStack;

/// What every widget needs now and then: passing notices and the texts of amounts.
///
/// Reached by getBreltGlobalFunciton(). It lives as long as the process; the notices end with the
/// application object, so that no window outlives it.
class BRELTWIDGETTOOLKIT_EXPORT BreltGlobalFunction
{
public:
    static BreltGlobalFunction *getBreltGlobalFunciton();

    /// Shows `text` as a passing notice over the main window in use and returns at once. Notices
    /// take neither the focus nor the mouse, stand below one another, at most five of them, and
    /// pass by themselves after 2.5 to 8 seconds, long texts later. The text is taken as plain text
    /// and wrapped; what goes beyond 500 characters is left out. An empty text, or one of blanks
    /// alone, shows nothing. May be called from any thread; without a QApplication it does nothing.
    void alertMessage(const QString &text);

    /// The texts of the notices on the screen, oldest first.
    QStringList notices() const;

    /// Sets how long later notices stand, in milliseconds; 0 gives the time that suits the text.
    void setNoticeDuration(int milliseconds);

    /// An amount in yuan as the server reads it: two decimals, a point, no separators, no exponent,
    /// rounded to the nearest fen: 1234.5 gives "1234.50". Never "-0.00"; what is no finite number
    /// gives "0.00".
    static QString float2Decimal(float value);

    /// Splits an amount in yuan for display into a number of two decimals and its unit: "" below
    /// ten thousand, "万" below a hundred million, "亿" below a trillion (1e12), "万亿" above. The
    /// unit is chosen after rounding, so that 9999.999 gives "1.00" and "万". A negative amount
    /// keeps its sign; what is no finite number gives "--" and no unit.
    static void getMoneyValue(double value, QString &number, QString &unit);

    /// An amount in yuan with two decimals and a comma between thousands: 1234567.5 gives
    /// "1,234,567.50"; what is no finite number gives "--".
    static QString getMoneyString(double value);

private:
    BreltGlobalFunction();
    ~BreltGlobalFunction();
    BreltGlobalFunction(const BreltGlobalFunction &) = delete;
    BreltGlobalFunction &operator=(const BreltGlobalFunction &) = delete;

    static void endWithApplication();

    std::unique_ptr<BreltNoticeStack> m_notices; // none outside the life of a QApplication
    int m_noticeDuration = 0;
};
