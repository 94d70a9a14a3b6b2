#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QWidget>

class QPushButton;
class QTimer;
class QVBoxLayout;
class ZvGuideTabItem;

// The strip at the edge of the market table with one button for each trading server, and a switch
// that shows or hides them. The table lies below it, and takes the mouse wherever the strip shows
// nothing. A click moves the whole client to the other server; all buttons are
// blocked for a moment then, so that no second change begins while the first is under way. Beside
// a table that is lower than the buttons the wheel brings the last ones up.
class ZvGuideTabPage : public QWidget
{
    Q_OBJECT

public:
    explicit ZvGuideTabPage(QWidget *parent = nullptr);
    ~ZvGuideTabPage() override;

    // Makes the buttons anew; the pairs hold the name of a server, then its URL prefix. The first
    // one is taken for the one in use, whatever was in use before. The kit is told nothing.
    void setServerList(QList<QPair<QString, QString>> list);

    // Lets the Tab key come here from a widget, before it goes on to what followed that. A new list
    // of servers stands last in the window until then.
    void followInTabOrder(QWidget *widget);

    // The prefix of the server in use; empty until there was a list.
    QString getCurrentServer() const;

signals:
    // The client has moved to another server.
    void signal_updateCollectionTypes(QString server);

public slots:
    void slot_kaiguan_clicked(bool checked);
    void slot_ServerType_clicked(QString serverPrefix);
    void slot_disable_timeout();

protected:
    bool event(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    void applyStyle();
    void createConnections();
    void removeItems();

    QPushButton *m_kaiguanButton;
    QWidget *m_itemsWidget;
    QVBoxLayout *m_itemsLayout;
    QList<ZvGuideTabItem *> m_items;
    QString m_currentServer;
    QTimer *m_disableTimer;
    int m_disableDuration;
};
