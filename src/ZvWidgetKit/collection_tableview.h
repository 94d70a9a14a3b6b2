#pragma once

#include "ZvWidgetKit/collectionsortfilterproxymodel.h"
#include "ZvWidgetKit/collectiontablemodel.h"
#include "ZvWidgetKit/latetableview.h"

class QTimer;

// The market table. Mouse, wheel and keys choose a collection, which reaches all other pages
// through the pool; the context menu leads to the favourites and the charts.
class Collection_TableView : public LateTableView
{
    Q_OBJECT

public:
    explicit Collection_TableView(QWidget *parent = nullptr);
    ~Collection_TableView() override;

    // Says whether the table shows the favourites: its menu then offers to remove one.
    void setIsOptionView(bool isOptionView);

    // Shows the rows of a poll. A hidden table takes none. The first rows to come select the first
    // one in the order on screen and make it the current collection.
    void setMarketList(QList<ZvUBObject> list);

    // The id of the collection in the current row; empty when there is none.
    QString currentCollectionId() const;

    // The id in a row as it stands on screen, counted from 0; empty outside the rows.
    QString collectionIdOfProxyRow(int row) const;

    // The id in the row at a position of the viewport; empty beside the rows.
    QString collectionIdAt(QPoint position) const;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void keyReleaseEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void applyStyle();
    void applyColumnWidths();
    void createConnections();
    void selectCollectionRow(QString id);
    void pendingTimerTimeout();
    void showCollectionInfo();
    void addOption();
    void removeOption();
    void selectRowByWheel(const QWheelEvent *event);
    QModelIndex selectedSourceIndex() const;
    QList<ZvUBObject> rowsOnScreen() const;
    void repaintWhatNoNumberTells(const QList<ZvUBObject> &before);

    CollectionTableModel m_model;
    CollectionSortFilterProxyModel m_proxy;
    bool m_isOptionView;
    QString m_pendingCollectionId; // waits for the timer; empty for none
    QString m_pendingServer; // on which it is
    QTimer *m_pendingTimer;
};
