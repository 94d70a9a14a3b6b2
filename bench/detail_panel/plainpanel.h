#pragma once

#include "ZvModelKit/zvubdealitem.h"
#include "ZvWidgetKit/collection_detailwidget.h"

#include <QHash>
#include <QList>
#include <QString>

class QLabel;
class ZvUBProItem;
class ZvUBTopFive;

// The plain twin of the panel: the same form, in which every figure gets its text and its sheet
// anew with each update, without a look at what stands there. It hears nothing of the cache.
class PlainPanel
{
public:
    PlainPanel();

    QWidget &widget() { return m_widget; }
    void showDay(const ZvUBProItem &item);
    void showQuote(const ZvUBTopFive &quote);
    void showDeals(const QList<ZvUBDealItem> &deals, int limit);

private:
    void write(const QString &label, const QString &text);
    void colour(const QString &label, const QString &byText, float reference);

    Collection_DetailWidget m_widget;
    QHash<QString, QLabel *> m_labels;
};
