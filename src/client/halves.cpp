#include "client/halves.h"

#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QSplitterHandle>

namespace {

// The market half gives way to the trading half down to this, also where the page of a chart would
// rather have more: the window has to fit small screens that show everything larger.
constexpr int leastMarketHeight = 280;

constexpr int barHeight = 5;

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

Halves::Halves(Market_Widget *market, Transaction_Widget *trading, QWidget *parent)
    : QSplitter(Qt::Vertical, parent), m_trading(trading), m_least(maximumHeight())
{
    setChildrenCollapsible(false);
    setHandleWidth(barHeight);
    market->setMinimumHeight(leastMarketHeight);
    addWidget(market);
    addWidget(trading);
    setStretchFactor(indexOf(market), 1);
    setStretchFactor(indexOf(trading), 0);
    QSplitterHandle *bar = handle(indexOf(trading));
    bar->setAccessibleName(QStringLiteral("行情与交易的分界"));
    bar->setToolTip(QStringLiteral("拖动调整交易区的高度"));
    connect(this, &QSplitter::splitterMoved, this, &Halves::takeDraw);
    // The trading half was made before and has heard of the size by then.
    connect(pool(), &ZvWidgetSignalSLotPool::signal_adjustSize, this,
            [this] { m_least = qMin(m_least, m_trading->minimumHeight()); });
}

QSize Halves::minimumSizeHint() const
{
    const QSize asked = QSplitter::minimumSizeHint();
    return {asked.width(), qMin(asked.height(), leastMarketHeight + handleWidth() + m_least)};
}

int Halves::tradingHeight() const
{
    return sizes().at(indexOf(m_trading));
}

// A splitter makes room for a half that needs more, keeps the room when less would do, and does not
// see that a half has changed its own size.
void Halves::fit(const QSize &window)
{
    const int height = tradingHeight();
    const int before = m_trading->minimumHeight();
    pool()->slot_adjustSize(window);
    const int wanted = m_trading->minimumHeight();
    const bool isAnew = wanted != before || !m_isFitted || m_trading->isHidden();
    share(isAnew ? qMax(wanted, m_chosen) : height);
    m_isFitted = true;
}

void Halves::choose(int height)
{
    m_chosen = height > m_trading->minimumHeight() ? height : 0;
    if (m_isFitted)
        share(qMax(m_chosen, m_trading->minimumHeight()));
}

void Halves::share(int trading)
{
    const int rest = height() - handleWidth() - trading;
    if (rest > 0)
        setSizes({rest, trading});
}

// Drawn back as far as it goes, the trading half has the height that it asks for again.
void Halves::takeDraw()
{
    const int height = tradingHeight();
    m_chosen = height > m_trading->minimumHeight() ? height : 0;
}
