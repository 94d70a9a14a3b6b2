#pragma once

#include <QString>
#include <QStringList>

class QTableView;
class QWidget;

// The page of the market table in the window, as a user takes it.
namespace endtoend {

// The market table. Other tables stand on the other pages.
QTableView *marketTable(const QWidget &window);

// Clicks a button of the footer by its text; waits for it to be there. False where it does not
// come.
bool choose(const QWidget &window, const QString &text);

// Waits until the types of the market are there, of which the first is chosen, and then chooses the
// whole market. False where it does not come.
bool showWholeMarket(const QWidget &window);

// The texts of the footer's buttons in the order of F6, and the checked one.
QStringList choices(const QWidget &window);
QString chosen(const QWidget &window);

// The texts of the table's rows in a column.
QStringList textsOfColumn(const QWidget &window, int column);

} // namespace endtoend
