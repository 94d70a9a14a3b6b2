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

template <typename Control>
Control *control(const QFrame *bar, const char *name)
{
    return bar->findChild<Control *>(QLatin1String(name));
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

void RecordPage::setUpPage(QFrame *bar, QTableView *table, const QString &name)
{
    for (QDateEdit *edit : bar->findChildren<QDateEdit *>()) {
        // The system may write digits of its own, which stand nowhere else in the client.
        edit->setLocale(QLocale::c());
        edit->setDate(QDate::currentDate());
    }
    auto *row = new QHBoxLayout(table->parentWidget());
    setGaps(row, 0);
    row->addWidget(table);
    table->setAccessibleName(name);
    applyStyle(bar);
    createConnections(bar);
}

QString RecordPage::dateText(const QDateEdit *edit)
{
    return QLocale::c().toString(edit->date(), QStringLiteral("yyyy/MM/dd"));
}

void RecordPage::applyStyle(QFrame *bar)
{
    setGaps(layout(), 0);
    setGaps(bar->layout(), 3);
    bar->setStyleSheet(
        QStringLiteral("QFrame#%1{background-color:rgb(16,17,20);}").arg(bar->objectName()));
    for (QLabel *label : bar->findChildren<QLabel *>())
        label->setStyleSheet(QStringLiteral("QLabel{color:rgb(255,255,255)}"));
    control<QPushButton>(bar, "pushButton_select")
        ->setStyleSheet(ZvServerConfig::getZvServerConfigInstance()->getStyleOf_DealCheckButton());
    for (QDateEdit *edit : bar->findChildren<QDateEdit *>())
        edit->installEventFilter(this);
    for (QToolButton *button : bar->findChildren<QToolButton *>())
        button->setVisible(false);
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

void RecordPage::createConnections(const QFrame *bar)
{
    connect(control<QPushButton>(bar, "pushButton_select"), &QPushButton::clicked, this,
            &RecordPage::slot_selectButton_clicked);
    connect(control<QToolButton>(bar, "toolButton_pageUp"), &QToolButton::clicked, this,
            &RecordPage::slot_pageUpButton_clicked);
    connect(control<QToolButton>(bar, "toolButton_pageDown"), &QToolButton::clicked, this,
            &RecordPage::slot_pageDownButton_clicked);
    auto *start = control<QDateEdit>(bar, "dateEdit_startDate");
    if (!start)
        return;
    connect(start, &QDateEdit::dateChanged, control<QDateEdit>(bar, "dateEdit_stopDate"),
            &QDateEdit::setMinimumDate);
    // The connection is younger than the date, so the stop date is told of it once.
    emit start->dateChanged(start->date());
}
