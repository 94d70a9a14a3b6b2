#include "support/report.h"

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

std::string fixedText(double value, int digits)
{
    char text[64];
    std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

Report::Report()
{
    note("| line | ours | baseline | ratio | goal | |\n|---|---:|---:|---:|---|---|");
}

void Report::line(const std::string &what, const Pairs &pairs, const std::string &unit,
                  const Goal &goal)
{
    const auto figure = [&unit](double value) {
        const int digits = value < 10 ? 3 : value < 10'000 ? 1 : 0;
        return fixedText(value, digits) + ' ' + unit;
    };
    const double ratio = pairs.ratio();
    const bool isSmall = goal.bound != Goal::Least && ratio > 0 && ratio < 0.5;
    const std::string state = goal.bound == Goal::None ? ""
        : goal.isReachedBy(ratio)                      ? "reached"
                                                       : "missed";
    note("| " + what + " | " + figure(pairs.ours()) + " | " + figure(pairs.baseline()) + " | "
         + (isSmall ? "1/" + fixedText(1 / ratio, 1) : fixedText(ratio, 2)) + " | " + goal.text
         + " | " + state + " |");
}

void Report::words(const std::string &what, const std::string &figure, const std::string &baseline,
                   const std::string &ratio, const std::string &goal, bool isReached)
{
    note("| " + what + " | " + figure + " | " + baseline + " | " + ratio + " | " + goal + " | "
         + (isReached ? "reached" : "missed") + " |");
}

void Report::note(const std::string &text)
{
    std::puts(text.c_str());
    std::fflush(stdout);
}
