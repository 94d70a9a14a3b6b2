#include "ZvWidgetKit/establishaccountdialog.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ui_establishaccountdialog.h"

#include <QCloseEvent>
#include <QCoreApplication>

namespace {

constexpr int PictureSide = 200;

} // namespace

EstablishAccountDialog::EstablishAccountDialog(QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::EstablishAccountDialog>())
{
    ui->setupUi(this);
    ui->label_qrcode->clear();
}

EstablishAccountDialog::~EstablishAccountDialog() = default;

void EstablishAccountDialog::setQrCodeUrl(QString const &url)
{
    ui->label_qrcode->setImageSize(PictureSide, PictureSide);
    ui->label_qrcode->setNetworkPic(url);
}

void EstablishAccountDialog::reject()
{
    close();
}

void EstablishAccountDialog::setVisible(bool isVisible)
{
    m_wasShown = m_wasShown || isVisible;
    if (m_wasShown && m_isPolishDue) {
        m_isPolishDue = false;
        QEvent polish(QEvent::Polish);
        QCoreApplication::sendEvent(this, &polish);
    }
    QDialog::setVisible(isVisible);
}

// A window polishes all of its parts when it is made, this dialog among them, and with that its
// style sheet unpacks the background: two megabytes and more for a dialog that few ever see.
bool EstablishAccountDialog::event(QEvent *event)
{
    if (event->type() != QEvent::Polish || m_wasShown)
        return QDialog::event(event);
    m_isPolishDue = true;
    return true;
}

void EstablishAccountDialog::closeEvent(QCloseEvent *event)
{
    emit signal_closed();
    event->accept();
}
