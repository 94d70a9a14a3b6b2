#pragma once

#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/status_message_scrollarea.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"

#include <QLabel>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>

#include <memory>

namespace zvtest {

// A window that is nothing but its title bar and its status bar, made in the order in which a host
// makes them. It notes the mouse events that the bars leave to it.
class ChromeBench : public QWidget
{
public:
    explicit ChromeBench(int platform = 1, int width = 1366);
    ~ChromeBench() override;

    // By the place in the title bar: the label, then the four buttons.
    QLabel *title() const;
    QPushButton *titleButton(int place) const;
    QPushButton *titleLogin() const { return titleButton(0); }

    // By the place in the status bar.
    QPushButton *statusLogin() const { return at<QPushButton>(1); }
    QLabel *account() const { return at<QLabel>(2); }
    QLabel *settlement() const { return at<QLabel>(4); }
    QLabel *market() const { return at<QLabel>(8); }
    Status_Message_ScrollArea *messages() const { return at<Status_Message_ScrollArea>(11); }
    QPushButton *hideButton() const { return at<QPushButton>(14); }
    QPushButton *lockButton() const { return at<QPushButton>(15); }
    QWidget *loggedLine() const { return at<QWidget>(17); }
    QLabel *clock() const { return at<QLabel>(19); }

    // The ticker moves by hand from here on.
    void stopTicker();
    void step(int count = 1);

    // The pool's slots, as the rest of the application calls them.
    static void signIn();
    static void signInElsewhere();
    void adjustSize();

    void moveMouseTo(QPushButton *button);
    void takeMouseAway();

    std::unique_ptr<TitleBar> titleBar;
    std::unique_ptr<StatusBar> statusBar;
    QStringList leftToTheWindow;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    template <typename Widget>
    Widget *at(int place) const
    {
        auto *found = qobject_cast<Widget *>(statusBar->layout()->itemAt(place)->widget());
        if (!found)
            qFatal("the status bar has something else at %d", place);
        return found;
    }

    KitBench m_kit;
};

} // namespace zvtest
