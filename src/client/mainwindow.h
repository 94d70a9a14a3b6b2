#pragma once

#include <QWidget>

class Collection_TableView;
class ConnectionStrip;
class QSplitter;

// The one window: title bar, market half over trading half, status bar, and the strip that tells
// of the connection. The bars and the trading half find their places left free here.
class MainWindow : public QWidget
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);

    ConnectionStrip *connectionStrip() const { return m_strip; }

signals:
    void closed();

protected:
    void resizeEvent(QResizeEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void feedTable();

    QSplitter *m_halves;
    Collection_TableView *m_table;
    ConnectionStrip *m_strip;
};
