#pragma once

#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"

#include <QString>

#include <memory>

namespace Ui {
class Small_DeliveryHandling_Dialog;
}

// Asks how many pieces of a holding are to be taken out and who gets them, and sends that to the
// server. It stays open until the server has accepted, so that a refusal can be corrected.
class Small_DeliveryHandling_Dialog : public BreltFramlessMoveableDialog
{
    Q_OBJECT

public:
    explicit Small_DeliveryHandling_Dialog(QWidget *parent);
    ~Small_DeliveryHandling_Dialog() override;

    void setCollectionId(QString id);
    void setCollectionCode(QString code);
    void setCollectionName(QString name);

    // At most so many pieces can be taken out; at first it is all of them.
    void setAvailableNum(int n);

    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void slot_ok_clicked();
    void slot_delivery_succeed();
    void slot_delivery_failed(QString reason);

private:
    void applyStyle();
    void createConnections();
    void clearPrompts();

    std::unique_ptr<Ui::Small_DeliveryHandling_Dialog> ui;
    QString m_collectionId;
    int m_availableNum; // stored and never read
};
