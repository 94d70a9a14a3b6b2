#pragma once

#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>

namespace endtoend {

// The form in which pieces are taken out, as a user fills it in. Its parts are found by the names
// of their objects.
class DeliveryForm
{
public:
    // Runs `open`, which is to open the form and returns when that has ended, and `use` while the
    // form is on the screen; closes it where `use` has left it open. False where none opens.
    static bool useIn(const std::function<void()> &open,
                      const std::function<void(const DeliveryForm &)> &use);

    bool isOpen() const { return m_dialog && m_dialog->isVisible(); }

    // What a label, a line of text or the amount shows; "" where it is not there.
    QString says(const char *name) const;

    void typePieces(int pieces) const;
    void type(const QString &person, const QString &phone, const QString &address) const;

    // Presses "确定" and the cross.
    void send() const;
    void close() const;

private:
    explicit DeliveryForm(QWidget *dialog) : m_dialog(dialog) { }

    void typeText(const char *name, const QString &text) const;
    void click(const char *name) const;

    QPointer<QWidget> m_dialog;
};

} // namespace endtoend
