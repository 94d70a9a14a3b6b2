#pragma once

#include <QObject>

class QHelpEvent;
class QTableView;

// Keeps the names of the market table readable. On a small screen the table holds them narrow;
// where the window has room to spare, they get it, and give it back when the window shrinks. Once
// the user has drawn the column to a width of their own, it is left alone. A name that is cut all
// the same is told in full where the mouse rests on it.
class NameColumn : public QObject
{
    Q_OBJECT

public:
    // Takes the width that the column has now for the least one. Ends with the table.
    explicit NameColumn(QTableView *table);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void measure();
    void fit();
    bool tellName(const QHelpEvent &event) const;

    QTableView *m_table;
    int m_leastWidth;
    int m_wantedWidth = 0; // of the widest name; 0 while there is none
    bool m_isFitting = false;
    bool m_isUsers = false;
};
