#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTimer>
#include <QUrl>

#include <functional>

class QAbstractButton;
class QWidget;

namespace endtoend {

class StateFolder;

// Reads the framed message boxes that open while it lives, and confirms each of them.
class BoxReader
{
public:
    // `before` is called while a box is open, before it is confirmed.
    explicit BoxReader(std::function<void()> before = {});

    // The texts as the boxes were given them, in order.
    QStringList texts() const { return m_texts; }

private:
    void look();

    std::function<void()> m_before;
    bool m_isLooking = false;
    QTimer m_timer;
    QStringList m_texts;
};

// The last code of `digits` digits that went to a phone, by the command that prints the outbox; ""
// without one.
QString lastCode(const StateFolder &state, const QString &phone, int digits);

// A code of the same length that is another one.
QString otherCode(const QString &code);

// Signs in as another client would, and gives the answer's envelope; empty where none comes.
QJsonObject signIn(const QUrl &exchange, const QString &server, const QString &phone,
                   const QString &password);

// Opens an account as another client would, with a code from the outbox. False where it is refused.
bool registerAccount(const StateFolder &state, const QUrl &exchange, const QString &phone,
                     const QString &password,
                     const QString &server = QStringLiteral("/lc/youbika/"));

// Clicks the login button of the window's title bar.
void askForSignIn(const QWidget &window);

// Signs in by the window's own dialog. False where that does not come to its end in time.
bool signInAt(const QWidget &window, const QString &phone, const QString &password);

// The button of a server on the guide strip; null where it does not stand there.
QAbstractButton *serverButton(const QWidget &window, const QString &prefix);

} // namespace endtoend
