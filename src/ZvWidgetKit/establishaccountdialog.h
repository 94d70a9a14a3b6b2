#pragma once

#include <QDialog>

#include <memory>

namespace Ui {
class EstablishAccountDialog;
}

// Shows the QR code through which a user without a bank card opens an account. A picture on a
// background: who shows the dialog feeds it addresses, and closes it when the card has been bound.
class EstablishAccountDialog : public QDialog
{
    Q_OBJECT

public:
    explicit EstablishAccountDialog(QWidget *parent = nullptr);
    ~EstablishAccountDialog() override;

    // Fetches the picture at `url` anew with each call. One that cannot be had leaves the picture
    // that is there.
    void setQrCodeUrl(QString const &url);

    // Escape closes the dialog as its window's own button does, so that signal_closed() follows.
    void reject() override;

    void setVisible(bool isVisible) override;

signals:
    void signal_closed();

protected:
    bool event(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    std::unique_ptr<Ui::EstablishAccountDialog> ui;
    bool m_wasShown = false;
    bool m_isPolishDue = false;
};
