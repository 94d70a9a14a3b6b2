#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

#include <memory>

class EmbeddedExchange;
class ZvSplashScreen;

// The first screens of the program: the choice of the platform, and then the platform's splash,
// which says what is being waited for until the market is there. It waits for a while only, and it
// covers no bad news: the window tells those.
class StartScreen : public QObject
{
    Q_OBJECT

public:
    // Asks for the platform, before any widget that reads its styles is made. False where the user
    // leaves instead.
    static bool choosePlatform();

    // Waits for the rows from now on, without a splash until it is shown.
    explicit StartScreen(QObject *parent = nullptr);
    ~StartScreen() override;

    // Shows the splash of the platform that was chosen, and waits only so long.
    void show();

    // Says that the embedded service is being started, until it is there.
    void followExchange(EmbeddedExchange *exchange);

    // Goes as soon as the window, which is shown by now, is on the screen.
    void leaveTo(QWidget *window);

    // The words in sight.
    QString words() const { return m_words; }

signals:
    // The window is wanted now. Once.
    void over();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void wait(const QString &words, int milliseconds);
    void waitForConnection();
    void waitForRows();
    void takeRows();
    void end();

    std::unique_ptr<ZvSplashScreen> m_splash; // null until it is shown
    QTimer m_patience;
    QString m_words;
    bool m_isOver = false;
};
