#pragma once

#include <QTableView>

// A table that works out where its headers and scroll bars are once it has a size or rows. Each
// sheet, font and column that it is given before would have it measure the words of its header
// anew, and a page that is not on view may not be told its size for long.
//
// It has no meta-object of its own, so that each member stands directly below QTableView there.
class LateTableView : public QTableView
{
public:
    explicit LateTableView(QWidget *parent);
    ~LateTableView() override;

protected:
    void updateGeometries() override;
    void resizeEvent(QResizeEvent *event) override;

private:
    bool m_hasSize;
};
