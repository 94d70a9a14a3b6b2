#pragma once

#include <QPushButton>

// An entry of a navigation column. Its check mark says which page is in front, so only who shows
// the pages sets it: neither a click nor the keyboard toggles it.
class NavigationButton : public QPushButton
{
public:
    explicit NavigationButton(QWidget *parent = nullptr) : QPushButton(parent)
    {
        setFocusPolicy(Qt::NoFocus);
    }

protected:
    void nextCheckState() override { }
};
