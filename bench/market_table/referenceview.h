#pragma once

#include <QTableView>

#include <memory>

class QAbstractItemDelegate;

// A stock view without style sheet over the rows of another view, of the same colours, font, column
// widths and row heights, and as large as the other one's viewport.
class ReferenceView : public QTableView
{
    Q_OBJECT

public:
    enum Cells {
        Plain, // Qt's own delegate
        Triangles // one that draws below and beside what Qt's own draws
    };

    ReferenceView(QTableView &other, Cells cells);
    ~ReferenceView() override;

private:
    std::unique_ptr<QAbstractItemDelegate> m_delegate;
};
