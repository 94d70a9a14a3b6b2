#include "ZvWidgetKit/establishaccountdialog.h"

#include "BreltWidgetToolKit/breltlabelurl.h"
#include "support/testregistry.h"

#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest/QtTest>

class EstablishAccountDialogTest : public QObject
{
    Q_OBJECT

private slots:
    void theLabelWaitsForItsPicture()
    {
        const EstablishAccountDialog dialog(nullptr);
        QCOMPARE(dialog.size(), QSize(780, 660));
        QCOMPARE(dialog.objectName(), QStringLiteral("EstablishAccountDialog"));
        QCOMPARE(dialog.styleSheet(), QString());
        const BreltLabelURL *label = labelOf(dialog);
        QCOMPARE(label->geometry(), QRect(300, 230, 191, 191));
        QCOMPARE(label->font().pointSize(), 30);
        QCOMPARE(int(label->alignment()), int(Qt::AlignCenter));
        QCOMPARE(label->text(), QString());
        QVERIFY(pictureOf(*label).isNull());
    }

    void everyAddressIsFetchedAndFitted()
    {
        EstablishAccountDialog dialog(nullptr);
        BreltLabelURL *label = labelOf(dialog);
        QSignalSpy shown(label, &BreltLabelURL::signal_pictureShown);
        for (int round = 1; round <= 2; ++round) {
            dialog.setQrCodeUrl(QStringLiteral("qrc:/icons/appicon.png"));
            QTRY_COMPARE(shown.count(), round);
            QVERIFY(!pictureOf(*label).isNull());
            QCOMPARE(qMax(pictureOf(*label).width(), pictureOf(*label).height()), 200);
        }
    }

    void aPictureThatCannotBeHadLeavesTheOldOne()
    {
        EstablishAccountDialog dialog(nullptr);
        BreltLabelURL *label = labelOf(dialog);
        QSignalSpy shown(label, &BreltLabelURL::signal_pictureShown);
        QSignalSpy failed(label, &BreltLabelURL::signal_pictureFailed);
        dialog.setQrCodeUrl(QStringLiteral("qrc:/icons/appicon.png"));
        QTRY_COMPARE(shown.count(), 1);
        const QImage picture = pictureOf(*label).toImage();
        dialog.setQrCodeUrl(QStringLiteral("qrc:/icons/none.png"));
        QTRY_COMPARE(failed.count(), 1);
        QCOMPARE(pictureOf(*label).toImage(), picture);
    }

    void everyWayOfClosingIsTold_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("close()") << 0;
        QTest::newRow("Escape") << 1;
        QTest::newRow("the window's own button") << 2;
    }
    void everyWayOfClosingIsTold()
    {
        QFETCH(int, way);
        EstablishAccountDialog dialog(nullptr);
        QSignalSpy closed(&dialog, &EstablishAccountDialog::signal_closed);
        QTimer::singleShot(0, &dialog, [&] {
            if (way == 0) {
                dialog.close();
            } else if (way == 1) {
                QTest::keyClick(&dialog, Qt::Key_Escape);
            } else {
                QCloseEvent event;
                QCoreApplication::sendEvent(&dialog, &event);
                QVERIFY(event.isAccepted());
                dialog.hide();
            }
        });
        dialog.exec();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(closed.count(), 1);
        // The same dialog serves the next time.
        QTimer::singleShot(0, &dialog, &QWidget::close);
        dialog.exec();
        QCOMPARE(closed.count(), 2);
    }

    void hidingIsNoClosing()
    {
        EstablishAccountDialog dialog(nullptr);
        QSignalSpy closed(&dialog, &EstablishAccountDialog::signal_closed);
        dialog.show();
        dialog.hide();
        dialog.show();
        dialog.setHidden(true);
        QCOMPARE(closed.count(), 0);
    }

    // The window around it is polished long before, with all of its parts.
    void theBackgroundIsUnpackedWhenItIsFirstSeen()
    {
        const QTemporaryDir folder;
        const QString file = folder.filePath(QStringLiteral("ground.png"));
        QWidget window;
        auto *dialog = new EstablishAccountDialog(&window);
        dialog->hide();
        dialog->setStyleSheet(
            QStringLiteral("QDialog#EstablishAccountDialog{border-image: url(%1);}").arg(file));
        window.ensurePolished();
        QPixmap ground(780, 660);
        ground.fill(Qt::darkGreen);
        QVERIFY(ground.save(file));
        for (int time = 0; time < 2; ++time) {
            dialog->show();
            QCOMPARE(dialog->grab().toImage().pixelColor(20, 20), QColor(Qt::darkGreen));
            dialog->hide();
        }
    }

private:
    static QPixmap pictureOf(const QLabel &label) { return label.pixmap(Qt::ReturnByValue); }

    static BreltLabelURL *labelOf(const QWidget &dialog)
    {
        return dialog.findChild<BreltLabelURL *>(QStringLiteral("label_qrcode"));
    }
};

ZV_TEST(EstablishAccountDialogTest)
#include "test_establishaccountdialog.moc"
