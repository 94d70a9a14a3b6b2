#include "ZvWidgetKit/recordtablestyle.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/scrollbarstyle.h"

#include <QAbstractItemDelegate>
#include <QHeaderView>
#include <QTableView>

namespace {

void setUpSections(QTableView *view, int rowHeight)
{
    view->setShowGrid(false);
    view->setSelectionBehavior(QAbstractItemView::SelectRows);
    view->setSelectionMode(QAbstractItemView::NoSelection);
    // From cell to cell the Tab key would never leave the table again.
    view->setTabKeyNavigation(false);

    QHeaderView *rows = view->verticalHeader();
    rows->hide();
    // Left alone, the style sets a least height that depends on the font, and low rows would be
    // higher than they are asked to be.
    rows->setMinimumSectionSize(1);
    rows->setDefaultSectionSize(rowHeight);

    QHeaderView *header = view->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    header->setStretchLastSection(true);
    header->setHighlightSections(false);
}

} // namespace

void setUpRecordTable(QTableView *view, QAbstractItemModel *model, QAbstractItemDelegate *delegate,
                      int rowHeight)
{
    giveItemDelegate(view, delegate);
    view->setModel(model);
    applyRecordTableStyle(view, rowHeight);
}

void applyRecordTableStyle(QTableView *view, int rowHeight)
{
    setUpSections(view, rowHeight);
    view->setStyleSheet(recordTableSheet());
    view->horizontalHeader()->setStyleSheet(recordHeaderSheet());
    applyScrollBarStyle(view);
}

void applyTicketTableStyle(QTableView *view, int rowHeight)
{
    setUpSections(view, rowHeight);
    view->setStyleSheet(recordTableSheet() + recordHeaderSheet());
    applyScrollBarStyle(view);
}

QString recordTableSheet()
{
    return QStringLiteral("QTableView {background-color: #16181c; border: none;"
                          "selection-background-color: transparent;}");
}

QString recordHeaderSheet()
{
    return QStringLiteral("QHeaderView::section {height:30px;background-color: #101114;"
                          "border-top: none;border-bottom:none;border-right:1px solid #161618;"
                          "border-left:none;}"
                          "QHeaderView{height: 24px;background-color: #101114;"
                          "border-top: 1px solid #161618;border-bottom: 1px solid #161618;}");
}

QString deliveryHeaderSheet()
{
    return QStringLiteral("QHeaderView::section {height:30px;background-color: #16181c;"
                          "border-top: none;border-bottom:none;border-right:1px solid #161618;;"
                          "border-left:none;}"
                          "QHeaderView{height: 24px;background-color: #16181c;"
                          "border-top: 1px solid #161618;border-bottom: 1px solid #161618;}");
}

void setColumnWidths(QTableView *view, std::initializer_list<ColumnWidth> widths)
{
    for (const ColumnWidth &width : widths)
        view->setColumnWidth(width.column, width.pixels);
}

void hideColumns(QTableView *view, std::initializer_list<int> columns)
{
    for (const int column : columns)
        view->setColumnHidden(column, true);
}

void giveItemDelegate(QTableView *view, QAbstractItemDelegate *delegate)
{
    view->setItemDelegate(delegate);
    QObject::connect(view, &QObject::destroyed, delegate, [delegate] { delete delegate; });
}
