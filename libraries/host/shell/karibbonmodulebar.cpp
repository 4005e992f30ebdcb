#include "karibbonmodulebar.h"

#include "karibbongroup.h"
#include "moduleobserver.h"
#include "tpixmapcache.h"

#include <QAction>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

KARibbonModuleBar::KARibbonModuleBar(const QString& title, QWidget* parent)
    : KARibbonBar(parent)
    , m_title(title)
{
    setObjectName(QStringLiteral("kaRibbonModuleBar"));
    setWindowTitle(title);
}

KARibbonModuleBar::~KARibbonModuleBar()
{
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
}

void KARibbonModuleBar::setModulePixmap(const char* iconName)
{
    m_pixmapName = iconName ? iconName : "";
    setWindowIcon(TPixmapCache::icon(m_pixmapName.constData()));
    if (m_descriptionPixmap)
        m_descriptionPixmap->setPixmap(windowIcon().pixmap(KARibbonGroup::largeIconSize()));
}

KARibbonGroup* KARibbonModuleBar::createDescriptionGroup(int id, bool flag)
{
    if (m_descriptionGroup)
        return m_descriptionGroup;
    m_descriptionHelpId = id;
    m_descriptionGroup = new KARibbonGroup(m_title, this);
    m_descriptionGroup->setObjectName(QStringLiteral("kaRibbonDescriptionGroup"));

    m_descriptionPixmap = new QLabel(m_descriptionGroup);
    m_descriptionPixmap->setObjectName(QStringLiteral("kaRibbonModulePixmap"));
    m_descriptionPixmap->setAlignment(Qt::AlignCenter);
    if (!m_pixmapName.isEmpty())
        m_descriptionPixmap->setPixmap(windowIcon().pixmap(KARibbonGroup::largeIconSize()));
    m_descriptionGroup->addWidget(m_descriptionPixmap);

    auto* texts = new QWidget(m_descriptionGroup);
    auto* column = new QVBoxLayout(texts);
    column->setContentsMargins(4, 0, 4, 0);
    column->setSpacing(2);
    column->addStretch(1);
    if (flag) {
        m_descriptionTitle = new QLabel(m_title, texts);
        m_descriptionTitle->setObjectName(QStringLiteral("kaRibbonModuleTitle"));
        m_descriptionTitle->setTextFormat(Qt::PlainText);
        QFont font = m_descriptionTitle->font();
        font.setBold(true);
        m_descriptionTitle->setFont(font);
        column->addWidget(m_descriptionTitle);
    }
    m_descriptionText = new QLabel(texts);
    m_descriptionText->setObjectName(QStringLiteral("kaRibbonModuleDescription"));
    m_descriptionText->setTextFormat(Qt::PlainText);
    m_descriptionText->setWordWrap(true);
    m_descriptionText->setMaximumWidth(220);
    m_descriptionText->hide();
    column->addWidget(m_descriptionText);
    column->addStretch(1);
    m_descriptionGroup->addWidget(texts);

    groupLayout()->insertWidget(0, m_descriptionGroup);
    return m_descriptionGroup;
}

void KARibbonModuleBar::createActionGroup(const QMap<int, QAction*>& actions)
{
    m_actions = actions;
}

void KARibbonModuleBar::registerObserver(ModuleObserver* observer)
{
    if (observer && !m_observers.contains(observer))
        m_observers.append(observer);
}

void KARibbonModuleBar::unregisterObserver(ModuleObserver* observer)
{
    m_observers.removeAll(observer);
}

QLabel* KARibbonModuleBar::createModuleLabel(const QString& text, int width)
{
    auto* label = new QLabel(text, this);
    label->setObjectName(QStringLiteral("kaRibbonModuleLabel"));
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    label->setFixedWidth(width);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 1.3);
    label->setFont(font);
    return label;
}

void KARibbonModuleBar::setModuleDescription(const char* iconName, const QString& text)
{
    if (!m_descriptionGroup)
        createDescriptionGroup(0, true);
    setModulePixmap(iconName);
    m_descriptionText->setText(text);
    m_descriptionText->setVisible(!text.isEmpty());
    setToolTip(text);
}

QString KARibbonModuleBar::moduleDescription() const
{
    return m_descriptionText ? m_descriptionText->text() : QString();
}

QAction* KARibbonModuleBar::addTrailingAction(QAction* action)
{
    auto* button = new QToolButton(this);
    button->setAutoRaise(true);
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    button->setIconSize(KARibbonGroup::largeIconSize());
    button->setDefaultAction(action);
    trailingLayout()->addWidget(button);
    return action;
}

void KARibbonModuleBar::addGenericActions(bool withHelp, bool withMinimize)
{
    if (withMinimize && !m_minimizeAction) {
        m_minimizeAction = new QAction(style()->standardIcon(QStyle::SP_TitleBarShadeButton, nullptr, this),
                                       tr("Minimize", "Réduire"), this);
        m_minimizeAction->setToolTip(tr("Show only the module's commands", "N'afficher que les commandes du module"));
        m_minimizeAction->setCheckable(true);
        connect(m_minimizeAction, &QAction::toggled, this, &KARibbonModuleBar::slotMinimize);
        addTrailingAction(m_minimizeAction);
    }
    if (withHelp && !m_helpAction) {
        m_helpAction = new QAction(style()->standardIcon(QStyle::SP_DialogHelpButton, nullptr, this),
                                   tr("Help", "Aide"), this);
        m_helpAction->setToolTip(tr("Help on this module", "Aide sur ce module"));
        connect(m_helpAction, &QAction::triggered, this, [this]() { emit helpRequested(getIdForHelp()); });
        addTrailingAction(m_helpAction);
    }
    if (!m_closeAction) {
        m_closeAction = new QAction(style()->standardIcon(QStyle::SP_DialogCloseButton, nullptr, this),
                                    tr("Close", "Fermer"), this);
        m_closeAction->setToolTip(tr("Close the module", "Fermer le module"));
        // Observers that close the module release this bar later
        // (deleteLater), never while the action is being triggered.
        connect(m_closeAction, &QAction::triggered, this, [this]() { closeRequested(); });
        addTrailingAction(m_closeAction);
    }
}

void KARibbonModuleBar::slotMinimize(bool minimized)
{
    for (KARibbonGroup* group : groups())
        group->setVisible(!minimized);
}

void KARibbonModuleBar::closeRequested()
{
    // A copy: an observer may unregister itself while it is told.
    const QList<ModuleObserver*> observers = m_observers;
    for (ModuleObserver* observer : observers) {
        if (m_observers.contains(observer))
            observer->moduleCloseRequested();
    }
}

int KARibbonModuleBar::getIdForHelp() const
{
    return 0;
}

void KARibbonModuleBar::slotEventOccured(QEvent::Type type)
{
    Q_UNUSED(type);
}

void KARibbonModuleBar::watchWindow()
{
    QWidget* current = window();
    if (current == this)
        current = nullptr;
    if (current == m_watchedWindow)
        return;
    if (m_watchedWindow)
        m_watchedWindow->removeEventFilter(this);
    m_watchedWindow = current;
    if (m_watchedWindow)
        m_watchedWindow->installEventFilter(this);
}

bool KARibbonModuleBar::event(QEvent* event)
{
    switch (event->type()) {
    case QEvent::ParentChange:
    case QEvent::Show:
        watchWindow();
        break;
    case QEvent::Hide:
        slotEventOccured(QEvent::Hide);
        break;
    case QEvent::Move:
        // A bar shown on its own is its own window.
        if (isWindow())
            slotEventOccured(QEvent::Move);
        break;
    default:
        break;
    }
    return KARibbonBar::event(event);
}

bool KARibbonModuleBar::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_watchedWindow && (event->type() == QEvent::Move || event->type() == QEvent::Hide))
        slotEventOccured(event->type());
    return KARibbonBar::eventFilter(watched, event);
}
