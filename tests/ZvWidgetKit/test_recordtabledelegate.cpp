#include "ZvWidgetKit/dealwidget_buysell_captabledelegate.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_delegate_tabledelegate.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow_tabledelegate.h"
#include "support/testregistry.h"

#include <QPainter>
#include <QStandardItemModel>
#include <QTableView>
#include <QtTest/QtTest>

#include <memory>
#include <vector>

namespace {

QImage painted(const QAbstractItemDelegate &delegate, const QStyleOptionViewItem &option,
               const QModelIndex &index)
{
    QImage image(140, 40, QImage::Format_ARGB32_Premultiplied);
    image.fill(QColor(22, 24, 28));
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

// The delegates of the record pages, the holdings and the day's sums, which are all alike.
class RecordTableDelegateTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTableView> m_view;
    std::unique_ptr<QStandardItemModel> m_model;
    std::vector<std::unique_ptr<QStyledItemDelegate>> m_delegates;

    QModelIndex index() const { return m_model->index(0, 0); }

    // As the tables hand it over: their sheet makes the selection's own background transparent.
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

    void addDelegates()
    {
        QTest::addColumn<int>("place");
        for (std::size_t place = 0; place < m_delegates.size(); ++place)
            QTest::newRow(m_delegates.at(place)->metaObject()->className()) << int(place);
    }
    const QStyledItemDelegate &delegate() const
    {
        QFETCH(int, place);
        return *m_delegates.at(std::size_t(place));
    }
    QImage cell(const QStyleOptionViewItem &with) const
    {
        return painted(delegate(), with, index());
    }

private slots:
    void initTestCase()
    {
        m_delegates.push_back(std::make_unique<DealWidget_Select_DealRecord_TableDelegate>());
        m_delegates.push_back(std::make_unique<DealWidget_Select_Delegate_TableDelegate>());
        m_delegates.push_back(std::make_unique<DealWidget_Select_ApplyRecord_TableDelegate>());
        m_delegates.push_back(std::make_unique<DealWidget_Select_MoneyFlow_TableDelegate>());
        m_delegates.push_back(std::make_unique<DealWidget_BuySell_CapTableDelegate>());
        m_delegates.push_back(std::make_unique<DealWidget_BuySell_DealTableDelegate>());
    }

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

    void cleanupTestCase() { m_delegates.clear(); }

    void aPlainCellIsThatOfTheBaseClass_data() { addDelegates(); }
    void aPlainCellIsThatOfTheBaseClass()
    {
        m_model->setData(index(), QColor(Qt::green), Qt::ForegroundRole);
        const QImage image = cell(option());
        QCOMPARE(image, painted(QStyledItemDelegate(), option(), index()));
        QVERIFY(count(image, QColor(Qt::green)) > 50);
    }

    void theFocusFrameIsGone_data() { addDelegates(); }
    void theFocusFrameIsGone()
    {
        const QStyle::State focus = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
        QCOMPARE(cell(option(focus)), cell(option()));
        QCOMPARE(cell(option(focus | QStyle::State_Selected)),
                 cell(option(QStyle::State_Selected)));
        QVERIFY(painted(QStyledItemDelegate(), option(focus), index()) != cell(option()));
    }

    void aSelectedCellKeepsItsColour_data() { addDelegates(); }
    void aSelectedCellKeepsItsColour()
    {
        for (const QColor &colour : {QColor(Qt::red), QColor(Qt::green), QColor(Qt::yellow)}) {
            m_model->setData(index(), colour, Qt::ForegroundRole);
            // In a window behind others and in a disabled table, too.
            for (const QStyle::State missing :
                 {QStyle::State(QStyle::State_None), QStyle::State(QStyle::State_Active),
                  QStyle::State(QStyle::State_Enabled)}) {
                QStyleOptionViewItem with = option(QStyle::State_Selected);
                with.palette.setColor(QPalette::HighlightedText, Qt::magenta);
                with.state &= ~missing;
                QVERIFY(count(cell(with), colour) > 50);
            }
        }
    }

    void aForegroundThatIsNoColourIsLeftToThePalette_data() { addDelegates(); }
    void aForegroundThatIsNoColourIsLeftToThePalette()
    {
        for (const QVariant &foreground : {QVariant(), QVariant::fromValue(QSize(1, 2))}) {
            m_model->setData(index(), foreground, Qt::ForegroundRole);
            QStyleOptionViewItem with = option(QStyle::State_Selected);
            with.palette.setColor(QPalette::HighlightedText, Qt::magenta);
            QVERIFY(count(cell(with), QColor(Qt::magenta)) > 50);
        }
    }

    void theOptionItselfStaysAsItIs_data() { addDelegates(); }
    void theOptionItselfStaysAsItIs()
    {
        m_model->setData(index(), QColor(Qt::red), Qt::ForegroundRole);
        const QStyleOptionViewItem with = option(QStyle::State_Selected | QStyle::State_HasFocus);
        const QStyleOptionViewItem before = with;
        cell(with);
        QCOMPARE(int(with.state), int(before.state));
        QVERIFY(with.palette == before.palette);
    }

    void sizeHintsAreThoseOfTheBaseClass_data() { addDelegates(); }
    void sizeHintsAreThoseOfTheBaseClass()
    {
        QCOMPARE(delegate().sizeHint(option(), index()),
                 QStyledItemDelegate().sizeHint(option(), index()));
    }
};

ZV_TEST(RecordTableDelegateTest)
#include "test_recordtabledelegate.moc"
