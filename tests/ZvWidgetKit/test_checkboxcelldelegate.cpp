#include "ZvWidgetKit/dealwidget_prepay_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_revoke_tabledelegate.h"
#include "support/testregistry.h"

#include <QApplication>
#include <QPainter>
#include <QProxyStyle>
#include <QStandardItemModel>
#include <QTableView>
#include <QtTest/QtTest>

#include <memory>

namespace {

const QColor ground(22, 24, 28);
const QRect cell(10, 4, 50, 22);

// A style with this margin around a focus frame.
class MarginStyle : public QProxyStyle
{
public:
    explicit MarginStyle(int margin) : QProxyStyle(QStringLiteral("Fusion")), m_margin(margin) { }

    int pixelMetric(PixelMetric metric, const QStyleOption *option = nullptr,
                    const QWidget *widget = nullptr) const override
    {
        return metric == PM_FocusFrameHMargin ? m_margin
                                              : QProxyStyle::pixelMetric(metric, option, widget);
    }

private:
    int m_margin;
};

template <typename Paint>
QImage painted(Paint paint)
{
    QImage image(80, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(ground);
    QPainter painter(&image);
    paint(&painter);
    return image;
}

QImage painted(const QAbstractItemDelegate &delegate, const QStyleOptionViewItem &option,
               const QModelIndex &index)
{
    return painted([&](QPainter *painter) { delegate.paint(painter, option, index); });
}

QRect inkOf(const QImage &image)
{
    QRect ink;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixelColor(x, y) != ground)
                ink |= QRect(x, y, 1, 1);
        }
    }
    return ink;
}

} // namespace

class CheckBoxCellDelegateTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTableView> m_view;
    std::unique_ptr<QStandardItemModel> m_model;
    DealWidget_Revoke_tableDelegate m_delegate;

    QModelIndex tick() const { return m_model->index(0, 0); }
    QVariant state() const { return tick().data(Qt::CheckStateRole); }

    QStyleOptionViewItem option(QStyle::State extra = QStyle::State_None) const
    {
        QStyleOptionViewItem made;
        made.initFrom(m_view.get());
        made.widget = m_view.get();
        made.rect = cell;
        made.font = m_view->font();
        made.fontMetrics = QFontMetrics(made.font);
        made.decorationSize = QSize(16, 16);
        made.state = QStyle::State_Enabled | QStyle::State_Active | extra;
        return made;
    }

    bool send(QEvent *event, const QModelIndex &index)
    {
        return m_delegate.editorEvent(event, m_model.get(), option(), index);
    }

    bool sendMouse(QEvent::Type type, const QPoint &place, const QModelIndex &index)
    {
        QMouseEvent event(type, place, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        return send(&event, index);
    }

    bool release(const QPoint &place)
    {
        return sendMouse(QEvent::MouseButtonRelease, place, tick());
    }

    bool sendKey(QEvent::Type type, int key)
    {
        QKeyEvent event(type, key, Qt::NoModifier);
        return send(&event, tick());
    }

private slots:
    void init()
    {
        QApplication::setStyle(new MarginStyle(2));
        m_model = std::make_unique<QStandardItemModel>(1, 2);
        m_model->setData(tick(), Qt::Unchecked, Qt::CheckStateRole);
        m_model->item(0, 0)->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled
                                      | Qt::ItemIsUserCheckable);
        m_model->setData(m_model->index(0, 1), QStringLiteral("text"));
        m_view = std::make_unique<QTableView>();
        m_view->setModel(m_model.get());
        m_view->ensurePolished();
    }

    void cleanup()
    {
        m_view.reset();
        m_model.reset();
    }

    void theBoxIsPaintedInTheMiddle_data()
    {
        QTest::addColumn<int>("margin");
        QTest::addColumn<QRect>("place");
        QTest::newRow("2") << 2 << QRect(25, 7, 21, 16);
        QTest::newRow("3") << 3 << QRect(25, 7, 21, 16);
        QTest::newRow("10") << 10 << QRect(25, 7, 21, 16);
    }

    void theBoxIsPaintedInTheMiddle()
    {
        QFETCH(int, margin);
        QFETCH(QRect, place);
        QApplication::setStyle(new MarginStyle(margin));
        m_view->ensurePolished();
        for (const Qt::CheckState checked : {Qt::Unchecked, Qt::Checked}) {
            m_model->setData(tick(), checked, Qt::CheckStateRole);
            QStyleOptionViewItem placed = option();
            placed.rect = place;
            const QImage image = painted(m_delegate, option(), tick());
            QCOMPARE(image, painted(QStyledItemDelegate(), placed, tick()));
            QVERIFY(!inkOf(image).isNull());
        }
        const QRect ink = inkOf(painted(m_delegate, option(), tick()));
        if (margin == 2)
            QVERIFY(qAbs(ink.center().x() - cell.center().x()) <= 2);
        QVERIFY(qAbs(ink.center().y() - cell.center().y()) <= 1);
    }

    void aNarrowCellIsNoTrouble()
    {
        QStyleOptionViewItem narrow = option();
        narrow.rect = QRect(10, 4, 3, 22);
        painted(m_delegate, narrow, tick());
        QMouseEvent event(QEvent::MouseButtonRelease, QPointF(11, 15), Qt::LeftButton,
                          Qt::LeftButton, Qt::NoModifier);
        m_delegate.editorEvent(&event, m_model.get(), narrow, tick());
    }

    void otherCellsAreThoseOfTheBaseClass()
    {
        const QModelIndex text = m_model->index(0, 1);
        QCOMPARE(painted(m_delegate, option(), text),
                 painted(QStyledItemDelegate(), option(), text));
        const QStyle::State focus = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
        QCOMPARE(painted(m_delegate, option(focus), text), painted(m_delegate, option(), text));
        QCOMPARE(painted(m_delegate, option(focus), tick()), painted(m_delegate, option(), tick()));
        QVERIFY(painted(QStyledItemDelegate(), option(focus), text)
                != painted(m_delegate, option(), text));
    }

    void aSelectedCellKeepsItsColour()
    {
        const QModelIndex text = m_model->index(0, 1);
        m_model->setData(text, QString(3, QChar(0x2588)));
        m_model->setData(text, QColor(Qt::green), Qt::ForegroundRole);
        QStyleOptionViewItem selected = option(QStyle::State_Selected);
        selected.palette.setColor(QPalette::HighlightedText, Qt::magenta);
        selected.palette.setColor(QPalette::Highlight, ground);
        const QImage image = painted(m_delegate, selected, text);
        bool isGreen = false;
        for (int x = cell.left(); x <= cell.right(); ++x)
            isGreen |= image.pixelColor(x, cell.center().y()) == QColor(Qt::green);
        QVERIFY(isGreen);
    }

    // Every point around the cell: a release turns the tick in one square of it alone.
    void aReleaseOverTheBoxTurnsTheTick_data()
    {
        QTest::addColumn<int>("margin");
        QTest::addColumn<QRect>("place");
        QTest::newRow("2") << 2 << QRect(30, 7, 16, 16);
        QTest::newRow("5") << 5 << QRect(33, 7, 16, 16);
    }

    void aReleaseOverTheBoxTurnsTheTick()
    {
        QFETCH(int, margin);
        QFETCH(QRect, place);
        QApplication::setStyle(new MarginStyle(margin));
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < 70; ++x) {
                const bool isOver = place.contains(x, y);
                const QVariant before = state();
                if (release(QPoint(x, y)) != isOver || (state() != before) != isOver) {
                    QFAIL(qPrintable(QStringLiteral("at %1,%2").arg(x).arg(y)));
                }
            }
        }
    }

    void aReleaseTurnsBackAndForth()
    {
        const QPoint over(38, 15);
        for (const Qt::CheckState turned : {Qt::Checked, Qt::Unchecked, Qt::Checked}) {
            QVERIFY(release(over));
            QCOMPARE(state(), QVariant(int(turned)));
        }
        m_model->setData(tick(), Qt::PartiallyChecked, Qt::CheckStateRole);
        QVERIFY(release(over));
        QCOMPARE(state(), QVariant(int(Qt::Checked)));
    }

    void otherEventsOfTheMouseDoNothing()
    {
        for (const QEvent::Type type :
             {QEvent::MouseButtonPress, QEvent::MouseButtonDblClick, QEvent::MouseMove})
            QVERIFY(!sendMouse(type, QPoint(38, 15), tick()));
        QCOMPARE(state(), QVariant(int(Qt::Unchecked)));
    }

    void keys_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("turns");
        QTest::newRow("space") << int(Qt::Key_Space) << true;
        QTest::newRow("select") << int(Qt::Key_Select) << true;
        QTest::newRow("return") << int(Qt::Key_Return) << false;
        QTest::newRow("a letter") << int(Qt::Key_A) << false;
    }

    void keys()
    {
        QFETCH(int, key);
        QFETCH(bool, turns);
        QCOMPARE(sendKey(QEvent::KeyPress, key), turns);
        QCOMPARE(state(), QVariant(int(turns ? Qt::Checked : Qt::Unchecked)));
        QVERIFY(!sendKey(QEvent::KeyRelease, key));
        QCOMPARE(state(), QVariant(int(turns ? Qt::Checked : Qt::Unchecked)));
    }

    void cellsThatCannotBeTickedAreLeftAlone()
    {
        const QPoint over(38, 15);
        QStandardItem *item = m_model->item(0, 0);
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsEnabled);
        QVERIFY(!release(over));
        QVERIFY(!sendKey(QEvent::KeyPress, Qt::Key_Space));
        item->setFlags(Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
        QVERIFY(!release(over));
        QVERIFY(!sendKey(QEvent::KeyPress, Qt::Key_Space));
        QCOMPARE(state(), QVariant(int(Qt::Unchecked)));
        item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsUserCheckable);
        item->setData(QVariant(), Qt::CheckStateRole);
        QVERIFY(!release(over));
        QVERIFY(!sendKey(QEvent::KeyPress, Qt::Key_Space));
        QVERIFY(!state().isValid());
    }

    void sizeHintIsThatOfTheBaseClass()
    {
        QCOMPARE(m_delegate.sizeHint(option(), tick()),
                 QStyledItemDelegate().sizeHint(option(), tick()));
    }

    void theFamilyIsOfOneKind()
    {
        const DealWidget_PrePay_TableDelegate prepared;
        QCOMPARE(painted(prepared, option(), tick()), painted(m_delegate, option(), tick()));
        for (const QMetaObject *meta : {&DealWidget_PrePay_TableDelegate::staticMetaObject,
                                        &DealWidget_Revoke_tableDelegate::staticMetaObject}) {
            QCOMPARE(meta->superClass(), &QStyledItemDelegate::staticMetaObject);
            QCOMPARE(meta->methodCount(), meta->methodOffset());
        }
    }
};

ZV_TEST(CheckBoxCellDelegateTest)
#include "test_checkboxcelldelegate.moc"
