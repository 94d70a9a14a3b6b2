#pragma once

#include "ZvWidgetKit/recordpage.h"

#include <memory>

class DealWidget_Revoke_TableView;

namespace Ui {
class DealWidget_Revoke;
}

// The page of the open orders, with the buttons that take them back. It reloads whenever it comes
// into view.
class DealWidget_Revoke : public RecordPage
{
    Q_OBJECT

public:
    explicit DealWidget_Revoke(QWidget *parent = nullptr);
    ~DealWidget_Revoke() override;

public slots:
    void slot_selectButton_clicked() override;
    void slot_pageUpButton_clicked() override;
    void slot_pageDownButton_clicked() override;

private:
    void applyStyle();
    void createConnections();

    std::unique_ptr<Ui::DealWidget_Revoke> ui;
    DealWidget_Revoke_TableView *m_tableView;
};
