#pragma once

#include <QObject>
#include <QString>
#include <QTimer>

class Halves;
class QWidget;
class WindowFrame;

// Remembers from one start to the next where the window stood, how large it was, whether it filled
// its screen, and how high the user had drawn the trading half. A window whose screen is gone is
// fetched to one that is there.
class WindowPlace : public QObject
{
    Q_OBJECT

public:
    // `file` is an INI file, made when there is something to remember. Ends with the window.
    WindowPlace(QWidget *window, WindowFrame *frame, Halves *halves, const QString &file);

    // The file of the user who runs the program.
    static QString usualFile();

    // Shows the window where it stood; the first time it fills the screen.
    void show();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private slots:
    void rescue();

private:
    void watchScreens();
    void save();

    QWidget *m_window;
    WindowFrame *m_frame;
    Halves *m_halves;
    QString m_file;
    QTimer m_soon; // to save, once the user's hand has come to rest
    bool m_isTold = false; // that nothing can be saved
};
