#pragma once

#include <QWidget>

class ConnectionStrip;
class EmbeddedExchange;
class KeyboardSprite;
class Market_Widget;
class QSplitter;
class QStackedWidget;
class QTableView;
class QUrl;
class Transaction_Widget;

// The one window: title bar, market half over trading half, status bar, and the strip that tells
// of the connection. The bars find their places left free here.
class MainWindow : public QWidget
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);

    // Takes the market from the exchange at an address from now on.
    void useExchange(const QUrl &address);

    // Takes the market from the embedded service, wherever it answers, and tells in the strip why
    // it does not. The service has to be started by the caller and must not die before the window.
    void followExchange(EmbeddedExchange *exchange);

    ConnectionStrip *connectionStrip() const { return m_strip; }

    // True once the market has been on the screen.
    bool hasMarket() const { return m_hasMarket; }

signals:
    // The first rows have come.
    void marketShown();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void createConnections();
    void goBack();
    void noteRows();
    void hideTransactions(bool isHidden);
    void adjustHalves();

    QSplitter *m_halves;
    Market_Widget *m_market;
    QStackedWidget *m_pages; // of the market half: its table, the chart, the deals
    QTableView *m_table; // the market table
    Transaction_Widget *m_transactions;
    ConnectionStrip *m_strip;
    KeyboardSprite *m_sprite;
    bool m_hasMarket = false;
    bool m_isAdjusted = false; // the halves have had a size of the window
};
