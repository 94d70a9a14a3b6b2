#include "ZvWidgetKit/small_money_inout.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/codecountdown.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/moneytext.h"
#include "ZvWidgetKit/singleclick.h"
#include "ui_small_money_inout.h"

#include <QKeyEvent>

namespace {

constexpr int PhoneLength = 11;
constexpr int CodeLength = 6;
constexpr double SmallestAmount = 0.01; // yuan

ZvServerActionResult *server()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

BreltGlobalFunction *globalFunction()
{
    return BreltGlobalFunction::getBreltGlobalFunciton();
}

// What a transfer changed, and the word for it.
void tellSuccess(const QString &text)
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Cap();
    globalFunction()->alertMessage(text);
}

} // namespace

Small_Money_InOut::Small_Money_InOut(QWidget *parent)
    : BreltFramlessMoveableDialog(parent), ui(std::make_unique<Ui::Small_Money_InOut>()),
      m_countdownTimer(nullptr), m_countdown(CodeCountdown::Seconds)
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    m_countdownTimer = new QTimer(this);
    applyStyle();
    createConnections();
    emit ui->pushButton_in->clicked(false);
}

Small_Money_InOut::~Small_Money_InOut() = default;

void Small_Money_InOut::applyStyle()
{
    ui->pushButton_in->setFocusPolicy(Qt::NoFocus);
    ui->pushButton_out->setFocusPolicy(Qt::NoFocus);
    ui->pushButton_ok->setFocusPolicy(Qt::NoFocus);
    ui->pushButton_getValidataCode->setFocusPolicy(Qt::NoFocus);
    ui->toolButton_agree->setFocusPolicy(Qt::NoFocus);
    ui->toolButton_close->setFocusPolicy(Qt::NoFocus);

    ui->toolButton_close->setText(QString());
    ui->toolButton_close->setStyleSheet(
        QStringLiteral("QToolButton{border-image: url(:/icons/smallwidget/close1.png)}"
                       "QToolButton:hover{border-image: url(:/icons/smallwidget/close2.png)}"));
    ui->pushButton_in->setStyleSheet(
        QStringLiteral("QPushButton#pushButton_in:checked{border:1px; background-color:#bababa;}"));
    ui->pushButton_out->setStyleSheet(QStringLiteral(
        "QPushButton#pushButton_out:checked{border:1px; background-color:#bababa;}"));
    ui->toolButton_agree->setStyleSheet(
        QStringLiteral("QToolButton{background-color:rgb(3,161,73);"
                       "background-image:url(:/icons/smallwidget/noselect.png);"
                       "border-width:1px;border-style:soli; border-radius:4px}"
                       "QToolButton:checked{background-color:rgb(3,161,73);"
                       "background-image:url(:/icons/smallwidget/selected.png);"
                       "border-width:1px;border-style:soli; border-radius:4px}"));
    ui->pushButton_ok->setStyleSheet(
        QStringLiteral("QPushButton#pushButton_ok{border: 0px; color:white;"
                       "background-color: rgb(231, 60, 60);}"
                       "QPushButton#pushButton_ok:disabled{background-color: #bababa;}"));
    ui->pushButton_getValidataCode->setStyleSheet(QStringLiteral(
        "QPushButton#pushButton_getValidataCode{border: 0px; color:white;"
        "background-color: rgb(231, 60, 60);}"
        "QPushButton#pushButton_getValidataCode:disabled{background-color: #bababa;}"));

    // Banks send pictures of any size.
    const QSize place = ui->label_bank_pictrue->size();
    ui->label_bank_pictrue->setImageSize(place.width(), place.height());
}

void Small_Money_InOut::createConnections()
{
    using Self = Small_Money_InOut;
    using Result = ZvServerActionResult;
    connect(ui->toolButton_close, &QToolButton::clicked, this, &QDialog::accept);
    connect(ui->pushButton_in, &QPushButton::clicked, this, &Self::switchToMoneyIn);
    connect(ui->pushButton_out, &QPushButton::clicked, this, &Self::switchToMoneyOut);
    connect(ui->toolButton_agree, &QToolButton::toggled, ui->pushButton_ok,
            &QPushButton::setEnabled);
    connect(ui->pushButton_ok, &QPushButton::clicked, this, &Self::submit);
    connect(ui->pushButton_getValidataCode, &QPushButton::clicked, this, &Self::requestCode);
    connect(server(), &Result::signal_inMoney_sendCode_succeed, this, &Self::onCodeSent);
    connect(server(), &Result::signal_inMoney_sendCode_failed, this, &Self::onFailed);
    connect(m_countdownTimer, &QTimer::timeout, this, &Self::onCountdownTick);
    connect(server(), &Result::signal_inMoney_succeed, this, &Self::onMoneyInSucceeded);
    connect(server(), &Result::signal_inMoney_failed, this, &Self::onFailed);
    connect(server(), &Result::signal_outMoney_succeed, this, &Self::onMoneyOutSucceeded);
    connect(server(), &Result::signal_outMoney_failed, this, &Self::onFailed);
    connect(cache(), &ZvServerCache::signal_cache_CapInfo_changed, this, &Self::refreshAvailable);

    for (QWidget *field :
         QList<QWidget *>{ui->doubleSpinBox_moneyValue, ui->lineEdit_validateCode_value})
        field->installEventFilter(this);
    SingleClick::watch(ui->pushButton_ok);
    SingleClick::watch(ui->pushButton_getValidataCode);
}

// Return in a field presses "确定", and a held key only once. The amount does not see it, since it
// would put its last number in the place of a text that the user has taken away.
bool Small_Money_InOut::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) {
            if (!key->isAutoRepeat())
                ui->pushButton_ok->click();
            return true;
        }
    }
    return BreltFramlessMoveableDialog::eventFilter(watched, event);
}

void Small_Money_InOut::switchToMoneyIn()
{
    switchTo(true);
}

void Small_Money_InOut::switchToMoneyOut()
{
    switchTo(false);
}

void Small_Money_InOut::switchTo(bool isIn)
{
    ui->label_moneyPrompt->clear();
    ui->label_codePrompt->clear();
    if (isIn)
        ui->doubleSpinBox_moneyValue->setFocus(Qt::OtherFocusReason);
    ui->pushButton_in->setChecked(isIn);
    ui->pushButton_out->setChecked(!isIn);
    ui->label_validateCode->setVisible(isIn);
    ui->lineEdit_validateCode_value->setVisible(isIn);
    ui->pushButton_getValidataCode->setVisible(isIn);
    ui->label_money->setText(isIn ? QStringLiteral("入金金额：") : QStringLiteral("出金金额："));
}

void Small_Money_InOut::requestCode()
{
    if (m_userPhone.length() != PhoneLength) {
        // The box runs an event loop, in which this dialog may come to its end.
        framedmessage::show(
            framedmessage::paragraph(QStringLiteral("获取身份失败，请关闭此页并重新登录！")),
            QStringLiteral("温馨提示"));
        return;
    }
    server()->sendRequest_inMoney_sendCode(m_userPhone);
}

CodeCountdown Small_Money_InOut::countdown()
{
    return {ui->pushButton_getValidataCode, m_countdownTimer, m_countdown};
}

void Small_Money_InOut::onCodeSent(const QString &first, const QString &second)
{
    m_codeReplyFirst = first;
    m_codeReplySecond = second;
    countdown().start();
}

void Small_Money_InOut::onCountdownTick()
{
    countdown().tick();
}

// What the field shows, in yuan. A text that is no number yet, such as an empty one, is nothing:
// the field itself would still answer with the number before it.
double Small_Money_InOut::amount() const
{
    const QDoubleSpinBox *field = ui->doubleSpinBox_moneyValue;
    return field->hasAcceptableInput() ? field->value() : 0;
}

void Small_Money_InOut::submit()
{
    ui->label_moneyPrompt->clear();
    ui->label_codePrompt->clear();

    const bool isIn = ui->pushButton_in->isChecked();
    if (isIn)
        qDebug("入金");
    else
        qDebug("出金");

    if (amount() < SmallestAmount) {
        ui->label_moneyPrompt->setText(QStringLiteral("ⓘ请输入正确金额"));
        return;
    }
    const QString code = ui->lineEdit_validateCode_value->text();
    if (isIn && code.length() != CodeLength) {
        ui->label_codePrompt->setText(QStringLiteral("ⓘ请输入6位验证码"));
        return;
    }
    const QString text = amountAsSent();
    if (isIn)
        server()->sendRequest_inMoney(text, code, m_codeReplyFirst, m_codeReplySecond);
    else
        server()->sendRequest_outMoney(text);
}

// A float cannot hold every fen of a large amount. Where it cannot, the field shows what is sent
// instead of what was typed.
QString Small_Money_InOut::amountAsSent()
{
    const QString text = BreltGlobalFunction::float2Decimal(float(amount()));
    if (text.toDouble() != amount())
        ui->doubleSpinBox_moneyValue->setValue(text.toDouble());
    return text;
}

void Small_Money_InOut::onMoneyInSucceeded()
{
    tellSuccess(QStringLiteral("入金成功"));
}

void Small_Money_InOut::onMoneyOutSucceeded()
{
    tellSuccess(QStringLiteral("出金成功"));
}

void Small_Money_InOut::onFailed(const QString &reason)
{
    globalFunction()->alertMessage(reason);
}

// The kit's dialog finds its place by itself, so the base has nothing to do here.
void Small_Money_InOut::showEvent(QShowEvent *)
{
    const ZvUBMyAcount account = cache()->myAccount;
    m_userPhone = account.phone();
    const ZvUBCapInfo money = cache()->capInfo;
    ui->label_available_value->setText(moneyText(money.availableMoney()) + QStringLiteral("元"));

    const QString picture = cache()->bankPicturePrefix + cache()->bankPictureName + QLatin1Char('.')
        + cache()->bankPictureSuffix;
    ui->label_bank_number->setText(QStringLiteral("尾号：") + cache()->bankCardTail);
    if (picture != m_bankPictureUrl) {
        m_bankPictureUrl = picture;
        ui->label_bank_pictrue->setNetworkPic(picture);
    }
}

void Small_Money_InOut::refreshAvailable()
{
    const ZvUBCapInfo money = cache()->capInfo;
    ui->label_available_value->setText(BreltGlobalFunction::getMoneyString(money.availableMoney())
                                       + QStringLiteral("元"));
}
