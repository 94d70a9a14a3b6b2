#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/status_message_scrollarea.h"
#include "linkcatcher.h"
#include "support/testregistry.h"

#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QPaintEvent>
#include <QPointer>
#include <QScrollBar>
#include <QStyle>
#include <QTextCursor>
#include <QTextDocument>
#include <QTimer>
#include <QtTest/QtTest>

namespace {

using Messages = QList<QPair<QString, QString>>;

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

// What a reader sees of a text with markup, and where its link leads.
QPair<QString, QString> readingOf(const QString &html)
{
    QTextDocument document;
    document.setHtml(html);
    QTextCursor cursor(&document);
    cursor.movePosition(QTextCursor::NextCharacter);
    return {document.toPlainText(), cursor.charFormat().anchorHref()};
}

// Counts what is painted inside a widget, in pixels.
class PaintedPixels : public QObject
{
public:
    explicit PaintedPixels(QWidget *widget) : m_widget(widget) { qApp->installEventFilter(this); }

    int take() { return std::exchange(m_pixels, 0); }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (object == m_widget && event->type() == QEvent::Paint) {
            for (const QRect &rect : static_cast<QPaintEvent *>(event)->region())
                m_pixels += rect.width() * rect.height();
        }
        return false;
    }

private:
    QWidget *m_widget;
    int m_pixels = 0;
};

} // namespace

class StatusMessageScrollAreaTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Status_Message_ScrollArea> m_area;

    QTimer *timer() const
    {
        return m_area->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    }
    QScrollBar *bar() const { return m_area->horizontalScrollBar(); }
    QLabel *blank(const char *name) const { return m_area->findChild<QLabel *>(name); }
    QHBoxLayout *row() const
    {
        return m_area->findChild<QHBoxLayout *>("horizontalLayout_content");
    }
    void call(const char *slot) { QVERIFY(QMetaObject::invokeMethod(m_area.get(), slot)); }
    void step(int count = 1)
    {
        for (int i = 0; i < count; ++i)
            QVERIFY(QMetaObject::invokeMethod(timer(), "timeout"));
    }

    // The messages between the blank stretches, from left to right.
    QList<QLabel *> shown() const
    {
        QList<QLabel *> labels;
        for (int i = 1; i < row()->count() - 1; ++i)
            labels << qobject_cast<QLabel *>(row()->itemAt(i)->widget());
        return labels;
    }

    void show(const Messages &messages)
    {
        cache()->storeMessageList(messages);
        call("slot_updateMassage");
        timer()->stop();
        QCoreApplication::processEvents();
    }

    // Makes the content wider than its room by exactly `pixels`.
    void makeRange(int pixels)
    {
        show({{QString(60, QChar(0x85CF)), QString()}});
        m_area->resize(m_area->widget()->minimumSizeHint().width() - pixels + m_area->width()
                           - m_area->viewport()->width(),
                       30);
        QCoreApplication::processEvents();
        QCOMPARE(bar()->maximum(), pixels);
    }

private slots:
    void init()
    {
        cache()->storeMessageList({});
        m_area = std::make_unique<Status_Message_ScrollArea>();
        m_area->resize(400, 30);
        m_area->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_area.get()));
        timer()->stop();
    }
    void cleanup() { m_area.reset(); }

    void itIsMadeOfBlanksAndAHiddenScrollBar()
    {
        QCOMPARE(m_area->objectName(), QStringLiteral("Status_Message_ScrollArea"));
        QCOMPARE(m_area->maximumHeight(), 30);
        QCOMPARE(m_area->horizontalScrollBarPolicy(), Qt::ScrollBarAlwaysOff);
        QVERIFY(m_area->widgetResizable());
        QCOMPARE(m_area->widget()->objectName(), QStringLiteral("scrollAreaWidgetContents"));
        QCOMPARE(m_area->widget()->layout(), row());
        QCOMPARE(row()->spacing(), 50);
        QCOMPARE(row()->contentsMargins().top(), 0);
        QCOMPARE(row()->contentsMargins().bottom(), 0);
        // The style's own margins.
        QCOMPARE(row()->contentsMargins().left(),
                 m_area->style()->pixelMetric(QStyle::PM_LayoutLeftMargin));
        QCOMPARE(row()->contentsMargins().right(),
                 m_area->style()->pixelMetric(QStyle::PM_LayoutRightMargin));
        QCOMPARE(row()->count(), 2);
        QCOMPARE(row()->itemAt(0)->widget(), blank("label_start"));
        QCOMPARE(row()->itemAt(1)->widget(), blank("label_stop"));
        for (const char *name : {"label_start", "label_stop"}) {
            QCOMPARE(blank(name)->text(), QString());
            QCOMPARE(blank(name)->alignment(), Qt::AlignCenter);
        }
    }

    void itIsFourHundredPixelsWideAtFirst()
    {
        const Status_Message_ScrollArea fresh;
        QCOMPARE(fresh.size(), QSize(400, 30)); // the form is higher than the area may be
    }

    void theTimerRunsFromTheStart()
    {
        const Status_Message_ScrollArea fresh;
        const auto *ticks = fresh.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(ticks->isActive());
        QCOMPARE(ticks->interval(), 100);
        QVERIFY(!ticks->isSingleShot());
        QCOMPARE(ticks->parent(), &fresh);
    }

    void itMovesByItself()
    {
        makeRange(200);
        timer()->start();
        QElapsedTimer clock;
        clock.start();
        QTRY_VERIFY(bar()->value() >= 25);
        QVERIFY(bar()->value() % 5 == 0);
        QVERIFY2(clock.elapsed() >= 400, "faster than 50 pixels a second");
    }

    void eachStepIsFivePixels()
    {
        makeRange(200);
        for (int i = 1; i <= 20; ++i) {
            step();
            QCOMPARE(bar()->value(), i * 5);
        }
    }

    void atItsEndItBeginsAgain()
    {
        makeRange(12);
        QVector<int> values;
        for (int i = 0; i < 6; ++i) {
            step();
            values << bar()->value();
        }
        QCOMPARE(values, QVector<int>({5, 10, 0, 5, 10, 0}));
    }

    // Where the end is a whole step, it is not shown: it has been reached.
    void theEndItselfIsTheBeginning()
    {
        makeRange(10);
        step();
        QCOMPARE(bar()->value(), 5);
        step();
        QCOMPARE(bar()->value(), 0);
    }

    void aShortRangeStaysAtItsBeginning_data()
    {
        QTest::addColumn<int>("range");
        QTest::addColumn<int>("second");
        QTest::newRow("none") << 0 << 0;
        QTest::newRow("one") << 1 << 0;
        QTest::newRow("five") << 5 << 0;
        QTest::newRow("six") << 6 << 5;
    }
    void aShortRangeStaysAtItsBeginning()
    {
        QFETCH(int, range);
        QFETCH(int, second);
        makeRange(range);
        for (int i = 0; i < 3; ++i) {
            step();
            QCOMPARE(bar()->value(), i == 1 ? 0 : second);
        }
    }

    void aMessageIsALink()
    {
        show({{"关于休市的公告", "http://127.0.0.1/notice/1"}, {"第二条", "http://127.0.0.1/2"}});
        QCOMPARE(shown().size(), 2);
        QCOMPARE(shown().at(0)->text(),
                 QStringLiteral("<a style='color: #FFFF00; text-decoration: none;'; font-size: "
                                "12px;  href=\"http://127.0.0.1/notice/1\">关于休市的公告</a>"));
        QCOMPARE(shown().at(1)->text(),
                 QStringLiteral("<a style='color: #FFFF00; text-decoration: none;'; font-size: "
                                "12px;  href=\"http://127.0.0.1/2\">第二条</a>"));
        for (const QLabel *label : shown()) {
            QVERIFY(label->openExternalLinks());
            QVERIFY(label->isVisible());
        }
        QCOMPARE(row()->itemAt(0)->widget(), blank("label_start"));
        QCOMPARE(row()->itemAt(3)->widget(), blank("label_stop"));
    }

    // Yellow, and neither the palette's colour of links nor a line below.
    void aMessageIsYellow()
    {
        show({{"公告", "http://127.0.0.1/1"}});
        const QImage drawn = shown().first()->grab().toImage();
        QVector<int> yellowRows;
        for (int y = 0; y < drawn.height(); ++y) {
            int yellow = 0;
            for (int x = 0; x < drawn.width(); ++x) {
                const QColor colour = drawn.pixelColor(x, y);
                yellow += colour.red() > 200 && colour.green() > 200 && colour.blue() < 100;
                QVERIFY(colour.blue() <= qMax(colour.red(), colour.green()) + 8);
            }
            yellowRows << yellow;
        }
        const int most = *std::max_element(yellowRows.cbegin(), yellowRows.cend());
        QVERIFY(most > 0);
        QVERIFY2(most < drawn.width(), "a line below");
    }

    // Both come from the server, and are read and followed as they were written there.
    void messagesAreNoMarkup_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("address");
        const QString plain = QStringLiteral("http://127.0.0.1/1");
        QTest::newRow("less") << "价格 <100 元" << plain;
        QTest::newRow("tag") << "<b>粗</b> <img src='file:///etc/passwd'>" << plain;
        QTest::newRow("end of the link") << "甲</a><a href=\"http://evil/\">乙" << plain;
        QTest::newRow("entity") << "A&amp;B &lt; C&D" << plain;
        QTest::newRow("quotes") << "\"甲\" 'a'" << plain;
        QTest::newRow("marks in the text") << "%1 %2 %3" << plain;
        QTest::newRow("mark in the address") << "百分"
                                             << "http://127.0.0.1/a%2Fb%1c%20d";
        QTest::newRow("quote in the address") << "引号"
                                              << "http://127.0.0.1/\" style=\"color:red";
        QTest::newRow("two values") << "参数"
                                    << "http://127.0.0.1/?a=1&b=2&lt;=3&amp;=4";
        QTest::newRow("brackets in the address") << "括号"
                                                 << "http://127.0.0.1/<b>'x'";
        QTest::newRow("none") << "没有链接" << QString();
    }
    void messagesAreNoMarkup()
    {
        QFETCH(QString, text);
        QFETCH(QString, address);
        show({{text, address}});
        const auto reading = readingOf(shown().first()->text());
        QCOMPARE(reading.first, text);
        QCOMPARE(reading.second, address);
    }

    void aClickOpensTheLink()
    {
        zvtest::LinkCatcher browser;
        show({{"第一条消息", "http://127.0.0.1/a%2Fb?x=1&y=2"},
              {"第二条消息", "http://127.0.0.1/2"}});
        const auto clickOn = [this](QLabel *label) {
            QTest::mouseClick(m_area->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                              label->mapTo(m_area.get(), QPoint(20, label->height() / 2)));
        };
        clickOn(shown().at(1));
        QCOMPARE(browser.opened, QStringList{"http://127.0.0.1/2"});
        clickOn(shown().at(0));
        QCOMPARE(browser.opened.last(), QStringLiteral("http://127.0.0.1/a%2Fb?x=1&y=2"));
    }

    void aMessageWithoutALinkOpensNothing()
    {
        zvtest::LinkCatcher browser;
        show({{"没有链接的消息", QString()}});
        const QLabel *label = shown().first();
        QTest::mouseClick(m_area->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          label->mapTo(m_area.get(), QPoint(20, label->height() / 2)));
        QVERIFY(browser.opened.isEmpty());
    }

    void aNewListTakesThePlaceOfTheOld()
    {
        show({{"甲", "http://127.0.0.1/1"}, {"乙", "http://127.0.0.1/2"}, {"丙", ""}});
        QList<QPointer<QLabel>> old;
        for (QLabel *label : shown())
            old << label;
        show({{"丁", "http://127.0.0.1/4"}});
        for (const QPointer<QLabel> &label : old)
            QVERIFY(!label);
        QCOMPARE(shown().size(), 1);
        QVERIFY(shown().first()->text().contains(QStringLiteral("丁")));
        show({});
        QVERIFY(shown().isEmpty());
        QCOMPARE(row()->count(), 2);
        QCOMPARE(m_area->widget()->findChildren<QLabel *>().size(), 2);
    }

    // The list is read when the area is told, not before.
    void itReadsTheListWhenItIsTold()
    {
        cache()->messageList = Messages{{"甲", ""}};
        QVERIFY(shown().isEmpty());
        call("slot_updateMassage");
        QCOMPARE(shown().size(), 1);
        cache()->messageList.clear();
        QCOMPARE(shown().size(), 1);
    }

    void aNewListStartsFromTheBeginning()
    {
        makeRange(200);
        step(10);
        QCOMPARE(bar()->value(), 50);
        QVERIFY(!timer()->isActive());
        call("slot_updateMassage");
        QVERIFY(timer()->isActive());
        QCOMPARE(bar()->value(), 0);
        QCOMPARE(timer()->interval(), 100);
        timer()->stop();
        step();
        QCOMPARE(bar()->value(), 5);
    }

    void itStartsFromTheBeginningWheneverItIsShown()
    {
        makeRange(200);
        step(10);
        m_area->hide();
        QCOMPARE(bar()->value(), 50);
        m_area->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_area.get()));
        QVERIFY(timer()->isActive());
        timer()->stop();
        QVERIFY(bar()->value() <= 10); // a step may have been made meanwhile
        bar()->setValue(0);
    }

    // Hiding is no end of the run.
    void itRunsOnWhileHidden()
    {
        timer()->start();
        m_area->hide();
        QVERIFY(timer()->isActive());
    }

    void theBlanksAreAsWideAsTheArea()
    {
        for (const int width : {400, 1200, 90}) {
            m_area->resize(width, 30);
            call("slot_adjustSize");
            for (const char *name : {"label_start", "label_stop"}) {
                QCOMPARE(blank(name)->minimumWidth(), width - 2);
                QCOMPARE(blank(name)->maximumWidth(), width - 2);
            }
        }
    }

    void anAreaWithoutRoomHasNoBlanks()
    {
        for (const int width : {2, 1, 0}) {
            Status_Message_ScrollArea narrow;
            narrow.resize(width, 30);
            QCOMPARE(narrow.width(), width);
            QVERIFY(QMetaObject::invokeMethod(&narrow, "slot_adjustSize"));
            QCOMPARE(narrow.findChild<QLabel *>("label_start")->maximumWidth(), 0);
            QCOMPARE(narrow.findChild<QLabel *>("label_stop")->maximumWidth(), 0);
        }
    }

    // Messages come in at the right edge and have gone out at the left one at the end.
    void messagesRunThroughTheWholeArea()
    {
        show({{"公告", "http://127.0.0.1/1"}});
        call("slot_adjustSize");
        QCoreApplication::processEvents();
        const auto place = [this] { return shown().first()->mapTo(m_area.get(), QPoint()).x(); };
        QVERIFY2(place() >= m_area->width() - 2, "it is to be seen before it comes in");
        bar()->setValue(bar()->maximum());
        QVERIFY2(place() + shown().first()->width() <= 2, "it is still to be seen at the end");
    }

    void aResizeKeepsWhereTheRunStands()
    {
        show({{QString(30, QChar(0x85CF)), QString()}});
        call("slot_adjustSize");
        QCoreApplication::processEvents();
        step(10);
        QCOMPARE(bar()->value(), 50);
        m_area->resize(700, 30);
        call("slot_adjustSize");
        QCoreApplication::processEvents();
        QCOMPARE(blank("label_start")->width(), 698);
        QCOMPARE(bar()->value(), 50);
        step();
        QCOMPARE(bar()->value(), 55);
    }

    // The screen shifts what it shows; only what comes in at the right is painted.
    void aStepPaintsAStripOnly()
    {
        show({{QString(30, QChar(0x85CF)), "http://127.0.0.1/1"}});
        call("slot_adjustSize");
        QCoreApplication::processEvents();
        step(20);
        QTest::qWait(50); // what is new has been painted
        step();
        QCoreApplication::processEvents();
        PaintedPixels painted(m_area->widget());
        step();
        QCoreApplication::processEvents();
        const int pixels = painted.take();
        QVERIFY(pixels > 0);
        QVERIFY2(pixels <= 5 * m_area->height(), qPrintable(QString::number(pixels)));
    }

    void aStepMovesTheBarOnceAndLaysOutNothing()
    {
        makeRange(200);
        QSignalSpy moved(bar(), &QScrollBar::valueChanged);
        const QList<QLabel *> before = shown();
        step(3);
        QCOMPARE(moved.count(), 3);
        QCOMPARE(shown(), before);
    }

    void nothingIsCutInItsHeight()
    {
        show({{"公告与通知 gjpqy", "http://127.0.0.1/1"}});
        QVERIFY(!m_area->verticalScrollBar()->isVisible());
        QVERIFY(shown().first()->height() >= shown().first()->minimumSizeHint().height());
        QVERIFY(m_area->viewport()->height() >= shown().first()->height());
    }

    void itEndsWithMessagesInIt()
    {
        show({{"甲", "http://127.0.0.1/1"}, {"乙", ""}});
        const QList<QLabel *> labels = shown();
        const QPointer<QLabel> first(labels.first());
        m_area.reset();
        QVERIFY(!first);
    }
};

ZV_TEST(StatusMessageScrollAreaTest)
#include "test_status_message_scrollarea.moc"
