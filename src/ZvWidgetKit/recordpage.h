#pragma once

#include <QList>
#include <QString>
#include <QWidget>

class QDateEdit;
class QFrame;
class QLabel;
class QPushButton;
class QTableView;
class QToolButton;

// A page of records: a filter bar above a table that shows one page of a list on the exchange. The
// page reads the filter and tells the table to query; nothing is asked for when it is made or
// shown.
//
// It has no meta-object of its own, so that each member stands directly below QWidget there; a
// member declares the three slots again, as its own.
class RecordPage : public QWidget
{
public:
    explicit RecordPage(QWidget *parent);
    ~RecordPage() override;

    // Starts a query from the filter, at the first page.
    virtual void slot_selectButton_clicked() = 0;

    // Turn the page of the table. Their buttons are hidden, the wheel turns the pages.
    virtual void slot_pageUpButton_clicked() = 0;
    virtual void slot_pageDownButton_clicked() = 0;

protected:
    // What the form of a member has; not every member has dates.
    struct FilterBar {
        QFrame *panel;
        QPushButton *select;
        QToolButton *pageUp;
        QToolButton *pageDown;
        QList<QLabel *> labels;
        QDateEdit *startDate = nullptr;
        QDateEdit *stopDate = nullptr;
    };

    // To be called at the end of a member's constructor: puts the table into its container and
    // brings the filter bar to life.
    void setUpPage(const FilterBar &bar, QWidget *container, QTableView *table);

    bool eventFilter(QObject *watched, QEvent *event) override;

    // A date as requests have it.
    static QString dateText(const QDateEdit *edit);

private:
    void applyStyle(const FilterBar &bar);
    void createConnections(const FilterBar &bar);
};
