#include "kaprojectbrowserplugincompound.h"

#include "kaobject2compoundlist.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowsermgr.h"
#include "katreewidgetitem.h"
#include "katreewidgetitembranch.h"
#include "tcompoundabstract.h"
#include "tdatabase.h"
#include "tpixmapcache.h"
#include "ttree.h"

#include <QMetaObject>
#include <QSet>

namespace {

bool hasDetections(const TCompoundAbstract* compound)
{
    for (const KAObject2PeakDetect* peakDetect : compound->getPeakDetectList()) {
        if (peakDetect)
            return true;
    }
    return false;
}

} // namespace

KAProjectBrowserPluginCompound::KAProjectBrowserPluginCompound(KAProjectBrowserCtrl* ctrl)
    : KAProjectBrowserPlugin(ctrl, QStringLiteral("Compounds"))
    , m_ctrl(ctrl)
{
}

KAProjectBrowserPluginCompound::~KAProjectBrowserPluginCompound() = default;

TechDB::TDatabase* KAProjectBrowserPluginCompound::database() const
{
    return m_db;
}

void KAProjectBrowserPluginCompound::bindDatabase()
{
    const QList<KAProjectBrowserMgr*>& managers = m_ctrl ? m_ctrl->mgrList() : QList<KAProjectBrowserMgr*>();
    // The project, not the manager: plug-ins are set up before the manager
    // reads its project.
    const KAObject2Project* project = managers.isEmpty() ? nullptr : managers.first()->project();
    TechDB::TDatabase* db = project ? project->db() : nullptr;
    if (db == m_db)
        return;
    if (m_db)
        disconnect(m_db, nullptr, this, nullptr);
    m_db = db;
    if (!m_db)
        return;
    connect(m_db, &TechDB::TDatabase::compoundsChanged, this, &KAProjectBrowserPluginCompound::slotCompoundsChanged);
    // Direct: announced while the doomed objects still exist.
    connect(m_db, &TechDB::TDatabase::aboutToDeleteObjects, this,
            &KAProjectBrowserPluginCompound::slotAboutToDeleteObjects, Qt::DirectConnection);
}

void KAProjectBrowserPluginCompound::init()
{
    bindDatabase();
    if (!getTree()) {
        Node* root = new Node;
        root->setOwnsData(true);
        root->setData(new KAObject2(KAObjectTypeCompoundBranch, tr("Compound lists", "Listes de composés")));
        setTree(root);
    }
    rebuild();
}

void KAProjectBrowserPluginCompound::rebuild()
{
    m_rebuildQueued = false;
    Node* root = getTree();
    if (!root)
        return;
    while (Node* child = root->firstChild())
        delete child;
    if (m_db) {
        const QList<const KAObject2*> lists = m_db->getObjectLst(KAObjectTypeCompoundList);
        // A new child goes first: last to first keeps the database order.
        for (int l = lists.size() - 1; l >= 0; --l) {
            Node* list = addReference(root, lists.at(l));
            const QVector<KAObject2*>& compounds = lists.at(l)->children();
            for (int c = compounds.size() - 1; c >= 0; --c) {
                if (compounds.at(c)->type() == KAObjectTypeCompound)
                    addCompound(list, compounds.at(c));
            }
        }
    }
    if (m_ctrl)
        m_ctrl->refreshNode(root);
}

// A compound's detections are resolved when it is expanded: they may belong
// to a project opened in the meantime.
void KAProjectBrowserPluginCompound::addCompound(Node* list, const KAObject2* compound)
{
    Node* node = addReference(list, compound);
    if (hasDetections(static_cast<const TCompoundAbstract*>(compound)))
        addPlaceholder(node, KAObjectTypeCompound);
}

bool KAProjectBrowserPluginCompound::fillNodeOnExpand(Node* node)
{
    if (!node || !node->data() || node->data()->type() != KAObjectTypeCompound || !isPlaceholder(node->firstChild())
        || !ownsNode(node))
        return false;
    delete node->firstChild();
    const QList<const KAObject2PeakDetect*> detections =
        static_cast<const TCompoundAbstract*>(node->data())->getPeakDetectList();
    QList<const KAObject2PeakDetect*> shown;
    for (const KAObject2PeakDetect* peakDetect : detections) {
        if (peakDetect && !shown.contains(peakDetect))
            shown.append(peakDetect);
    }
    for (int i = shown.size() - 1; i >= 0; --i) {
        addReference(node, shown.at(i));
        watchDatabaseOf(shown.at(i));
    }
    return true;
}

// A detection of another project disappears with that project's database:
// the branch is rebuilt then, never left pointing at freed objects.
void KAProjectBrowserPluginCompound::watchDatabaseOf(const KAObject2* object)
{
    TechDB::TDatabase* db = object ? object->db() : nullptr;
    if (!db || db == m_db)
        return;
    connect(db, &QObject::destroyed, this, &KAProjectBrowserPluginCompound::slotRebuild, Qt::UniqueConnection);
    connect(db, &TechDB::TDatabase::aboutToDeleteObjects, this,
            &KAProjectBrowserPluginCompound::slotAboutToDeleteObjects,
            Qt::ConnectionType(Qt::DirectConnection | Qt::UniqueConnection));
}

bool KAProjectBrowserPluginCompound::ownsNode(const Node* node) const
{
    return getTree() && node->isWithin(getTree());
}

bool KAProjectBrowserPluginCompound::refreshRequested(KAObjectType type, const KAObject2*)
{
    if (type != KAObjectTypeCompound && type != KAObjectTypeCompoundList && type != KAObjectTypeCompoundBranch
        && type != KAObjectTypeProject)
        return false;
    bindDatabase();
    rebuild();
    return true;
}

bool KAProjectBrowserPluginCompound::deleteObject(Node* node, bool flag)
{
    if (!node || !node->data() || node == getTree() || !ownsNode(node) || !m_db)
        return false;
    const KAObject2* object = node->data();
    bool done = false;
    m_deleting = node;
    if (object->type() == KAObjectTypeCompound || object->type() == KAObjectTypeCompoundList) {
        done = m_db->deleteObject(object, flag);
    } else if (object->type() == KAObjectTypePeakDetect && node->parent()
               && node->parent()->data()->type() == KAObjectTypeCompound) {
        done = m_db->compoundRemovePeakDetect(static_cast<const TCompoundAbstract*>(node->parent()->data()),
                                              static_cast<const KAObject2PeakDetect*>(object));
    }
    m_deleting = nullptr;
    return done;
}

bool KAProjectBrowserPluginCompound::renameObject(Node* node, QString& name)
{
    if (!node || !node->data() || node == getTree() || !ownsNode(node))
        return false;
    const KAObject2* object = node->data();
    TechDB::TDatabase* db = object->db();
    const KAObjectType type = object->type();
    if (!db || (type != KAObjectTypeCompound && type != KAObjectTypeCompoundList && type != KAObjectTypePeakDetect))
        return false;
    if (!db->objectRename(object, name))
        return false;
    name = object->name();
    return true;
}

// Queued and coalesced: a change may be reported in the middle of an edit
// whose node must outlive it.
void KAProjectBrowserPluginCompound::slotCompoundsChanged()
{
    if (m_rebuildQueued)
        return;
    m_rebuildQueued = true;
    QMetaObject::invokeMethod(this, &KAProjectBrowserPluginCompound::slotRebuild, Qt::QueuedConnection);
}

void KAProjectBrowserPluginCompound::slotRebuild()
{
    bindDatabase();
    rebuild();
}

// Nodes of doomed objects leave the branch and the view at once; the
// rebuild that follows the change brings the rest up to date.
void KAProjectBrowserPluginCompound::slotAboutToDeleteObjects(QList<const KAObject2*>* objects)
{
    Node* root = getTree();
    if (!objects || !root || objects->isEmpty())
        return;
    const QSet<const KAObject2*> doomed(objects->cbegin(), objects->cend());
    QList<Node*> gone;
    QList<Node*> pending{root};
    while (!pending.isEmpty()) {
        Node* n = pending.takeLast();
        for (Node* c = n->firstChild(); c; c = c->nextSibling()) {
            if (c->data() && doomed.contains(c->data()) && !(m_deleting && c->isWithin(m_deleting)))
                gone.append(c);
            else
                pending.append(c);
        }
    }
    for (Node* node : qAsConst(gone)) {
        if (m_ctrl)
            m_ctrl->deleteNode(node);
        delete node;
    }
    slotCompoundsChanged();
}

KATreeWidgetItem* KAProjectBrowserPluginCompound::createItem(const KAObject2* object, QTreeWidgetItem* parentItem,
                                                             QTreeWidget* view)
{
    if (!object || object->type() != KAObjectTypeCompoundBranch)
        return nullptr;
    // After the saved searches and the external folders.
    KATreeWidgetItem* item = KATreeWidgetItemBranch::make(object, parentItem, view, QStringLiteral("z2"));
    item->setIcon(KATreeWidgetItem::NameColumn, QIcon(TPixmapCache::find("compound_list")));
    return item;
}
