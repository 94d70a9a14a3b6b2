#pragma once

#include <QWidget>

#include <array>

class QPushButton;

namespace zvplot {

// The words that choose the indicator of the lowest pane; one of them is checked.
class IndicatorTabs : public QWidget
{
    Q_OBJECT

public:
    explicit IndicatorTabs(QWidget *parent = nullptr);

    int current() const { return m_current; }

signals:
    void chosen(int index); // MACD, KDJ, RSI

private:
    void choose(int index);

    std::array<QPushButton *, 3> m_buttons{};
    int m_current = 0;
};

} // namespace zvplot
