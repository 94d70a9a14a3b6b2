#pragma once

#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"
#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <memory>

namespace Ui {
class MoneyOverviewDialog;
}

// The older money overview, kept for hosts that were built with it. Its figures are samples that
// nothing ever writes; Small_Money_Overview shows an account's own.
class ZVWIDGETKIT_EXPORT MoneyOverviewDialog : public BreltFramlessMoveableDialog
{
    Q_OBJECT

public:
    explicit MoneyOverviewDialog(QWidget *parent);
    ~MoneyOverviewDialog() override;

private slots:
    void closeClicked();

private:
    std::unique_ptr<Ui::MoneyOverviewDialog> ui;
};
