#pragma once

#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QWidget>

class Collection_TableView;
class QAbstractButton;
class QButtonGroup;
class QHBoxLayout;
class QLabel;
class QPushButton;
class ZvGuideTabPage;

// The page of the market table. Below the table a row of buttons chooses what it shows: the whole
// market, one collection type or the favourites; beside them stand the totals of the market. Where
// the exchange has several servers, the strip that changes between them lies over the page's edge.
//
// What is shown is the engine's choice of type and favourites; the page keeps no copy of it.
class Market_TableWidget : public QWidget
{
    Q_OBJECT

public:
    explicit Market_TableWidget(QWidget *parent = nullptr);
    ~Market_TableWidget() override;

protected:
    void resizeEvent(QResizeEvent *event) override;

private slots:
    void slot_buttonGroupIsClicked(QAbstractButton *button);
    void slot_updateTotalQtyAndAmount();
    void slot_updateMarketInfoList();
    void slot_updateCollectionTypeList();
    void slot_updateMarketList();
    void slot_updateCollectionTypeButtons(QString server);
    void adjustGuidePagePos();
    void slot_turnoverOption_clicked();
    void slot_addOption_succeed();
    void slot_addOption_failed(QString msg);
    void slot_removeOption_succeed();
    void slot_removeOption_failed(QString msg);
    void slot_syncOptionWhenLogged();
    void slot_syncOptional_succeed(QStringList optionList);
    void slot_syncOptional_failed(QString msg);

private:
    void layOut();
    void applyStyle();
    void orderTabs();
    void createConnections();
    bool choose(QPushButton *button);
    void removeTypeButtons();
    void makeTypeButtons(const QList<QPair<QString, int>> &types);
    void dropRows();
    void keepCodesClear();

    Collection_TableView *m_collectionTableView;
    QWidget *m_footerWidget;
    QButtonGroup *m_buttonGroup;
    QPushButton *m_marketButton;
    QPushButton *m_optionButton;
    QHBoxLayout *m_typeButtonLayout;
    QMap<QAbstractButton *, int> m_typeButtons;
    QLabel *m_qtyCaption;
    QLabel *m_qtyValue;
    QLabel *m_amountCaption;
    QLabel *m_amountValue;
    QLabel *m_marketValueCaption;
    QLabel *m_marketValueValue;
    ZvGuideTabPage *m_guideTabPage;
};
