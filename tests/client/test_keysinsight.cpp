#include "client/keysinsight.h"

#include "support/testregistry.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenu>
#include <QStackedWidget>
#include <QtTest/QtTest>

// Pages that are turned while the keys are elsewhere, and where the keys are afterwards.
class KeysInSightTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
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
        keepKeysInSight(m_window.get());
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
};

ZV_TEST(KeysInSightTest)
#include "test_keysinsight.moc"
