#pragma once

#include "ZvModelKit/zvubdealitem.h"
#include "ZvWidgetKit/pageturn.h"

#include <QList>
#include <QWidget>

#include <memory>

class Collection_DealHistory_View;
class QFrame;

namespace Ui {
class Market_DetailWidget;
}

// The full page of deals of the current collection: as many lists side by side as fit, filled from
// one page of the exchange that holds as many deals as they show. Wheel and page keys turn to the
// next page or the one before.
class Market_DetailWidget : public QWidget
{
    Q_OBJECT

public:
    explicit Market_DetailWidget(QWidget *parent = nullptr);
    ~Market_DetailWidget() override;

public slots:
    // Takes the answer of the exchange. An empty one beyond the last page leaves the page before.
    void slot_updateMarketDetail();

    // Empties the lists. The deals of the page stay known.
    void slot_clearMarketDetail();

    // Asks for the first page of a collection's deals, of a hidden page, too.
    void selectTiggered(QString collectionId);

    // Ask for the page before, at least the first one, and for the next one, which may not exist.
    void requestPage_whenWheelOut();
    void requestPage_whenWheelIn();

protected:
    void wheelEvent(QWheelEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    enum Filling { Fills, Restores };

    void applyLayout();
    void createConnections();
    void nameCollection(const QString &id);
    void requestPage(int page, pageturn::Direction direction);
    void fillViews(Filling filling);
    int usedViews() const;

    int m_wheelDelta;
    std::unique_ptr<Ui::Market_DetailWidget> ui;
    int m_viewCount; // by the width of the page; there are ten views, however wide it is
    int m_rowsPerView; // by its height; 0 or below when it is very low
    int m_pageSize;
    int m_currentPage;
    int m_requestedPage;
    bool m_newSelection; // from selectTiggered() up to the next answer
    QList<ZvUBDealItem> m_deals;
    QList<QFrame *> m_lines; // the one to the left of each view
    QList<Collection_DealHistory_View *> m_views;
};
