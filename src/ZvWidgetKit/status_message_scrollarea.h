#pragma once

#include <QList>
#include <QScrollArea>

#include <memory>

class QLabel;
class QTimer;

namespace Ui {
class Status_Message_ScrollArea;
}

// The messages of the server as links that run from right to left. The area paints nothing itself:
// it holds a row of labels between two blank stretches, and moves its scroll bar, which is out of
// sight.
class Status_Message_ScrollArea : public QScrollArea
{
    Q_OBJECT

public:
    explicit Status_Message_ScrollArea(QWidget *parent = nullptr);
    ~Status_Message_ScrollArea() override;

public slots:
    // Shows the cache's messages from their beginning.
    void slot_updateMassage();

    // Makes the blank stretches as wide as the area, so that the messages enter at its right edge
    // and leave at its left one. Where the run stands is kept.
    void slot_adjustSize();

    // One step to the left; at the end it begins again.
    void slot_stepBarByStep();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void applyStyle();
    void createConnections();
    void restartScrolling();

    std::unique_ptr<Ui::Status_Message_ScrollArea> ui;
    QTimer *m_stepTimer;
    int m_scrollOffset; // in pixels: what the scroll bar was given last
    QList<QLabel *> m_messageLabels;
};
