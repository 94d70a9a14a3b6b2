#include "ZvChartKit/indicatortabs.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace zvplot {

IndicatorTabs::IndicatorTabs(QWidget *parent) : QWidget(parent)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    const std::array<const char *, 3> names{"MACD", "KDJ", "RSI"};
    for (std::size_t i = 0; i < names.size(); ++i) {
        const QString name = QString::fromLatin1(names[i]);
        auto *button = new QPushButton(name, this);
        button->setObjectName(QStringLiteral("pushButton_") + name.toLower());
        button->setAccessibleName(QStringLiteral("指标 ") + name);
        button->setCheckable(true);
        button->setFocusPolicy(Qt::TabFocus);
        button->setCursor(Qt::ArrowCursor);
        button->setFixedHeight(18);
        connect(button, &QPushButton::clicked, this, [this, i] { choose(static_cast<int>(i)); });
        layout->addWidget(button);
        m_buttons[i] = button;
    }
    m_buttons[0]->setChecked(true);
    setStyleSheet(QStringLiteral(
        "QPushButton{color:#9aa1ac;background-color:transparent;border:1px solid transparent;"
        "border-radius:2px;padding:0px 6px;font-size:12px;min-width:0px;}"
        "QPushButton:focus{border-color:#8b93a1;}"
        "QPushButton:hover{color:#f0f1f3;background-color:#24282f;}"
        "QPushButton:checked{color:#f0f1f3;background-color:#363b45;}"
        "QPushButton:checked:hover{background-color:#414754;}"
        "QPushButton:pressed{background-color:#1b1e23;}"));
}

// One of them is always checked, whatever is clicked.
void IndicatorTabs::choose(int index)
{
    for (std::size_t i = 0; i < m_buttons.size(); ++i)
        m_buttons[i]->setChecked(static_cast<int>(i) == index);
    if (index == m_current)
        return;
    m_current = index;
    emit chosen(index);
}

} // namespace zvplot
