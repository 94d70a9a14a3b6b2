#pragma once

#include <QPushButton>
#include <QString>
#include <QTimer>

// The wait after a verification code was sent: for 60 seconds the button that asks for another one
// is disabled and counts them down. The dialog keeps button, timer and counter; this is what
// happens to the three of them.
struct CodeCountdown {
    static constexpr int Seconds = 60;
    static constexpr int IntervalMilliseconds = 1000;

    QPushButton *button;
    QTimer *timer;
    int &secondsLeft;

    // Begins the wait, or begins it anew. The text of the button stays.
    void start() const
    {
        button->setEnabled(false);
        secondsLeft = Seconds;
        timer->start(IntervalMilliseconds);
    }

    void showSeconds() const { button->setText(QStringLiteral("重新发送(%1)").arg(secondsLeft)); }

    // Takes a second away. True when it was the last one: the button is free again.
    bool tick() const
    {
        --secondsLeft;
        if (secondsLeft > 0) {
            showSeconds();
            return false;
        }
        timer->stop();
        button->setEnabled(true);
        button->setText(QStringLiteral("获取验证码"));
        return true;
    }
};
