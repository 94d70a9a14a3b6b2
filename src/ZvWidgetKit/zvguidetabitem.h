#pragma once

#include <QString>
#include <QWidget>

#include <memory>

class QTimer;

namespace Ui {
class ZvGuideTabItem;
}

// One server in the guide strip: a button with the server's name in upright text, and a narrow bar
// beside it that runs while the client changes to this server.
//
// Three things are told apart: the look says whether the server is in use, the enabled state
// whether the button takes clicks, and the bar whether a change is under way.
class ZvGuideTabItem : public QWidget
{
    Q_OBJECT

public:
    explicit ZvGuideTabItem(QWidget *parent = nullptr);
    ~ZvGuideTabItem() override;

    // The time of one whole run of the bar, in milliseconds; 2000 at first. The next run takes it.
    void setProgressDuration(int duration);

    // Shows the Chinese characters of `text` below each other; all others are dropped, and
    // the whole name is left to the tool tip. Two characters have room for a larger font.
    void setServerName(QString text);

    // The URL prefix of the server, such as "/lc/youbika/".
    void setServerPrefix(QString prefix);
    QString getServerPrefix() const;

    // Shows the bar and runs it to its end from where it stands; at its end it hides itself.
    void startProgress();
    void stopProgress();

    // Whether this is the server in use.
    void setEnabledLook();
    void setDisabledLook();

    void enableButton();
    void disableButton();

signals:
    void signal_ServerButtonClicked(QString serverPrefix);

private slots:
    void slot_clickedOnButton();
    void slot_timerProgressTimeout();

private:
    void applyStyle();
    void createConnections();

    std::unique_ptr<Ui::ZvGuideTabItem> ui;
    QString m_serverPrefix;
    QTimer *m_progressTimer;
    int m_progressDuration;
};
