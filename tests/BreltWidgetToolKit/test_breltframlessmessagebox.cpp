#include "BreltWidgetToolKit/breltframlessmessagebox.h"

#include "BreltWidgetToolKit/keys.h"
#include "support/testregistry.h"

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <QToolButton>

#include <functional>
#include <memory>

namespace {

const QString c_confirm = QStringLiteral("确认");
const QString c_cancel = QStringLiteral("取消");
const QString c_title = QStringLiteral("买前信息确认");

QString paragraph(const QString &text)
{
    return QStringLiteral("<p align='center'>%1</p>").arg(text);
}

std::unique_ptr<BreltFramlessMessageBox> makeBox(const QString &text,
                                                 const QString &second = c_cancel)
{
    return std::make_unique<BreltFramlessMessageBox>(text, c_confirm, second, c_title, 40, nullptr);
}

QPushButton *buttonOf(const QWidget *box, const QString &text)
{
    const auto buttons = box->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->text() == text)
            return button;
    }
    return nullptr;
}

// Runs the box, and `act` inside its event loop once it can be seen. -1: it had to be ended.
int run(BreltFramlessMessageBox *box, const std::function<void()> &act)
{
    QTimer::singleShot(0, box, act);
    QTimer guard;
    guard.setSingleShot(true);
    QObject::connect(&guard, &QTimer::timeout, box, [box] { box->done(-1); });
    guard.start(5000);
    return box->exec();
}

// The rows of pixels in which `widget` shows text, or anything that is not its background.
int inkRows(QWidget *widget)
{
    const QImage picture = widget->grab().toImage();
    int rows = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            if (qGray(picture.pixel(x, y)) > 100) {
                ++rows;
                break;
            }
        }
    }
    return rows;
}

} // namespace

class TestBreltFramlessMessageBox : public QObject
{
    Q_OBJECT

private slots:
    void partsCanBeFound();
    void readersHearItsTextAndItsButtons();
    void emptySecondTextLeavesTheButtonOut();
    void resultOfEachWay_data();
    void resultOfEachWay();
    void returnPressesTheButtonInFocus();
    void repeatedKeysPressNothing();
    void boxIsModal();
    void mayDieWithItsParentInsideExec();
    void bandDragsAndTextDoesNot();
    void bandHasTheHeightGiven();
    void growsWithItsText();
    void unbrokenTextIsNotCut();
    void endlessTextScrollsOnTheScreen();
    void opensOverTheActiveWindow();
    void looksDark();
    void emptyTextsAreHarmless();
};

void TestBreltFramlessMessageBox::partsCanBeFound()
{
    const QString text = paragraph(QStringLiteral("价格:10&nbsp;&nbsp;&nbsp;&nbsp;数量：5"));
    const auto box = makeBox(text);
    const auto labels = box->findChildren<QLabel *>();
    QCOMPARE(labels.size(), 1);
    QCOMPARE(labels.first()->text(), text);
    QStringList texts;
    for (const QPushButton *button : box->findChildren<QPushButton *>())
        texts.append(button->text());
    QCOMPARE(texts, QStringList({c_confirm, c_cancel}));
    QCOMPARE(box->windowTitle(), c_title);
    QVERIFY(box->windowFlags() & Qt::FramelessWindowHint);
}

void TestBreltFramlessMessageBox::readersHearItsTextAndItsButtons()
{
    const auto box = makeBox(paragraph(QStringLiteral("撤单成功")));
    const auto heard = [](QWidget *widget) {
        return QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    };
    QCOMPARE(heard(box.get()), c_title);
    QCOMPARE(heard(box->findChild<QLabel *>()), QStringLiteral("撤单成功"));
    QCOMPARE(heard(box->findChild<QToolButton *>()), QStringLiteral("关闭"));
    QCOMPARE(heard(buttonOf(box.get(), c_confirm)), c_confirm);
    QCOMPARE(heard(buttonOf(box.get(), c_cancel)), c_cancel);
}

void TestBreltFramlessMessageBox::emptySecondTextLeavesTheButtonOut()
{
    const auto box = makeBox(paragraph(QStringLiteral("撤单成功")), QString());
    const auto buttons = box->findChildren<QPushButton *>();
    QCOMPARE(buttons.size(), 1);
    QCOMPARE(buttons.first()->text(), c_confirm);
}

void TestBreltFramlessMessageBox::resultOfEachWay_data()
{
    QTest::addColumn<QString>("way");
    QTest::addColumn<int>("result");
    QTest::newRow("first button") << "first" << 1;
    QTest::newRow("second button") << "second" << 0;
    QTest::newRow("Return") << "return" << 1;
    QTest::newRow("keypad Enter") << "enter" << 1;
    QTest::newRow("Escape") << "escape" << 0;
    QTest::newRow("cross") << "cross" << 0;
    QTest::newRow("close") << "close" << 0;
}

void TestBreltFramlessMessageBox::resultOfEachWay()
{
    QFETCH(QString, way);
    const auto box = makeBox(paragraph(QStringLiteral("确认撤掉全部？")));
    const int result = run(box.get(), [&] {
        QVERIFY(QTest::qWaitForWindowActive(box.get()));
        if (way == "first")
            QTest::mouseClick(buttonOf(box.get(), c_confirm), Qt::LeftButton);
        else if (way == "second")
            QTest::mouseClick(buttonOf(box.get(), c_cancel), Qt::LeftButton);
        else if (way == "return")
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
        else if (way == "enter")
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Enter, Qt::KeypadModifier);
        else if (way == "escape")
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        else if (way == "cross")
            QTest::mouseClick(box->findChild<QToolButton *>(), Qt::LeftButton);
        else
            box->close();
    });
    QTEST(result, "result");
    QVERIFY(!box->isVisible());
}

void TestBreltFramlessMessageBox::returnPressesTheButtonInFocus()
{
    const auto box = makeBox(paragraph(QStringLiteral("确认撤卖？")));
    const int result = run(box.get(), [&] {
        QVERIFY(QTest::qWaitForWindowActive(box.get()));
        QCOMPARE(QApplication::focusWidget(), buttonOf(box.get(), c_confirm));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), buttonOf(box.get(), c_cancel));
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    QCOMPARE(result, 0);
}

void TestBreltFramlessMessageBox::repeatedKeysPressNothing()
{
    const auto box = makeBox(paragraph(QStringLiteral("确认撤买？")));
    bool stood = false;
    const int result = run(box.get(), [&] {
        QVERIFY(QTest::qWaitForWindowActive(box.get()));
        repeatReturn(buttonOf(box.get(), c_confirm), 10);
        repeatReturn(buttonOf(box.get(), c_cancel), 10, Qt::Key_Enter);
        repeatReturn(box.get(), 10);
        repeatReturn(box.get(), 10, Qt::Key_Escape);
        repeatReturn(buttonOf(box.get(), c_confirm), 10, Qt::Key_Space);
        stood = box->isVisible();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    });
    QVERIFY(stood);
    QCOMPARE(result, 1);
}

void TestBreltFramlessMessageBox::boxIsModal()
{
    QWidget window;
    window.resize(400, 300);
    window.show();
    const auto box = makeBox(paragraph(QStringLiteral("提示")));
    QWidget *modal = nullptr;
    run(box.get(), [&] {
        modal = QApplication::activeModalWidget();
        box->reject();
    });
    QCOMPARE(modal, box.get());
}

void TestBreltFramlessMessageBox::mayDieWithItsParentInsideExec()
{
    auto *parent = new QWidget;
    parent->show();
    QPointer<BreltFramlessMessageBox> box = new BreltFramlessMessageBox(
        paragraph(QStringLiteral("提示")), c_confirm, c_cancel, c_title, 40, parent);
    QTimer::singleShot(0, parent, [parent] { parent->deleteLater(); });
    // The event loop of exec() is a level deeper, so the deletion asked for in it runs in it.
    QCOMPARE(box->exec(), 0);
    QVERIFY(!box);
}

void TestBreltFramlessMessageBox::bandDragsAndTextDoesNot()
{
    const auto box = makeBox(paragraph(QStringLiteral("请输入正确的商品代码!")));
    box->move(100, 100);
    box->show();
    const auto drag = [](QWidget *widget, const QPoint &from, const QPoint &by) {
        const QPoint start = widget->mapToGlobal(from);
        QTest::mousePress(widget, Qt::LeftButton, Qt::NoModifier, from);
        QMouseEvent move(QEvent::MouseMove, from + by, start + by, Qt::NoButton, Qt::LeftButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(widget, &move);
        QMouseEvent release(QEvent::MouseButtonRelease, from, start + by, Qt::LeftButton,
                            Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(widget, &release);
    };
    drag(box.get(), QPoint(30, 39), QPoint(40, 20));
    QCOMPARE(box->pos(), QPoint(140, 120));
    drag(box.get(), QPoint(30, 41), QPoint(40, 20));
    drag(box->findChild<QLabel *>(), QPoint(10, 10), QPoint(40, 20));
    drag(box->findChild<QToolButton *>(), QPoint(3, 3), QPoint(100, 60));
    QCOMPARE(box->pos(), QPoint(140, 120));
}

void TestBreltFramlessMessageBox::bandHasTheHeightGiven()
{
    for (const auto &pair : {qMakePair(40, 40), qMakePair(64, 64), qMakePair(0, 24),
                             qMakePair(-7, 24), qMakePair(5000, 120)}) {
        BreltFramlessMessageBox box(paragraph(QStringLiteral("提示")), c_confirm, QString(),
                                    c_title, pair.first, nullptr);
        QCOMPARE(box.titleHeight(), pair.second);
        box.show();
        const QLabel *label = box.findChild<QLabel *>();
        QVERIFY(label->mapTo(&box, QPoint()).y() >= pair.second);
    }
}

void TestBreltFramlessMessageBox::growsWithItsText()
{
    QSize last;
    for (const int length : {1, 30, 120, 400}) {
        const auto box = makeBox(paragraph(QString(length, QChar(0x85cf))));
        box->show();
        auto *label = box->findChild<QLabel *>();
        QVERIFY(box->width() >= 280 && box->width() <= 480 + 60);
        QVERIFY(label->height() >= label->heightForWidth(label->width()));
        QVERIFY(box->findChild<QScrollArea *>()->viewport()->width() >= label->width());
        QVERIFY(box->rect().contains(
            QRect(buttonOf(box.get(), c_cancel)->mapTo(box.get(), QPoint()), QSize(104, 32))));
        if (last.isValid())
            QVERIFY(box->height() > last.height() || box->width() > last.width());
        last = box->size();
    }
}

void TestBreltFramlessMessageBox::unbrokenTextIsNotCut()
{
    const auto oneLine = makeBox(paragraph(QStringLiteral("8")));
    const auto many = makeBox(paragraph(QString(300, QLatin1Char('8'))));
    oneLine->show();
    many->show();
    const int line = inkRows(oneLine->findChild<QLabel *>());
    QVERIFY(line > 0);
    // 300 digits need more than 480 pixels by far, so they stand on several lines.
    QVERIFY(inkRows(many->findChild<QLabel *>()) >= 3 * line);
}

void TestBreltFramlessMessageBox::endlessTextScrollsOnTheScreen()
{
    const auto box = makeBox(paragraph(QString(20000, QChar(0x85cf))));
    box->show();
    const QRect area = box->screen()->availableGeometry();
    QVERIFY(box->height() <= area.height());
    QScrollBar *bar = box->findChild<QScrollArea *>()->verticalScrollBar();
    QVERIFY(bar->isVisible());
    QVERIFY(bar->maximum() > 0);
    QVERIFY(buttonOf(box.get(), c_confirm)->isVisible());
}

void TestBreltFramlessMessageBox::opensOverTheActiveWindow()
{
    QWidget window;
    window.setGeometry(300, 100, 450, 400);
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    const auto box = makeBox(paragraph(QStringLiteral("提示")));
    QPoint centre;
    run(box.get(), [&] {
        centre = box->geometry().center();
        box->reject();
    });
    QVERIFY((centre - window.frameGeometry().center()).manhattanLength() <= 4);
}

void TestBreltFramlessMessageBox::looksDark()
{
    const auto box = makeBox(paragraph(QStringLiteral("提示")));
    box->show();
    const QImage picture = box->grab().toImage();
    int light = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x)
            light += qGray(picture.pixel(x, y)) > 140;
    }
    QVERIFY(light > 0); // the texts
    QVERIFY(light < picture.width() * picture.height() / 20);
}

void TestBreltFramlessMessageBox::emptyTextsAreHarmless()
{
    BreltFramlessMessageBox box(QString(), QString(), QString(), QString(), 40, nullptr);
    const int result = run(&box, [&] { QTest::keyClick(&box, Qt::Key_Return); });
    QCOMPARE(result, 1);
    QCOMPARE(box.findChild<QLabel *>()->text(), QString());
}

ZV_TEST(TestBreltFramlessMessageBox)
#include "test_breltframlessmessagebox.moc"
