#pragma once

#include "client/collectionsearch.h"

#include <QFrame>
#include <QPointer>
#include <QString>

class QInputMethodEvent;
class QKeyEvent;
class QLabel;
class QLineEdit;
class QTreeWidget;

// The keyboard sprite: a small field in the corner of the window that opens with the first digit or
// letter a trader types, and finds a collection by it. It shows what answers while one types, the
// best first. The arrow keys and the mouse choose, Return takes, Escape closes.
//
// It closes by itself when there is nothing left in it, when the keys go elsewhere, at a click
// beside it, and when the market becomes that of another server.
class KeyboardSprite : public QFrame
{
    Q_OBJECT

public:
    // Stands in the lower right corner of `area`, which lies in the window itself.
    explicit KeyboardSprite(QWidget *area);
    ~KeyboardSprite() override;

    // Whether a key, as Qt names it, is a digit or a letter.
    static bool begins(int key);

    // Opens with the character of such a key, or adds it where the sprite is open. Other keys do
    // nothing.
    void begin(int key);

    // Closes, and gives the keys back to whoever had them.
    void leave();

signals:
    // The user has taken the collection of this code. The sprite has closed.
    void chosen(const QString &code);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void createLook();
    void place();
    bool filterEdit(QEvent *event);
    bool takeKey(QKeyEvent *event);
    void takeComposition(const QInputMethodEvent &event);
    void takeText();
    void takeBriefInfo();
    void search();
    void take();

    QWidget *m_area;
    QLineEdit *m_edit;
    QTreeWidget *m_list;
    QLabel *m_hint;
    CollectionSearch m_search; // of the market at which the sprite was opened
    QString m_server;
    QString m_composed; // what an input method has not finished yet
    QPointer<QWidget> m_before; // had the keys when the sprite was opened
};
