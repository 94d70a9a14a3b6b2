#include "ZvWidgetKit/establishaccountdialog.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ui_establishaccountdialog.h"

#include <QCloseEvent>

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

void EstablishAccountDialog::closeEvent(QCloseEvent *event)
{
    emit signal_closed();
    event->accept();
}
