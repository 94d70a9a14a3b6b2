#include "ZvWidgetKit/transaction_lock.h"

#include "BreltWidgetToolKit/breltreturnkey.h"
#include "BreltWidgetToolKit/brelttooltip.h"
#include "ZvModelKit/zvubmyacount.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/singleclick.h"
#include "ZvWidgetKit/widgetbackground.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegExp>
#include <QRegExpValidator>
#include <QVBoxLayout>

namespace {

const QColor background(21, 21, 21);

QString firstHint()
{
    return QStringLiteral("   系统锁定, 请输入密码解锁");
}

} // namespace

Transaction_Lock::Transaction_Lock(QWidget *parent)
    : QWidget(parent), m_passwordEdit(new QLineEdit),
      m_unlockButton(new QPushButton(QStringLiteral("立即解锁"))),
      m_hintLabel(new QLabel(firstHint()))
{
    m_passwordEdit->setValidator(
        new QRegExpValidator(QRegExp(QStringLiteral("^\\S{6,20}$"), Qt::CaseSensitive), this));
    m_passwordEdit->setEchoMode(QLineEdit::Password);
    m_passwordEdit->setAccessibleName(QStringLiteral("登录密码"));
    layOut();
    applyStyle();
    createConnections();
}

Transaction_Lock::~Transaction_Lock() = default;

void Transaction_Lock::layOut()
{
    auto *column = new QVBoxLayout;
    column->addStretch(1);
    // A long refusal makes the column wider, not the field and the button, and the window never: it
    // rather shows the beginning of it.
    m_hintLabel->setMinimumWidth(1);
    column->addWidget(m_passwordEdit, 0, Qt::AlignHCenter);
    column->addWidget(m_unlockButton, 0, Qt::AlignHCenter);
    column->addWidget(m_hintLabel);
    column->addStretch(1);
    auto *page = new QHBoxLayout(this);
    page->addStretch(1);
    page->addLayout(column);
    page->addStretch(1);
}

// The three sheets are kept to the letter, with the value "soli" that means nothing and the
// full-width semicolon in the last rule, as they have always looked.
void Transaction_Lock::applyStyle()
{
    m_unlockButton->setStyleSheet(QStringLiteral(
        "QPushButton{background-color:rgb(229,53,53);color:rgb(255,255,255);width:220px; "
        "height:50px;border-style:inset;border-width:1px;border-style:soli; border-radius:4px}"
        "QPushButton:hover{color:rgb(226,239,51);border-style:inset;border-width:1px;"
        "border-style:soli; border-radius:4px}"
        "QPushButton:pressed{border-style:inset；border-width:1px;border-style:soli; "
        "border-radius:4px}"));
    // The focus stays in the field: keys that are typed elsewhere are shown, such as in a search.
    m_unlockButton->setFocusPolicy(Qt::NoFocus);
    m_passwordEdit->setPlaceholderText(QStringLiteral("请输入您的登录密码"));
    m_passwordEdit->setStyleSheet(
        QStringLiteral("QLineEdit{width:220px; height:38px;border-width:1px;border-style:soli;"
                       "border-radius:4px}"));
    m_hintLabel->setStyleSheet(
        QStringLiteral("QLabel{color:rgb(226,239,51);background-color:rgb(21,21,21)}"));
    m_hintLabel->setTextFormat(Qt::PlainText);
    setBackground(this, background);
}

void Transaction_Lock::createConnections()
{
    connect(m_unlockButton, &QPushButton::clicked, this,
            &Transaction_Lock::slot_unlockButton_clicked);
    connect(m_passwordEdit, &QLineEdit::returnPressed, this,
            &Transaction_Lock::slot_unlockButton_clicked);
    m_passwordEdit->installEventFilter(this);
    SingleClick::watch(m_unlockButton);
}

// The repeats of a held Return would be an attempt each, and the server counts attempts.
bool Transaction_Lock::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        if (key->isAutoRepeat() && brelt::isReturnKey(key))
            return true;
    }
    return QWidget::eventFilter(watched, event);
}

void Transaction_Lock::resetLockPage()
{
    showHint(firstHint());
    m_passwordEdit->clear();
}

void Transaction_Lock::showUnlockFailed(QString msg)
{
    showHint(msg + QStringLiteral(" 请重新输入密码"));
    m_passwordEdit->clear();
}

// What a narrow page cuts off is told as a tool tip.
void Transaction_Lock::showHint(const QString &text)
{
    m_hintLabel->setText(text);
    m_hintLabel->setToolTip(brelt::plainToolTip(text));
}

// The button sends any text, Return only one that the field accepts: the server decides.
void Transaction_Lock::slot_unlockButton_clicked()
{
    const QString password = m_passwordEdit->text();
    const ZvUBMyAcount account = ZvServerCache::getZvServerCacheInstance()->myAccount;
    ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_login(account.phone(),
                                                                               password);
}

void Transaction_Lock::showEvent(QShowEvent *event)
{
    resetLockPage();
    m_passwordEdit->setFocus(Qt::OtherFocusReason);
    QWidget::showEvent(event);
}
