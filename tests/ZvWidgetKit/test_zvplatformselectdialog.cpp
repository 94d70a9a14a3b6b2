#include "ZvWidgetKit/zvplatformselectdialog.h"

#include "ZvNetworkKit/zvserverconfig.h"
#include "pictures.h"
#include "support/testregistry.h"

#include <QAccessible>
#include <QGlyphRun>
#include <QLabel>
#include <QMetaMethod>
#include <QPushButton>
#include <QRawFont>
#include <QTextLayout>
#include <QtTest/QtTest>

#include <algorithm>
#include <cmath>

namespace {

using Platform = ZvServerConfig::Platform;

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

// Runs the dialog and, as soon as it can be used, what `act` does to it.
template <typename Act>
int run(ZvPlatformSelectDialog *dialog, Act act)
{
    QTimer::singleShot(0, dialog, [dialog, act] {
        QVERIFY(QTest::qWaitForWindowActive(dialog));
        act();
    });
    return dialog->exec();
}

// Relative luminance, from 0 for black to 1 for white.
double luminance(QRgb colour)
{
    const auto linear = [](int part) {
        const double value = part / 255.0;
        return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(qRed(colour)) + 0.7152 * linear(qGreen(colour))
        + 0.0722 * linear(qBlue(colour));
}

} // namespace

class ZvPlatformSelectDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void init()
    {
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
        m_dialog = std::make_unique<ZvPlatformSelectDialog>(nullptr);
        QCursor::setPos(5000, 5000);
    }

    void cleanup() { m_dialog.reset(); }

    void theFormIsAsBigAsItsPicture()
    {
        QVERIFY(m_dialog->inherits("BreltFramlessMoveableDialog"));
        QVERIFY(m_dialog->windowFlags() & Qt::FramelessWindowHint);
        QCOMPARE(m_dialog->size(), QSize(801, 433));
        QCOMPARE(m_dialog->minimumSize(), QSize(801, 433));
        QCOMPARE(m_dialog->maximumSize(), QSize(801, 433));
        QCOMPARE(QImage(QStringLiteral(":/icons/button/client_interface.png")).size(),
                 m_dialog->size());
        QVERIFY(!m_dialog->isModal());
        QCOMPARE(m_dialog->windowTitle(), QStringLiteral("交易平台选择"));
        QCOMPARE(
            m_dialog->styleSheet(),
            QStringLiteral("QDialog{\nborder-image: url(:/icons/button/client_interface.png);\n}"));
    }

    void places_data()
    {
        QTest::addColumn<QRect>("place");
        const auto row = [](const char *name, int left, int top, int right, int bottom) {
            QTest::newRow(name) << QRect(QPoint(left, top), QPoint(right, bottom));
        };
        row("pushButton_LC", 140, 110, 379, 349);
        row("pushButton_CH", 420, 110, 659, 349);
        row("label_Title", 320, 0, 510, 30);
        row("label_Lanchuan", 140, 360, 380, 400);
        row("label_Chenghu", 420, 360, 660, 400);
    }
    void places()
    {
        QFETCH(QRect, place);
        const QWidget *widget = m_dialog->findChild<QWidget *>(QTest::currentDataTag());
        QVERIFY(widget);
        QCOMPARE(widget->geometry(), place);
    }

    void labels_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sheet");
        QTest::addColumn<bool>("isCentred");
        const QString white = QStringLiteral("color: rgb(255, 255, 255);");
        const QString black = QStringLiteral("color: rgb(0, 0, 0);");
        QTest::newRow("label_Title") << QStringLiteral("岚川商品交易中心") << white << false;
        QTest::newRow("label_Lanchuan") << QStringLiteral("岚川商品交易平台") << black << true;
        QTest::newRow("label_Chenghu") << QStringLiteral("澄湖文化交易平台") << black << true;
    }
    void labels()
    {
        QFETCH(QString, text);
        QFETCH(QString, sheet);
        QFETCH(bool, isCentred);
        const QLabel *label = m_dialog->findChild<QLabel *>(QTest::currentDataTag());
        QVERIFY(label);
        QCOMPARE(label->text(), text);
        QCOMPARE(label->styleSheet(), sheet);
        QCOMPARE(label->alignment() == Qt::AlignCenter, isCentred);
        QVERIFY2(label->sizeHint().width() <= label->width(), "clipped");
        QVERIFY2(label->sizeHint().height() <= label->height(), "clipped");
        QVERIFY2(hasAllGlyphs(text, label->font()), "no font draws this");
    }

    void theTitleHasAFontOfItsOwn()
    {
        const QFont font = m_dialog->findChild<QLabel *>(QStringLiteral("label_Title"))->font();
        QCOMPARE(font.family(), QStringLiteral("微软雅黑 Light"));
        QCOMPARE(font.pointSize(), 13);
        QCOMPARE(font.weight(), 75);
    }

    // The colours of the texts are fixed, so it is the picture that makes them readable.
    void thePictureCarriesTheTexts_data()
    {
        QTest::addColumn<QRgb>("colour");
        QTest::newRow("label_Title") << qRgb(255, 255, 255);
        QTest::newRow("label_Lanchuan") << qRgb(0, 0, 0);
        QTest::newRow("label_Chenghu") << qRgb(0, 0, 0);
    }
    void thePictureCarriesTheTexts()
    {
        QFETCH(QRgb, colour);
        const QImage picture(QStringLiteral(":/icons/button/client_interface.png"));
        const QRect place = m_dialog->findChild<QWidget *>(QTest::currentDataTag())->geometry();
        double worst = 21;
        for (int y = place.top(); y <= place.bottom(); ++y) {
            for (int x = place.left(); x <= place.right(); ++x) {
                const double ground = luminance(picture.pixel(x, y));
                const double ink = luminance(colour);
                worst = std::min(worst,
                                 (std::max(ground, ink) + 0.05) / (std::min(ground, ink) + 0.05));
            }
        }
        QVERIFY2(worst >= 4.5, qPrintable(QString::number(worst)));
    }

    void buttonsArePictures_data() { buttonRows(); }
    void buttonsArePictures()
    {
        QFETCH(int, number);
        QPushButton *button = chosenButton();
        QCOMPARE(button->text(), QString());
        for (const char *state : {"normal", "hover", "pressed"}) {
            const QString path = QStringLiteral(":/icons/button/button_%1_%2.png")
                                     .arg(QLatin1String(state))
                                     .arg(number);
            QVERIFY2(button->styleSheet().contains(path), qPrintable(path));
            QCOMPARE(QImage(path).size(), button->size());
        }
    }

    // What is seen, not what the sheet says: in the middle of the button nothing lies over the
    // picture.
    void buttonsShowTheirStates_data() { buttonRows(); }
    void buttonsShowTheirStates()
    {
        QFETCH(int, number);
        QPushButton *button = chosenButton();
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_dialog.get()));
        m_dialog->setFocus();
        const auto shows = [&](const char *state) {
            const QImage picture(QStringLiteral(":/icons/button/button_%1_%2.png")
                                     .arg(QLatin1String(state))
                                     .arg(number));
            const QRect middle(60, 60, 120, 120);
            return button->grab().toImage().copy(middle).convertToFormat(QImage::Format_RGB32)
                == picture.copy(middle).convertToFormat(QImage::Format_RGB32);
        };
        QVERIFY(shows("normal"));
        QTest::mouseMove(button);
        QTRY_VERIFY(shows("hover"));
        QTest::mousePress(button, Qt::LeftButton);
        QVERIFY(shows("pressed"));
        const QPoint beside(-20, 20);
        QMouseEvent drag(QEvent::MouseMove, beside, button->mapToGlobal(beside), Qt::NoButton,
                         Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(button, &drag);
        QVERIFY(!shows("pressed"));
        QTest::mouseRelease(button, Qt::LeftButton, Qt::NoModifier, beside);
        QTest::mouseMove(m_dialog.get(), QPoint(20, 400));
        QTRY_VERIFY(shows("normal"));
        QVERIFY2(m_dialog->isVisible(), "released beside the button, and chosen all the same");
        QCOMPARE(config()->getCurrentPlatform(), ZvServerConfig::ChengHu);
    }

    void slotsStandInTheirOrder()
    {
        const QMetaObject &meta = ZvPlatformSelectDialog::staticMetaObject;
        QStringList slots_;
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
            const QMetaMethod method = meta.method(i);
            QCOMPARE(method.access(), QMetaMethod::Private);
            QCOMPARE(method.methodType(), QMetaMethod::Slot);
            slots_ += QString::fromLatin1(method.methodSignature());
        }
        QCOMPARE(slots_,
                 QStringList({QStringLiteral("on_pushButton_CH_clicked()"),
                              QStringLiteral("on_pushButton_LC_clicked()")}));
    }

    // The left button is 岚川, the right one 澄湖.
    void aClickChooses_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("before");
        QTest::addColumn<int>("chosen");
        for (const int before : {1, 2}) {
            QTest::addRow("left after %d", before)
                << QStringLiteral("pushButton_LC") << before << 2;
            QTest::addRow("right after %d", before)
                << QStringLiteral("pushButton_CH") << before << 1;
        }
    }
    void aClickChooses()
    {
        QFETCH(QString, name);
        QFETCH(int, before);
        QFETCH(int, chosen);
        config()->setCurrentPlatform(Platform(before));
        auto *button = m_dialog->findChild<QPushButton *>(name);
        const QSignalSpy accepted(m_dialog.get(), &QDialog::accepted);
        const int result
            = run(m_dialog.get(), [button] { QTest::mouseClick(button, Qt::LeftButton); });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(int(config()->getCurrentPlatform()), chosen);
        QCOMPARE(accepted.count(), 1); // twice, were the slot connected by hand as well
        QVERIFY(!m_dialog->isVisible());
    }

    void thePlatformIsSetWhenTheDialogTellsOfItsEnd()
    {
        int seen = 0;
        connect(m_dialog.get(), &QDialog::accepted, this,
                [&seen] { seen = config()->getCurrentPlatform(); });
        auto *button = m_dialog->findChild<QPushButton *>(QStringLiteral("pushButton_LC"));
        run(m_dialog.get(), [button] { QTest::mouseClick(button, Qt::LeftButton); });
        QCOMPARE(seen, 2);
    }

    void anyOtherEndLeavesThePlatform_data()
    {
        QTest::addColumn<int>("before");
        QTest::addColumn<QString>("end");
        for (const int before : {1, 2}) {
            for (const char *end : {"escape", "close", "reject", "right button"})
                QTest::addRow("%s on %d", end, before) << before << QString::fromLatin1(end);
        }
    }
    void anyOtherEndLeavesThePlatform()
    {
        QFETCH(int, before);
        QFETCH(QString, end);
        config()->setCurrentPlatform(Platform(before));
        auto *button = m_dialog->findChild<QPushButton *>(QStringLiteral("pushButton_LC"));
        const int result = run(m_dialog.get(), [&] {
            if (end == QLatin1String("right button")) {
                QTest::mouseClick(button, Qt::RightButton);
                QTest::mouseClick(m_dialog.get(), Qt::LeftButton, Qt::NoModifier, {20, 400});
                QVERIFY(m_dialog->isVisible());
                QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
            } else if (end == QLatin1String("escape")) {
                QTest::keyClick(m_dialog.get(), Qt::Key_Escape);
            } else if (end == QLatin1String("close")) {
                m_dialog->close();
            } else {
                m_dialog->reject();
            }
        });
        QCOMPARE(result, int(QDialog::Rejected));
        QCOMPARE(int(config()->getCurrentPlatform()), before);
    }

    void keysChoose_data()
    {
        QTest::addColumn<int>("tabs");
        QTest::addColumn<int>("key");
        QTest::addColumn<int>("chosen");
        QTest::newRow("Return at once") << 0 << int(Qt::Key_Return) << 2;
        QTest::newRow("Space at once") << 0 << int(Qt::Key_Space) << 2;
        QTest::newRow("Tab, Return") << 1 << int(Qt::Key_Return) << 1;
        QTest::newRow("Tab, Enter") << 1 << int(Qt::Key_Enter) << 1;
        QTest::newRow("Tab, Space") << 1 << int(Qt::Key_Space) << 1;
        QTest::newRow("Tab, Tab, Space") << 2 << int(Qt::Key_Space) << 2;
    }
    void keysChoose()
    {
        QFETCH(int, tabs);
        QFETCH(int, key);
        QFETCH(int, chosen);
        config()->setCurrentPlatform(Platform(3 - chosen));
        const int result = run(m_dialog.get(), [&] {
            for (int i = 0; i < tabs; ++i)
                QTest::keyClick(m_dialog->focusWidget(), Qt::Key_Tab);
            QTest::keyClick(m_dialog->focusWidget(), Qt::Key(key));
        });
        QCOMPARE(result, int(QDialog::Accepted));
        QCOMPARE(int(config()->getCurrentPlatform()), chosen);
    }

    void theFocusIsSeen_data() { buttonRows(); }
    void theFocusIsSeen()
    {
        QPushButton *button = chosenButton();
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        button->clearFocus();
        const QImage without = m_dialog->grab().toImage();
        button->setFocus(Qt::TabFocusReason);
        QTRY_VERIFY(m_dialog->grab().toImage() != without);
        // It is seen with the mouse over the button as well.
        QTest::mouseMove(button);
        QTRY_VERIFY(button->underMouse());
        const QImage with = m_dialog->grab().toImage();
        button->clearFocus();
        QTRY_VERIFY(m_dialog->grab().toImage() != with);
    }

    void readersHearWhatTheButtonsAre_data() { buttonRows(); }
    void readersHearWhatTheButtonsAre()
    {
        QFETCH(QString, spoken);
        QAccessibleInterface *reader = QAccessible::queryAccessibleInterface(chosenButton());
        QVERIFY(reader);
        QCOMPARE(reader->role(), QAccessible::Button);
        QCOMPARE(reader->text(QAccessible::Name), spoken);
    }

    void theTitleIsABandToDragItBy()
    {
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        m_dialog->move(0, 0);
        const QPoint grip(330, 15);
        QVERIFY(m_dialog->childAt(grip));
        const auto send = [&](QEvent::Type type, const QPoint &at, Qt::MouseButtons buttons) {
            QMouseEvent event(type, m_dialog->mapFromGlobal(at), at, Qt::LeftButton, buttons,
                              Qt::NoModifier);
            QCoreApplication::sendEvent(m_dialog.get(), &event);
        };
        send(QEvent::MouseButtonPress, grip, Qt::LeftButton);
        send(QEvent::MouseMove, grip + QPoint(60, 40), Qt::LeftButton);
        send(QEvent::MouseButtonRelease, grip + QPoint(60, 40), Qt::NoButton);
        QCOMPARE(m_dialog->pos(), QPoint(60, 40));
    }

    void pictures_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<QString>("state");
        QTest::newRow("platforms") << QString() << QString();
        for (const char *name : {"LC", "CH"}) {
            const QString button = QLatin1String("pushButton_") + QLatin1String(name);
            for (const char *state : {"focused", "hovered", "pressed"})
                QTest::addRow("platforms_%s_%s", name, state) << button << QString(state);
        }
    }
    void pictures()
    {
        QFETCH(QString, button);
        QFETCH(QString, state);
        m_dialog->show();
        QVERIFY(QTest::qWaitForWindowActive(m_dialog.get()));
        m_dialog->focusWidget()->clearFocus();
        QTest::mouseMove(m_dialog.get(), QPoint(20, 400));
        QTRY_VERIFY(m_dialog->underMouse());
        auto *chosen = m_dialog->findChild<QPushButton *>(button);
        const QImage before = m_dialog->grab().toImage();
        if (state == QLatin1String("focused")) {
            chosen->setFocus(Qt::TabFocusReason);
        } else if (chosen) {
            QTest::mouseMove(chosen);
            QTRY_VERIFY(m_dialog->grab().toImage() != before);
        }
        if (state == QLatin1String("pressed"))
            QTest::mousePress(chosen, Qt::LeftButton); // which gives it the focus as well
        const bool isKept = button.isEmpty();
        const QString difference = zvtest::differenceFromPictures(
            m_dialog.get(), QString::fromLatin1(QTest::currentDataTag()), isKept);
        if (state == QLatin1String("pressed"))
            QTest::mouseRelease(chosen, Qt::LeftButton, Qt::NoModifier, QPoint(-20, 20));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

private:
    static void buttonRows()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("number"); // in the names of its pictures
        QTest::addColumn<QString>("spoken");
        QTest::newRow("left") << QStringLiteral("pushButton_LC") << 1
                              << QStringLiteral("岚川商品交易平台");
        QTest::newRow("right") << QStringLiteral("pushButton_CH") << 2
                               << QStringLiteral("澄湖文化交易平台");
    }

    QPushButton *chosenButton() const
    {
        QFETCH(QString, name);
        return m_dialog->findChild<QPushButton *>(name);
    }

    // Whether the fonts that Qt puts together for the text have all of its characters: a missing
    // one would be drawn as an empty box.
    static bool hasAllGlyphs(const QString &text, const QFont &font)
    {
        QTextLayout layout(text, font);
        layout.beginLayout();
        layout.createLine();
        layout.endLayout();
        int glyphs = 0;
        const QList<QGlyphRun> runs = layout.glyphRuns();
        for (const QGlyphRun &run : runs) {
            const QVector<quint32> indexes = run.glyphIndexes();
            glyphs += int(indexes.size());
            if (indexes.contains(0))
                return false;
        }
        return glyphs == text.size();
    }

    std::unique_ptr<ZvPlatformSelectDialog> m_dialog;
};

ZV_TEST(ZvPlatformSelectDialogTest)
#include "test_zvplatformselectdialog.moc"
