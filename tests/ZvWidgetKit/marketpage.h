#pragma once

#include "ZvModelKit/zvubobject.h"
#include "ZvWidgetKit/market_tablewidget.h"

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

class QButtonGroup;
class QLabel;
class QPushButton;
class QTableView;
class ZvGuideTabPage;
class ZvServerCache;
class ZvServerEngine;
class ZvWidgetSignalSLotPool;

namespace zvtest {

ZvServerEngine *engine();
ZvServerCache *cache();
ZvWidgetSignalSLotPool *pool();

using Types = QList<QPair<QString, int>>;

// Two types of collections: 邮票 is 1, 钱币 is 2.
Types stampsAndCoins();

// A row whose collection is of a type.
ZvUBObject rowOfType(int number, int type);

// The lines of the call trace for the engine's choice of list, its collection and its request.
QString choosesOption(bool isOption);
QString choosesType(int type);
QString selects(const QString &id);
extern const QString asksForRows;
extern const QString asksForOptions;

// The page of the market table, shown in a window that is wide enough for its footer, on a server
// that no page before has used.
class MarketPage
{
public:
    MarketPage();

    // Puts rows into the cache and tells of them: 1001 to 1003 are of type 1, 1004 and 1005 of
    // type 2.
    static void storeRows();

    QTableView *table() const;
    ZvGuideTabPage *guide() const;
    QButtonGroup *group() const;
    QPushButton *button(const QString &text) const;

    // The texts of the group's buttons in the group's order, and of those that can be seen from
    // left to right.
    QStringList buttonTexts() const;
    QStringList textsOnScreen() const;

    // The text of the one checked button; "" for none, all of them where there are several.
    QString checked() const;

    // The label that stands right of a caption in the footer.
    QLabel *valueOf(const QString &caption) const;

    // The ids of the table's rows in the order on screen.
    QStringList ids() const;

    void click(const QString &text);

    Market_TableWidget widget;
};

} // namespace zvtest
