#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/collectiontabledelegate.h"
#include "support/testregistry.h"

#include <QPainter>
#include <QPixmap>
#include <QStandardItemModel>
#include <QStyledItemDelegate>
#include <QTableView>

#include <memory>

namespace {

const QRect Cell(10, 4, 120, 30);

QImage triangle(QColor colour)
{
    QImage image(24, 24, QImage::Format_ARGB32);
    image.fill(colour);
    return image;
}

} // namespace

class CollectionTableDelegateTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<QTableView> m_view;
    std::unique_ptr<QStandardItemModel> m_model;

    QModelIndex index() const { return m_model->index(0, 0); }

    // As the table hands it over: its sheet makes the selection's own background transparent.
    QStyleOptionViewItem option(QStyle::State extra = QStyle::State_None) const
    {
        QStyleOptionViewItem made;
        made.initFrom(m_view.get());
        made.widget = m_view.get();
        made.rect = Cell;
        made.font = m_view->font();
        made.fontMetrics = QFontMetrics(made.font);
        made.state = QStyle::State_Enabled | QStyle::State_Active | extra;
        made.displayAlignment = Qt::AlignRight | Qt::AlignVCenter;
        return made;
    }

    template <typename Paint>
    static QImage painted(Paint paint)
    {
        QImage image(140, 40, QImage::Format_ARGB32_Premultiplied);
        image.fill(QColor(21, 21, 21));
        QPainter painter(&image);
        paint(&painter);
        return image;
    }

    QImage cell(const QStyleOptionViewItem &with) const
    {
        return painted(
            [&](QPainter *painter) { CollectionTableDelegate().paint(painter, with, index()); });
    }

    static QColor selectedRow()
    {
        return QColor(
            ZvServerConfig::getZvServerConfigInstance()->getStyleOf_MarketTableSelectRow());
    }

    static int count(const QImage &image, const QColor &colour)
    {
        int found = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x)
                found += image.pixelColor(x, y) == colour ? 1 : 0;
        }
        return found;
    }

    // The smallest rectangle that holds all pixels of a colour.
    static QRect extent(const QImage &image, const QColor &colour)
    {
        QRect all;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (image.pixelColor(x, y) == colour)
                    all |= QRect(x, y, 1, 1);
            }
        }
        return all;
    }

private slots:
    void init()
    {
        m_model = std::make_unique<QStandardItemModel>(1, 1);
        m_model->setData(index(), QStringLiteral("12.34"), Qt::DisplayRole);
        m_view = std::make_unique<QTableView>();
        m_view->setStyleSheet(
            QStringLiteral("QTableView {background-color: rgb(21,21,21);border: none;"
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
        const QImage base = painted(
            [&](QPainter *painter) { QStyledItemDelegate().paint(painter, option(), index()); });
        QCOMPARE(cell(option()), base);
        QVERIFY(count(base, QColor(21, 21, 21)) < base.width() * base.height());
    }

    void focusFrameIsGone()
    {
        const QStyle::State focus = QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
        QCOMPARE(cell(option(focus)), cell(option()));
        const QStyle::State both = focus | QStyle::State_Selected;
        QCOMPARE(cell(option(both)), cell(option(QStyle::State_Selected)));
    }

    void selectedCellHasThePlatformsBackground()
    {
        QVERIFY(selectedRow().isValid());
        const QImage image = cell(option(QStyle::State_Selected));
        QCOMPARE(image.pixelColor(Cell.topLeft()), selectedRow());
        QCOMPARE(image.pixelColor(Cell.bottomRight()), selectedRow());
        QCOMPARE(extent(image, selectedRow()), Cell);
        QCOMPARE(image.pixelColor(Cell.right() + 1, Cell.top()), QColor(21, 21, 21));
        QCOMPARE(count(cell(option()), selectedRow()), 0);
    }

    void selectedCellKeepsItsColour_data()
    {
        QTest::addColumn<QColor>("colour");
        QTest::newRow("red") << QColor(Qt::red);
        QTest::newRow("green") << QColor(Qt::green);
        QTest::newRow("yellow") << QColor(Qt::yellow);
        QTest::newRow("white") << QColor(Qt::white);
    }

    void selectedCellKeepsItsColour()
    {
        QFETCH(QColor, colour);
        // A block of ink has pixels of exactly the text's colour.
        m_model->setData(index(), QString(3, QChar(0x2588)), Qt::DisplayRole);
        m_model->setData(index(), colour, Qt::ForegroundRole);
        QVERIFY(count(cell(option(QStyle::State_Selected)), colour) > 50);
        QVERIFY(count(cell(option()), colour) > 50);
        // In a window behind others and in a disabled table too.
        for (const QStyle::StateFlag missing : {QStyle::State_Active, QStyle::State_Enabled}) {
            QStyleOptionViewItem with = option(QStyle::State_Selected);
            with.state &= ~missing;
            QVERIFY(count(cell(with), colour) > 50);
        }
    }

    void foregroundThatIsNoColourIsLeftToThePalette()
    {
        m_model->setData(index(), QString(3, QChar(0x2588)), Qt::DisplayRole);
        m_model->setData(index(), QVariant::fromValue(QSize(1, 2)), Qt::ForegroundRole);
        QStyleOptionViewItem with = option(QStyle::State_Selected);
        with.palette.setColor(QPalette::HighlightedText, Qt::magenta);
        QVERIFY(count(cell(with), QColor(Qt::magenta)) > 50);
    }

    void triangleStandsLeftOfTheNumber_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("short") << "1";
        QTest::newRow("long") << "-12.34";
        QTest::newRow("empty") << "";
    }

    void triangleStandsLeftOfTheNumber()
    {
        QFETCH(QString, text);
        m_model->setData(index(), text, Qt::DisplayRole);
        m_model->setData(index(), QColor(Qt::white), Qt::ForegroundRole);
        m_model->setData(index(), triangle(Qt::cyan), Qt::UserRole);
        const QFontMetrics metrics(m_view->font());
        const int side = metrics.averageCharWidth();
        QVERIFY(side > 3);
        const QRect expected(Cell.right() + 1 - (metrics.horizontalAdvance(text) + 3) - side,
                             Cell.top() + 2 + (Cell.height() - side) / 2, side, side);
        QCOMPARE(extent(cell(option()), QColor(Qt::cyan)), expected);
        QCOMPARE(extent(cell(option(QStyle::State_Selected)), QColor(Qt::cyan)), expected);
    }

    void pixmapServesAsTriangleToo()
    {
        m_model->setData(index(), triangle(Qt::cyan), Qt::UserRole);
        const QImage fromImage = cell(option());
        m_model->setData(index(), QPixmap::fromImage(triangle(Qt::cyan)), Qt::UserRole);
        QCOMPARE(cell(option()), fromImage);
    }

    void triangleIsScaledAsThePixmapItself()
    {
        QImage picture(24, 24, QImage::Format_ARGB32);
        for (int y = 0; y < 24; ++y) {
            for (int x = 0; x < 24; ++x)
                picture.setPixelColor(x, y, QColor(x * 10, y * 10, (x * y) % 256));
        }
        m_model->setData(index(), QString(), Qt::DisplayRole);
        m_model->setData(index(), picture, Qt::UserRole);
        const int side = QFontMetrics(m_view->font()).averageCharWidth();
        const QImage scaled = QPixmap::fromImage(picture).scaled(side, side).toImage();
        const QImage image = cell(option());
        const QPoint at(Cell.right() + 1 - 3 - side, Cell.top() + 2 + (Cell.height() - side) / 2);
        for (int y = 0; y < side; ++y) {
            for (int x = 0; x < side; ++x)
                QCOMPARE(image.pixelColor(at + QPoint(x, y)), scaled.pixelColor(x, y));
        }
    }

    void triangleGrowsWithTheFont()
    {
        m_model->setData(index(), QString(), Qt::DisplayRole);
        m_model->setData(index(), triangle(Qt::cyan), Qt::UserRole);
        for (const int pixels : {12, 24, 12}) {
            QFont font = m_view->font();
            font.setPixelSize(pixels);
            QStyleOptionViewItem with = option();
            with.font = font;
            with.fontMetrics = QFontMetrics(font);
            const int side = with.fontMetrics.averageCharWidth();
            QCOMPARE(extent(cell(with), QColor(Qt::cyan)).size(), QSize(side, side));
        }
    }

    void nullPictureDrawsNothing()
    {
        const QImage without = cell(option());
        m_model->setData(index(), QImage(), Qt::UserRole);
        QCOMPARE(cell(option()), without);
    }

    void sizeHintIsThatOfTheBaseClass()
    {
        m_model->setData(index(), triangle(Qt::cyan), Qt::UserRole);
        QCOMPARE(CollectionTableDelegate().sizeHint(option(), index()),
                 QStyledItemDelegate().sizeHint(option(), index()));
    }
};

ZV_TEST(CollectionTableDelegateTest)
#include "test_collectiontabledelegate.moc"
