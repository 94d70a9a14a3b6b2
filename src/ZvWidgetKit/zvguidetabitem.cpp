#include "ZvWidgetKit/zvguidetabitem.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ui_zvguidetabitem.h"

#include <QTimer>

namespace {

constexpr int ItemWidth = 28;
constexpr int ProgressStep = 10;
constexpr int ProgressEnd = 99;
constexpr int ProgressTicks = 10;
constexpr int LargeFont = 12; // pixels, for names of two characters
constexpr int SmallFont = 10;

bool isChinese(QChar character)
{
    return character >= QChar(0x4E00) && character <= QChar(0x9FA5);
}

// One character a line. A character that is dropped at the end leaves the line feed before it.
QString upright(const QString &name)
{
    QString text;
    for (int i = 0; i < name.size(); ++i) {
        if (!isChinese(name.at(i)))
            continue;
        text.append(name.at(i));
        if (i != name.size() - 1)
            text.append(QLatin1Char('\n'));
    }
    return text;
}

} // namespace

ZvGuideTabItem::ZvGuideTabItem(QWidget *parent)
    : QWidget(parent), ui(std::make_unique<Ui::ZvGuideTabItem>()),
      m_progressTimer(new QTimer(this)), m_progressDuration(2000)
{
    ui->setupUi(this);
    applyStyle();
    createConnections();
}

ZvGuideTabItem::~ZvGuideTabItem() = default;

void ZvGuideTabItem::applyStyle()
{
    setFixedWidth(ItemWidth);
    ui->horizontalLayout->setContentsMargins(0, 0, 0, 0);
    ui->horizontalLayout->setSpacing(0);
    ui->pushButton->setText(QString());
    ui->progressBar->setStyleSheet(
        QStringLiteral("QProgressBar {border: 1px solid grey;}"
                       "QProgressBar::chunk{background-color: #41cd52; height: 1px;}"));
    ui->progressBar->hide();
}

void ZvGuideTabItem::createConnections()
{
    connect(ui->pushButton, &QPushButton::clicked, this, &ZvGuideTabItem::slot_clickedOnButton);
    connect(m_progressTimer, &QTimer::timeout, this, &ZvGuideTabItem::slot_timerProgressTimeout);
}

void ZvGuideTabItem::setProgressDuration(int duration)
{
    m_progressDuration = duration;
}

void ZvGuideTabItem::setServerName(QString text)
{
    ui->pushButton->setText(upright(text));
    ui->pushButton->setToolTip(text); // two names may differ only in what is dropped
    ui->pushButton->setAccessibleName(text);
    QFont font = ui->pushButton->font();
    font.setPixelSize(text.size() == 2 ? LargeFont : SmallFont);
    ui->pushButton->setFont(font);
}

void ZvGuideTabItem::setServerPrefix(QString prefix)
{
    m_serverPrefix = prefix;
}

QString ZvGuideTabItem::getServerPrefix() const
{
    return m_serverPrefix;
}

void ZvGuideTabItem::startProgress()
{
    m_progressTimer->start(m_progressDuration / ProgressTicks);
    ui->progressBar->show();
}

void ZvGuideTabItem::stopProgress()
{
    m_progressTimer->stop();
    ui->progressBar->hide();
}

void ZvGuideTabItem::setEnabledLook()
{
    ui->pushButton->setStyleSheet(
        ZvServerConfig::getZvServerConfigInstance()->getStyleOf_ZvGuideTabItemButtonEnable());
}

void ZvGuideTabItem::setDisabledLook()
{
    ui->pushButton->setStyleSheet(
        ZvServerConfig::getZvServerConfigInstance()->getStyleOf_ZvGuideTabItemButtonDisable());
}

void ZvGuideTabItem::enableButton()
{
    ui->pushButton->setEnabled(true);
}

void ZvGuideTabItem::disableButton()
{
    ui->pushButton->setEnabled(false);
}

void ZvGuideTabItem::slot_clickedOnButton()
{
    // The last line of the click: the item may be gone when the listeners are done.
    emit signal_ServerButtonClicked(m_serverPrefix);
}

void ZvGuideTabItem::slot_timerProgressTimeout()
{
    const int value = ui->progressBar->value() + ProgressStep;
    if (value > ProgressEnd) {
        ui->progressBar->setValue(0);
        stopProgress();
        return;
    }
    ui->progressBar->setValue(value);
}
