#pragma once

#include "ZvWidgetKit/collection_dealhistory_model.h"
#include "ZvWidgetKit/latetableview.h"

// A list of the newest deals of one collection, the newest below. In small mode it is the end of
// the panel beside a chart, and a double click asks for the full page; that page holds several in
// normal mode, side by side.
//
// It takes no focus and no wheel: there is nothing to choose in it, its rows are cut to what fits,
// and keys and wheel belong to the page around it.
class Collection_DealHistory_View : public LateTableView
{
    Q_OBJECT

public:
    explicit Collection_DealHistory_View(QWidget *parent = nullptr);
    ~Collection_DealHistory_View() override;

    // How many deals an update keeps; 10 until it is told.
    void setDealLimit(int limit);

    // Turns small mode on.
    void applySmallStyle();

    // Shows these deals as they are, whatever the limit.
    void setDealList(QList<ZvUBDealItem> deals);

public slots:
    // Shows the newest deals that the cache has of the collection, as many as the limit lets.
    void slot_updateLatestDeal(QString collectionID);

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void applyStyle();

    Collection_DealHistory_model m_model;
    bool m_smallMode;
    int m_dealLimit;
};
