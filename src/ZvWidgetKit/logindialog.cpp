#include "ZvWidgetKit/logindialog.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/codecountdown.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/singleclick.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "ui_logindialog.h"

#include <QKeyEvent>
#include <QPointer>
#include <QRegExp>
#include <QRegExpValidator>
#include <QRegularExpression>
#include <QTimer>

namespace {

constexpr int TitleHeight = 50; // pixels
constexpr int PhoneLength = 11;
constexpr int CodeLength = 4;
constexpr int ShortestPassword = 6;
constexpr int LongestPassword = 20;

ZvServerActionResult *server()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

bool hasPasswordLength(const QString &password)
{
    return password.length() >= ShortestPassword && password.length() <= LongestPassword;
}

// The prompts below the fields of a page, known by their names as in the style sheet.
QList<QLabel *> promptsOf(const QWidget *page)
{
    return page->findChildren<QLabel *>(QRegularExpression(QStringLiteral("Prompt")));
}

// The style sheet leaves the texts of the fields to their palette: a colour in it would paint
// placeholders like what was typed.
void setFieldColours(const QWidget *dialog)
{
    QPalette colours;
    colours.setColor(QPalette::Text, Qt::white);
    colours.setColor(QPalette::PlaceholderText, QColor(0x8b, 0x93, 0xa1));
    for (QLineEdit *edit : dialog->findChildren<QLineEdit *>())
        edit->setPalette(colours);
}

void showAnswer(const QString &text)
{
    framedmessage::show(framedmessage::paragraph(text), QStringLiteral("温馨提示"));
}

} // namespace

LoginDialog::LoginDialog(QWidget *parent)
    : BreltFramlessMoveableDialog(parent), ui(std::make_unique<Ui::LoginDialog>()),
      m_registIconChecked(true), m_registerCodeSeconds(0), m_changePasswdCodeSeconds(0)
{
    m_styleRegistIconOn = QStringLiteral(
        "QPushButton{background-color:rgb(3,161,73);background-image:url(:/icons/select1.png);"
        "border-width:1px;border-style:soli; border-radius:4px}");
    m_styleRegistIconOff = QStringLiteral(
        "QPushButton{background-color:rgb(3,161,73);background-image:url(:/icons/select2.png);"
        "border-width:1px;border-style:soli; border-radius:4px}");
    m_styleDisabledButton
        = QStringLiteral("QPushButton{color:rgb(255,255,255);background-color:#aaaaaa; "
                         "border-width:1px;border-style:soli; border-radius:4px}");

    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    m_styleTotalDialog = config->getStyleOf_TotalDialog();
    m_styleContactUrl = config->getStyleOf_ContactUrl();
    m_styleBigButton = config->getStyleOf_ThreeBigButton();
    m_styleJumpButton = config->getStyleOf_TwoJumpButton();
    m_styleCodeButton = config->getStyleOf_VertiCodeButton();

    ui->setupUi(this);

    m_registerCodeTimer = new QTimer(this);
    m_changePasswdCodeTimer = new QTimer(this);
    connect(m_registerCodeTimer, &QTimer::timeout, this,
            &LoginDialog::slot_register_sendCode_timeout);
    connect(m_changePasswdCodeTimer, &QTimer::timeout, this,
            &LoginDialog::slot_changePasswd_sendCode_timeout);

    setValidators();
    changeToPage_login();
    createConnections();
    applyStyle();
}

LoginDialog::~LoginDialog() = default;

void LoginDialog::setValidators()
{
    // The bars stand for themselves: inside a class they separate nothing.
    const QRegExp phone(QStringLiteral("^1[3|4|5|7|8][0-9]\\d{8}$"));
    const QRegExp password(QStringLiteral("^\\S{6,20}$"));

    for (QLineEdit *edit :
         {ui->lineEdit_login_phoneNumber, ui->lineEdit_changePassword_PhoneNumber,
          ui->lineEdit_register_PhoneNumber_referee, ui->lineEdit_register_PhoneNumber,
          ui->lineEdit_changePassword_PhoneNumber})
        edit->setValidator(new QRegExpValidator(phone, this));
    for (QLineEdit *edit :
         {ui->lineEdit_login_password, ui->lineEdit_register_password,
          ui->lineEdit_register_confirmPassword, ui->lineEdit_changePassword_password,
          ui->lineEdit_changePassword_confirmPassword})
        edit->setValidator(new QRegExpValidator(password, this));
}

void LoginDialog::createConnections()
{
    using Result = ZvServerActionResult;
    connect(server(), &Result::signal_login_succeed, this, &LoginDialog::slot_login_succeed);
    connect(server(), &Result::signal_login_failed, this, &LoginDialog::slot_login_failed);
    connect(server(), &Result::signal_register_sendCode_succeed, this,
            &LoginDialog::slot_register_sendCode_succeed);
    connect(server(), &Result::signal_register_sendCode_failed, this,
            &LoginDialog::slot_register_sendCode_failed);
    connect(server(), &Result::signal_register_succeed, this, &LoginDialog::slot_register_succeed);
    connect(server(), &Result::signal_register_failed, this, &LoginDialog::slot_register_failed);
    connect(server(), &Result::signal_changePasswd_sendCode_succeed, this,
            &LoginDialog::slot_changePasswd_sendCode_succeed);
    connect(server(), &Result::signal_changePasswd_sendCode_failed, this,
            &LoginDialog::slot_changePasswd_sendCode_failed);
    connect(server(), &Result::signal_changePasswd_succeed, this,
            &LoginDialog::slot_changePasswd_succeed);
    connect(server(), &Result::signal_changePasswd_failed, this,
            &LoginDialog::slot_changePasswd_failed);

    const auto onClick = [this](const QPushButton *button, void (LoginDialog::*slot)()) {
        connect(button, &QPushButton::clicked, this, slot);
    };
    onClick(ui->pushButton_close, &LoginDialog::closeClicked);
    onClick(ui->pushButton_return, &LoginDialog::changeToPage_login);
    onClick(ui->pushButton_login_immediatelyRegister, &LoginDialog::changeToPage_register);
    onClick(ui->pushButton_login_immediatelyChange, &LoginDialog::changeToPage_updatePasswd);
    onClick(ui->pushButton_register_getVerificationCode, &LoginDialog::buttonClicked_register_code);
    onClick(ui->pushButton_register_icon, &LoginDialog::registIconClicked);
    onClick(ui->pushButton_changePassword_getVerificationCode,
            &LoginDialog::buttonClicked_changePasswd_code);
    onClick(ui->pushButton_login, &LoginDialog::buttonClicked_login);
    onClick(ui->pushButton_register, &LoginDialog::buttonClicked_register);
    onClick(ui->pushButton_changePassword, &LoginDialog::buttonClicked_changePasswd);
    for (QPushButton *button :
         {ui->pushButton_login, ui->pushButton_register_getVerificationCode,
          ui->pushButton_register, ui->pushButton_changePassword_getVerificationCode,
          ui->pushButton_changePassword})
        SingleClick::watch(button);
}

void LoginDialog::applyStyle()
{
    setTitleHeight(TitleHeight);
    // The focus stays in the field in which the user types.
    for (QPushButton *button :
         {ui->pushButton_close, ui->pushButton_return, ui->pushButton_login_immediatelyChange,
          ui->pushButton_login_immediatelyRegister, ui->pushButton_login,
          ui->pushButton_register_getVerificationCode, ui->pushButton_register_icon,
          ui->pushButton_register, ui->pushButton_changePassword,
          ui->pushButton_changePassword_getVerificationCode})
        button->setFocusPolicy(Qt::NoFocus);

    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    const QList<QWidget *> panels{ui->widget_login, ui->widget_register, ui->widget_updatePassword};
    for (QWidget *panel : panels)
        panel->setStyleSheet(QString());
    setFieldColours(this);
    setStyleSheet(m_styleTotalDialog);
    ui->label_register_contact->setText(m_styleContactUrl);
    for (QPushButton *button :
         {ui->pushButton_login, ui->pushButton_register, ui->pushButton_changePassword})
        button->setStyleSheet(m_styleBigButton);
    for (QPushButton *button :
         {ui->pushButton_login_immediatelyRegister, ui->pushButton_login_immediatelyChange})
        button->setStyleSheet(m_styleJumpButton);
    for (QPushButton *button : {ui->pushButton_register_getVerificationCode,
                                ui->pushButton_changePassword_getVerificationCode})
        button->setStyleSheet(m_styleCodeButton);
    ui->pushButton_close->setStyleSheet(config->getStyleOf_LoginDlgCloseBtn());
    ui->pushButton_return->setStyleSheet(config->getStyleOf_LoginDlgReturnBtn());
    ui->pushButton_register_icon->setStyleSheet(m_styleRegistIconOn);

    // The agreement has colours of its own.
    const QString labelStyle = config->getStyleOf_LabelAndPrompt();
    for (const QWidget *panel : panels) {
        for (QLabel *label : panel->findChildren<QLabel *>()) {
            if (label != ui->label_register_contact)
                label->setStyleSheet(labelStyle);
        }
    }
}

// Return presses the main button of the page, once: the repeats of a held key would send a request
// each, and go on behind the message box that answers the first one.
void LoginDialog::keyPressEvent(QKeyEvent *event)
{
    if (event->isAutoRepeat()) {
        event->accept();
        return;
    }
    BreltFramlessMoveableDialog::keyPressEvent(event);
}

void LoginDialog::changeToPage(QWidget *page, const QString &title, QPushButton *mainButton)
{
    ui->label_page_title->setText(title);
    ui->pushButton_return->setVisible(page != ui->page_login);
    ui->stackedWidget->setCurrentWidget(page);
    for (QPushButton *button :
         {ui->pushButton_login, ui->pushButton_register, ui->pushButton_changePassword})
        button->setDefault(button == mainButton);
    for (QLabel *prompt : promptsOf(page))
        prompt->clear();
}

void LoginDialog::changeToPage_login()
{
    changeToPage(ui->page_login, QStringLiteral("用户登录"), ui->pushButton_login);
    ui->lineEdit_login_phoneNumber->setFocus(Qt::OtherFocusReason);
}

void LoginDialog::changeToPage_register()
{
    changeToPage(ui->page_register, QStringLiteral("用户注册"), ui->pushButton_register);
}

void LoginDialog::changeToPage_updatePasswd()
{
    changeToPage(ui->page_updatePasswd, QStringLiteral("密码找回"), ui->pushButton_changePassword);
}

void LoginDialog::closeClicked()
{
    close();
}

void LoginDialog::buttonClicked_login()
{
    ui->label_login_passwordPrompt->setText(QStringLiteral(" "));
    ui->label_login_phoneNumberPrompt->setText(QStringLiteral(" "));

    const QString phone = ui->lineEdit_login_phoneNumber->text();
    const QString password = ui->lineEdit_login_password->text();
    if (phone.isEmpty())
        ui->label_login_phoneNumberPrompt->setText(QStringLiteral("ⓘ手机号不能为空"));
    else if (phone.length() != PhoneLength)
        ui->label_login_phoneNumberPrompt->setText(QStringLiteral("ⓘ手机号有误"));
    else if (password.isEmpty())
        ui->label_login_passwordPrompt->setText(QStringLiteral("ⓘ密码不能为空"));
    else if (!hasPasswordLength(password))
        ui->label_login_passwordPrompt->setText(QStringLiteral("ⓘ密码为6-20位"));
    else
        server()->sendRequest_login(phone, password);
}

void LoginDialog::buttonClicked_register()
{
    for (QLabel *prompt : promptsOf(ui->page_register))
        prompt->setText(QString());

    const QString referee = ui->lineEdit_register_PhoneNumber_referee->text();
    const QString phone = ui->lineEdit_register_PhoneNumber->text();
    const QString code = ui->lineEdit_register_verificationCode->text();
    const QString password = ui->lineEdit_register_password->text();
    if (referee.length() % PhoneLength != 0)
        ui->label_register_PhoneNumberPrompt_referee->setText(
            QStringLiteral("ⓘ请输入0/11位手机号"));
    else if (phone.isEmpty())
        ui->label_register_PhoneNumberPrompt->setText(QStringLiteral("ⓘ手机号不能为空"));
    else if (phone.length() != PhoneLength)
        ui->label_register_PhoneNumberPrompt->setText(QStringLiteral("ⓘ请输入11位手机号"));
    else if (code.isEmpty())
        ui->label_register_verificationCodePrompt->setText(QStringLiteral("ⓘ校验码不能为空"));
    else if (code.length() != CodeLength)
        ui->label_register_verificationCodePrompt->setText(QStringLiteral("ⓘ校验码位4位"));
    else if (!hasPasswordLength(password))
        ui->label_register_passwordPrompt->setText(QStringLiteral("ⓘ密码为6-20位"));
    else if (password != ui->lineEdit_register_confirmPassword->text())
        ui->label_register_confirmPasswordPrompt->setText(QStringLiteral("ⓘ两次输入密码不一致"));
    else
        server()->sendRequest_register(referee, phone, password, code);
}

void LoginDialog::buttonClicked_register_code()
{
    ui->label_register_PhoneNumberPrompt->setText(QString());

    const QString phone = ui->lineEdit_register_PhoneNumber->text();
    if (phone.length() != PhoneLength)
        ui->label_register_PhoneNumberPrompt->setText(QStringLiteral("ⓘ请输入11位手机号"));
    else
        server()->sendRequest_register_sendCode(phone);
}

void LoginDialog::buttonClicked_changePasswd()
{
    for (QLabel *prompt : promptsOf(ui->page_updatePasswd))
        prompt->clear();

    const QString phone = ui->lineEdit_changePassword_PhoneNumber->text();
    const QString code = ui->lineEdit_changePassword_verificationCode->text();
    const QString password = ui->lineEdit_changePassword_password->text();
    if (phone.isEmpty())
        ui->label_changePassword_PhoneNumberPrompt->setText(QStringLiteral("ⓘ手机号不能为空"));
    else if (phone.length() != PhoneLength)
        ui->label_changePassword_PhoneNumberPrompt->setText(QStringLiteral("ⓘ手机号错误"));
    else if (code.isEmpty())
        ui->label_changePassword_verificationCodePrompt->setText(QStringLiteral("ⓘ校验码不能为空"));
    else if (code.length() != CodeLength)
        ui->label_changePassword_verificationCodePrompt->setText(QStringLiteral("ⓘ验证码为4位"));
    else if (password.isEmpty())
        ui->label_changePassword_passwordPrompt->setText(QStringLiteral("ⓘ密码不能为空"));
    else if (!hasPasswordLength(password))
        ui->label_changePassword_passwordPrompt->setText(QStringLiteral("ⓘ请输入6-20位密码"));
    else if (password != ui->lineEdit_changePassword_confirmPassword->text())
        ui->label_changePassword_confirmPasswordPrompt->setText(
            QStringLiteral("ⓘ两次输入密码不一致"));
    else
        server()->sendRequest_changePasswd(phone, password, code);
}

void LoginDialog::buttonClicked_changePasswd_code()
{
    ui->label_changePassword_PhoneNumberPrompt->setText(QString());

    const QString phone = ui->lineEdit_changePassword_PhoneNumber->text();
    if (phone.length() != PhoneLength)
        ui->label_changePassword_PhoneNumberPrompt->setText(QStringLiteral("ⓘ请输入11位手机号"));
    else
        server()->sendRequest_changePasswd_sendCode(phone);
}

void LoginDialog::registIconClicked()
{
    m_registIconChecked = !m_registIconChecked;
    ui->pushButton_register_icon->setStyleSheet(m_registIconChecked ? m_styleRegistIconOn
                                                                    : m_styleRegistIconOff);
    ui->pushButton_register->setEnabled(m_registIconChecked);
    ui->pushButton_register->setStyleSheet(m_registIconChecked ? m_styleBigButton
                                                               : m_styleDisabledButton);
}

CodeCountdown LoginDialog::registerCountdown()
{
    return {ui->pushButton_register_getVerificationCode, m_registerCodeTimer,
            m_registerCodeSeconds};
}

CodeCountdown LoginDialog::changePasswdCountdown()
{
    return {ui->pushButton_changePassword_getVerificationCode, m_changePasswdCodeTimer,
            m_changePasswdCodeSeconds};
}

void LoginDialog::startCountdown(const CodeCountdown &countdown)
{
    countdown.start();
    countdown.button->setStyleSheet(m_styleDisabledButton);
    countdown.showSeconds();
}

void LoginDialog::continueCountdown(const CodeCountdown &countdown)
{
    if (countdown.tick())
        countdown.button->setStyleSheet(m_styleCodeButton);
}

void LoginDialog::slot_register_sendCode_succeed()
{
    startCountdown(registerCountdown());
}

void LoginDialog::slot_register_sendCode_timeout()
{
    continueCountdown(registerCountdown());
}

void LoginDialog::slot_changePasswd_sendCode_succeed()
{
    startCountdown(changePasswdCountdown());
}

void LoginDialog::slot_changePasswd_sendCode_timeout()
{
    continueCountdown(changePasswdCountdown());
}

void LoginDialog::slot_login_succeed()
{
    // Whoever hears of the sign-in may take this window away.
    const QPointer<LoginDialog> self(this);
    ZvServerEngine::getZvServerEngineInstance()->startLoggedEngine();
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_login_succeed();
    if (self)
        close();
}

// A message box runs an event loop, in which the host, or a sign-in that was sent twice, may end
// this window.

void LoginDialog::slot_login_failed(QString msg)
{
    const QPointer<LoginDialog> self(this);
    showAnswer(msg);
    if (self)
        ui->lineEdit_login_password->clear();
}

void LoginDialog::slot_register_succeed()
{
    const QPointer<LoginDialog> self(this);
    showAnswer(QStringLiteral("注册成功"));
    if (!self)
        return;
    for (QLineEdit *edit :
         {ui->lineEdit_register_PhoneNumber_referee, ui->lineEdit_register_PhoneNumber,
          ui->lineEdit_register_password, ui->lineEdit_register_confirmPassword,
          ui->lineEdit_register_verificationCode})
        edit->clear();
    changeToPage_login();
}

void LoginDialog::slot_changePasswd_succeed()
{
    const QPointer<LoginDialog> self(this);
    showAnswer(QStringLiteral("修改密码成功"));
    if (!self)
        return;
    for (QLineEdit *edit :
         {ui->lineEdit_changePassword_PhoneNumber, ui->lineEdit_changePassword_password,
          ui->lineEdit_changePassword_confirmPassword,
          ui->lineEdit_changePassword_verificationCode})
        edit->clear();
    changeToPage_login();
}

void LoginDialog::slot_register_sendCode_failed(QString reason)
{
    showAnswer(reason);
}

void LoginDialog::slot_register_failed(QString reason)
{
    showAnswer(reason);
}

void LoginDialog::slot_changePasswd_sendCode_failed(QString reason)
{
    showAnswer(reason);
}

void LoginDialog::slot_changePasswd_failed(QString reason)
{
    showAnswer(reason);
}
