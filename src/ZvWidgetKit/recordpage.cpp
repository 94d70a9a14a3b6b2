#include "ZvWidgetKit/recordpage.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QDate>
#include <QDateEdit>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>

namespace {

void setGaps(QLayout *layout, int gap)
{
    layout->setContentsMargins(gap, gap, gap, gap);
    layout->setSpacing(gap);
}

} // namespace

RecordPage::RecordPage(QWidget *parent) : QWidget(parent) { }

RecordPage::~RecordPage() = default;

void RecordPage::setUpPage(const FilterBar &bar, QWidget *container, QTableView *table)
{
    for (QDateEdit *edit : {bar.startDate, bar.stopDate}) {
        if (edit)
            edit->setDate(QDate::currentDate());
    }
    auto *row = new QHBoxLayout(container);
    setGaps(row, 0);
    row->addWidget(table);
    applyStyle(bar);
    createConnections(bar);
}

QString RecordPage::dateText(const QDateEdit *edit)
{
    return edit->date().toString(QStringLiteral("yyyy/MM/dd"));
}

void RecordPage::applyStyle(const FilterBar &bar)
{
    setGaps(layout(), 0);
    setGaps(bar.panel->layout(), 3);
    bar.panel->setStyleSheet(
        QStringLiteral("QFrame#%1{background-color:rgb(16,17,20);}").arg(bar.panel->objectName()));
    for (QLabel *label : bar.labels)
        label->setStyleSheet(QStringLiteral("QLabel{color:rgb(255,255,255)}"));
    bar.select->setStyleSheet(
        ZvServerConfig::getZvServerConfigInstance()->getStyleOf_DealCheckButton());
    bar.pageUp->setVisible(false);
    bar.pageDown->setVisible(false);
}

void RecordPage::createConnections(const FilterBar &bar)
{
    connect(bar.select, &QPushButton::clicked, this, &RecordPage::slot_selectButton_clicked);
    connect(bar.pageUp, &QToolButton::clicked, this, &RecordPage::slot_pageUpButton_clicked);
    connect(bar.pageDown, &QToolButton::clicked, this, &RecordPage::slot_pageDownButton_clicked);
    if (!bar.startDate)
        return;
    connect(bar.startDate, &QDateEdit::dateChanged, bar.stopDate, &QDateEdit::setMinimumDate);
    // The connection is younger than the date, so the stop date is told of it once.
    emit bar.startDate->dateChanged(bar.startDate->date());
}
