#include "messageboxes.h"

#include "BreltWidgetToolKit/breltframlessmessagebox.h"

#include <QApplication>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QToolButton>
#include <QtTest/QtTest>

namespace zvtest {
namespace {

ShownBox read(const BreltFramlessMessageBox *box)
{
    ShownBox shown;
    shown.text = box->findChild<QLabel *>()->text();
    for (const QPushButton *button : box->findChildren<QPushButton *>())
        shown.buttons << button->text();
    shown.title = box->windowTitle();
    shown.titleHeight = box->titleHeight();
    shown.hasParent = box->parent();
    return shown;
}

void press(QPointer<BreltFramlessMessageBox> box, const QString &answer)
{
    if (!box || !box->isVisible())
        return;
    for (QPushButton *button : box->findChildren<QPushButton *>()) {
        if (button->text() == answer) {
            QTest::mouseClick(button, Qt::LeftButton);
            break;
        }
    }
    if (box && box->isVisible()) {
        QTest::qFail("no such button ends the message box", __FILE__, __LINE__);
        box->done(-1);
    }
}

} // namespace

QList<ShownBox> boxesIn(const std::function<void()> &cause, const std::function<void()> &meanwhile,
                        const QString &answer)
{
    QList<ShownBox> boxes;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        const QPointer<BreltFramlessMessageBox> box
            = qobject_cast<BreltFramlessMessageBox *>(QApplication::activeModalWidget());
        if (!box)
            return;
        watch.stop(); // `meanwhile` may run the event loop, too
        boxes << read(box);
        if (meanwhile)
            meanwhile();
        watch.start();
        press(box, answer);
    });
    watch.start(0);
    cause();
    return boxes;
}

void closeBox(bool byItsCross)
{
    QWidget *box = QApplication::activeModalWidget();
    QVERIFY(qobject_cast<BreltFramlessMessageBox *>(box));
    if (byItsCross)
        QTest::mouseClick(box->findChild<QToolButton *>(), Qt::LeftButton);
    else
        QTest::keyClick(box, Qt::Key_Escape);
    QVERIFY(!box->isVisible());
}

} // namespace zvtest
