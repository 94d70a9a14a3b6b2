#pragma once

#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <QColor>
#include <QRect>
#include <QSplashScreen>
#include <QString>

// A splash screen whose message stands where the host wants it. Without a place, nothing is seen of
// a message: setMessageRect() comes first.
class ZVWIDGETKIT_EXPORT ZvSplashScreen : public QSplashScreen
{
    Q_OBJECT

public:
    explicit ZvSplashScreen(QPixmap const &pixmap);
    ~ZvSplashScreen() override;

    // The place in device-independent pixels, and the flags of QPainter::drawText() within it. They
    // hold from the next painting on; nothing is repainted for them.
    void setMessageRect(QRect rect, int alignment);

    // Shows `message` at once, in the place of the one before.
    void showStatusMessage(QString const &message, QColor const &color);

protected:
    void drawContents(QPainter *painter) override;

private:
    QString m_message;
    int m_alignment = Qt::AlignLeft | Qt::AlignVCenter;
    QColor m_color;
    QRect m_messageRect;
};
