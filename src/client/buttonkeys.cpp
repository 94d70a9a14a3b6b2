#include "client/buttonkeys.h"

#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/transaction_widget.h"

#include <QAbstractButton>
#include <QCoreApplication>
#include <QKeySequence>
#include <QMouseEvent>
#include <QPointer>
#include <QShortcut>

#include <iterator>

namespace {

// The buttons of the market's title row, from left to right.
const char *const titleRow[]
    = {"行情列表", "分时", "日K", "周K", "月K", "藏品介绍", "资金总览", "入金", "出金", "藏品申购"};

struct PageKey {
    const char *button;
    int keys;
};

// The column of the trading half from top to bottom, with the pages that the query button opens.
const PageKey tradingColumn[] = {
    {"pushButton_purchase", Qt::Key_F1},
    {"pushButton_sell", Qt::Key_F2},
    {"pushButton_withdrawal", Qt::Key_F3},
    {"pushButton_select", Qt::Key_F4},
    {"pushButton_select_historyDeal", Qt::ALT | Qt::Key_1},
    {"pushButton_select_currentDelegate", Qt::ALT | Qt::Key_2},
    {"pushButton_select_historyDelegate", Qt::ALT | Qt::Key_3},
    {"pushButton_select_purchaseApplyRecord", Qt::ALT | Qt::Key_4},
    {"pushButton_select_deliveryRecord", Qt::ALT | Qt::Key_5},
    {"pushButton_select_inputOutputRecord", Qt::ALT | Qt::Key_6},
    {"pushButton_prePay", Qt::Key_F7},
    {"pushButton_deliveryHandling", Qt::Key_F8},
};

// The first button of an area that is called so, in sight or in name.
QAbstractButton *buttonOf(const QWidget *area, const QString &words)
{
    const QList<QAbstractButton *> buttons = area->findChildren<QAbstractButton *>();
    for (QAbstractButton *button : buttons) {
        if (button->text() == words || button->accessibleName() == words)
            return button;
    }
    return nullptr;
}

// The column of the trading half hears the release of the mouse and no click().
void press(QAbstractButton *target)
{
    const QPointer<QAbstractButton> button(target);
    if (!button->isVisible() || !button->isEnabled())
        return;
    const QPointF middle(button->rect().center());
    QMouseEvent down(QEvent::MouseButtonPress, middle, Qt::LeftButton, Qt::LeftButton,
                     Qt::NoModifier);
    QCoreApplication::sendEvent(button, &down);
    if (!button)
        return;
    QMouseEvent up(QEvent::MouseButtonRelease, middle, Qt::LeftButton, Qt::NoButton,
                   Qt::NoModifier);
    QCoreApplication::sendEvent(button, &up);
}

} // namespace

ButtonKeys::ButtonKeys(QWidget *window) : QObject(window), m_window(window)
{
    giveBars();
    giveMarket();
    giveTrading();
}

void ButtonKeys::giveBars()
{
    const auto *title = m_window->findChild<TitleBar *>();
    const auto giveTitle = [&](const QString &words, const QKeySequence &keys) {
        give(buttonOf(title, words), keys, words);
    };
    giveTitle(QStringLiteral("登录"), Qt::CTRL | Qt::Key_L);
    giveTitle(QStringLiteral("最小化"), Qt::CTRL | Qt::Key_M);
    giveTitle(QStringLiteral("最大化/还原"), Qt::Key_F11);
    giveTitle(QStringLiteral("关闭"), Qt::CTRL | Qt::Key_Q);

    const auto *status = m_window->findChild<StatusBar *>();
    give(buttonOf(status, QStringLiteral("隐藏交易")), Qt::CTRL | Qt::Key_T,
         QStringLiteral("隐藏或显示交易"));
    give(buttonOf(status, QStringLiteral("锁定交易")), Qt::CTRL | Qt::SHIFT | Qt::Key_L,
         QStringLiteral("锁定交易"));
}

void ButtonKeys::giveMarket()
{
    const auto *market = m_window->findChild<Market_Widget *>();
    for (int i = 0; i < int(std::size(titleRow)); ++i) {
        const QString words = QString::fromUtf8(titleRow[i]);
        const int digit = Qt::Key_0 + (i + 1) % 10;
        give(buttonOf(market, words), Qt::CTRL | digit, words);
    }
}

void ButtonKeys::giveTrading()
{
    const auto *trading = m_window->findChild<Transaction_Widget *>();
    for (const PageKey &page : tradingColumn) {
        auto *button = trading->findChild<QAbstractButton *>(QLatin1String(page.button));
        if (button)
            give(button, page.keys, button->text().trimmed());
    }
}

void ButtonKeys::give(QAbstractButton *button, const QKeySequence &keys, const QString &words)
{
    if (!button)
        return;
    auto *shortcut = new QShortcut(keys, m_window);
    shortcut->setAutoRepeat(false);
    connect(shortcut, &QShortcut::activated, button, [button] { press(button); });
    button->setToolTip(
        QStringLiteral("%1 (%2)").arg(words, keys.toString(QKeySequence::NativeText)));
}
