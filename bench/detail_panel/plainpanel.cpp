#include "plainpanel.h"

#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"

#include <QLabel>

namespace {

const QStringList levels{QStringLiteral("label_buy1_Price"),  QStringLiteral("label_buy2_Price"),
                         QStringLiteral("label_buy3_Price"),  QStringLiteral("label_buy4_Price"),
                         QStringLiteral("label_buy5_Price"),  QStringLiteral("label_sell1_price"),
                         QStringLiteral("label_sell2_price"), QStringLiteral("label_sell3_price"),
                         QStringLiteral("label_sell4_price"), QStringLiteral("label_sell5_price")};

const QStringList prices{
    QStringLiteral("label_latest_value"),    QStringLiteral("label_avg_value"),
    QStringLiteral("label_frist_value"),     QStringLiteral("label_max_value"),
    QStringLiteral("label_min_value"),       QStringLiteral("label_uppeLimitPrice_value"),
    QStringLiteral("label_priceLimit_value")};

QString quantityOf(QString price)
{
    return price.replace(QStringLiteral("price"), QStringLiteral("qty"), Qt::CaseInsensitive);
}

} // namespace

PlainPanel::PlainPanel()
{
    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
    auto *list = m_widget.findChild<Collection_DealHistory_View *>();
    QObject::disconnect(cache, nullptr, &m_widget, nullptr);
    QObject::disconnect(cache, nullptr, list, nullptr);
    const QList<QLabel *> labels = m_widget.findChildren<QLabel *>();
    for (QLabel *label : labels)
        m_labels.insert(label->objectName(), label);
}

void PlainPanel::write(const QString &label, const QString &text)
{
    m_labels.value(label)->setText(text);
}

void PlainPanel::colour(const QString &label, const QString &byText, float reference)
{
    const float value = byText.toFloat();
    QString colour = QStringLiteral("#ffffff");
    if (value != 0 && value > reference)
        colour = QStringLiteral("#ea3835");
    else if (value != 0 && value < reference)
        colour = QStringLiteral("#4bff57");
    m_labels.value(label)->setStyleSheet(QStringLiteral("QLabel{color:%1;}").arg(colour));
}

void PlainPanel::showDay(const ZvUBProItem &item)
{
    static const char *const labels[] = {
        "label_avg_value",    "label_turnover_value",    "label_frist_value", "label_qty_value",
        "label_max_value",    "label_entrustRate_value", "label_min_value",   "label_amount_value",
        "label_outvol_value", "label_invol_value"};
    int property = 0;
    for (const char *label : labels)
        write(QLatin1String(label), item.getPropertyString(property++));
}

void PlainPanel::showQuote(const ZvUBTopFive &quote)
{
    write(QStringLiteral("label_beforePrice_value"), quote.getPropertyString(23));
    write(QStringLiteral("label_latest_value"), quote.getPropertyString(24));
    write(QStringLiteral("label_chgValue"), quote.getPropertyString(25));
    write(QStringLiteral("label_rate_value"), quote.getPropertyString(26));
    write(QStringLiteral("label_uppeLimitPrice_value"), quote.getPropertyString(27));
    write(QStringLiteral("label_priceLimit_value"), quote.getPropertyString(28));
    write(QStringLiteral("label_collectionCode"), quote.getPropertyString(1));
    QLabel *name = m_labels.value(QStringLiteral("label_collectionName"));
    name->setText(QFontMetrics(name->font())
                      .elidedText(quote.getPropertyString(0), Qt::ElideRight, name->width() - 1));
    name->setToolTip(quote.getPropertyString(0));
    for (int i = 0; i < levels.size(); ++i) {
        const int property = i < 5 ? 13 + 2 * i : 11 - 2 * (i - 5);
        write(levels.at(i), quote.getPropertyString(property));
        write(quantityOf(levels.at(i)), quote.getPropertyString(property + 1));
    }
    const auto reference = static_cast<float>(quote.referencePrice());
    for (const QString &label : levels + prices)
        colour(label, m_labels.value(label)->text(), reference);
    const QString change = quote.getPropertyString(25);
    colour(QStringLiteral("label_chgValue"), change, 0);
    colour(QStringLiteral("label_rate_value"), change, 0);
}

void PlainPanel::showDeals(const QList<ZvUBDealItem> &deals, int limit)
{
    auto *list = m_widget.findChild<Collection_DealHistory_View *>();
    list->setDealList(deals.mid(qMax(0, deals.size() - limit)));
    list->scrollToBottom();
}
