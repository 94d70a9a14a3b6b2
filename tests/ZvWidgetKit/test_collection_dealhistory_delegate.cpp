#include "ZvWidgetKit/collection_dealhistory_delegate.h"
#include "pagelog.h"
#include "support/testregistry.h"

#include <QPainter>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QtTest/QtTest>

#include <memory>

namespace {

const QColor ground(22, 24, 28);

QImage painted(const QAbstractItemDelegate &delegate, const QStyleOptionViewItem &option,
               const QModelIndex &index)
{
    QImage image(140, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(ground);
    QPainter painter(&image);
    delegate.paint(&painter, option, index);
    return image;
}

int count(const QImage &image, const QColor &colour)
{
    int found = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            found += image.pixelColor(x, y) == colour ? 1 : 0;
    }
    return found;
}

} // namespace

class CollectionDealHistoryDelegateTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTableView> m_view;
    std::unique_ptr<QStandardItemModel> m_model;

    QModelIndex index() const { return m_model->index(0, 0); }

    // As the list hands it over: its sheet makes the selection's own background transparent.
    QStyleOptionViewItem option(QStyle::State extra = QStyle::State_None) const
    {
        QStyleOptionViewItem made;
        made.initFrom(m_view.get());
        made.widget = m_view.get();
        made.rect = QRect(10, 4, 120, 30);
        made.font = m_view->font();
        made.fontMetrics = QFontMetrics(made.font);
        made.state = QStyle::State_Enabled | QStyle::State_Active | extra;
        made.displayAlignment = Qt::AlignRight | Qt::AlignVCenter;
        return made;
    }

    QImage cell(const QStyleOptionViewItem &with) const
    {
        return painted(Collection_DealHistory_Delegate(), with, index());
    }

private slots:
    void init()
    {
        m_model = std::make_unique<QStandardItemModel>(1, 1);
        // A block of ink has pixels of exactly the text's colour.
        m_model->setData(index(), QString(3, QChar(0x2588)), Qt::DisplayRole);
        m_view = std::make_unique<QTableView>();
        m_view->setStyleSheet(QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                             "selection-background-color: transparent;}"));
        m_view->setModel(m_model.get());
        m_view->ensurePolished();
    }

    void cleanup()
    {
        m_view.reset();
        m_model.reset();
    }

    void plainCellIsThatOfTheBaseClass()
    {
        m_model->setData(index(), QColor(Qt::green), Qt::ForegroundRole);
        zvtest::PageLog log;
        const QImage image = cell(option());
        QCOMPARE(image, painted(QStyledItemDelegate(), option(), index()));
        QVERIFY(count(image, QColor(Qt::green)) > 50);
        QCOMPARE(log.take(), QStringList());
    }

    void focusFrameIsGone()
    {
        const QStyle::State focus = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
        QCOMPARE(cell(option(focus)), cell(option()));
        const QStyle::State both = focus | QStyle::State_Selected;
        QCOMPARE(cell(option(both)), cell(option(QStyle::State_Selected)));
        QVERIFY(painted(QStyledItemDelegate(), option(focus), index()) != cell(option()));
    }

    void selectedDealKeepsItsColourAndTellsIt_data()
    {
        QTest::addColumn<QColor>("colour");
        QTest::newRow("red") << QColor(Qt::red);
        QTest::newRow("green") << QColor(Qt::green);
        QTest::newRow("white") << QColor(Qt::white);
    }

    void selectedDealKeepsItsColourAndTellsIt()
    {
        QFETCH(QColor, colour);
        m_model->setData(index(), colour, Qt::ForegroundRole);
        // In a window behind others and in a disabled table, too.
        for (const QStyle::State missing :
             {QStyle::State(QStyle::State_None), QStyle::State(QStyle::State_Active),
              QStyle::State(QStyle::State_Enabled)}) {
            QStyleOptionViewItem with = option(QStyle::State_Selected);
            with.palette.setColor(QPalette::HighlightedText, Qt::magenta);
            with.state &= ~missing;
            zvtest::PageLog log;
            QVERIFY(count(cell(with), colour) > 50);
            QString told;
            QDebug(&told).nospace() << colour;
            QCOMPARE(log.take(), QStringList{told.trimmed()});
        }
    }

    void foregroundThatIsNoColourIsLeftToThePalette()
    {
        for (const QVariant &foreground : {QVariant(), QVariant::fromValue(QSize(1, 2))}) {
            m_model->setData(index(), foreground, Qt::ForegroundRole);
            QStyleOptionViewItem with = option(QStyle::State_Selected);
            with.palette.setColor(QPalette::HighlightedText, Qt::magenta);
            zvtest::PageLog log;
            QVERIFY(count(cell(with), QColor(Qt::magenta)) > 50);
            QCOMPARE(log.take(), QStringList());
        }
    }

    void theOptionItselfStaysAsItIs()
    {
        m_model->setData(index(), QColor(Qt::red), Qt::ForegroundRole);
        const QStyleOptionViewItem with = option(QStyle::State_Selected | QStyle::State_HasFocus);
        const QStyleOptionViewItem before = with;
        zvtest::PageLog log;
        cell(with);
        QCOMPARE(int(with.state), int(before.state));
        QVERIFY(with.palette == before.palette);
    }

    void sizeHintIsThatOfTheBaseClass()
    {
        QCOMPARE(Collection_DealHistory_Delegate().sizeHint(option(), index()),
                 QStyledItemDelegate().sizeHint(option(), index()));
    }
};

ZV_TEST(CollectionDealHistoryDelegateTest)
#include "test_collection_dealhistory_delegate.moc"
