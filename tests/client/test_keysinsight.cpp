#include "client/keysinsight.h"

#include "support/testregistry.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QStackedWidget>
#include <QtTest/QtTest>

// Parts that are turned away or hidden while the keys are elsewhere, and where the keys are
// afterwards.
class KeysInSightTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    KeysInSight *m_keys = nullptr;
    QStackedWidget *m_outer = nullptr;
    QStackedWidget *m_inner = nullptr; // the first page of the outer ones
    QLineEdit *m_first = nullptr;
    QLineEdit *m_second = nullptr;
    QLineEdit *m_other = nullptr; // the second page of the outer ones

private slots:
    void init()
    {
        m_window = std::make_unique<QWidget>();
        m_outer = new QStackedWidget;
        m_inner = new QStackedWidget;
        m_first = new QLineEdit;
        m_second = new QLineEdit;
        m_other = new QLineEdit;
        m_inner->addWidget(m_first);
        m_inner->addWidget(m_second);
        m_outer->addWidget(m_inner);
        m_outer->addWidget(m_other);
        (new QHBoxLayout(m_window.get()))->addWidget(m_outer);
        m_keys = new KeysInSight(m_window.get());
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_first->setFocus();
        QVERIFY(m_first->hasFocus());
    }

    void cleanup() { m_window.reset(); }

    void aPageThatIsTurnedInSightHandsThemOn()
    {
        m_inner->setCurrentWidget(m_second);
        QVERIFY(m_second->hasFocus());
        m_outer->setCurrentWidget(m_other);
        QVERIFY(m_other->hasFocus());
    }

    void aPageThatIsTurnedBehindAnotherDoesNotGetThemBack()
    {
        m_outer->setCurrentWidget(m_other);
        m_inner->setCurrentWidget(m_second);
        m_outer->setCurrentWidget(m_inner);
        QVERIFY(m_second->hasFocus());
    }

    void aPageThatIsTurnedBelowAMenuDoesNotGetThemBack()
    {
        QMenu menu(m_window.get());
        menu.addAction(QStringLiteral("-"));
        menu.popup(m_window->mapToGlobal(QPoint(5, 5)));
        QTRY_VERIFY(menu.isVisible());
        m_outer->setCurrentWidget(m_other);
        menu.close();
        QTRY_COMPARE(QApplication::activePopupWidget(), nullptr);
        QVERIFY(!QApplication::focusWidget() || QApplication::focusWidget()->isVisible());
    }

    // The window would give them back when it is active again.
    void aPartThatIsHiddenBehindAnotherWindowDoesNotGetThemBack()
    {
        QWidget another;
        another.show();
        another.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&another));
        QSignalSpy lost(m_keys, &KeysInSight::lost);
        m_outer->hide();
        QCOMPARE(lost.count(), 1);
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QVERIFY(!m_window->focusWidget());
    }

    void aPartThatIsHiddenInAHiddenWindowDoesNotGetThemBack()
    {
        m_window->hide();
        m_first->hide();
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QVERIFY(!m_first->hasFocus());
    }

    // Where Qt moves them along by itself, and where they were elsewhere, nobody has lost them.
    void keysThatAreElsewhereAreNotLost()
    {
        QSignalSpy lost(m_keys, &KeysInSight::lost);
        m_outer->setCurrentWidget(m_other);
        m_inner->setCurrentWidget(m_second);
        m_first->hide();
        QVERIFY(m_other->hasFocus());
        QCOMPARE(lost.count(), 0);
    }

    // What is hidden and shown again while it has no keys is where it was.
    void aPageRemembersItsOwn()
    {
        auto *page = new QWidget;
        auto *upper = new QLineEdit;
        auto *lower = new QLineEdit;
        auto *layout = new QHBoxLayout(page);
        layout->addWidget(upper);
        layout->addWidget(lower);
        m_outer->addWidget(page);
        m_outer->setCurrentWidget(page);
        lower->setFocus();
        m_outer->setCurrentWidget(m_other);
        m_outer->setCurrentWidget(page);
        QVERIFY(lower->hasFocus());
    }
};

ZV_TEST(KeysInSightTest)
#include "test_keysinsight.moc"
