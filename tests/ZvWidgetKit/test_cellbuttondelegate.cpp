#include "ZvWidgetKit/cellbuttondelegate.h"
#include "support/testregistry.h"

#include <QApplication>
#include <QCursor>
#include <QDialog>
#include <QHeaderView>
#include <QPainter>
#include <QProxyStyle>
#include <QScrollBar>
#include <QStandardItemModel>
#include <QStyleOptionButton>
#include <QTableView>
#include <QVBoxLayout>
#include <QtTest/QtTest>

#include <memory>

namespace {

constexpr int ButtonColumn = 1;
constexpr int RowHeight = 24;

// Buttons of this delegate are named by their cells; a cell without text has none.
class Buttons : public CellButtonDelegate
{
public:
    Buttons() : CellButtonDelegate(ButtonColumn, nullptr) { }

    QList<int> clicked; // rows
    std::function<void()> atClick;

protected:
    QString buttonText(const QModelIndex &index) const override { return index.data().toString(); }
    void buttonClicked(const QModelIndex &index) override
    {
        clicked << index.row();
        if (atClick)
            atClick();
    }
};

class View : public QTableView
{
public:
    Buttons *buttons = nullptr;

protected:
    void mouseReleaseEvent(QMouseEvent *event) override
    {
        isInRelease = true;
        buttons->clickAfter([this, event] {
            QTableView::mouseReleaseEvent(event);
            isInRelease = false;
        });
    }

public:
    bool isInRelease = false;
};

// Keeps what a style is asked to draw.
class WatchedStyle : public QProxyStyle
{
public:
    struct Drawn {
        QString text;
        QRect rect;
        QStyle::State state;
        bool hasWidget;
        QColor ground;
    };
    static QList<Drawn> drawn;

    WatchedStyle() : QProxyStyle(QStringLiteral("Fusion")) { }

    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget) const override
    {
        const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
        if (element == CE_PushButton && button) {
            drawn << Drawn{button->text, button->rect, button->state, widget != nullptr,
                           button->palette.color(QPalette::Button)};
        }
        QProxyStyle::drawControl(element, option, painter, widget);
    }
};

QList<WatchedStyle::Drawn> WatchedStyle::drawn;

bool isHand()
{
    const QCursor *cursor = QGuiApplication::overrideCursor();
    return cursor && cursor->shape() == Qt::PointingHandCursor;
}

} // namespace

class CellButtonDelegateTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QStandardItemModel> m_model;
    std::unique_ptr<QWidget> m_window;
    Buttons *m_buttons = nullptr;
    View *m_view = nullptr;

    QRect cell(int row, int column = ButtonColumn) const
    {
        return m_view->visualRect(m_model->index(row, column));
    }
    QPoint button(int row) const { return cell(row).center(); }

    void fill(int rows)
    {
        m_model->clear();
        m_model->setColumnCount(3);
        for (int row = 0; row < rows; ++row) {
            m_model->appendRow({new QStandardItem("a"),
                                new QStandardItem(QStringLiteral("b%1").arg(row)),
                                new QStandardItem("c")});
        }
    }

    // Moves the mouse as the window system does.
    void moveTo(const QPoint &place)
    {
        QTest::mouseMove(m_window->windowHandle(),
                         m_view->viewport()->mapTo(m_window.get(), place));
        QCoreApplication::processEvents();
    }
    void moveAway() { moveTo(cell(0, 0).center()); }

    QList<WatchedStyle::Drawn> drawnNow()
    {
        WatchedStyle::drawn.clear();
        m_view->viewport()->grab();
        return std::exchange(WatchedStyle::drawn, {});
    }

    bool send(QEvent *event, int row, int column = ButtonColumn)
    {
        QStyleOptionViewItem option;
        option.rect = cell(row, column);
        return m_buttons->editorEvent(event, m_model.get(), option, m_model->index(row, column));
    }

    bool hover(QEvent::Type type, const QPointF &place, int row = 0)
    {
        QHoverEvent event(type, place, place);
        return send(&event, row);
    }

    bool release(const QPointF &place, int row = 0, int column = ButtonColumn)
    {
        QMouseEvent event(QEvent::MouseButtonRelease, place, Qt::LeftButton, Qt::NoButton,
                          Qt::NoModifier);
        return send(&event, row, column);
    }

private slots:
    void initTestCase() { QApplication::setStyle(new WatchedStyle); }

    void init()
    {
        m_model = std::make_unique<QStandardItemModel>();
        fill(5);
        m_window = std::make_unique<QWidget>();
        m_view = new View;
        m_buttons = new Buttons;
        m_view->buttons = m_buttons;
        m_view->setItemDelegate(m_buttons);
        connect(m_view, &QObject::destroyed, m_buttons, [buttons = m_buttons] { delete buttons; });
        m_view->setModel(m_model.get());
        m_view->setStyleSheet(QStringLiteral("QTableView{background-color:#16181c;}"));
        m_buttons->follow(m_view);
        m_view->verticalHeader()->setMinimumSectionSize(1);
        m_view->verticalHeader()->setDefaultSectionSize(RowHeight);
        auto *layout = new QVBoxLayout(m_window.get());
        layout->addWidget(m_view);
        m_window->resize(500, 400);
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        moveAway();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void cleanup()
    {
        m_window.reset();
        m_model.reset();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void buttonsArePaintedWithoutAWidget()
    {
        m_model->setData(m_model->index(2, ButtonColumn), QString());
        const QList<WatchedStyle::Drawn> drawn = drawnNow();
        QCOMPARE(drawn.size(), 4); // none in the row without a text
        QCOMPARE(drawn.at(0).text, QStringLiteral("b0"));
        QCOMPARE(drawn.at(0).rect, cell(0).adjusted(20, 1, -20, -1));
        QCOMPARE(drawn.at(3).rect, cell(4).adjusted(20, 1, -20, -1));
        for (const WatchedStyle::Drawn &each : drawn) {
            QVERIFY(!each.hasWidget);
            QVERIFY(each.ground.lightness() < 80); // dark, whatever the palette of the host is
            QVERIFY(each.state & QStyle::State_Enabled);
            QVERIFY(each.state & QStyle::State_Raised);
            QVERIFY(!(each.state & (QStyle::State_MouseOver | QStyle::State_Sunken)));
        }
        m_view->setEnabled(false);
        for (const WatchedStyle::Drawn &each : drawnNow())
            QVERIFY(!(each.state & QStyle::State_Enabled));
    }

    void buttonsFollowTheirCells()
    {
        m_view->setColumnWidth(ButtonColumn, 180);
        drawnNow();
        QCOMPARE(drawnNow().at(1).rect, cell(1).adjusted(20, 1, -20, -1));
        fill(60);
        QTRY_VERIFY(m_view->verticalScrollBar()->maximum() > 20);
        m_view->verticalScrollBar()->setValue(7);
        const QList<WatchedStyle::Drawn> drawn = drawnNow();
        QCOMPARE(drawn.at(0).text, QStringLiteral("b7"));
        QCOMPARE(drawn.at(0).rect, cell(7).adjusted(20, 1, -20, -1));
    }

    void aCellWithAButtonShowsNothingElse()
    {
        m_model->setData(m_model->index(0, ButtonColumn), QString());
        QStyleOptionViewItem option;
        option.rect = QRect(0, 0, 100, 24);
        QImage image(100, 24, QImage::Format_RGB32);
        image.fill(Qt::blue);
        const QImage before = image;
        {
            QPainter painter(&image);
            m_buttons->paint(&painter, option, m_model->index(0, ButtonColumn));
        }
        QCOMPARE(image, before);
        {
            QPainter painter(&image);
            m_buttons->paint(&painter, option, m_model->index(0, 0));
        }
        QVERIFY(image != before);
    }

    void thePainterStaysAsItWas()
    {
        QStyleOptionViewItem option;
        option.rect = QRect(0, 0, 100, 24);
        QImage image(100, 24, QImage::Format_RGB32);
        QPainter painter(&image);
        painter.setPen(Qt::cyan);
        painter.setBrush(Qt::magenta);
        m_buttons->paint(&painter, option, m_model->index(0, ButtonColumn));
        QCOMPARE(painter.pen().color(), QColor(Qt::cyan));
        QCOMPARE(painter.brush().color(), QColor(Qt::magenta));
    }

    void hoverAndPressAreSeen()
    {
        moveTo(button(1));
        QVERIFY(drawnNow().at(1).state & QStyle::State_MouseOver);
        QVERIFY(!(drawnNow().at(0).state & QStyle::State_MouseOver));
        QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, button(1));
        QVERIFY(drawnNow().at(1).state & QStyle::State_Sunken);
        QVERIFY(!(drawnNow().at(0).state & QStyle::State_Sunken));
        QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, button(1));
        QVERIFY(!(drawnNow().at(1).state & QStyle::State_Sunken));
        moveAway();
        QVERIFY(!(drawnNow().at(1).state & QStyle::State_MouseOver));
    }

    void theButtonIsPaintedAnewWhenTheMouseComesAndGoes()
    {
        QCoreApplication::processEvents();
        WatchedStyle::drawn.clear();
        moveTo(button(1));
        QTRY_VERIFY(!WatchedStyle::drawn.isEmpty());
        QVERIFY(WatchedStyle::drawn.last().state & QStyle::State_MouseOver);
        WatchedStyle::drawn.clear();
        moveTo(cell(1).topLeft() + QPoint(5, 12)); // in the cell, beside the button
        QTRY_VERIFY(!WatchedStyle::drawn.isEmpty());
        QVERIFY(!(WatchedStyle::drawn.last().state & QStyle::State_MouseOver));
    }

    // Each edge of the place where the mouse finds a button.
    void theHandAppearsOverTheButtonAlone_data()
    {
        QTest::addColumn<int>("left"); // from the left edge of the cell; -1 from the right one
        QTest::addColumn<int>("top");
        QTest::addColumn<bool>("hand");
        QTest::newRow("left edge") << 20 << 12 << true;
        QTest::newRow("beside it") << 19 << 12 << false;
        QTest::newRow("right edge") << -21 << 12 << true;
        QTest::newRow("right of it") << -20 << 12 << false;
        QTest::newRow("top edge") << 50 << 3 << true;
        QTest::newRow("painted above it") << 50 << 2 << false;
        QTest::newRow("bottom edge") << 50 << -4 << true;
        QTest::newRow("painted below it") << 50 << -3 << false;
    }

    void theHandAppearsOverTheButtonAlone()
    {
        QFETCH(int, left);
        QFETCH(int, top);
        QFETCH(bool, hand);
        const QRect area = cell(1);
        moveTo(QPoint(left < 0 ? area.right() + 1 + left : area.left() + left,
                      top < 0 ? area.bottom() + 1 + top : area.top() + top));
        QCOMPARE(isHand(), hand);
        moveAway();
        QVERIFY(!isHand());
    }

    void theHandStaysFromButtonToButton()
    {
        for (const int row : {0, 1, 2, 1, 0}) {
            moveTo(button(row));
            QVERIFY(isHand());
            moveTo(button(row) + QPoint(3, 2));
            QVERIFY(isHand());
            QVERIFY(drawnNow().at(row).state & QStyle::State_MouseOver);
        }
        moveTo(cell(0).topLeft() + QPoint(3, 3));
        QVERIFY(!isHand());
    }

    // Whatever gives it back gives all of it back: none is left below.
    void theHandIsGivenBack_data()
    {
        QTest::addColumn<QString>("way");
        for (const char *way :
             {"other cell", "below the rows", "out of the view", "out of the window", "reset",
              "emptied", "row removed", "row inserted", "sorted", "scrolled", "hidden",
              "window hidden", "disabled", "told", "destroyed", "a box"})
            QTest::newRow(way) << way;
    }

    void theHandIsGivenBack()
    {
        QFETCH(QString, way);
        fill(60);
        moveTo(button(1));
        QVERIFY(isHand());
        if (way == "other cell") {
            moveTo(cell(1, 2).center());
        } else if (way == "below the rows") {
            fill(2);
            moveTo(button(1));
            QVERIFY(isHand());
            moveTo(button(1) + QPoint(0, 3 * RowHeight));
        } else if (way == "out of the view") {
            QTest::mouseMove(m_window->windowHandle(), QPoint(2, 2));
            QCoreApplication::processEvents();
        } else if (way == "out of the window") {
            QEvent leave(QEvent::Leave);
            QCoreApplication::sendEvent(m_view->viewport(), &leave);
        } else if (way == "reset") {
            fill(60);
        } else if (way == "emptied") {
            m_model->clear();
        } else if (way == "row removed") {
            m_model->removeRow(1);
        } else if (way == "row inserted") {
            m_model->insertRow(0);
        } else if (way == "sorted") {
            m_model->sort(ButtonColumn, Qt::DescendingOrder);
        } else if (way == "scrolled") {
            m_view->verticalScrollBar()->setValue(20);
        } else if (way == "hidden") {
            m_view->hide();
        } else if (way == "window hidden") {
            m_window->hide();
        } else if (way == "disabled") {
            m_view->setEnabled(false);
        } else if (way == "told") {
            m_buttons->leaveButton();
        } else if (way == "destroyed") {
            m_window.reset();
        } else {
            QDialog box;
            box.setModal(true);
            bool wasHand = true;
            QTimer::singleShot(0, &box, [&] {
                wasHand = !QTest::qWaitForWindowActive(&box) || isHand();
                box.accept();
            });
            box.exec();
            QVERIFY(!wasHand);
        }
        QVERIFY(!QGuiApplication::overrideCursor());
        QGuiApplication::restoreOverrideCursor(); // one too many does no harm
    }

    void theHandComesBackAfterAReset()
    {
        moveTo(button(1));
        fill(5);
        QVERIFY(!isHand());
        moveTo(button(1) + QPoint(1, 0));
        QVERIFY(isHand());
        m_buttons->leaveButton();
        moveTo(button(1));
        QVERIFY(isHand());
        moveAway();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void oneHandIsHeldAtMost()
    {
        for (int i = 0; i < 3; ++i)
            QVERIFY(hover(QEvent::HoverEnter, button(0)));
        QVERIFY(isHand());
        QVERIFY(hover(QEvent::HoverLeave, button(0)));
        QVERIFY(!QGuiApplication::overrideCursor());
        hover(QEvent::HoverLeave, button(0));

        // Nor is another's cursor given back.
        QGuiApplication::setOverrideCursor(Qt::WaitCursor);
        hover(QEvent::HoverLeave, button(0));
        QVERIFY(QGuiApplication::overrideCursor());
        QGuiApplication::restoreOverrideCursor();
    }

    void everyEventIsTaken()
    {
        const QPoint place = button(0);
        for (const QEvent::Type type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease,
                                        QEvent::MouseButtonDblClick, QEvent::MouseMove}) {
            QMouseEvent event(type, place, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            for (const int column : {0, 1, 2})
                QVERIFY(send(&event, 0, column));
        }
        QKeyEvent key(QEvent::KeyPress, Qt::Key_Space, Qt::NoModifier);
        QEvent other(QEvent::User);
        for (const int column : {0, 1, 2}) {
            QVERIFY(send(&key, 0, column));
            QVERIFY(send(&other, 0, column));
        }
        QVERIFY(hover(QEvent::HoverEnter, QPointF(-1, -1)));
        QVERIFY(!isHand());
        QCOMPARE(m_buttons->clicked, QList<int>{0});
    }

    void placesAreRoundedToPixels()
    {
        const QRect found = cell(0).adjusted(20, 3, -20, -3);
        hover(QEvent::HoverEnter, found.topLeft() - QPointF(0.4, 0.4));
        QVERIFY(isHand());
        hover(QEvent::HoverLeave, found.bottomRight() + QPointF(0.4, 0.4));
        QVERIFY(!isHand());
        hover(QEvent::HoverEnter, found.topLeft() - QPointF(0.6, 0));
        QVERIFY(!isHand());
        release(found.topLeft() - QPointF(0, 0.6));
        QCOMPARE(m_buttons->clicked, QList<int>());
        release(found.topLeft() - QPointF(0, 0.4));
        QCOMPARE(m_buttons->clicked, QList<int>{0});
    }

    void theReleaseAloneDecides()
    {
        const QRect found = cell(0).adjusted(20, 3, -20, -3);
        QVERIFY(release(found.center() - QPoint(0, 9)));
        QVERIFY(release(found.center(), 0, 0));
        QCOMPARE(m_buttons->clicked, QList<int>());
        QVERIFY(release(found.topLeft()));
        QVERIFY(release(found.bottomRight()));
        QCOMPARE(m_buttons->clicked, (QList<int>{0, 0}));

        // Through the view: pressed beside the button and released on it, then the other way.
        m_buttons->clicked.clear();
        const QPoint beside = cell(2).topLeft() + QPoint(4, 12);
        QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, beside);
        QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, button(2));
        QCOMPARE(m_buttons->clicked, QList<int>{2});
        QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, button(2));
        QTest::mouseRelease(m_view->viewport(), Qt::LeftButton, {}, beside);
        QCOMPARE(m_buttons->clicked, QList<int>{2});
    }

    void buttonsWorkAfterSortingScrollingAndAReset()
    {
        fill(60);
        m_model->sort(ButtonColumn, Qt::DescendingOrder);
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, button(3));
        m_view->verticalScrollBar()->setValue(20);
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, button(23));
        fill(4);
        m_view->scrollToTop();
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, button(1));
        QCOMPARE(m_buttons->clicked, (QList<int>{3, 23, 1}));
    }

    // A dialog may end the view, which goes on with itself while it takes the release.
    void aClickIsToldWhenTheViewHasDoneWithIt()
    {
        bool wasInRelease = true;
        m_buttons->atClick = [&] { wasInRelease = m_view->isInRelease; };
        QTest::mouseClick(m_view->viewport(), Qt::LeftButton, {}, button(1));
        QCOMPARE(m_buttons->clicked, QList<int>{1});
        QVERIFY(!wasInRelease);
        m_buttons->atClick = [&] { m_window.reset(); };
        QTest::mousePress(m_view->viewport(), Qt::LeftButton, {}, button(2));
        moveTo(button(2));
        QMouseEvent event(QEvent::MouseButtonRelease, button(2), Qt::LeftButton, Qt::NoButton,
                          Qt::NoModifier);
        QCoreApplication::sendEvent(m_view->viewport(), &event);
        QVERIFY(!m_window);
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

ZV_TEST(CellButtonDelegateTest)
#include "test_cellbuttondelegate.moc"
