#pragma once

#include <QString>

#include <initializer_list>

class QAbstractItemDelegate;
class QAbstractItemModel;
class QTableView;

// The look of the tables in the trading half, whatever they list.

constexpr int RecordRowHeight = 22; // pixels, in the tables that show a page of records

struct ColumnWidth {
    int column;
    int pixels;
};

// Sets a table up: no grid, no vertical header, rows of `rowHeight` pixels that take no selection,
// a header whose sections the user may drag, the sheets below and those of the scroll bars.
void applyRecordTableStyle(QTableView *view, int rowHeight);

// The same, but the sheets of table and header are one, as the tables under the ticket have it.
void applyTicketTableStyle(QTableView *view, int rowHeight);

// The sheets: of the table itself and of its header.
QString recordTableSheet();
QString recordHeaderSheet();

// A header on the ground of the table instead of a darker one, as the tables about deliveries have.
QString deliveryHeaderSheet();

// Both for a table that has its model.
void setColumnWidths(QTableView *view, std::initializer_list<ColumnWidth> widths);
void hideColumns(QTableView *view, std::initializer_list<int> columns);

// Sets a table up with the model it holds and a delegate of its own.
void setUpRecordTable(QTableView *view, QAbstractItemModel *model, QAbstractItemDelegate *delegate,
                      int rowHeight);

// Gives a view a delegate that no other view has, and that ends with it; a view by itself does not
// own its delegate. To be called once for a view.
void giveItemDelegate(QTableView *view, QAbstractItemDelegate *delegate);
