#include "ZvWidgetKit/recordpage.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QCalendarWidget>
#include <QDate>
#include <QDateEdit>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QPushButton>
#include <QTableView>
#include <QToolButton>

namespace {

void setGaps(QLayout *layout, int gap)
{
    layout->setContentsMargins(gap, gap, gap, gap);
    layout->setSpacing(gap);
}

// A calendar in the language of the client, whose months are turned by arrows in the colours of the
// style instead of the stock pictures.
void applyCalendarStyle(QCalendarWidget *calendar)
{
    calendar->setLocale(QLocale(QLocale::Chinese, QLocale::China));
    calendar->setFirstDayOfWeek(Qt::Monday);
    const auto setArrow = [calendar](const char *name, Qt::ArrowType arrow) {
        if (auto *button = calendar->findChild<QToolButton *>(QLatin1String(name)))
            button->setArrowType(arrow);
    };
    setArrow("qt_calendar_prevmonth", Qt::LeftArrow);
    setArrow("qt_calendar_nextmonth", Qt::RightArrow);
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
    for (QDateEdit *edit : {bar.startDate, bar.stopDate}) {
        if (edit)
            edit->installEventFilter(this);
    }
    bar.pageUp->setVisible(false);
    bar.pageDown->setVisible(false);
}

// A date edit makes its calendar when it is pressed for the first time, and not all of them will
// be.
bool RecordPage::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonPress) {
        if (const auto *edit = qobject_cast<QDateEdit *>(watched))
            applyCalendarStyle(edit->calendarWidget());
    }
    return QWidget::eventFilter(watched, event);
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
