#pragma once

#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"
#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <memory>

namespace Ui {
class ZvPlatformSelectDialog;
}

// Asks which of the two exchange platforms the client is to work with. exec() returns Accepted once
// the choice is with ZvServerConfig; closed in any other way it returns Rejected, and the platform
// stays as it was. Widgets read their styles when they are made: show it before them.
class ZVWIDGETKIT_EXPORT ZvPlatformSelectDialog : public BreltFramlessMoveableDialog
{
    Q_OBJECT

public:
    explicit ZvPlatformSelectDialog(QWidget *parent);
    ~ZvPlatformSelectDialog() override;

private slots:
    // Connected by their names, by the form.
    void on_pushButton_CH_clicked();
    void on_pushButton_LC_clicked();

private:
    std::unique_ptr<Ui::ZvPlatformSelectDialog> ui;
};
