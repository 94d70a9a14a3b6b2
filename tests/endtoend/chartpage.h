#pragma once

#include <QString>
#include <QStringList>

class QStackedWidget;
class QTableView;
class QWidget;
class ZvChartFeed;

// The market half of the window, as a trader sees it: which page is in front, and whether all that
// stands on it belongs together.
namespace endtoend {

// A collection of the small catalogue.
struct Listed {
    QString id;
    QString code;
    QString name;
    double previousClose = 0; // yuan

    bool isThere() const { return !code.isEmpty(); }
};

// By its code; one that is not there where no market has it. No two of the markets share a code.
Listed listed(const QString &code);

enum Page { TablePage, ChartPage, DealsPage };

QStackedWidget *pagesOf(const QWidget &window);
Page pageInFront(const QWidget &window);

// The text of a label, by its object's name.
QString textOf(const QWidget &window, const QString &label);

// The code at the head of the panel beside the chart.
QString shownCode(const QWidget &window);

ZvChartFeed *feedOf(const QWidget &window);

// The list of latest deals beside the chart, and the lists of the page of deals.
QTableView *latestDeals(const QWidget &window);
QStringList pricesOf(const QTableView *deals);
QStringList pricesOfPage(const QWidget &window);

// What does not belong together on the page in front, a sentence each: figures that cannot be those
// of the collection whose name stands beside them.
QStringList faultsOf(const QWidget &window);

// Turns the wheel over the middle of a widget.
void turnWheel(QWidget *widget, int delta);

} // namespace endtoend
