#pragma once

#include <QString>
#include <QTextStream>

#include <vector>

// The median; 0 of nothing.
double median(std::vector<double> values);

// Pairs of figures that were measured in turn: the ratio is the median of the rounds' ratios, so a
// round in which the machine was busy weighs no more than another.
class Pairs
{
public:
    void add(double ours, double baseline);
    double ours() const { return median(m_ours); }
    double baseline() const { return median(m_baseline); }
    double ratio() const { return median(m_ratios); }

private:
    std::vector<double> m_ours;
    std::vector<double> m_baseline;
    std::vector<double> m_ratios;
};

// The table of figures, one line as soon as it is known.
class Report
{
public:
    Report();

    // A line whose goal is a ratio of at most `most`; 0 for a line that only informs.
    void line(const QString &what, const Pairs &pairs, const QString &unit, double most = 0,
              const QString &goal = QString());

    // A line that is said in words.
    void words(const QString &what, const QString &figure, const QString &baseline,
               const QString &ratio, const QString &goal, bool isReached);

    void note(const QString &text);

private:
    QTextStream m_out;
};
