#include "ZvWidgetKit/titlebar.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/widgetbackground.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QPushButton>

namespace {

constexpr int BarHeight = 35;
constexpr int ButtonHeight = 30;
constexpr QSize WindowButtonSize(45, ButtonHeight);
constexpr int TitleGap = 208; // about what the buttons take on the other side

QPushButton *makeWindowButton(const QString &icon, QWidget *parent)
{
    auto *button = new QPushButton(QIcon(icon), QString(), parent);
    button->setFixedSize(WindowButtonSize);
    return button;
}

} // namespace

TitleBar::TitleBar(QWidget *parent)
    : QWidget(parent), m_titleLabel(new QLabel(this)),
      m_loginButton(new QPushButton(tr("登录"), this)),
      m_minimizeButton(makeWindowButton(QStringLiteral(":/icons/icon_mini_gray.png"), this)),
      m_normalButton(makeWindowButton(QStringLiteral(":/icons/icon_narrow_gray.png"), this)),
      m_exitButton(makeWindowButton(QStringLiteral(":/icons/icon_close_gray.png"), this))
{
    m_titleLabel->setTextFormat(Qt::PlainText);
    m_loginButton->setFixedHeight(ButtonHeight);
    layOut();
    nameButtons();
    applyStyle();
    createConnections();
}

TitleBar::~TitleBar() = default;

void TitleBar::layOut()
{
    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(0);
    row->addSpacing(TitleGap);
    row->addStretch(1);
    row->addWidget(m_titleLabel);
    row->addStretch(1);
    row->addWidget(m_loginButton);
    row->addWidget(m_minimizeButton);
    row->addWidget(m_normalButton);
    row->addWidget(m_exitButton);
}

// What the buttons without a text are for, to those who hover over them and to those who hear them.
void TitleBar::nameButtons()
{
    const auto name = [](QPushButton *button, const QString &text) {
        button->setToolTip(text);
        button->setAccessibleName(text);
    };
    name(m_minimizeButton, tr("最小化"));
    name(m_normalButton, tr("最大化/还原"));
    name(m_exitButton, tr("关闭"));
}

void TitleBar::applyStyle()
{
    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    setFixedHeight(BarHeight);
    // The focus stays where the keys are used.
    const std::initializer_list<QPushButton *> buttons{m_loginButton, m_minimizeButton,
                                                       m_normalButton, m_exitButton};
    for (QPushButton *button : buttons)
        button->setFocusPolicy(Qt::NoFocus);
    m_titleLabel->setStyleSheet(config->getStyleOf_TitleBarLabel());
    const QString buttonStyle = config->getStyleOf_TitleBarButtonStyle();
    for (QPushButton *button : buttons)
        button->setStyleSheet(buttonStyle);
    setStyleSheet(QStringLiteral("font-style: normal;font-size: 13pt;font-weight: bold;"));
    QColor background;
    background.setNamedColor(config->getStyleOf_TitleBarPaletteColor());
    setBackground(this, background);
}

void TitleBar::createConnections()
{
    connect(m_loginButton, &QPushButton::clicked, this, &TitleBar::signal_loginClicked);
    connect(m_minimizeButton, &QPushButton::clicked, this, &TitleBar::signal_minimizeClicked);
    connect(m_normalButton, &QPushButton::clicked, this, &TitleBar::signal_normalClicked);
    connect(m_exitButton, &QPushButton::clicked, this, &TitleBar::signal_exitClicked);

    using Pool = ZvWidgetSignalSLotPool;
    const Pool *pool = Pool::getSignalSlotPoolInstance();
    // The status bar's login button presses this one, so there is one way in.
    connect(pool, &Pool::signal_statusLogin_clicked, m_loginButton, &QPushButton::click);
    connect(pool, &Pool::signal_login_succeed, this, &TitleBar::slot_updateTitleWhenLoggedIn);
    connect(pool, &Pool::signal_loggedOtherPlace, this, &TitleBar::slot_updateTitleWhenLoggedOut);
}

void TitleBar::setTitle(QString title)
{
    m_titleLabel->setText(title);
}

void TitleBar::slot_updateTitleWhenLoggedIn()
{
    m_loginButton->setText(tr("重新登录"));
}

void TitleBar::slot_updateTitleWhenLoggedOut()
{
    m_loginButton->setText(tr("登录"));
}

// The whole answer: a press that went on to the window would begin a drag of it.
void TitleBar::mouseDoubleClickEvent(QMouseEvent *)
{
    emit signal_doubleClicked();
}
