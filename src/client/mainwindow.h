#pragma once

#include <QWidget>

class ConnectionStrip;
class EmbeddedExchange;
class QSplitter;
class QTableView;
class QUrl;

// The one window: title bar, market half over trading half, status bar, and the strip that tells
// of the connection. The bars and the trading half find their places left free here.
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
    void createShortcuts();
    void noteRows();

    QSplitter *m_halves;
    QTableView *m_table; // of the market half
    ConnectionStrip *m_strip;
    bool m_hasMarket = false;
};
