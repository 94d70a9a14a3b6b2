#pragma once

#include <QStandardItemModel>
#include <QWidget>

// A bare window with about as many widgets as the client has, of the same kinds: pages of labels,
// buttons and tables, one of them in front. It has no row, asks nobody and styles nothing by
// itself, so what it takes to paint it is what Qt takes for as many parts.
class Crowd : public QWidget
{
public:
    // isStyled: with one short style sheet on each label, button, table and header.
    explicit Crowd(bool isStyled);

private:
    void fill(QWidget *page, int tables);
    void style(QWidget *part, const QString &sheet) const;

    bool m_isStyled;
    QStandardItemModel m_columns;
};
