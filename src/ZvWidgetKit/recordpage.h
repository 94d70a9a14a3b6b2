#pragma once

#include <QString>
#include <QWidget>

class QDateEdit;
class QFrame;
class QTableView;

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
    // To be called at the end of a member's constructor: lets the table fill its container, in
    // which it was made, under the name by which a screen reader tells of it, and brings the filter
    // bar to life. The forms name the controls of their bars alike; not every bar has dates.
    void setUpPage(QFrame *bar, QTableView *table, const QString &name);

    bool eventFilter(QObject *watched, QEvent *event) override;

    // A date as requests have it, whatever digits the system writes.
    static QString dateText(const QDateEdit *edit);

private:
    void applyStyle(QFrame *bar);
    void createConnections(const QFrame *bar);
};
