#include "karibbonprojectselect.h"

#include "kaprojectselectctrl.h"
#include "kaprojectselecteditor.h"
#include "karibbongroup.h"
#include "karibbongroupexpandable.h"
#include "tpixmapcache.h"

#include <QAction>
#include <QBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QToolButton>

KARibbonProjectSelect::KARibbonProjectSelect(KAProjectSelectCtrl* ctrl)
    : KARibbonModuleBar(tr("Open a project", "Ouvrir un projet"))
    , m_ctrl(ctrl)
{
    setModulePixmap("open_project");
    createDescriptionGroup(-9999, true);
    if (ctrl)
        createActionGroup(ctrl->getActionList());

    m_expandable = new KARibbonGroupExpandable(tr("Project selection", "Sélection du projet"), this);
    m_expandable->setMinimumWidth(420);
    m_expandable->addWidget(createModuleLabel(tr("Select a project", "Sélectionnez un projet"), 350));
    groupLayout()->insertWidget(1, m_expandable);

    createToolsGroup();
    createDisplayGroup();
    setModuleDescription("open_project", tr("Project selection", "Sélection du projet"));
    addGenericActions(false, false);

    for (QAction* action : {m_open, m_readOnlyOpen, m_editProperties, m_delete})
        connect(action, &QAction::triggered, this, &KARibbonProjectSelect::slotActionTiggered);
}

void KARibbonProjectSelect::createToolsGroup()
{
    auto* group = new KARibbonGroup(tr("Tools", "Outils"), this);
    m_open = new QAction(QIcon(TPixmapCache::find("open_project")), tr("Open", "Ouvrir"), this);
    m_open->setToolTip(tr("Open selected project.", "Ouvrir le projet sélectionné."));
    m_readOnlyOpen = new QAction(tr("Read only open", "Ouvrir en lecture seule"), this);
    QToolButton* openButton = group->addAction(m_open);
    openButton->setPopupMode(QToolButton::MenuButtonPopup);
    auto* openMenu = new QMenu(openButton);
    openMenu->addAction(m_open);
    openMenu->addAction(m_readOnlyOpen);
    openButton->setMenu(openMenu);

    m_editProperties = new QAction(QIcon(TPixmapCache::find("param")), tr("Edit properties", "Modifier les propriétés"),
                                   this);
    m_editProperties->setToolTip(tr("Edit selected project properties", "Modifier les propriétés du projet sélectionné"));
    group->addAction(m_editProperties);

    m_delete = new QAction(QIcon(TPixmapCache::find("delete")), tr("Project delete", "Suppression du projet"), this);
    m_delete->setToolTip(tr("Delete selected project. Allows you to delete a project and all its associated files",
                            "Supprimer le projet sélectionné. Permet de supprimer un projet et tous ses fichiers associés"));
    m_delete->setShortcut(QKeySequence(QStringLiteral("Del")));
    m_delete->setShortcutContext(Qt::WindowShortcut);
    group->addAction(m_delete);
    addGroup(group);
}

void KARibbonProjectSelect::createDisplayGroup()
{
    auto* group = new KARibbonGroup(tr("Display", "Affichage"), this);
    QToolButton* button = group->addButton(tr("Show properties", "Afficher les propriétés"),
                                           QIcon(TPixmapCache::find("description")),
                                           tr("Display more information about selected object",
                                              "Afficher plus d'informations sur l'objet sélectionné"));
    button->setCheckable(true);
    button->setChecked(true);
    m_showProperties = button;
    addGroup(group);
}

void KARibbonProjectSelect::setEditor(KAProjectSelectEditor* editor)
{
    m_expandable->setContent(editor);
    connect(m_showProperties, &QAbstractButton::toggled, editor, &KAProjectSelectEditor::slotShowProperties);
}

void KARibbonProjectSelect::exec()
{
    m_expandable->exec();
}

void KARibbonProjectSelect::closeRequested()
{
    KARibbonModuleBar::closeRequested();
    if (m_ctrl)
        m_ctrl->editorHasBeenClosed();
}

int KARibbonProjectSelect::getIdForHelp() const
{
    return 64;
}

void KARibbonProjectSelect::slotActionTiggered()
{
    if (!m_ctrl)
        return;
    QObject* source = sender();
    if (source == m_open)
        m_ctrl->actionOpen(false);
    else if (source == m_readOnlyOpen)
        m_ctrl->actionOpen(true);
    else if (source == m_editProperties)
        m_ctrl->actionEditProperties();
    else if (source == m_delete)
        m_ctrl->actionDelete();
}

void KARibbonProjectSelect::slotEventOccured(QEvent::Type type)
{
    if (type == QEvent::Move || type == QEvent::Hide)
        m_expandable->collapse();
}
