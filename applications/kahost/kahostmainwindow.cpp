#include "kahostmainwindow.h"

#include "kaaliasfolderinterface.h"
#include "kaaliasfoldermgr.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kahostmessagelog.h"
#include "kamdiinterfaceblocker.h"
#include "kaobject2project.h"
#include "kaprojectselectctrl.h"
#include "kapropertyeditorhtml.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserplugincompound.h"
#include "kastackedbrowserctrl.h"
#include "kastackedbrowserctrlstate.h"
#include "kastackedbrowserctrlstateproject.h"
#include "kaabstractbrowserctrl.h"
#include "kastackedbrowserdockfactory.h"
#include "messageloggerinterface.h"
#include "modulelauncherinterface.h"
#include "applicationinterface.h"
#include "projectmgrinterface.h"
#include "ribboninterface.h"
#include "tdescriptioncollector.h"
#include "ttranslator.h"

#include <QActionGroup>
#include <QApplication>
#include <QPainter>
#include <QTreeWidget>
#include <QCloseEvent>
#include <QDir>
#include <QDockWidget>
#include <QMenuBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {
const int OpenModeProject = 2;
// How deep below the workspace folder projects are looked for: projects
// kept in folders of folders are known too, and the explorer shows them.
const int WorkspaceDepth = 3;
const QString SelectModule = QStringLiteral("kaGCP");
} // namespace

KAHostMainWindow::KAHostMainWindow(const QString& workspace, QWidget* parent)
    : QMainWindow(parent)
    , m_workspace(workspace)
{
    setObjectName(QStringLiteral("kahostMainWindow"));
    resize(1280, 800);
    MainWindowInterface::setInstance(this);
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({workspace}, WorkspaceDepth);
    // The workspace is reachable by name in the file-system explorer and in
    // the project selection.
    KAAliasFolderMgr* aliases = ApplicationInterface::returnMe()->aliasFolderMgr();
    const QString aliasName = tr("Workspace", "Espace de travail");
    const KAAliasFolderInterface* alias = aliases->findByName(aliasName);
    if (alias && QDir::cleanPath(alias->path()) != QDir::cleanPath(workspace))
        aliases->removeAlias(aliasName);
    if (!aliases->findByName(aliasName))
        aliases->addAlias(aliasName, workspace);
    ModuleLauncherInterface::returnMe()->registerModule(SelectModule, []() { return new KAProjectSelectCtrl; });
    buildUi();
}

KAHostMainWindow::~KAHostMainWindow()
{
    tearDownUi();
    MainWindowInterface::setInstance(nullptr);
}

// Everything that shows text is made here, so that a change of language
// rebuilds it in the new language.
void KAHostMainWindow::buildUi()
{
    setWindowTitle(tr("KABrowser host — %1", "Hôte KABrowser — %1").arg(m_workspace));
    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    m_ribbonArea = new QStackedWidget(central);
    m_ribbonArea->setObjectName(QStringLiteral("ribbonArea"));
    m_ribbonArea->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Maximum);
    layout->addWidget(m_ribbonArea);
    m_documents = new QTabWidget(central);
    m_documents->setObjectName(QStringLiteral("documents"));
    m_documents->setTabsClosable(true);
    m_documents->setDocumentMode(true);
    connect(m_documents, &QTabWidget::tabCloseRequested, this, [this](int index) {
        if (KAMdiInterfaceBlocker::isBlocked())
            return;
        delete m_documents->widget(index);
    });
    layout->addWidget(m_documents);
    setCentralWidget(central);
    RibbonInterface::returnMe()->setHost(m_ribbonArea);

    m_filter = new KAFileSystemBrowserFilterPackage;
    m_explorer = new KAStackedBrowserCtrl(KAStackedBrowserDockFactory());
    m_explorer->init(m_filter, false, KAStackedBrowserCtrl::stateProject);
    // The compound lists are this application's own branch of the project
    // tree: the explorer shows it once registered.
    if (auto* state = dynamic_cast<KAStackedBrowserCtrlStateProject*>(m_explorer->state(KAStackedBrowserCtrl::stateProject))) {
        if (KAProjectBrowserCtrl* projectCtrl = state->projectCtrl()) {
            auto* compounds = new KAProjectBrowserPluginCompound(projectCtrl);
            projectCtrl->addPlugin(compounds, compounds->itemCreator());
        }
    }
    if (auto* dock = qobject_cast<QDockWidget*>(m_explorer->getEditor())) {
        addDockWidget(Qt::LeftDockWidgetArea, dock);
        dock->show();
    }

    m_logDock = new QDockWidget(tr("Messages", "Messages"), this);
    m_logDock->setObjectName(QStringLiteral("messageLogDock"));
    m_log = new KAHostMessageLog(m_logDock);
    m_logDock->setWidget(m_log);
    addDockWidget(Qt::BottomDockWidgetArea, m_logDock);

    auto* pane = new KAPropertyEditorHtml(m_documents);
    pane->setObjectName(QStringLiteral("propertyPane"));
    TDescriptionCollector::getInstance()->registerEditor(pane);
    m_documents->addTab(pane, tr("Properties", "Propriétés"));
    m_documents->tabBar()->setTabButton(0, QTabBar::RightSide, nullptr);

    buildMenus();
    statusBar()->showMessage(tr("Workspace: %1", "Espace de travail : %1").arg(m_workspace));
}

// The explorer's dock is owned by the explorer: it goes before the window,
// which would otherwise delete the dock as its child.
void KAHostMainWindow::tearDownUi()
{
    ModuleLauncherInterface::returnMe()->closeAll();
    if (m_explorer) {
        if (QWidget* dock = m_explorer->getEditor())
            removeDockWidget(qobject_cast<QDockWidget*>(dock));
        delete m_explorer;
        m_explorer = nullptr;
    }
    delete m_filter;
    m_filter = nullptr;
    RibbonInterface::returnMe()->setHost(nullptr);
    delete m_logDock;
    m_logDock = nullptr;
    m_log = nullptr;
    delete centralWidget();
    menuBar()->clear();
}

void KAHostMainWindow::buildMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&Project", "&Projet"));
    QAction* select = file->addAction(tr("Select a project...", "Sélectionner un projet..."), this,
                                      &KAHostMainWindow::showProjectSelection);
    select->setObjectName(QStringLiteral("actionSelectProject"));
    select->setShortcut(QKeySequence::Open);
    QAction* close = file->addAction(tr("Close the project", "Fermer le projet"), this,
                                     &KAHostMainWindow::closeCurrentProject);
    close->setObjectName(QStringLiteral("actionCloseProject"));
    file->addSeparator();
    file->addAction(tr("Quit", "Quitter"), this, &QWidget::close, QKeySequence::Quit);

    QMenu* view = menuBar()->addMenu(tr("&Explorer", "&Explorateur"));
    auto* states = new QActionGroup(view);
    QAction* project = view->addAction(tr("Project explorer", "Explorateur de projet"), this,
                                       [this]() { showExplorer(ProjectState); });
    QAction* files = view->addAction(tr("File system explorer", "Explorateur de fichiers"), this,
                                     [this]() { showExplorer(FileSystemState); });
    for (QAction* a : {project, files}) {
        a->setCheckable(true);
        states->addAction(a);
    }
    project->setChecked(true);

    QMenu* language = menuBar()->addMenu(tr("&Language", "&Langue"));
    auto* languages = new QActionGroup(language);
    QAction* english = language->addAction(QStringLiteral("English"), this, [this]() { setLanguage(TTranslator::English); });
    QAction* french = language->addAction(QStringLiteral("Français"), this, [this]() { setLanguage(TTranslator::French); });
    for (QAction* a : {english, french}) {
        a->setCheckable(true);
        languages->addAction(a);
    }
    (TTranslator::language() == TTranslator::French ? french : english)->setChecked(true);
}

QStatusBar* KAHostMainWindow::statusBar()
{
    return QMainWindow::statusBar();
}

void KAHostMainWindow::showMessage(const QString& message)
{
    QMainWindow::statusBar()->showMessage(message, 5000);
}

bool KAHostMainWindow::openObject(const KAObject2* object, int mode)
{
    if (!object)
        return false;
    if (KAMdiInterfaceBlocker::isBlocked()) {
        MessageLoggerInterface::Warning(tr("Projects are being opened: try again in a moment",
                                           "Des projets sont en cours d'ouverture : réessayez dans un instant"));
        return false;
    }
    if (object->type() == KAObjectTypeProject && mode == OpenModeProject) {
        const auto* project = static_cast<const KAObject2Project*>(object);
        // A terminated project is only ever opened read-only.
        if (!ProjectMgrInterface::returnMe()->openProject(project, project->isTerminated(), false))
            return false;
        if (KAModuleCtrl* module = ModuleLauncherInterface::returnMe()->module(SelectModule))
            ModuleLauncherInterface::returnMe()->closeModule(module);
        showExplorer(ProjectState);
        showMessage(tr("Project %1 opened", "Projet %1 ouvert").arg(project->name()));
        return true;
    }
    openDescription(object);
    return true;
}

void KAHostMainWindow::openDescription(const KAObject2* object)
{
    auto* pane = new KAPropertyEditorHtml(m_documents);
    pane->setHtml(TDescriptionCollector::describe(object));
    m_documents->setCurrentIndex(m_documents->addTab(pane, object->name()));
}

void KAHostMainWindow::showProjectSelection()
{
    ModuleLauncherInterface::returnMe()->launch(SelectModule);
}

void KAHostMainWindow::closeCurrentProject()
{
    if (const KAObject2Project* project = ProjectMgrInterface::returnMe()->currentProject())
        ProjectMgrInterface::returnMe()->closeProject(project);
}

void KAHostMainWindow::showExplorer(int state)
{
    if (m_explorer)
        m_explorer->changeState(state == FileSystemState ? KAStackedBrowserCtrl::stateFileSystem
                                                         : KAStackedBrowserCtrl::stateProject);
}

void KAHostMainWindow::setLanguage(int language)
{
    if (language == int(TTranslator::language()))
        return;
    TTranslator::setLanguage(TTranslator::Language(language));
    ApplicationInterface::returnMe()->setSetting(QStringLiteral("language"),
                                                 language == TTranslator::French ? QStringLiteral("fr")
                                                                                 : QStringLiteral("en"));
    const KAObject2Project* current = ProjectMgrInterface::returnMe()->currentProject();
    tearDownUi();
    buildUi();
    // The new explorer follows the project that was open.
    if (current && m_explorer) {
        if (auto* state = dynamic_cast<KAStackedBrowserCtrlStateProject*>(m_explorer->state(KAStackedBrowserCtrl::stateProject)))
            state->projectCtrl()->projectOpened();
    }
}

void KAHostMainWindow::closeEvent(QCloseEvent* event)
{
    tearDownUi();
    ProjectMgrInterface::returnMe()->closeAll();
    event->accept();
}

bool KAHostMainWindow::openFirstProject()
{
    const QList<const KAObject2Project*> projects = ProjectMgrInterface::returnMe()->projectList();
    if (projects.isEmpty() || !openObject(projects.first(), OpenModeProject))
        return false;
    if (auto* view = m_explorer ? qobject_cast<QTreeWidget*>(m_explorer->state(KAStackedBrowserCtrl::stateProject)
                                                                 ->getCtrl()->getEditor())
                                : nullptr) {
        if (QTreeWidgetItem* root = view->topLevelItem(0)) {
            root->setExpanded(true);
            for (int i = 0; i < root->childCount(); ++i) {
                if (root->child(i)->text(0) == tr("Analysis", "Analyses"))
                    root->child(i)->setExpanded(true);
            }
        }
    }
    return true;
}

QPixmap KAHostMainWindow::screenshot()
{
    QPixmap shot = grab();
    QPainter painter(&shot);
    for (QWidget* top : QApplication::topLevelWidgets()) {
        if (top == this || !top->isVisible() || !(top->windowFlags() & Qt::Popup))
            continue;
        painter.drawPixmap(mapFromGlobal(top->mapToGlobal(QPoint(0, 0))), top->grab());
    }
    return shot;
}
