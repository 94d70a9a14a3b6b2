#include "BreltWidgetToolKit/breltglobalfunction.h"

#include "BreltWidgetToolKit/breltnotice.h"

#include <QApplication>
#include <QThread>

#include <cmath>

namespace {

// Above this many yuan a double holds no fen, so there is nothing to round.
const double c_largestExact = 9e13;

// The amount rounded to the nearest fen; |value| is below c_largestExact.
qint64 toFen(double value)
{
    return std::llround(value * 100);
}

// Hundredths as text: -5 gives "-0.05".
QString fromHundredths(qint64 hundredths)
{
    const quint64 size = quint64(qAbs(hundredths));
    return QStringLiteral("%1%2.%3")
        .arg(hundredths < 0 ? QStringLiteral("-") : QString())
        .arg(size / 100)
        .arg(size % 100, 2, 10, QLatin1Char('0'));
}

QString toDecimal(double value)
{
    return std::fabs(value) < c_largestExact ? fromHundredths(toFen(value))
                                             : QString::number(value, 'f', 2);
}

const qint64 c_unitStep = 10000;
const int c_units = 4;

QString unitName(int index)
{
    static const QString names[c_units]
        = {QString(), QStringLiteral("万"), QStringLiteral("亿"), QStringLiteral("万亿")};
    return names[index];
}

} // namespace

BreltGlobalFunction *BreltGlobalFunction::getBreltGlobalFunciton()
{
    // Never destroyed: destructors that run at the very end of the process may still call it.
    static auto *const instance = new BreltGlobalFunction;
    return instance;
}

BreltGlobalFunction::BreltGlobalFunction() = default;

BreltGlobalFunction::~BreltGlobalFunction() = default;

void BreltGlobalFunction::alertMessage(const QString &text)
{
    auto *application = qobject_cast<QApplication *>(QCoreApplication::instance());
    if (!application || QCoreApplication::closingDown())
        return;
    if (QThread::currentThread() != application->thread()) {
        QMetaObject::invokeMethod(
            application, [this, text] { alertMessage(text); }, Qt::QueuedConnection);
        return;
    }
    if (!m_notices) {
        m_notices = std::make_unique<BreltNoticeStack>();
        m_notices->setDuration(m_noticeDuration);
        // Runs first of all in the application's destructor, while windows can still be deleted.
        qAddPostRoutine(&BreltGlobalFunction::endWithApplication);
    }
    m_notices->add(text);
}

QStringList BreltGlobalFunction::notices() const
{
    return m_notices ? m_notices->texts() : QStringList();
}

void BreltGlobalFunction::setNoticeDuration(int milliseconds)
{
    m_noticeDuration = qMax(0, milliseconds);
    if (m_notices)
        m_notices->setDuration(m_noticeDuration);
}

void BreltGlobalFunction::endWithApplication()
{
    getBreltGlobalFunciton()->m_notices.reset();
}

QString BreltGlobalFunction::float2Decimal(float value)
{
    return std::isfinite(value) ? toDecimal(double(value)) : QStringLiteral("0.00");
}

void BreltGlobalFunction::getMoneyValue(double value, QString &number, QString &unit)
{
    if (!std::isfinite(value)) {
        number = QStringLiteral("--");
        unit.clear();
        return;
    }
    if (std::fabs(value) >= c_largestExact) {
        unit = unitName(c_units - 1);
        number = toDecimal(value / 1e12);
        return;
    }

    // In whole fen the rounding is exact: half a hundredth of a unit goes up, away from zero.
    const qint64 fen = toFen(value);
    const qint64 size = qAbs(fen);
    qint64 divisor = 1; // fen of one hundredth of the unit
    int index = 0;
    while (index + 1 < c_units && (size + divisor / 2) / divisor >= c_unitStep * 100) {
        divisor *= c_unitStep;
        ++index;
    }
    const qint64 hundredths = (size + divisor / 2) / divisor;
    number = fromHundredths(fen < 0 ? -hundredths : hundredths);
    unit = unitName(index);
}

QString BreltGlobalFunction::getMoneyString(double value)
{
    if (!std::isfinite(value))
        return QStringLiteral("--");
    QString text = toDecimal(value);
    const int first = text.startsWith(QLatin1Char('-')) ? 1 : 0;
    for (int place = text.indexOf(QLatin1Char('.')) - 3; place > first; place -= 3)
        text.insert(place, QLatin1Char(','));
    return text;
}
