#pragma once

#include <QObject>

class QKeyEvent;
class QStackedWidget;
class QTableView;
class QWheelEvent;
class QWidget;

// What keys and wheel mean in the window: F5, F6, Escape, Page Up, Page Down, digits and letters,
// and the wheel over the page of the chart go to the signal pool.
//
// A field in which one types keeps the keys of typing, the market table those by which it moves,
// and a list beside the pages those by which it scrolls. Nothing is taken from another window,
// while a dialog or a menu is up, or while the keyboard sprite is open.
class MarketKeys : public QObject
{
    Q_OBJECT

public:
    // `pages` holds the market table, the page of the chart and the page of deals, in this order.
    // Ends with the window.
    MarketKeys(QWidget *window, QStackedWidget *pages, const QWidget *sprite);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool isTaken(const QObject *watched, QEvent *event);
    bool isOurs(const QObject *watched) const;
    bool takePress(const QKeyEvent &event);
    void takeRelease(const QKeyEvent &event);
    bool takeWheel(const QWheelEvent &event);
    bool isTyping() const;
    bool isScrolling() const;

    QWidget *m_window;
    QStackedWidget *m_pages;
    QTableView *m_table; // the market table
    const QWidget *m_sprite;
    int m_turned = 0; // by the wheel, less than a notch, in eighths of a degree
};
