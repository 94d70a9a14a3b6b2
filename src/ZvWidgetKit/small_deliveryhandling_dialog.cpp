#include "ZvWidgetKit/small_deliveryhandling_dialog.h"

#include "BreltWidgetToolKit/breltreturnkey.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/singleclick.h"
#include "ui_small_deliveryhandling_dialog.h"

#include <QDebug>
#include <QPointer>
#include <QRegExp>
#include <QRegExpValidator>

namespace {

constexpr int PhoneLength = 11;

ZvServerActionResult *server()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

void showAnswer(const QString &text)
{
    framedmessage::show(framedmessage::paragraph(text.toHtmlEscaped()), QStringLiteral("温馨提示"));
}

// What the field shows, in pieces. A text that is no number, such as an empty one, is nothing: the
// field itself would still answer with the number before it.
int piecesIn(const QSpinBox *field)
{
    return field->hasAcceptableInput() ? field->value() : 0;
}

} // namespace

Small_DeliveryHandling_Dialog::Small_DeliveryHandling_Dialog(QWidget *parent)
    : BreltFramlessMoveableDialog(parent),
      ui(std::make_unique<Ui::Small_DeliveryHandling_Dialog>()), m_availableNum(0)
{
    ui->setupUi(this);
    // The bars stand for themselves: inside a class they separate nothing.
    ui->lineEdit_userPhone->setValidator(new QRegExpValidator(
        QRegExp(QStringLiteral("^1[3|4|5|7|8][0-9]\\d{8}$"), Qt::CaseSensitive), this));
    clearPrompts();
    ui->spinBox_num->setFocus(Qt::OtherFocusReason);
    applyStyle();
    createConnections();
}

Small_DeliveryHandling_Dialog::~Small_DeliveryHandling_Dialog() = default;

void Small_DeliveryHandling_Dialog::applyStyle()
{
    ui->pushButton_ok->setStyleSheet(
        QStringLiteral("QPushButton{color:rgb(255,255,255);background-color:#ff3c38; "
                       "border-width:1px;border-style:soli; border-radius:3px}"));
    ui->toolButton_close->setText(QString());
    ui->toolButton_close->setStyleSheet(
        QStringLiteral("QToolButton{border-image: url(:/icons/smallwidget/close1.png)}"
                       "QToolButton:hover{border-image: url(:/icons/smallwidget/close2.png)}"));
    setStyleSheet(QStringLiteral("QDialog#Small_DeliveryHandling_Dialog{border-image: "
                                 "url(:/icons/smallwidget/tihuo.png);}"));
}

void Small_DeliveryHandling_Dialog::createConnections()
{
    using Self = Small_DeliveryHandling_Dialog;
    connect(ui->toolButton_close, &QToolButton::clicked, this, &QDialog::close);
    connect(ui->pushButton_ok, &QPushButton::clicked, this, &Self::slot_ok_clicked);
    connect(server(), &ZvServerActionResult::signal_delivery_succeed, this,
            &Self::slot_delivery_succeed);
    connect(server(), &ZvServerActionResult::signal_delivery_falied, this,
            &Self::slot_delivery_failed);
    for (QWidget *field : QList<QWidget *>{ui->spinBox_num, ui->lineEdit_userName,
                                           ui->lineEdit_userPhone, ui->lineEdit_userAddr})
        field->installEventFilter(this);
    SingleClick::watch(ui->pushButton_ok);
}

// Return in a field presses "确定", and a held key only once. The amount does not see it, since it
// would put its last number in the place of a text that the user has taken away.
bool Small_DeliveryHandling_Dialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (brelt::isReturnKey(key)) {
            if (!key->isAutoRepeat())
                ui->pushButton_ok->click();
            return true;
        }
    }
    return BreltFramlessMoveableDialog::eventFilter(watched, event);
}

void Small_DeliveryHandling_Dialog::setCollectionId(QString id)
{
    m_collectionId = id;
}

void Small_DeliveryHandling_Dialog::setCollectionCode(QString code)
{
    ui->label_code_value->setText(code);
}

void Small_DeliveryHandling_Dialog::setCollectionName(QString name)
{
    ui->label_name_value->setText(name);
}

void Small_DeliveryHandling_Dialog::setAvailableNum(int n)
{
    ui->label_availableNum_value->setText(QString::number(n));
    ui->spinBox_num->setRange(0, n);
    ui->spinBox_num->setValue(n);
    m_availableNum = n;
}

void Small_DeliveryHandling_Dialog::clearPrompts()
{
    for (QLabel *prompt :
         {ui->label_prompt, ui->label_promptName, ui->label_promptPhone, ui->label_promptAddr})
        prompt->clear();
}

void Small_DeliveryHandling_Dialog::slot_ok_clicked()
{
    clearPrompts();
    const int pieces = piecesIn(ui->spinBox_num);
    const QString name = ui->lineEdit_userName->text();
    const QString phone = ui->lineEdit_userPhone->text();
    const QString address = ui->lineEdit_userAddr->text();
    if (pieces <= 0) {
        ui->label_prompt->setText(QStringLiteral("请输入有效的提货数量！"));
    } else if (name.isEmpty()) {
        ui->label_promptName->setText(QStringLiteral("姓名为空！"));
    } else if (phone.length() != PhoneLength) {
        ui->label_promptPhone->setText(QStringLiteral("电话有误！"));
    } else if (address.isEmpty()) {
        ui->label_promptAddr->setText(QStringLiteral("地址为空！"));
    } else {
        qDebug("发送提货请求");
        server()->sendRequest_delivery(m_collectionId, pieces, name, phone, address);
    }
}

void Small_DeliveryHandling_Dialog::slot_delivery_succeed()
{
    const QPointer<Small_DeliveryHandling_Dialog> self(this);
    showAnswer(QStringLiteral("提货申请成功！"));
    if (self)
        accept();
}

void Small_DeliveryHandling_Dialog::slot_delivery_failed(QString reason)
{
    showAnswer(reason);
}
