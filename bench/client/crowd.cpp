#include "crowd.h"

#include <QGridLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace {

constexpr int pages = 12;
constexpr int labelsOfPage = 26;
constexpr int buttonsOfPage = 8;
constexpr int allTables = 23;
constexpr int columns = 12;
constexpr int across = 6; // of a page's grid

} // namespace

Crowd::Crowd(bool isStyled) : m_isStyled(isStyled), m_columns(0, columns)
{
    for (int i = 0; i < columns; ++i)
        m_columns.setHeaderData(i, Qt::Horizontal, QStringLiteral("列名%1").arg(i));
    auto *stack = new QStackedWidget(this);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(stack);
    for (int i = 0; i < pages; ++i) {
        auto *page = new QWidget(stack);
        fill(page, (i + 1) * allTables / pages - i * allTables / pages);
        stack->addWidget(page);
    }
}

void Crowd::fill(QWidget *page, int tables)
{
    auto *grid = new QGridLayout(page);
    auto place = [grid, next = 0](QWidget *part) mutable {
        grid->addWidget(part, next / across, next % across);
        ++next;
    };
    for (int i = 0; i < labelsOfPage; ++i) {
        auto *label = new QLabel(QStringLiteral("文字%1").arg(i), page);
        style(label, QStringLiteral("QLabel{color:rgb(255,255,255)}"));
        place(label);
    }
    for (int i = 0; i < buttonsOfPage; ++i) {
        auto *button = new QPushButton(QStringLiteral("按钮%1").arg(i), page);
        style(button,
              QStringLiteral("QPushButton{background-color:rgb(22,25,34);color:rgb(255,255,255);"
                             "border:none;}QPushButton:hover{background-color:rgb(40,40,40);}"));
        place(button);
    }
    for (int i = 0; i < tables; ++i) {
        auto *table = new QTableView(page);
        table->verticalHeader()->hide();
        style(table, QStringLiteral("QTableView{background-color:#16181c;border:none;}"));
        style(table->horizontalHeader(),
              QStringLiteral("QHeaderView::section{height:30px;background-color:#101114;"
                             "border:none;}"));
        table->setModel(&m_columns);
        grid->addWidget(table, grid->rowCount(), 0, 1, across);
    }
}

void Crowd::style(QWidget *part, const QString &sheet) const
{
    if (m_isStyled)
        part->setStyleSheet(sheet);
}
