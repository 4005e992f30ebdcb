#include "kaprojectselectctrl.h"

#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kaobject2project.h"
#include "kaprojectbrowserfilter.h"
#include "kaprojectdialog.h"
#include "kaprojectselecteditor.h"
#include "karibbonprojectselect.h"
#include "mainwindowinterface.h"
#include "messageloggerinterface.h"
#include "modulelauncherinterface.h"
#include "projectmgrinterface.h"
#include "ribboninterface.h"
#include "tassert.h"
#include "tmessagebox.h"
#include "twaitmode.h"

namespace {
const char* const SourceName = "kaprojectselectctrl";
const int OpenModeProject = 2;

QString noSelection()
{
    return KAProjectSelectCtrl::tr("You must select a project first", "Vous devez d'abord sélectionner un projet");
}
} // namespace

KAProjectSelectCtrl::KAProjectSelectCtrl()
    : KAModuleCtrl(QStringLiteral("kaGCP"))
    , m_browser(new KAFileSystemBrowserCtrl(QStringLiteral("ProjectSelect")))
    , m_baseFilter(new KAFileSystemBrowserFilterPackage)
    , m_viewFilter(nullptr)
{
    m_baseFilter->remove(FsFiles);
    m_viewFilter = new KAFileSystemBrowserFilterPackage(*m_baseFilter);
    m_viewFilter->remove(KAObjectTypeWell);
    m_viewFilter->remove(KAObjectTypeDeconvMS);
    m_viewFilter->remove(KAObjectTypeBrowserItem);
    m_browser->init(m_viewFilter, nullptr, false);
    m_browser->registerObserver(this);
}

KAProjectSelectCtrl::~KAProjectSelectCtrl()
{
    if (m_ribbon)
        RibbonInterface::returnMe()->removeRibbon(m_ribbon);
    m_browser->unregisterObserver(this);
    delete m_browser;
    delete m_viewFilter;
    delete m_baseFilter;
    if (m_ribbon)
        m_ribbon->deleteLater();
}

bool KAProjectSelectCtrl::initView()
{
    TWaitMode wait;
    m_ribbon = new KARibbonProjectSelect(this);
    m_ribbon->createActionGroup(getActionList());
    m_ribbon->registerObserver(this);
    m_editor = new KAProjectSelectEditor(this, m_ribbon);
    m_editor->init(m_browser->initView(m_editor));
    m_ribbon->setEditor(m_editor);
    QList<KAObjectType> active;
    for (const KAProjectBrowserFilter* entry : m_viewFilter->list()) {
        if (entry->active)
            active.append(entry->type);
    }
    m_editor->setCurrentFilter(active);
    m_browser->setSearchProcessProgress(m_editor->progress());
    RibbonInterface::returnMe()->addRibbon(m_ribbon, true, true);
    m_ribbon->exec();
    return true;
}

void KAProjectSelectCtrl::editorHasBeenClosed()
{
    ModuleLauncherInterface::returnMe()->closeModule(this);
}

bool KAProjectSelectCtrl::fsObjectOpened(const KAObject2* object)
{
    if (!object || object->type() != KAObjectTypeProject)
        return false;
    if (MainWindowInterface* window = MainWindowInterface::returnMe())
        window->openObject(object, OpenModeProject);
    return true;
}

KAProjectBrowserFilterPackage* KAProjectSelectCtrl::getFilter() const
{
    return m_baseFilter;
}

void KAProjectSelectCtrl::filterView(const QList<KAObjectType>& types)
{
    *m_viewFilter = *m_baseFilter;
    for (const KAProjectBrowserFilter* entry : m_viewFilter->list()) {
        if (entry->active && !types.contains(entry->type))
            m_viewFilter->remove(entry->type);
    }
    m_browser->refreshCurrentView(false);
}

// The read-only flag only changes the message: the open request is the
// same, and the host decides what access a terminated project gets.
void KAProjectSelectCtrl::actionOpen(bool readOnly)
{
    const QList<const KAObject2*> selection = m_browser->getSelectedObjects();
    if (selection.isEmpty()) {
        MessageLoggerInterface::Warning(noSelection());
        return;
    }
    if (selection.size() >= 2) {
        MessageLoggerInterface::Warning(tr("Several projects are selected, only one project can be opened at a time",
                                           "Plusieurs projets sont sélectionnés, un seul projet peut être ouvert à la fois"));
        return;
    }
    const KAObject2* object = selection.first();
    const auto* prj = object && object->type() == KAObjectTypeProject ? static_cast<const KAObject2Project*>(object)
                                                                       : nullptr;
    if (!prj) {
        t_assert("prj != 0", SourceName, __LINE__, false);
        return;
    }
    if (!readOnly && prj->isTerminated())
        MessageLoggerInterface::Information(tr("Since project is terminated it can only be read only opened",
                                               "Le projet étant terminé, il ne peut être ouvert qu'en lecture seule"));
    if (MainWindowInterface* window = MainWindowInterface::returnMe())
        window->openObject(prj, OpenModeProject);
}

void KAProjectSelectCtrl::actionEditProperties()
{
    const QList<const KAObject2*> selection = m_browser->getSelectedObjects();
    if (selection.isEmpty()) {
        MessageLoggerInterface::Warning(noSelection());
        return;
    }
    QList<const KAObject2Project*> projects;
    for (const KAObject2* object : selection) {
        if (object && object->type() == KAObjectTypeProject)
            projects.append(static_cast<const KAObject2Project*>(object));
    }
    KAProjectDialog dialog(projects, m_editor);
    dialog.exec();
    m_browser->refreshProjects(projects);
}

void KAProjectSelectCtrl::actionDelete()
{
    TWaitMode wait;
    const QList<const KAObject2*> selection = m_browser->getSelectedObjects();
    if (selection.isEmpty()) {
        MessageLoggerInterface::Warning(noSelection());
        return;
    }
    QList<const KAObject2Project*> toDelete;
    for (const KAObject2* object : selection) {
        const auto* project = object && object->type() == KAObjectTypeProject
            ? static_cast<const KAObject2Project*>(object)
            : nullptr;
        if (!project) {
            t_assert("project != NULL", SourceName, __LINE__, false);
            continue;
        }
        const QString name = project->name().toHtmlEscaped();
        const int answer = TMessageBox::questionYesNoCancel(
            m_editor, tr("Delete the project", "Supprimer le projet"),
            tr("<nobr>Do you really want to suppress the project</nobr> <b>%1</b>?",
               "<nobr>Voulez-vous vraiment supprimer le projet</nobr> <b>%1</b> ?")
                .arg(name),
            4);
        if (answer == 0) {
            toDelete.append(project);
        } else if (answer == 1) {
            MessageLoggerInterface::Information(tr("Deletion of project <b>%1</b> cancelled by the user",
                                                   "Suppression du projet <b>%1</b> annulée par l'utilisateur")
                                                    .arg(name));
        } else {
            MessageLoggerInterface::Information(tr("Deleting cancelled by the user",
                                                   "Suppression annulée par l'utilisateur"));
            return;
        }
    }
    for (const KAObject2Project* project : qAsConst(toDelete)) {
        m_browser->clearView();
        ProjectMgrInterface::returnMe()->deleteProjects({project}, true);
        m_browser->refreshCurrentView(false);
    }
}

void KAProjectSelectCtrl::actionSearch(const QString& text)
{
    m_browser->search(text);
}
