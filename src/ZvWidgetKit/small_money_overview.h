#pragma once

#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"

#include <memory>

namespace Ui {
class Small_Money_Overview;
}

// Who is signed in and where the account's money stands, as of the moment of opening. Deletes
// itself when it is closed.
class Small_Money_Overview : public BreltFramlessMoveableDialog
{
    Q_OBJECT

public:
    explicit Small_Money_Overview(QWidget *parent);
    ~Small_Money_Overview() override;

private:
    void showAccount();
    void showMoney();

    std::unique_ptr<Ui::Small_Money_Overview> ui;
};
