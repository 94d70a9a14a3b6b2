#pragma once

#include <QWidget>

class ConnectionStrip;
class EmbeddedExchange;
class Halves;
class KeyboardSprite;
class Market_Widget;
class QStackedWidget;
class QTableView;
class QUrl;
class SignIn;
class StatusBar;
class TitleBar;
class Transaction_Widget;
class WindowFrame;

// The one window, from top to bottom: title bar, market half, trading half, the strip that tells of
// the connection, status bar. It has no frame but its own.
class MainWindow : public QWidget
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);

    // Takes the market from the exchange at an address from now on, also before there is a window
    // to show it.
    static void useExchange(const QUrl &address);

    // Takes the market from the embedded service, wherever it answers, and tells in the strip why
    // it does not. The service has to be started by the caller and must not die before the window.
    void followExchange(EmbeddedExchange *exchange);

    ConnectionStrip *connectionStrip() const { return m_strip; }
    WindowFrame *frame() const { return m_frame; }
    Halves *halves() const { return m_halves; }

    // True once the market has been on the screen.
    bool hasMarket() const { return m_hasMarket; }

signals:
    // The first rows have come.
    void marketShown();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    void layOut();
    void joinBars();
    void joinMarket();
    void goBack();
    void noteRows();
    void hideTransactions(bool isHidden);
    void takeKeysToMarket();

    // In the order in which they hear of what passes through the pool.
    TitleBar *m_titleBar;
    StatusBar *m_statusBar;
    Market_Widget *m_market;
    Transaction_Widget *m_transactions;

    QStackedWidget *m_pages; // of the market half: its table, the chart, the deals
    QTableView *m_table; // the market table
    Halves *m_halves;
    ConnectionStrip *m_strip;
    SignIn *m_signIn;
    WindowFrame *m_frame;
    KeyboardSprite *m_sprite;
    bool m_hasMarket = false;
};
