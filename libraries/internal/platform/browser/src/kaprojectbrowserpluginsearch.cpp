#include "kaprojectbrowserpluginsearch.h"

#include "kaobject2analysis.h"
#include "kaobject2dataset.h"
#include "kaobject2folder.h"
#include "kaobject2project.h"
#include "kaobject2search.h"
#include "kaobject2searchfolder.h"
#include "kaobject2signal.h"
#include "kaobject2well.h"
#include "kaobject2variable.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowsermgr.h"
#include "katreewidgetitemsearch.h"
#include "katreewidgetitemsearchfolder.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tapplicationdata.h"
#include "tdatabase.h"
#include "ttree.h"
#include "ttreeiterator.h"
#include "twaitmode.h"
#include "txmlmethod.h"

#include <QAction>
#include <QCoreApplication>
#include <QDir>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QStringMatcher>

KAProjectBrowserPluginSearch::KAProjectBrowserPluginSearch(KAProjectBrowserCtrl* ctrl)
    : KAProjectBrowserPlugin(ctrl, QStringLiteral("Search"))
    , m_ctrl(ctrl)
{
}

// Made on first use, on the GUI thread: a plug-in may be built on a worker
// thread for a background search and never show an item.
QAction* KAProjectBrowserPluginSearch::saveAction()
{
    if (!m_saveAction) {
        m_saveAction = new QAction(tr("Save find results", "Enregistrer les résultats de la recherche"), this);
        connect(m_saveAction, &QAction::triggered, this, &KAProjectBrowserPluginSearch::slotSave);
    }
    return m_saveAction;
}

KAProjectBrowserPluginSearch::Node* KAProjectBrowserPluginSearch::takeTree()
{
    Node* tree = getTree();
    releaseTree();
    return tree;
}

KAProjectBrowserPluginSearch::~KAProjectBrowserPluginSearch()
{
    destroyBranch();
}

// A results root does not own its "Results" folder (its matched nodes must
// not own the host's objects), so that payload is freed here.
void KAProjectBrowserPluginSearch::destroyBranch()
{
    Node* branch = getTree();
    if (!branch)
        return;
    if (!branch->ownsData() && branch->data()) {
        delete branch->data();
        branch->setData(nullptr);
    }
    setTree(nullptr);
}

void KAProjectBrowserPluginSearch::init()
{
    destroyBranch();
    m_searchText = QString();
    readFile();
    Node* root = new Node;
    root->setData(new KAObject2SearchFolder(tr("Saved searches", "Recherches enregistrées"), false));
    root->setOwnsData(true);
    for (auto it = m_savedSearches.constBegin(); it != m_savedSearches.constEnd(); ++it) {
        Node* node = new Node(root, -1);
        node->setData(new KAObject2Search(it.key(), it.value()));
    }
    setTree(root);
}

void KAProjectBrowserPluginSearch::search(const QString& requested, KAObjectType type)
{
    // A copy first: the text may belong to a saved search of the branch
    // destroyed below.
    const QString text = requested;
    m_searchText = text;
    m_searchKind = type;
    destroyBranch();
    TWaitMode wait;
    Node* root = new Node;
    root->setData(new KAObject2SearchFolder(tr("Results", "Résultats"), true));
    setTree(root);
    // Names are folded to case once, when objects are made: matching the
    // folded text gives the case-insensitive answer without folding per name.
    const QString folded = text.toCaseFolded();
    struct Category {
        KAObjectType kind;
        const char* english;
        const char* french;
        KAObjectType folderKind;
        KAObjectType dropKind;
    };
    const Category categories[] = {
        {KAObjectTypeAnalysis, "Analysis", "Analyses", KAObjectTypeAnalysisFolder, KAObjectTypeAnalysis},
        {KAObjectTypeGlobalIndexation, "Indexations", "Indexations", KAObjectTypeGlobalIndexation,
         KAObjectTypeGlobalIndexation},
        {KAObjectTypeWell, "Numerical arrays", "Tableaux numériques", KAObjectTypeNumericalArraysFolder,
         KAObjectTypeWell},
    };
    for (const Category& c : categories) {
        if (type != KAObjectTypeProject && type != c.kind)
            continue;
        auto* folder = new KAObject2Folder(tr(c.english, c.french), c.folderKind);
        folder->addAllowedVisualReparentType(c.dropKind);
        Node* category = new Node(root, -1);
        category->setData(folder);
        category->setExpanded(true);
        searchTree(m_ctrl ? m_ctrl->getTree(c.kind) : nullptr, category, folded);
        // Owning only now: matched nodes linked in above copied the flag
        // and must not own the host's objects.
        category->setOwnsData(true);
        if (!category->childCount())
            delete category;
    }
    if (type == KAObjectTypeProject || type == KAObjectTypeIdentificationsFolder
        || type == KAObjectTypeIdentifications)
        searchTree(m_ctrl ? m_ctrl->getTree(KAObjectTypeIdentifications) : nullptr, root, folded);
}

namespace {

// The kinds under which resultParent() puts others.
bool holdsOthers(KAObjectType type)
{
    return type == KAObjectTypeAnalysis || type == KAObjectTypeWell || type == KAObjectTypeDataset;
}

} // namespace

bool KAProjectBrowserPluginSearch::searchTree(Node* tree, Node* category, const QString& folded)
{
    if (!tree)
        return false;
    const QStringMatcher matcher(folded, Qt::CaseSensitive);
    QHash<const KAObject2*, Node*> shown;
    bool matched = false;
    for (TTreeIterator<KAObject2*> it(tree, 0); *it; ++it) {
        const KAObject2* object = (*it)->data();
        if (!object || object->type() == KAObjectTypeFolder || matcher.indexIn(object->foldedName()) < 0)
            continue;
        matched = true;
        // Only the kinds that hold others in a result are remembered: most
        // matches are never looked up again, and a hash entry each would
        // cost more than the match.
        const bool holds = holdsOthers(object->type());
        if (holds && shown.contains(object))
            continue; // already shown as the context of a match
        Node* node = new Node(resultParent(object, category, shown), -1);
        node->setData(const_cast<KAObject2*>(object));
        if (holds)
            shown.insert(object, node);
    }
    return matched;
}

// Signals go under their analysis, datasets under their well, variables
// under their dataset (which brings its well): an ancestor that did not
// match is still shown, once, for context.
KAProjectBrowserPluginSearch::Node* KAProjectBrowserPluginSearch::resultParent(
    const KAObject2* object, Node* category, QHash<const KAObject2*, Node*>& shown)
{
    const KAObject2* parent = nullptr;
    switch (object->type()) {
    case KAObjectTypeSignal:
        parent = static_cast<const KAObject2Signal*>(object)->analysis();
        break;
    case KAObjectTypeDataset:
        parent = static_cast<const KAObject2Dataset*>(object)->well();
        break;
    case KAObjectTypeVariable:
        parent = static_cast<const KAObject2Variable*>(object)->dataset();
        break;
    default:
        break;
    }
    if (!parent)
        return category;
    if (Node* node = shown.value(parent))
        return node;
    Node* node = new Node(resultParent(parent, category, shown), -1);
    node->setData(const_cast<KAObject2*>(parent));
    shown.insert(parent, node);
    return node;
}

bool KAProjectBrowserPluginSearch::refreshRequested(KAObjectType, const KAObject2*)
{
    if (m_searchText.isNull())
        return false;
    search(m_searchText, m_searchKind);
    return true;
}

bool KAProjectBrowserPluginSearch::fillNodeOnExpand(Node*)
{
    return false;
}

bool KAProjectBrowserPluginSearch::renameObject(Node* node, QString& name)
{
    if (!node || !node->data() || node->data()->type() != KAObjectTypeSearch || node->data()->name().isEmpty())
        return false;
    const QString oldName = node->data()->name();
    const QString text = m_savedSearches.value(oldName);
    m_savedSearches.remove(oldName);
    m_savedSearches.insert(name, text);
    node->data()->setName(name);
    writeFile();
    return true;
}

bool KAProjectBrowserPluginSearch::deleteObject(Node* node, bool)
{
    if (!node || !node->data() || node->data()->type() != KAObjectTypeSearch || node->data()->name().isEmpty())
        return false;
    m_savedSearches.remove(node->data()->name());
    delete node->data();
    node->setData(nullptr);
    writeFile();
    return true;
}

void KAProjectBrowserPluginSearch::slotSave()
{
    if (m_searchText.isEmpty())
        return;
    m_savedSearches.insert(m_searchText, m_searchText);
    writeFile();
}

KATreeWidgetItem* KAProjectBrowserPluginSearch::createItem(const KAObject2* object, QTreeWidgetItem* parentItem,
                                                           QTreeWidget* view)
{
    if (!object)
        return nullptr;
    if (object->type() == KAObjectTypeSearch)
        return new KATreeWidgetItemSearch(parentItem, view, static_cast<const KAObject2Search*>(object));
    if (object->type() == KAObjectTypeSearchFolder)
        return new KATreeWidgetItemSearchFolder(parentItem, view, static_cast<const KAObject2SearchFolder*>(object),
                                                saveAction());
    return nullptr;
}

// ---- saved searches file --------------------------------------------------

QString KAProjectBrowserPluginSearch::savedSearchesPath() const
{
    const KAObject2Project* project = ProjectMgrInterface::returnMe()->currentProject();
    if (!project)
        return QString();
    const QString location = project->db() ? project->db()->location() : project->folder();
    const TApplicationData* data = TApplicationData::getInstance();
    return QDir(location).filePath(QStringLiteral("Settings/%1.%2.projectbrowser_saved_search.xml")
                                       .arg(data->userName(), data->applicationName()));
}

void KAProjectBrowserPluginSearch::readFile()
{
    const QString path = savedSearchesPath();
    if (path.isEmpty() || !m_savedSearches.isEmpty())
        return;
    QDomDocument doc(QStringLiteral("saved_search"));
    if (!TXMLMethod::load(path, doc))
        return;
    const QDomElement root = doc.documentElement();
    if (root.tagName() != QLatin1String("root"))
        return;
    QDomNode searches;
    if (!TXMLMethod::getElement(root, QStringLiteral("SEARCH"), searches))
        return;
    for (QDomElement item = searches.firstChildElement(); !item.isNull(); item = item.nextSiblingElement())
        m_savedSearches.insert(TXMLMethod::getInfoString(item, QStringLiteral("name")),
                               TXMLMethod::getInfoString(item, QStringLiteral("str")));
}

void KAProjectBrowserPluginSearch::writeFile()
{
    const QString path = savedSearchesPath();
    if (path.isEmpty())
        return;
    if (TApplicationData::getInstance()->isCurrentProjectReadOnly()) {
        MessageLoggerInterface::Warning(QCoreApplication::translate(
            "TApplicationTranslator", "The project is read only. The search wil not be saved",
            "Le projet est en lecture seule. La recherche ne sera pas enregistrée"));
        return;
    }
    QDomDocument doc(QStringLiteral("saved_search"));
    QDomElement root = doc.createElement(QStringLiteral("root"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
    doc.appendChild(root);
    QDomElement searches = doc.createElement(QStringLiteral("SEARCH"));
    root.appendChild(searches);
    for (auto it = m_savedSearches.constBegin(); it != m_savedSearches.constEnd(); ++it) {
        QDomElement item = doc.createElement(QStringLiteral("item"));
        item.setAttribute(QStringLiteral("name"), it.key());
        item.setAttribute(QStringLiteral("str"), it.value());
        searches.appendChild(item);
    }
    QDir().mkpath(QFileInfo(path).absolutePath());
    // Replaced in one step: a failed write keeps the previous list.
    TXMLMethod::save(&doc, path, true, true);
}
