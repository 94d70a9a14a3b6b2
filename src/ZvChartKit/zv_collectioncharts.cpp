#include "ZvChartKit/zv_collectioncharts.h"

class Zv_CollectionCharts::Private
{
public:
    bool isRedUp = true;
};

Zv_CollectionCharts::Zv_CollectionCharts(QWidget *parent)
    : QWidget(parent), d(std::make_unique<Private>())
{
}

Zv_CollectionCharts::~Zv_CollectionCharts() = default;

void Zv_CollectionCharts::changeToPage_timeChart() { }

void Zv_CollectionCharts::changeToPage_kline_day() { }

void Zv_CollectionCharts::changeToPage_kline_week() { }

void Zv_CollectionCharts::changeToPage_kline_month() { }

bool Zv_CollectionCharts::isRedUp() const
{
    return d->isRedUp;
}

void Zv_CollectionCharts::setRedUp(bool isRedUp)
{
    d->isRedUp = isRedUp;
}

void Zv_CollectionCharts::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
}

void Zv_CollectionCharts::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
}

void Zv_CollectionCharts::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
}
