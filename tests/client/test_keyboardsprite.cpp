#include "client/keyboardsprite.h"

#include "support/testregistry.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QDialog>
#include <QInputMethodEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTextDocument>
#include <QTreeWidget>
#include <QVBoxLayout>
#include <QtTest/QtTest>

namespace {

const QString firstServer = QStringLiteral("/ch/youbi/");
const QString secondServer = QStringLiteral("/ch/qianbi/");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvUBBriefInfo market(const QList<QStringList> &rows)
{
    ZvUBBriefInfo::Data data;
    for (const QStringList &row : rows) {
        ZvUBBriefItem::Data item;
        item.collectionId = QStringLiteral("9") + row.at(0);
        item.code = row.at(0);
        item.name = row.at(1);
        item.initials = row.mid(2);
        data.items << ZvUBBriefItem(item);
    }
    return ZvUBBriefInfo(data);
}

ZvUBBriefInfo usualMarket()
{
    return market({{"111001", "荷塘小型张", "htxxz"},
                   {"111002", "白鹭四方连", "blsfl"},
                   {"111003", "长城首日封", "ccsrf", "zcsrf"},
                   {"112005", "云溪套票", "yxtp"}});
}

} // namespace

// The sprite over a small window: a field that has the keys at first, and a button that takes
// clicks without the focus.
class KeyboardSpriteTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QWidget> m_window;
    QLineEdit *m_field = nullptr;
    QPushButton *m_button = nullptr;
    QWidget *m_area = nullptr;
    KeyboardSprite *m_sprite = nullptr;
    std::unique_ptr<QSignalSpy> m_chosen;

    QLineEdit *edit() const { return m_sprite->findChild<QLineEdit *>(); }
    QTreeWidget *list() const { return m_sprite->findChild<QTreeWidget *>(); }
    QString hint() const { return m_sprite->findChild<QLabel *>()->text(); }
    QString codes() const
    {
        QStringList texts;
        for (int row = 0; row < list()->topLevelItemCount(); ++row)
            texts << list()->topLevelItem(row)->text(0);
        return texts.join(' ');
    }
    QString current() const
    {
        return list()->currentItem() ? list()->currentItem()->text(0) : QString();
    }
    QString chosen() const
    {
        QStringList texts;
        for (const QList<QVariant> &each : *m_chosen)
            texts << each.first().toString();
        return texts.join(' ');
    }
    void key(int key) { QTest::keyClick(m_window->focusWidget(), Qt::Key(key)); }
    void type(const QString &text) { QTest::keyClicks(m_window->focusWidget(), text); }
    void compose(const QString &preedit, const QString &commit = QString())
    {
        QInputMethodEvent event(preedit, {});
        event.setCommitString(commit);
        QApplication::sendEvent(edit(), &event);
    }

private slots:
    void init()
    {
        cache()->setCurrentServer(firstServer);
        cache()->storeBriefInfo(usualMarket());
        m_window = std::make_unique<QWidget>();
        m_area = new QWidget;
        m_field = new QLineEdit;
        m_button = new QPushButton;
        m_button->setFocusPolicy(Qt::NoFocus);
        auto *layout = new QVBoxLayout(m_window.get());
        layout->addWidget(m_field);
        layout->addWidget(m_button);
        layout->addWidget(m_area, 1);
        m_sprite = new KeyboardSprite(m_area);
        m_chosen = std::make_unique<QSignalSpy>(m_sprite, &KeyboardSprite::chosen);
        m_window->resize(700, 500);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_field->setFocus();
    }

    void cleanup()
    {
        m_chosen.reset();
        m_window.reset();
    }

    void staysAwayUntilItIsAsked()
    {
        QVERIFY(m_sprite->isHidden());
        m_sprite->leave();
        QVERIFY(m_field->hasFocus());
    }

    void opensWithADigitOrALetter_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<QString>("text");
        QTest::newRow("0") << int(Qt::Key_0) << "0";
        QTest::newRow("9") << int(Qt::Key_9) << "9";
        QTest::newRow("A") << int(Qt::Key_A) << "a";
        QTest::newRow("Z") << int(Qt::Key_Z) << "z";
        for (const int none : {int(Qt::Key_Slash), int(Qt::Key_Colon), int(Qt::Key_At),
                               int(Qt::Key_BracketLeft), int(Qt::Key_Return), 0, -1})
            QTest::addRow("none: %d", none) << none << QString();
    }
    void opensWithADigitOrALetter()
    {
        QFETCH(int, key);
        QFETCH(QString, text);
        QCOMPARE(KeyboardSprite::begins(key), !text.isEmpty());
        m_sprite->begin(key);
        QCOMPARE(m_sprite->isVisible(), !text.isEmpty());
        QCOMPARE(edit()->text(), text);
        QCOMPARE(edit()->hasFocus(), !text.isEmpty());
    }

    void findsWhileOneTypes()
    {
        m_sprite->begin(Qt::Key_1);
        QCOMPARE(codes(), QStringLiteral("111001 111002 111003 112005"));
        QCOMPARE(current(), QStringLiteral("111001"));
        type("12");
        QCOMPARE(edit()->text(), QStringLiteral("112"));
        QCOMPARE(codes(), QStringLiteral("112005"));
        QCOMPARE(current(), QStringLiteral("112005"));
        const QTreeWidgetItem *row = list()->topLevelItem(0);
        QCOMPARE(row->text(1), QStringLiteral("云溪套票"));
        QCOMPARE(row->text(2), QStringLiteral("yxtp"));
        key(Qt::Key_Backspace);
        QCOMPARE(edit()->text(), QStringLiteral("11"));
        QCOMPARE(codes(), QStringLiteral("111001 111002 111003 112005"));
        // Another key through the pool is typed, too.
        m_sprite->begin(Qt::Key_2);
        QCOMPARE(edit()->text(), QStringLiteral("112"));
    }

    void saysWhatItFound()
    {
        m_sprite->begin(Qt::Key_Q);
        QCOMPARE(codes(), QString());
        QCOMPARE(hint(), QStringLiteral("没有匹配的藏品"));
        key(Qt::Key_Return);
        QVERIFY(m_sprite->isVisible());
        QCOMPARE(chosen(), QString());
        m_sprite->leave();
        m_sprite->begin(Qt::Key_H);
        QVERIFY(hint().contains("Esc"));
    }

    void returnTakesWhatIsMarked_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Return") << int(Qt::Key_Return);
        QTest::newRow("Enter") << int(Qt::Key_Enter);
    }
    void returnTakesWhatIsMarked()
    {
        QFETCH(int, key);
        m_sprite->begin(Qt::Key_Z);
        QCOMPARE(codes(), QStringLiteral("111003 111001"));
        bool wasOpen = true;
        connect(m_sprite, &KeyboardSprite::chosen, m_window.get(),
                [&] { wasOpen = m_sprite->isVisible(); });
        this->key(key);
        QCOMPARE(chosen(), QStringLiteral("111003"));
        QVERIFY(!wasOpen);
        QVERIFY(m_sprite->isHidden());
        QVERIFY(m_field->hasFocus());
        QCOMPARE(m_field->text(), QString());
    }

    void arrowsChoose()
    {
        m_sprite->begin(Qt::Key_1);
        key(Qt::Key_Up);
        QCOMPARE(current(), QStringLiteral("111001"));
        key(Qt::Key_Down);
        key(Qt::Key_Down);
        QCOMPARE(current(), QStringLiteral("111003"));
        QVERIFY(edit()->hasFocus());
        key(Qt::Key_PageDown);
        QCOMPARE(current(), QStringLiteral("112005"));
        key(Qt::Key_Down);
        QCOMPARE(current(), QStringLiteral("112005"));
        key(Qt::Key_Up);
        QCOMPARE(current(), QStringLiteral("111003"));
        key(Qt::Key_PageUp);
        QCOMPARE(current(), QStringLiteral("111001"));
        key(Qt::Key_Down);
        key(Qt::Key_Return);
        QCOMPARE(chosen(), QStringLiteral("111002"));
        // Whoever types on begins at the best one again.
        m_sprite->begin(Qt::Key_1);
        key(Qt::Key_Down);
        type("1");
        QCOMPARE(current(), QStringLiteral("111001"));
    }

    // As the window system reports them: not accepted until somebody does so.
    void keysDoNotGoOnToTheWindow()
    {
        class Parent : public QWidget
        {
        public:
            QList<int> keys;

        protected:
            void keyPressEvent(QKeyEvent *event) override { keys << event->key(); }
        };
        Parent parent;
        auto *area = new QWidget(&parent);
        area->resize(400, 400);
        KeyboardSprite sprite(area);
        parent.resize(400, 400);
        parent.show();
        parent.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&parent));
        QSignalSpy taken(&sprite, &KeyboardSprite::chosen);
        sprite.begin(Qt::Key_1);
        QVERIFY(sprite.isVisible());
        for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Tab, Qt::Key_Return})
            QTest::keyClick(parent.windowHandle(), key);
        QCOMPARE(taken.count(), 1);
        QCOMPARE(taken.first().first().toString(), QStringLiteral("111002"));
        sprite.begin(Qt::Key_1);
        QTest::keyClick(parent.windowHandle(), Qt::Key_Escape);
        QVERIFY(sprite.isHidden());
        QCOMPARE(parent.keys, QList<int>());
    }

    void aClickTakes()
    {
        m_sprite->begin(Qt::Key_1);
        const QTreeWidgetItem *row = list()->topLevelItem(2);
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          list()->visualItemRect(row).center());
        QCOMPARE(chosen(), QStringLiteral("111003"));
        QVERIFY(m_sprite->isHidden());
        QVERIFY(m_field->hasFocus());
    }

    void aClickIntoTheSpriteLeavesItOpen()
    {
        m_sprite->begin(Qt::Key_1);
        QTest::mouseClick(m_sprite->findChild<QLabel *>(), Qt::LeftButton);
        QTest::mouseClick(m_sprite, Qt::LeftButton, Qt::NoModifier, QPoint(2, 2));
        QTest::mouseClick(edit(), Qt::LeftButton);
        QVERIFY(m_sprite->isVisible());
        QVERIFY(edit()->hasFocus());
    }

    void escapeCloses()
    {
        m_sprite->begin(Qt::Key_H);
        key(Qt::Key_Escape);
        QVERIFY(m_sprite->isHidden());
        QVERIFY(m_field->hasFocus());
        QCOMPARE(chosen(), QString());
        // And it begins anew.
        m_sprite->begin(Qt::Key_Y);
        QCOMPARE(edit()->text(), QStringLiteral("y"));
        QCOMPARE(codes(), QStringLiteral("112005"));
    }

    void nothingLeftCloses()
    {
        m_sprite->begin(Qt::Key_H);
        type("t");
        key(Qt::Key_Backspace);
        QVERIFY(m_sprite->isVisible());
        key(Qt::Key_Backspace);
        QVERIFY(m_sprite->isHidden());
        QVERIFY(m_field->hasFocus());
        QCOMPARE(m_field->text(), QString());
    }

    void tabDoesNotWander()
    {
        m_sprite->begin(Qt::Key_H);
        key(Qt::Key_Tab);
        key(Qt::Key_Backtab);
        QVERIFY(edit()->hasFocus());
        QVERIFY(m_sprite->isVisible());
    }

    void closesWhenTheKeysGoElsewhere()
    {
        auto *other = new QLineEdit(m_window.get());
        other->show();
        m_sprite->begin(Qt::Key_H);
        other->setFocus();
        QVERIFY(m_sprite->isHidden());
        QVERIFY(other->hasFocus());
    }

    void closesAtAClickBesideIt()
    {
        m_sprite->begin(Qt::Key_H);
        QSignalSpy clicked(m_button, &QPushButton::clicked);
        QTest::mouseClick(m_button, Qt::LeftButton);
        QVERIFY(m_sprite->isHidden());
        QCOMPARE(clicked.count(), 1);
        QVERIFY(m_field->hasFocus());
    }

    void closesUnderADialog()
    {
        m_sprite->begin(Qt::Key_H);
        QDialog dialog(m_window.get());
        dialog.setModal(true);
        dialog.show();
        dialog.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        QTRY_VERIFY(m_sprite->isHidden());
        dialog.close();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        // The keys are back where they were.
        QTRY_VERIFY(m_field->hasFocus());
    }

    void outlivesTheOneThatHadTheKeys()
    {
        m_sprite->begin(Qt::Key_H);
        delete m_field;
        key(Qt::Key_Escape);
        QVERIFY(m_sprite->isHidden());
        QVERIFY(!edit()->hasFocus());
    }

    void closesAtAChangeOfServer()
    {
        m_sprite->begin(Qt::Key_1);
        cache()->setCurrentServer(secondServer);
        cache()->storeBriefInfo(market({{"311001", "雾海青饼", "whqb"}}));
        QVERIFY(m_sprite->isHidden());
        QCOMPARE(chosen(), QString());
        m_sprite->begin(Qt::Key_1);
        QCOMPARE(codes(), QStringLiteral("311001"));
    }

    void newNamesOfTheSameServerAreFound()
    {
        m_sprite->begin(Qt::Key_1);
        type("13");
        QCOMPARE(codes(), QString());
        cache()->storeBriefInfo(market({{"113001", "新品", "xp"}}));
        QVERIFY(m_sprite->isVisible());
        QCOMPARE(codes(), QStringLiteral("113001"));
        // Those of another server do not come here.
        cache()->storeBriefInfo(market({{"113009", "外品", "wp"}}), secondServer);
        QCOMPARE(codes(), QStringLiteral("113001"));
    }

    void saysWhereTheMarketIsNotThereYet()
    {
        cache()->storeBriefInfo(ZvUBBriefInfo());
        m_sprite->begin(Qt::Key_1);
        QCOMPARE(hint(), QStringLiteral("藏品列表尚未载入"));
        cache()->storeBriefInfo(usualMarket());
        QCOMPARE(codes(), QStringLiteral("111001 111002 111003 112005"));
        QVERIFY(hint() != QStringLiteral("藏品列表尚未载入"));
    }

    void aCompositionIsFoundWhileItGrows()
    {
        m_sprite->begin(Qt::Key_H);
        compose("t");
        QCOMPARE(edit()->text(), QStringLiteral("h"));
        QCOMPARE(codes(), QStringLiteral("111001"));
        compose("t'x");
        QCOMPARE(codes(), QStringLiteral("111001"));
        compose("q");
        QCOMPARE(codes(), QString());
        compose(QString(), QStringLiteral("tx"));
        QCOMPARE(edit()->text(), QStringLiteral("htx"));
        QCOMPARE(codes(), QStringLiteral("111001"));
    }

    void aNameThatWasComposedIsFound()
    {
        m_sprite->begin(Qt::Key_C);
        key(Qt::Key_Home);
        edit()->selectAll();
        compose("yun");
        QVERIFY(m_sprite->isVisible());
        compose(QString(), QStringLiteral("云溪"));
        QCOMPARE(edit()->text(), QStringLiteral("云溪"));
        QCOMPARE(codes(), QStringLiteral("112005"));
        key(Qt::Key_Return);
        QCOMPARE(chosen(), QStringLiteral("112005"));
    }

    void theKeysOfACompositionAreItsOwn()
    {
        m_sprite->begin(Qt::Key_1);
        compose("ge");
        for (const int each : {int(Qt::Key_Return), int(Qt::Key_Escape), int(Qt::Key_Down)}) {
            key(each);
            QVERIFY(m_sprite->isVisible());
            QCOMPARE(chosen(), QString());
        }
        compose(QString());
        key(Qt::Key_Return);
        QCOMPARE(chosen(), QStringLiteral("111001"));
    }

    void aCompositionThatIsGivenUpLeavesNothingBehind()
    {
        m_sprite->begin(Qt::Key_H);
        edit()->selectAll();
        compose("x");
        QCOMPARE(edit()->text(), QString());
        QVERIFY(m_sprite->isVisible());
        compose(QString());
        QVERIFY(m_sprite->isHidden());
    }

    void standsInTheCornerOfItsArea()
    {
        m_sprite->begin(Qt::Key_H);
        const auto isInCorner = [this] {
            const QRect area = m_area->geometry();
            const QRect place = m_sprite->geometry();
            return area.contains(place) && area.right() - place.right() == 8
                && area.bottom() - place.bottom() == 8;
        };
        QVERIFY(isInCorner());
        m_window->resize(900, 620);
        QTRY_VERIFY(isInCorner());
        m_window->resize(400, 260);
        QTRY_VERIFY(isInCorner());
        QVERIFY(edit()->isVisible());
    }

    void isNamedForThoseWhoDoNotSeeIt()
    {
        QCOMPARE(m_sprite->accessibleName(), QStringLiteral("键盘精灵"));
        QVERIFY(!edit()->accessibleName().isEmpty());
        QVERIFY(!list()->accessibleName().isEmpty());
        QCOMPARE(list()->focusPolicy(), Qt::NoFocus);
    }

    void longNamesAreToldInFull()
    {
        const QString name(40, QChar(0x5F20));
        cache()->storeBriefInfo(market({{"500", name, "z"}}));
        m_sprite->begin(Qt::Key_5);
        QCOMPARE(list()->topLevelItem(0)->toolTip(1), name);
        QVERIFY(m_sprite->width() <= 340);
    }

    void namesAreNoMarkup()
    {
        const QString name = QStringLiteral("<b>长城</b>&lt;");
        cache()->storeBriefInfo(market({{"500", name, "c"}}));
        m_sprite->begin(Qt::Key_5);
        QCOMPARE(list()->topLevelItem(0)->text(1), name);
        QTextDocument shown;
        shown.setHtml(list()->topLevelItem(0)->toolTip(1));
        QCOMPARE(shown.toPlainText(), name);
    }
};

ZV_TEST(KeyboardSpriteTest)
#include "test_keyboardsprite.moc"
