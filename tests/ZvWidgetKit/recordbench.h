#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>

class QTableView;
class RecordPage;

namespace zvtest {

// One of the five record pages: how it is made, what it asks, how it is answered and how its
// columns stand.
struct RecordMember {
    QString name;
    std::function<std::unique_ptr<RecordPage>()> make;
    QString panel;
    QString container;
    bool hasDates;
    QStringList types; // of the combo box; empty without one

    // The line of the call that a query makes.
    std::function<QString(const QString &start, const QString &stop, int page, int type)> asks;

    // Answers with `count` records from a number on.
    std::function<void(int count, int first)> answer;

    // Answers with the longest record.
    std::function<void()> answerLongest;

    int numberColumn; // that shows the number of a record
    QMap<int, int> widths; // pixels
    QList<int> hidden;
};

const QList<RecordMember> &recordMembers();

// Adds a row for each member, its place among them in the column "place".
void addRecordMembers();

// The table of a page, and the numbers of the records that it shows, "3 4 5".
QTableView *tableOf(const RecordPage *page);
QString shownRecords(const RecordMember &member, const RecordPage *page);

// The lines with each time of day as "<time>".
QStringList withoutTimes(QStringList lines);

} // namespace zvtest
