#include "client/keyboardsprite.h"

#include "BreltWidgetToolKit/brelttooltip.h"
#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvfaults.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QApplication>
#include <QHeaderView>
#include <QIcon>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr QSize usualSize(340, 308);
constexpr int distance = 8; // from the edges of the area
constexpr int rowHeight = 28;
constexpr int longestText = 32;
constexpr int mostMatches = 100;
constexpr int codeWidth = 76;
constexpr int initialsWidth = 84;

enum Column { CodeColumn, NameColumn, InitialsColumn, ColumnCount };

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

QTreeWidgetItem *makeRow(const CollectionMatch &match)
{
    auto *row = new QTreeWidgetItem({match.code, match.name, match.initials});
    row->setForeground(CodeColumn, QColor(226, 239, 51));
    row->setForeground(NameColumn, QColor(Qt::white));
    row->setForeground(InitialsColumn, QColor(0x9a, 0xa1, 0xac));
    row->setToolTip(NameColumn, brelt::plainToolTip(match.name));
    row->setSizeHint(CodeColumn, QSize(codeWidth, rowHeight));
    return row;
}

} // namespace

KeyboardSprite::KeyboardSprite(QWidget *area)
    : QFrame(area->parentWidget()), m_area(area), m_edit(new QLineEdit), m_list(new QTreeWidget),
      m_hint(new QLabel)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(distance, distance, distance, distance);
    layout->setSpacing(distance);
    layout->addWidget(m_edit);
    layout->addWidget(m_list, 1);
    layout->addWidget(m_hint);
    createLook();
    hide();

    connect(m_edit, &QLineEdit::textChanged, this, &KeyboardSprite::takeText);
    connect(m_list, &QTreeWidget::itemClicked, this, &KeyboardSprite::take);
    connect(cache(), &ZvServerCache::signal_cache_briefInfo_changed, this,
            &KeyboardSprite::takeBriefInfo);
}

KeyboardSprite::~KeyboardSprite() = default;

void KeyboardSprite::createLook()
{
    setObjectName(QStringLiteral("KeyboardSprite"));
    setAccessibleName(QStringLiteral("键盘精灵"));
    setStyleSheet(
        QStringLiteral("KeyboardSprite{background-color:#16181c;border:1px solid #4a515d;}"
                       "QTreeWidget{background-color:#101114;border:none;}"
                       "QLabel{color:#9aa1ac;font-size:12px;}"));
    setAttribute(Qt::WA_NoMousePropagation);

    m_edit->setAccessibleName(QStringLiteral("藏品代码、拼音首字母或名称"));
    m_edit->setMaxLength(longestText);
    m_edit->addAction(QIcon(QStringLiteral(":/icons/controls/search.png")),
                      QLineEdit::LeadingPosition);
    m_edit->setContextMenuPolicy(Qt::NoContextMenu);
    // Chinese is welcome, and codes and initials come first.
    m_edit->setInputMethodHints(Qt::ImhPreferLatin | Qt::ImhPreferLowercase
                                | Qt::ImhNoPredictiveText);

    m_list->setAccessibleName(QStringLiteral("匹配的藏品"));
    // The keys stay in the field, which hands on those of the list.
    m_list->setFocusPolicy(Qt::NoFocus);
    m_list->setColumnCount(ColumnCount);
    m_list->setHeaderHidden(true);
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QHeaderView *header = m_list->header();
    header->setStretchLastSection(false);
    header->setSectionResizeMode(NameColumn, QHeaderView::Stretch);
    header->resizeSection(CodeColumn, codeWidth);
    header->resizeSection(InitialsColumn, initialsWidth);
}

bool KeyboardSprite::begins(int key)
{
    return (key >= Qt::Key_0 && key <= Qt::Key_9) || (key >= Qt::Key_A && key <= Qt::Key_Z);
}

void KeyboardSprite::begin(int key)
{
    if (!begins(key))
        return;
    const QString character = QChar(key).toLower();
    if (!isHidden()) {
        m_edit->insert(character);
        return;
    }
    m_before = window()->focusWidget();
    m_server = cache()->currentServer();
    m_search = CollectionSearch(cache()->getCurrentBriefInfo());
    m_composed.clear();
    place();
    show();
    raise();
    m_edit->setText(character);
    m_edit->setFocus();
    qApp->installEventFilter(this);
}

void KeyboardSprite::leave()
{
    if (isHidden())
        return;
    qApp->removeEventFilter(this);
    // Hidden with the keys in it, the sprite would leave them to whoever is next in the order of
    // the Tab key.
    if (window()->focusWidget() == m_edit) {
        if (m_before && m_before->isVisible())
            m_before->setFocus();
        else
            m_edit->clearFocus();
    }
    hide();
    m_edit->clear();
    m_list->clear();
    m_search = CollectionSearch();
}

void KeyboardSprite::place()
{
    const QRect area = m_area->geometry().adjusted(distance, distance, -distance, -distance);
    QRect place(QPoint(), usualSize.boundedTo(area.size()));
    place.moveBottomRight(area.bottomRight());
    setGeometry(place);
}

bool KeyboardSprite::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_edit)
        return filterEdit(event);
    if (watched == m_area && (event->type() == QEvent::Resize || event->type() == QEvent::Move)) {
        place();
    } else if (event->type() == QEvent::MouseButtonPress && watched->isWidgetType()
               && watched != this && !isAncestorOf(static_cast<QWidget *>(watched))) {
        // Many a button takes the click and not the focus.
        leave();
    }
    return false;
}

bool KeyboardSprite::filterEdit(QEvent *event)
{
    switch (event->type()) {
    case QEvent::FocusOut:
        leave();
        return false;
    case QEvent::InputMethod:
        takeComposition(*static_cast<QInputMethodEvent *>(event));
        return false;
    case QEvent::KeyPress:
        // What an input method leaves of the keys while it composes is about the composition.
        if (!m_composed.isEmpty() || !takeKey(static_cast<QKeyEvent *>(event)))
            return false;
        event->accept(); // or it would go on to the parent
        return true;
    default:
        return false;
    }
}

void KeyboardSprite::takeComposition(const QInputMethodEvent &event)
{
    m_composed = event.preeditString();
    // Of what is finished the field tells by itself.
    if (event.commitString().isEmpty())
        takeText();
}

bool KeyboardSprite::takeKey(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        leave();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        take();
        return true;
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        QCoreApplication::sendEvent(m_list, event);
        return true;
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        return true;
    default:
        return false;
    }
}

void KeyboardSprite::takeText()
{
    if (m_edit->text().isEmpty() && m_composed.isEmpty())
        leave();
    else
        search();
}

void KeyboardSprite::takeBriefInfo()
{
    if (isHidden())
        return;
    if (cache()->currentServer() != m_server) {
        leave();
        return;
    }
    m_search = CollectionSearch(cache()->getCurrentBriefInfo());
    search();
}

void KeyboardSprite::search()
{
    QString typed = m_edit->text();
    typed.insert(m_edit->cursorPosition(), m_composed);
    m_list->clear();
    for (const CollectionMatch &match : m_search.find(typed, mostMatches))
        m_list->addTopLevelItem(makeRow(match));
    m_list->setCurrentItem(m_list->topLevelItem(0));
    if (m_search.isEmpty())
        m_hint->setText(QStringLiteral("藏品列表尚未载入"));
    else if (m_list->topLevelItemCount() == 0)
        m_hint->setText(QStringLiteral("没有匹配的藏品"));
    else
        m_hint->setText(QStringLiteral("↑ ↓ 选择  ·  回车 打开  ·  Esc 关闭"));
}

void KeyboardSprite::take()
{
    const QTreeWidgetItem *row = m_list->currentItem();
    if (!row)
        return;
    if (zvFault("row-is-read-when-gone"))
        leave();
    const QString code = row->text(CodeColumn);
    leave();
    emit chosen(code);
}
