#pragma once

#include <QWidget>

#include <optional>

class AccountButton;
class QLabel;
class QTimer;

// The slim strip above the status bar that says in words whether the exchange is there, how
// old the figures on the screen are, and of which orders it is not known yet what became of them.
// Quotes that stop with nothing said cost traders money, and so does an order that is placed twice.
// At its end stands the account that is signed in.
class ConnectionStrip : public QWidget
{
    Q_OBJECT

public:
    explicit ConnectionStrip(QWidget *parent = nullptr);

    // What the embedded service last said of itself; shown while there is no connection. "" for
    // none.
    void setServiceNotice(const QString &notice);

    // Reads the state anew; runs by itself at each change and, while away, once a second.
    void refresh();

    // The sentence in sight.
    QString text() const;

    AccountButton *accountButton() const { return m_account; }

private:
    void showMark(const QString &picture);
    void showColours(bool isCalm);

    std::optional<bool> m_shownState; // calm or not, as the colours tell it
    QString m_shownMark; // its picture
    QLabel *m_mark;
    QLabel *m_words;
    AccountButton *m_account;
    QTimer *m_timer;
    QString m_serviceNotice;
};
