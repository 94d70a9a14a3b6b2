#pragma once

#include <QWidget>

#include <memory>

class DealWidget_Delivery_TableView;

namespace Ui {
class DealWidget_Delivery;
}

// The holdings of which pieces can be taken out, each with a button that opens the form for it. It
// asks for nothing: it shows the holdings that the kit keeps current.
//
// The form's two panels, of filters and of sums, are hidden and serve nobody.
class DealWidget_Delivery : public QWidget
{
    Q_OBJECT

public:
    explicit DealWidget_Delivery(QWidget *parent = nullptr);
    ~DealWidget_Delivery() override;

private slots:
    void slot_updateCapInfo();

private:
    void applyStyle();

    std::unique_ptr<Ui::DealWidget_Delivery> ui;
    DealWidget_Delivery_TableView *m_tableView;
};
