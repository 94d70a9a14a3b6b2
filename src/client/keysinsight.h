#pragma once

#include <QObject>

class QStackedWidget;
class QWidget;

// Keeps the keys of a window out of parts that are not in sight. Qt moves them along where a part
// is hidden in sight; below a menu or a box, behind another page, or while another window is
// active, it does not, and would give them back to a table or a button that nobody sees.
class KeysInSight : public QObject
{
    Q_OBJECT

public:
    // Lives as long as `window` does, and looks after the pages that it has by now.
    explicit KeysInSight(QWidget *window);

signals:
    // Nobody in the window has them by now.
    void lost();

protected:
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void leaveTurned(const QStackedWidget *pages);
    void leave(const QWidget *hidden);

    QWidget *m_window;
};
