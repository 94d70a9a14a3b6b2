#include "endtoend/deliveryform.h"

#include <QAbstractButton>
#include <QApplication>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QTimer>
#include <QtTest/QtTest>

namespace endtoend {

bool DeliveryForm::useIn(const std::function<void()> &open,
                         const std::function<void(const DeliveryForm &)> &use)
{
    bool wasOpen = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        const DeliveryForm form(QApplication::activeModalWidget());
        if (!form.m_dialog
            || qstrcmp(form.m_dialog->metaObject()->className(), "Small_DeliveryHandling_Dialog")
                != 0)
            return;
        watch.stop(); // `use` runs the event loop, too
        wasOpen = true;
        use(form);
        if (form.isOpen())
            form.m_dialog->close();
    });
    watch.start(20);
    open();
    return wasOpen;
}

QString DeliveryForm::says(const char *name) const
{
    const QWidget *part = m_dialog ? m_dialog->findChild<QWidget *>(QLatin1String(name)) : nullptr;
    if (const auto *label = qobject_cast<const QLabel *>(part))
        return label->text();
    if (const auto *line = qobject_cast<const QLineEdit *>(part))
        return line->text();
    if (const auto *amount = qobject_cast<const QSpinBox *>(part))
        return amount->text();
    return QString();
}

void DeliveryForm::typePieces(int pieces) const
{
    auto *amount = m_dialog->findChild<QSpinBox *>(QStringLiteral("spinBox_num"));
    QVERIFY(amount);
    amount->setFocus();
    amount->selectAll();
    QTest::keyClicks(amount, QString::number(pieces));
}

void DeliveryForm::type(const QString &person, const QString &phone, const QString &address) const
{
    typeText("lineEdit_userName", person);
    typeText("lineEdit_userPhone", phone);
    typeText("lineEdit_userAddr", address);
}

// Names and addresses are not on a keyboard: an input method writes them.
void DeliveryForm::typeText(const char *name, const QString &text) const
{
    auto *line = m_dialog->findChild<QLineEdit *>(QLatin1String(name));
    QVERIFY2(line, name);
    line->setFocus();
    line->selectAll();
    QInputMethodEvent written;
    written.setCommitString(text);
    QApplication::sendEvent(line, &written);
}

void DeliveryForm::send() const
{
    click("pushButton_ok");
}

void DeliveryForm::close() const
{
    click("toolButton_close");
}

void DeliveryForm::click(const char *name) const
{
    auto *button = m_dialog ? m_dialog->findChild<QAbstractButton *>(QLatin1String(name)) : nullptr;
    QVERIFY2(button && button->isVisible(), name);
    QTest::mouseClick(button, Qt::LeftButton);
}

} // namespace endtoend
