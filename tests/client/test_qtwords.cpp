#include "client/qtwords.h"

#include "support/testregistry.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QScrollBar>
#include <QTranslator>
#include <QtTest/QtTest>

namespace {

// The menu that a widget opens for the right mouse button, without signs of shortcuts.
QStringList menuOf(QWidget *widget)
{
    QStringList words;
    QTimer::singleShot(0, [&words] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (!menu)
            return;
        for (const QAction *action : menu->actions()) {
            if (!action->isSeparator())
                words << action->text().section(QLatin1Char('\t'), 0, 0);
        }
        menu->close();
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                            widget->mapToGlobal(QPoint(5, 5)));
    QCoreApplication::sendEvent(widget, &event);
    // A menu that opens without waiting for its end is still there.
    for (int turn = 0; turn < 50 && words.isEmpty(); ++turn)
        QTest::qWait(20);
    return words;
}

bool isChinese(const QString &words)
{
    return std::any_of(words.cbegin(), words.cend(),
                       [](QChar sign) { return sign.script() == QChar::Script_Han; });
}

} // namespace

class QtWordsTest : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        qDeleteAll(qApp->findChildren<QTranslator *>(QString(), Qt::FindDirectChildrenOnly));
    }

    void menusAreChinese()
    {
        QVERIFY(qtwords::speakChinese(*qApp));
        QWidget window;
        QLineEdit field(&window);
        QDoubleSpinBox box(&window);
        box.move(0, 50);
        QLabel notice(QStringLiteral("<a href=\"http://127.0.0.1/\">公告</a>"), &window);
        notice.setTextInteractionFlags(Qt::TextBrowserInteraction);
        notice.move(0, 100);
        QScrollBar bar(Qt::Horizontal, &window);
        bar.setGeometry(0, 150, 200, 20);
        window.resize(300, 200);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        for (QWidget *widget :
             QList<QWidget *>{&field, box.findChild<QLineEdit *>(), &notice, &bar}) {
            const QStringList words = menuOf(widget);
            QVERIFY(words.size() >= 2);
            for (const QString &each : words)
                QVERIFY2(isChinese(each), qPrintable(each));
        }
    }

    void nothingIsTranslatedBefore()
    {
        QLineEdit field;
        field.show();
        QVERIFY(menuOf(&field).contains(QStringLiteral("&Copy")));
    }
};

ZV_TEST(QtWordsTest)
#include "test_qtwords.moc"
