#include "ZvWidgetKit/status_message_scrollarea.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ui_status_message_scrollarea.h"

#include <QScrollBar>
#include <QTimer>

namespace {

constexpr int AreaHeight = 30;
constexpr int StepMilliseconds = 100;
constexpr int StepPixels = 5;
constexpr int Edges = 2; // one pixel on either side of the area

// Both are filled in at once: an address may hold a "%2" of its own. They come from the server, and
// neither a "<" of the text nor a quote in the address may end what it stands in.
QString linkText(const QString &text, const QString &address)
{
    return QStringLiteral("<a style='color: #FFFF00; text-decoration: none;'; font-size: 12px;  "
                          "href=\"%1\">%2</a>")
        .arg(address.toHtmlEscaped(), text.toHtmlEscaped());
}

} // namespace

Status_Message_ScrollArea::Status_Message_ScrollArea(QWidget *parent)
    : QScrollArea(parent), ui(std::make_unique<Ui::Status_Message_ScrollArea>()),
      m_stepTimer(nullptr), m_scrollOffset(0)
{
    ui->setupUi(this);
    setMaximumHeight(AreaHeight);
    m_stepTimer = new QTimer(this);
    applyStyle();
    createConnections();
    restartScrolling();
}

Status_Message_ScrollArea::~Status_Message_ScrollArea() = default;

void Status_Message_ScrollArea::applyStyle()
{
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    ui->label_start->clear();
    ui->label_stop->clear();
}

void Status_Message_ScrollArea::createConnections()
{
    connect(m_stepTimer, &QTimer::timeout, this, &Status_Message_ScrollArea::slot_stepBarByStep);
}

void Status_Message_ScrollArea::restartScrolling()
{
    m_scrollOffset = 0;
    horizontalScrollBar()->setValue(m_scrollOffset);
    m_stepTimer->start(StepMilliseconds);
}

void Status_Message_ScrollArea::showEvent(QShowEvent *event)
{
    QScrollArea::showEvent(event);
    restartScrolling();
}

void Status_Message_ScrollArea::slot_updateMassage()
{
    for (QLabel *label : qAsConst(m_messageLabels)) {
        ui->horizontalLayout_content->removeWidget(label);
        delete label;
    }
    m_messageLabels.clear();

    const QList<QPair<QString, QString>> messages
        = ZvServerCache::getZvServerCacheInstance()->messageList;
    for (int i = 0; i < messages.size(); ++i) {
        auto *label = new QLabel;
        label->setText(linkText(messages.at(i).first, messages.at(i).second));
        label->setOpenExternalLinks(true);
        m_messageLabels.append(label);
        ui->horizontalLayout_content->insertWidget(i + 1, label);
    }
    restartScrolling();
}

void Status_Message_ScrollArea::slot_adjustSize()
{
    // An area that has no room yet asks for no blanks, rather than for negative ones.
    const int blank = qMax(0, width() - Edges);
    ui->label_start->setFixedWidth(blank);
    ui->label_stop->setFixedWidth(blank);
}

void Status_Message_ScrollArea::slot_stepBarByStep()
{
    m_scrollOffset += StepPixels;
    if (m_scrollOffset >= horizontalScrollBar()->maximum())
        m_scrollOffset = 0;
    horizontalScrollBar()->setValue(m_scrollOffset);
}
