#pragma once

#include <string>
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

// What a ratio is to reach, and how the table says it; without a bound a line only informs.
struct Goal {
    enum Bound { None, Most, Least };

    Bound bound = None;
    double ratio = 0;
    std::string text;

    static Goal most(double ratio, std::string text) { return {Most, ratio, std::move(text)}; }
    static Goal least(double ratio, std::string text) { return {Least, ratio, std::move(text)}; }
    bool isReachedBy(double found) const { return bound == Most ? found <= ratio : found >= ratio; }
};

// The table of figures, one line as soon as it is known. Texts are UTF-8.
class Report
{
public:
    Report();

    void line(const std::string &what, const Pairs &pairs, const std::string &unit,
              const Goal &goal = {});

    // A line that is said in words.
    void words(const std::string &what, const std::string &figure, const std::string &baseline,
               const std::string &ratio, const std::string &goal, bool isReached);

    void note(const std::string &text);
};

// "3.142": as many digits behind the point as asked for.
std::string fixedText(double value, int digits);
