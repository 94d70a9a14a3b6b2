#pragma once

#include <QString>
#include <QWidget>

class QLabel;
class QLineEdit;
class QPushButton;

// The page that hides the trading panel until the user has signed in once more. It knows no
// password: what is typed goes to the server, and who shows the page hears the answer.
class Transaction_Lock : public QWidget
{
    Q_OBJECT

public:
    explicit Transaction_Lock(QWidget *parent = nullptr);
    ~Transaction_Lock() override;

    bool eventFilter(QObject *watched, QEvent *event) override;

    // The first hint again, and nothing typed.
    void resetLockPage();

    // Tells why the server refused, and takes away what was typed.
    void showUnlockFailed(QString msg);

public slots:
    void slot_unlockButton_clicked();

protected:
    void showEvent(QShowEvent *event) override;

private:
    void layOut();
    void showHint(const QString &text);
    void applyStyle();
    void createConnections();

    QLineEdit *m_passwordEdit;
    QPushButton *m_unlockButton;
    QLabel *m_hintLabel;
};
