#pragma once

#include <QWidget>

#include <memory>

class Collection_DealHistory_View;

namespace Ui {
class Collection_DetailWidget;
}

// The column beside a chart: name and code of the current collection, five levels a side, the
// figures of the day and the newest deals. It draws what the cache holds and asks for nothing; it
// only tells the engine how many deals fit on the screen.
class Collection_DetailWidget : public QWidget
{
    Q_OBJECT

public:
    explicit Collection_DetailWidget(QWidget *parent = nullptr);
    ~Collection_DetailWidget() override;

public slots:
    // Draws levels, limits and change; nothing for any other collection than the current one.
    void slot_updateCollectionTradeTop5(QString collectionID);

    // Draws the day's figures of whatever collection it is told.
    void slot_updateCollectionProItem(QString collectionID);

    // Shows three levels a side in a low main window, five in a higher one.
    void slot_adjustSize(QSize mainSize);

    // Works out how many deals fit into the list, and tells the list and the engine.
    void slot_adjustDealLatestLimit();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void createConnections();
    void applyStyle();
    void makeYielding();
    void colourPrices(float reference);

    std::unique_ptr<Ui::Collection_DetailWidget> ui;
    Collection_DealHistory_View *m_dealHistoryView;
};
