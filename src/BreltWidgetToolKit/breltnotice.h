#pragma once

#include "BreltWidgetToolKit/breltwrappinglabel.h"

#include <QPointer>
#include <QStringList>

#include <vector>

class QTimer;
class QVariantAnimation;

// One passing notice: a small window above all others that takes neither the focus nor the mouse,
// stands for its time, fades and hides. Not part of the exported interface.
class BreltNotice : public BreltWrappingLabel
{
    Q_OBJECT

public:
    explicit BreltNotice(const QString &text);
    ~BreltNotice() override;

    // Starts the notice's time, in milliseconds; it is shown for it and then fades.
    void begin(int duration);

    // Sizes the notice for its text, not wider than `largestWidth` pixels.
    void fitInto(int largestWidth);

signals:
    void passed();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QTimer *m_time;
    QVariantAnimation *m_fading;
    qreal m_opacity = 1;
};

// The notices on the screen, one below the other over the window in use, the newest at the bottom.
class BreltNoticeStack : public QObject
{
    Q_OBJECT

public:
    BreltNoticeStack();
    ~BreltNoticeStack() override;

    void add(const QString &text);
    void setDuration(int milliseconds);
    QStringList texts() const;

    // Deletes every notice at once, those that are only waiting for their deletion too.
    void clear();

private:
    void pass(BreltNotice *notice);
    void restack();
    std::vector<BreltNotice *> standing() const;

    std::vector<QPointer<BreltNotice>> m_notices; // oldest first
    int m_duration = 0; // 0: as long as the text takes to read
};
