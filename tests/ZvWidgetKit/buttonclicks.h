#pragma once

#include <QPushButton>
#include <QWindow>
#include <QtTest/QtTest>

namespace zvtest {

// The ways in which a user, or a program in his place, clicks a button.
enum class ClickWay { Mouse, WindowMouse, Space, Return, Call, Animated };

struct NamedClickWay {
    ClickWay way;
    const char *name;
};

constexpr NamedClickWay clickWays[] = {
    {ClickWay::Mouse, "mouse"}, {ClickWay::WindowMouse, "mouse through the window"},
    {ClickWay::Space, "space"}, {ClickWay::Return, "return"},
    {ClickWay::Call, "call"},   {ClickWay::Animated, "animated"},
};

// One row for each way, in the column "way".
inline void addClickWays()
{
    QTest::addColumn<ClickWay>("way");
    for (const NamedClickWay &each : clickWays)
        QTest::newRow(each.name) << each.way;
}

// Clicks a button of a visible window. An animated click happens a little later.
inline void click(QPushButton *button, ClickWay way = ClickWay::Mouse)
{
    QWidget *window = button->window();
    switch (way) {
    case ClickWay::Mouse:
        QTest::mouseClick(button, Qt::LeftButton);
        break;
    case ClickWay::WindowMouse: {
        const auto middle = [&] { return button->mapTo(window, button->rect().center()); };
        QVERIFY(QTest::qWaitFor([&] { return window->childAt(middle()) == button; }));
        QTest::mouseClick(window->windowHandle(), Qt::LeftButton, Qt::NoModifier, middle());
        break;
    }
    case ClickWay::Space:
        button->setFocus();
        QTest::keyClick(button, Qt::Key_Space);
        break;
    case ClickWay::Return:
        button->setFocus();
        button->setAutoDefault(true);
        QTest::keyClick(button, Qt::Key_Return);
        break;
    case ClickWay::Call:
        button->click();
        break;
    case ClickWay::Animated:
        button->animateClick(1);
        break;
    }
}

} // namespace zvtest

Q_DECLARE_METATYPE(zvtest::ClickWay)
