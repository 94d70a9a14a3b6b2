#include "client/mainwindow.h"

#include "endtoend/deliveryform.h"
#include "endtoend/marketpage.h"
#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "endtoend/tradingpanel.h"
#include "endtoend/wiretrader.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QAbstractButton>
#include <QCursor>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QProcess>
#include <QTableView>
#include <QWindow>
#include <QtTest/QtTest>

using endtoend::available;
using endtoend::BoxReader;
using endtoend::DeliveryForm;
using endtoend::notice;
using endtoend::paragraph;
using endtoend::patience;
using endtoend::TradingPanel;
using endtoend::WireTrader;

namespace {

const QString server = QStringLiteral("/ch/youbi/");
const QString secondServer = QStringLiteral("/ch/chajiu/");
const QString phone = QStringLiteral("13800000000");
const QString password = QStringLiteral("demo888888");

// What the demo account has a hundred pieces of.
const QString collection = QStringLiteral("1100");
const QString code = QStringLiteral("111001");
const QString goods = QStringLiteral("荷塘小型张");

const char *const holdingsTable = "DealWidget_Delivery_TableView";
const char *const ticketTable = "DealWidget_BuySell_CapTableView";
const char *const recordPage = "DealWidget_Select_DeliveryRecord";
const char *const recordTable = "DealWidget_Select_DeliveryRecord_TableView";
constexpr int takeOutColumn = 11;
constexpr int cancelColumn = 13;

const QString reviewed = QStringLiteral("待审核"); // state 2
const QString prepared = QStringLiteral("备货中"); // state 3
const QString sent = QStringLiteral("已发货"); // state 4
const QString cancelled = QStringLiteral("已取消"); // state 1

// How long the carrier waits before it packs and before it sends, in seconds.
const QString never = QStringLiteral("3600");
const QString atOnce = QStringLiteral("0");

bool isHand()
{
    const QCursor *cursor = QGuiApplication::overrideCursor();
    return cursor && cursor->shape() == Qt::PointingHandCursor;
}

// The small catalogue, with a second server on the first platform.
bool writeCatalogue(const QString &path)
{
    QFile small(QStringLiteral(ZV_SMALL_CATALOGUE));
    if (!small.open(QIODevice::ReadOnly))
        return false;
    QJsonObject catalogue = QJsonDocument::fromJson(small.readAll()).object();
    QJsonArray platforms = catalogue.value("platforms").toArray();
    QJsonObject first = platforms.at(0).toObject();
    QJsonObject market = platforms.at(1).toObject().value("markets").toArray().at(1).toObject();
    market.remove("history");
    market.insert("prefix", secondServer);
    QJsonArray markets = first.value("markets").toArray();
    markets.append(market);
    first.insert("markets", markets);
    catalogue.insert("platforms", QJsonArray{first});
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(catalogue).toJson()) > 0;
}

} // namespace

// Goods on their way from the window to the carrier: what is asked for is frozen, what is cancelled
// comes back, and what is sent is gone from the ledger. The steps build on each other, in the order
// in which they stand.
class DeliveryRoadTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::ChengHu);
        QVERIFY(writeCatalogue(m_folder.filePath("catalogue.json")));
        QVERIFY(m_exchange.start(m_state, 0, 0, optionsWith(never, never)));
        m_window = std::make_unique<MainWindow>();
        m_panel = std::make_unique<TradingPanel>(*m_window);
        m_window->resize(1366, 768);
        m_window->show();
        m_window->activateWindow();
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
        signIn();
        m_money = available();
        QVERIFY(m_money > 0);
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_panel.reset();
        m_window.reset();
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void theHoldingsAreThoseOfTheLedger()
    {
        m_panel->open("pushButton_deliveryHandling");
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QStringLiteral("100 100 0"),
                                  patience);
        QStringList wanted;
        for (const QJsonValue &entry : m_book->cap().value("items").toArray())
            wanted << entry.toObject().value("code").toString();
        QCOMPARE(wanted.size(), 8);
        QCOMPARE(m_panel->column(holdingsTable, 0), wanted);
        for (const QString &each : wanted)
            QCOMPARE(shown(holdingsTable, each), QStringLiteral("100 100 0"));
    }

    void aRequestFreezesItsPieces()
    {
        const BoxReader boxes;
        bool hadHand = true;
        QVERIFY(DeliveryForm::useIn([this] { takeOut(code); },
                                    [&](const DeliveryForm &form) {
                                        hadHand = QGuiApplication::overrideCursor();
                                        QCOMPARE(form.says("label_code_value"), code);
                                        QCOMPARE(form.says("label_name_value"), goods);
                                        QCOMPARE(form.says("label_availableNum_value"),
                                                 QStringLiteral("100"));
                                        QCOMPARE(form.says("spinBox_num"), QStringLiteral("100"));
                                        form.typePieces(10);
                                        fill(form);
                                        form.send();
                                        QTRY_VERIFY_WITH_TIMEOUT(!form.isOpen(), patience);
                                    }));
        QVERIFY(!hadHand);
        QCOMPARE(boxes.texts(), QStringList(paragraph(QStringLiteral("提货申请成功！"))));
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QStringLiteral("100 90 10"),
                                  patience);
        QCOMPARE(m_book->holding(collection), qMakePair(100, 90));
        QCOMPARE(takes().size(), 1);
        QCOMPARE(available(), m_money);
        // The ticket counts them out as well.
        m_panel->open("pushButton_sell");
        QVERIFY(m_panel->choose(code));
        QTRY_COMPARE(m_panel->says("label_canBuySellValue"), QStringLiteral("90"));
        QTRY_COMPARE(shown(ticketTable, code), QStringLiteral("100 90 10"));
    }

    void theRecordTellsItAndCancelsIt()
    {
        m_panel->open("pushButton_select");
        m_panel->open("pushButton_select_deliveryRecord");
        QTRY_COMPARE_WITH_TIMEOUT(records(), QStringList(reviewed), patience);
        const QJsonObject take = takes().first().toObject();
        QCOMPARE(take.value("state").toInt(), 2);
        const QStringList row{take.value("number").toString(), code, goods, "10"};
        for (int column = 1; column <= 4; ++column)
            QCOMPARE(m_panel->column(recordTable, column), QStringList(row.at(column - 1)));
        QCOMPARE(m_panel->column(recordTable, 6), QStringList(QStringLiteral("和平路1号 301室")));
        QCOMPARE(m_panel->column(recordTable, 7), QStringList(QStringLiteral("林晓月")));
        QCOMPARE(m_panel->column(recordTable, 8), QStringList("13911112222"));

        const BoxReader boxes([] { QVERIFY(!QGuiApplication::overrideCursor()); });
        click(recordTable, 0, cancelColumn);
        const QString line = QStringLiteral("<p style='font-size:16px' align='center'>");
        QCOMPARE(boxes.texts(),
                 QStringList(line + QStringLiteral("单号：%1</p>").arg(row.at(0)) + line
                             + QStringLiteral("名称：荷塘小型张</p>") + line
                             + QStringLiteral("数量：10</p>") + line
                             + QStringLiteral("确定取消提货？")));
        QTRY_COMPARE_WITH_TIMEOUT(notice(), QStringLiteral("取消提货成功"), patience);
        QTRY_COMPARE_WITH_TIMEOUT(records(), QStringList(cancelled), patience);
        QCOMPARE(m_book->holding(collection), qMakePair(100, 100));
        // There is nothing to press any more.
        click(recordTable, 0, cancelColumn);
        QCOMPARE(boxes.texts().size(), 1);
        m_panel->open("pushButton_deliveryHandling");
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QStringLiteral("100 100 0"),
                                  patience);
        QCOMPARE(takes().size(), 1);
    }

    void whatIsNotThereAnyMoreIsRefusedAndNothingIsLost()
    {
        const QString tooFew = paragraph(QStringLiteral("可提数量不足。"));
        const BoxReader boxes;
        int order = 0;
        QVERIFY(DeliveryForm::useIn(
            [this] { takeOut(code); },
            [&](const DeliveryForm &form) {
                fill(form);
                // They are put up for sale while the form stands, which keeps what it was given.
                order = m_book->sell(collection, 1100, 60);
                QVERIFY2(order > 0, qPrintable(m_book->sentence()));
                QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QStringLiteral("100 40 60"),
                                          patience);
                QCOMPARE(form.says("label_availableNum_value"), QStringLiteral("100"));
                form.send();
                QTRY_COMPARE_WITH_TIMEOUT(boxes.texts(), QStringList(tooFew), patience);
                QVERIFY(form.isOpen());
                QCOMPARE(form.says("spinBox_num"), QStringLiteral("100"));
                QCOMPARE(form.says("lineEdit_userName"), QStringLiteral("林晓月"));
                QCOMPARE(form.says("lineEdit_userPhone"), QStringLiteral("13911112222"));
                QCOMPARE(takes().size(), 1);
                QCOMPARE(m_book->holding(collection), qMakePair(100, 40));
                // Corrected, the same form goes through.
                form.typePieces(40);
                form.send();
                QTRY_VERIFY_WITH_TIMEOUT(!form.isOpen(), patience);
            }));
        QCOMPARE(boxes.texts(), (QStringList{tooFew, paragraph(QStringLiteral("提货申请成功！"))}));
        // Nothing of it can be taken out now, so it is on the list no more.
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QString(), patience);
        QCOMPARE(m_book->holding(collection), qMakePair(100, 0));
        QVERIFY(m_book->revoke(order));
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QStringLiteral("100 60 40"),
                                  patience);
        QCOMPARE(takes().size(), 2);
    }

    void aSignInElsewhereLeavesTheFormAndTakesNothing()
    {
        QStringList texts;
        QByteArray token;
        QVERIFY(DeliveryForm::useIn(
            [this] { takeOut(code); },
            [&](const DeliveryForm &form) {
                form.typePieces(7);
                fill(form);
                bool stoodBehind = false;
                bool wasLogged = true;
                const BoxReader boxes([&] {
                    stoodBehind = form.isOpen();
                    wasLogged = ZvServerEngine::getZvServerEngineInstance()->isLogged;
                });
                token = endtoend::signIn(m_exchange.address(), server, phone, password)
                            .value("data")
                            .toObject()
                            .value("token")
                            .toString()
                            .toLatin1();
                QVERIFY(!token.isEmpty());
                QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 1, patience);
                QVERIFY(stoodBehind);
                QVERIFY(!wasLogged);
                // Nobody is signed in: what is sent is refused in words, and the input stays.
                QVERIFY(form.isOpen());
                form.send();
                QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 2, patience);
                QVERIFY(form.isOpen());
                QCOMPARE(form.says("spinBox_num"), QStringLiteral("7"));
                QCOMPARE(form.says("lineEdit_userName"), QStringLiteral("林晓月"));
                texts = boxes.texts();
                form.close();
            }));
        QVERIFY(!QApplication::activeModalWidget());
        QVERIFY2(texts.last() != paragraph(QString()), "the refusal has no words");
        QVERIFY(!texts.contains(paragraph(QStringLiteral("提货申请成功！"))));
        m_book->useSession(token);
        QCOMPARE(takes().size(), 2);
        QCOMPARE(m_book->holding(collection), qMakePair(100, 60));
        signIn();
    }

    void eachServerHasItsOwnDeliveries()
    {
        m_panel->open("pushButton_deliveryHandling");
        moveTo(secondServer, QStringLiteral("31"));
        const QString own = m_panel->column(holdingsTable, 0).value(1);
        QCOMPARE(shown(holdingsTable, own), QStringLiteral("100 100 0"));
        QVERIFY(DeliveryForm::useIn([&] { takeOut(own); },
                                    [&](const DeliveryForm &form) {
                                        QCOMPARE(form.says("label_code_value"), own);
                                        form.typePieces(5);
                                        fill(form);
                                        const BoxReader boxes;
                                        form.send();
                                        QTRY_VERIFY_WITH_TIMEOUT(!form.isOpen(), patience);
                                        QCOMPARE(boxes.texts().size(), 1);
                                    }));
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, own), QStringLiteral("100 95 5"), patience);
        m_panel->open("pushButton_select");
        m_panel->open("pushButton_select_deliveryRecord");
        QTRY_COMPARE_WITH_TIMEOUT(records(), QStringList(reviewed), patience);
        QCOMPARE(m_panel->column(recordTable, 2), QStringList(own));
        QCOMPARE(takes().size(), 2);
        // Back again the page that is in front shows the other server's.
        moveTo(server, QStringLiteral("11"));
        QTRY_COMPARE_WITH_TIMEOUT(records(), (QStringList{reviewed, cancelled}), patience);
        QCOMPARE(m_panel->column(recordTable, 2), (QStringList{code, code}));
        m_panel->open("pushButton_deliveryHandling");
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QStringLiteral("100 60 40"),
                                  patience);
        QCOMPARE(shown(holdingsTable, own), QString());
    }

    void whatIsBeingPreparedCannotBeCancelled()
    {
        m_panel->open("pushButton_select");
        m_panel->open("pushButton_select_deliveryRecord");
        QTRY_COMPARE_WITH_TIMEOUT(records(), (QStringList{reviewed, cancelled}), patience);
        restartWith(atOnce, never);
        QTRY_COMPARE_WITH_TIMEOUT(newestState(), 3, patience);
        // The list on the screen is older than that, and still has the button.
        QCOMPARE(records(), (QStringList{reviewed, cancelled}));
        const BoxReader boxes;
        click(recordTable, 0, cancelColumn);
        QCOMPARE(boxes.texts().size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(
            notice(), QStringLiteral("该提货申请已开始备货或已结束，不能取消。"), patience);
        QCOMPARE(records(), (QStringList{reviewed, cancelled}));
        query();
        QTRY_COMPARE_WITH_TIMEOUT(records(), (QStringList{prepared, cancelled}), patience);
        click(recordTable, 0, cancelColumn);
        QCOMPARE(boxes.texts().size(), 1);
        QCOMPARE(m_book->holding(collection), qMakePair(100, 60));
    }

    void whatIsSentIsGone()
    {
        restartWith(atOnce, atOnce);
        QTRY_COMPARE_WITH_TIMEOUT(newestState(), 4, patience);
        query();
        QTRY_COMPARE_WITH_TIMEOUT(records(), (QStringList{sent, cancelled}), patience);
        QCOMPARE(m_book->holding(collection), qMakePair(60, 60));
        m_panel->open("pushButton_deliveryHandling");
        QTRY_COMPARE_WITH_TIMEOUT(shown(holdingsTable, code), QStringLiteral("60 60 0"), patience);
        QCOMPARE(available(), m_money);
        // The carrier has said it in the outbox, once.
        const QString tracking = takes().first().toObject().value("tracking").toString();
        QVERIFY(!tracking.isEmpty());
        const QStringList told = outbox().filter(tracking);
        QCOMPARE(told.size(), 1);
        QVERIFY2(told.first().contains(QStringLiteral(
                     "荷塘小型张，40件，收货人林晓月，和平路1号 301室，已发货，运单号")),
                 qPrintable(told.first()));
    }

    // Pieces are where they were, or on their way: of all kinds.
    void piecesAddUp()
    {
        for (WireTrader *book : {m_book.get(), m_secondBook.get()}) {
            QMap<QString, int> gone;
            QTRY_VERIFY_WITH_TIMEOUT(isAtRest(*book), patience);
            for (const QJsonValue &entry : takesIn(*book)) {
                const QJsonObject take = entry.toObject();
                if (take.value("state").toInt() == 4)
                    gone[take.value("collection").toString()] += take.value("quantity").toInt();
            }
            const QJsonArray items = book->cap().value("items").toArray();
            QCOMPARE(items.size(), 8);
            for (const QJsonValue &entry : items) {
                const QJsonObject item = entry.toObject();
                QCOMPARE(item.value("quantity").toInt(),
                         100 - gone.value(item.value("collection").toString()));
                QCOMPARE(item.value("sellable").toInt(), item.value("quantity").toInt());
            }
        }
    }

private:
    QStringList optionsWith(const QString &prepare, const QString &ship) const
    {
        return {QStringLiteral("--demo"),
                QStringLiteral("--catalogue"),
                m_folder.filePath("catalogue.json"),
                QStringLiteral("--prepare-delay"),
                prepare,
                QStringLiteral("--ship-delay"),
                ship};
    }

    // As after a fault of the machine, with another carrier.
    void restartWith(const QString &prepare, const QString &ship)
    {
        const auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
        m_exchange.kill();
        QTRY_VERIFY_WITH_TIMEOUT(!access->isConnected(), patience);
        QVERIFY(m_exchange.start(m_state, m_exchange.port(), 0, optionsWith(prepare, ship)));
        QTRY_VERIFY_WITH_TIMEOUT(access->isConnected(), patience);
    }

    void signIn()
    {
        QVERIFY(endtoend::signInAt(*m_window, phone, password));
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        const QByteArray token
            = ZvServerAccessManager::getZvServerAccessManagerInstance()->link()->token();
        m_book = std::make_unique<WireTrader>(m_exchange.address(), server);
        m_book->useSession(token);
        m_secondBook = std::make_unique<WireTrader>(m_exchange.address(), secondServer);
        m_secondBook->useSession(token);
        QTRY_VERIFY_WITH_TIMEOUT(available() > 0, patience);
        m_panel->open("pushButton_deliveryHandling");
        QTRY_VERIFY_WITH_TIMEOUT(!shown(holdingsTable, code).isEmpty(), patience);
    }

    // Moves to a server and waits until the page of deliveries has holdings whose codes begin so.
    void moveTo(const QString &prefix, const QString &codes)
    {
        QAbstractButton *button = endtoend::serverButton(*m_window, prefix);
        QVERIFY(button);
        QTRY_VERIFY(button->isEnabled());
        QTest::mouseClick(button, Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(m_panel->column(holdingsTable, 0).size() == 8
                                     && m_panel->column(holdingsTable, 0).first().startsWith(codes),
                                 patience);
    }

    // All pieces, those that can be sold, and those that are frozen, in a table of holdings; ""
    // where it has none of them.
    QString shown(const char *table, const QString &ofCode) const
    {
        const int row = m_panel->column(table, 0).indexOf(ofCode);
        if (row < 0)
            return QString();
        return QStringList{m_panel->column(table, 2).at(row), m_panel->column(table, 3).at(row),
                           m_panel->column(table, 4).at(row)}
            .join(QLatin1Char(' '));
    }

    // The states of the deliveries on the screen.
    QStringList records() const { return m_panel->column(recordTable, 11); }
    void query() const { m_panel->click(recordPage, "pushButton_select"); }

    static QJsonArray takesIn(WireTrader &book)
    {
        return book
            .get(QStringLiteral("myaccount/take-list.html"),
                 {{QStringLiteral("page"), QStringLiteral("1")},
                  {QStringLiteral("size"), QStringLiteral("200")}})
            .value("takes")
            .toArray();
    }
    // True when all that was asked for is sent or cancelled.
    static bool isAtRest(WireTrader &book)
    {
        const QJsonArray all = takesIn(book);
        return !all.isEmpty() && std::all_of(all.begin(), all.end(), [](const QJsonValue &entry) {
            const int state = entry.toObject().value("state").toInt();
            return state == 1 || state == 4;
        });
    }
    QJsonArray takes() const { return takesIn(*m_book); }
    int newestState() const { return takes().first().toObject().value("state").toInt(); }

    void takeOut(const QString &ofCode)
    {
        const int row = m_panel->column(holdingsTable, 0).indexOf(ofCode);
        QVERIFY2(row >= 0, qPrintable(ofCode));
        click(holdingsTable, row, takeOutColumn);
    }

    // Presses the button of a row, once the cursor says that the mouse is over it.
    void click(const char *tableClass, int row, int column)
    {
        QTableView *table = m_panel->table(tableClass);
        QVERIFY(table && table->isVisible());
        const QModelIndex cell = table->model()->index(row, column);
        table->scrollTo(cell);
        QPoint place = table->visualRect(cell).center();
        QVERIFY(endtoend::until([&] {
            place.rx() ^= 1; // a mouse that rests is not told of again
            QTest::mouseMove(m_window->windowHandle(),
                             table->viewport()->mapTo(m_window.get(), place));
            return isHand();
        }));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, place);
    }

    static void fill(const DeliveryForm &form)
    {
        form.type(QStringLiteral("林晓月"), QStringLiteral("13911112222"),
                  QStringLiteral("和平路1号 301室"));
    }

    QStringList outbox() const
    {
        QProcess command;
        command.start(QStringLiteral(ZV_EXCHANGE_PROGRAM),
                      {QStringLiteral("outbox"), QStringLiteral("--state"), m_state.path()});
        if (!command.waitForFinished(patience))
            return {};
        return QString::fromUtf8(command.readAllStandardOutput()).split(QLatin1Char('\n'));
    }

    QTemporaryDir m_folder; // of the catalogue
    endtoend::StateFolder m_state{endtoend::StateFolder::Empty};
    endtoend::Exchange m_exchange;
    std::unique_ptr<WireTrader> m_book; // look on with the window's own session
    std::unique_ptr<WireTrader> m_secondBook;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TradingPanel> m_panel;
    double m_money = 0; // yuan, at the beginning
};

ZV_TEST(DeliveryRoadTest)
#include "test_deliveryroad.moc"
