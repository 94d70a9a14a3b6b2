#include "endtoend/chartpage.h"

#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/collection_detailwidget.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/market_ktimewidget.h"
#include "ZvWidgetKit/market_widget.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLabel>
#include <QStackedWidget>
#include <QTableView>
#include <QWheelEvent>

namespace endtoend {
namespace {

constexpr int priceColumn = 1; // of a list of deals
constexpr double limit = 0.1; // of a day's prices, on either side of the previous close
constexpr double rounding = 0.0101;

QHash<QString, Listed> readCatalogue()
{
    QHash<QString, Listed> found;
    QFile file(QStringLiteral(ZV_SMALL_CATALOGUE));
    if (!file.open(QIODevice::ReadOnly))
        return found;
    const QJsonObject catalogue = QJsonDocument::fromJson(file.readAll()).object();
    for (const QJsonValue platform : catalogue["platforms"].toArray()) {
        for (const QJsonValue market : platform["markets"].toArray()) {
            for (const QJsonValue entry : market["collections"].toArray()) {
                Listed collection;
                collection.id = QString::number(entry["id"].toInt());
                collection.code = entry["code"].toString();
                collection.name = entry["name"].toString();
                collection.previousClose = entry["previousClose"].toDouble() / 100;
                found.insert(collection.code, collection);
            }
        }
    }
    return found;
}

const QHash<QString, Listed> &catalogue()
{
    static const QHash<QString, Listed> all = readCatalogue();
    return all;
}

Listed listedById(const QString &id)
{
    for (const Listed &collection : catalogue()) {
        if (collection.id == id)
            return collection;
    }
    return {};
}

bool isPriceOf(const Listed &collection, double price)
{
    const double close = collection.previousClose;
    return price >= close * (1 - limit) - rounding && price <= close * (1 + limit) + rounding;
}

// Prices that are none stand for nothing that was dealt.
void checkPrices(const Listed &collection, const QString &where, const QStringList &texts,
                 QStringList &faults)
{
    for (const QString &text : texts) {
        bool isNumber = false;
        const double price = text.toDouble(&isNumber);
        if (isNumber && price != 0 && !isPriceOf(collection, price))
            faults << QStringLiteral("%1 of %2: %3").arg(where, collection.code, text);
    }
}

QLabel *labelOf(const QWidget &window, const QString &name)
{
    // The order ticket of the trading half has labels of the same names.
    return window.findChild<Market_Widget *>()->findChild<QLabel *>(name);
}

void checkPanel(const QWidget &window, QStringList &faults)
{
    const QString code = shownCode(window);
    const Listed collection = listed(code);
    if (!collection.isThere())
        return; // empty until its figures come
    const QString name = labelOf(window, QStringLiteral("label_collectionName"))->toolTip();
    if (name != collection.name)
        faults << QStringLiteral("name of %1: %2").arg(code, name);
    const QString close = textOf(window, QStringLiteral("label_beforePrice_value"));
    if (qAbs(close.toDouble() - collection.previousClose) > 0.001)
        faults << QStringLiteral("previous close of %1: %2").arg(code, close);
    checkPrices(collection, QStringLiteral("figure"),
                {textOf(window, QStringLiteral("label_latest_value")),
                 textOf(window, QStringLiteral("label_avg_value")),
                 textOf(window, QStringLiteral("label_frist_value")),
                 textOf(window, QStringLiteral("label_max_value")),
                 textOf(window, QStringLiteral("label_min_value")),
                 textOf(window, QStringLiteral("label_sell1_price")),
                 textOf(window, QStringLiteral("label_buy1_Price"))},
                faults);
    checkPrices(collection, QStringLiteral("latest deal"), pricesOf(latestDeals(window)), faults);
}

void checkChart(const QWidget &window, QStringList &faults)
{
    const ZvChartFeed *feed = feedOf(window);
    if (feed->state() == ZvChartFeed::Waiting || feed->state() == ZvChartFeed::NoData)
        return;
    const QString id = feed->collectionId();
    const QString code = shownCode(window);
    if (!code.isEmpty() && listed(code).id != id)
        faults << QStringLiteral("chart of %1 beside the panel of %2").arg(id, code);
    if (feed->chart() != ZvChartFeed::TimeLine) {
        if (feed->kLine().collectionId != id)
            faults << QStringLiteral("bars of %1: %2").arg(id, feed->kLine().collectionId);
        return;
    }
    const ZvUBTimeLine &line = feed->timeLine();
    const Listed collection = listedById(id);
    if (line.collectionId != id || qAbs(line.previousClose - collection.previousClose) > 0.001)
        faults << QStringLiteral("time line of %1: %2").arg(id, line.collectionId);
    for (const ZvUBMinute &minute : line.minutes) {
        if (!isPriceOf(collection, minute.price))
            faults << QStringLiteral("minute of %1: %2").arg(id).arg(minute.price);
    }
}

void checkDeals(const QWidget &window, QStringList &faults)
{
    const QString title = textOf(window, QStringLiteral("label_title"));
    const Listed collection = listed(title.section('(', 1).section(')', 0, 0));
    if (title != QStringLiteral("%1(%2)成交明细").arg(collection.name, collection.code))
        faults << QStringLiteral("title: %1").arg(title);
    checkPrices(collection, QStringLiteral("deal"), pricesOfPage(window), faults);
}

} // namespace

Listed listed(const QString &code)
{
    return catalogue().value(code);
}

QStackedWidget *pagesOf(const QWidget &window)
{
    return window.findChild<Market_Widget *>()->findChild<QStackedWidget *>(
        QString(), Qt::FindDirectChildrenOnly);
}

Page pageInFront(const QWidget &window)
{
    const QWidget *page = pagesOf(window)->currentWidget();
    if (qobject_cast<const Market_KTimeWidget *>(page))
        return ChartPage;
    return qobject_cast<const Market_DetailWidget *>(page) ? DealsPage : TablePage;
}

QString textOf(const QWidget &window, const QString &label)
{
    return labelOf(window, label)->text();
}

QString shownCode(const QWidget &window)
{
    return textOf(window, QStringLiteral("label_collectionCode"));
}

ZvChartFeed *feedOf(const QWidget &window)
{
    return window.findChild<ZvChartFeed *>();
}

QTableView *latestDeals(const QWidget &window)
{
    return window.findChild<Collection_DetailWidget *>()
        ->findChild<Collection_DealHistory_View *>();
}

QStringList pricesOf(const QTableView *deals)
{
    QStringList texts;
    for (int row = 0; row < deals->model()->rowCount(); ++row)
        texts << deals->model()->index(row, priceColumn).data().toString();
    return texts;
}

QStringList pricesOfPage(const QWidget &window)
{
    QStringList texts;
    const auto *page = window.findChild<Market_DetailWidget *>();
    for (const auto *deals : page->findChildren<Collection_DealHistory_View *>())
        texts << pricesOf(deals);
    return texts;
}

QStringList faultsOf(const QWidget &window)
{
    QStringList faults;
    switch (pageInFront(window)) {
    case TablePage:
        break;
    case ChartPage:
        checkPanel(window, faults);
        checkChart(window, faults);
        break;
    case DealsPage:
        checkDeals(window, faults);
        break;
    }
    return faults;
}

void turnWheel(QWidget *widget, int delta)
{
    const QPointF place = widget->rect().center();
    QWheelEvent event(place, widget->mapToGlobal(place.toPoint()), QPoint(), QPoint(0, delta),
                      Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &event);
}

} // namespace endtoend
