#include "ZvWidgetKit/latetableview.h"

#include "ZvNetworkKit/serverpaths.h"

LateTableView::LateTableView(QWidget *parent) : QTableView(parent), m_hasSize(false) { }

LateTableView::~LateTableView() = default;

void LateTableView::updateGeometries()
{
    if (m_hasSize || (model() && model()->rowCount() > 0))
        QTableView::updateGeometries();
}

void LateTableView::resizeEvent(QResizeEvent *event)
{
    m_hasSize = true;
    QTableView::resizeEvent(event);
}
