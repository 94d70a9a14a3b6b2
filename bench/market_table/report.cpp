#include "report.h"

#include <algorithm>
#include <cstdio>

double median(std::vector<double> values)
{
    if (values.empty())
        return 0;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

void Pairs::add(double ours, double baseline)
{
    m_ours.push_back(ours);
    m_baseline.push_back(baseline);
    m_ratios.push_back(baseline > 0 ? ours / baseline : 0);
}

Report::Report() : m_out(stdout)
{
    m_out << "| line | ours | baseline | ratio | goal | |\n|---|---:|---:|---:|---|---|\n"
          << Qt::flush;
}

void Report::line(const QString &what, const Pairs &pairs, const QString &unit, double most,
                  const QString &goal)
{
    const auto figure = [&unit](double value) {
        return QString::number(value, 'f', value < 10 ? 3 : 1) + QLatin1Char(' ') + unit;
    };
    const double ratio = pairs.ratio();
    const QString asRatio = ratio > 0 && ratio < 0.5
        ? QStringLiteral("1/%1").arg(1 / ratio, 0, 'f', 1)
        : QString::number(ratio, 'f', 2);
    m_out << "| " << what << " | " << figure(pairs.ours()) << " | " << figure(pairs.baseline())
          << " | " << asRatio << " | " << goal << " | "
          << (most <= 0           ? ""
                  : ratio <= most ? "reached"
                                  : "missed")
          << " |\n"
          << Qt::flush;
}

void Report::words(const QString &what, const QString &figure, const QString &baseline,
                   const QString &ratio, const QString &goal, bool isReached)
{
    m_out << "| " << what << " | " << figure << " | " << baseline << " | " << ratio << " | " << goal
          << " | " << (isReached ? "reached" : "missed") << " |\n"
          << Qt::flush;
}

void Report::note(const QString &text)
{
    m_out << text << '\n' << Qt::flush;
}
