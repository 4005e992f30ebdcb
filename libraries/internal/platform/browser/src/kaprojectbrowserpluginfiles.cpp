#include "kaprojectbrowserpluginfiles.h"

#include "kaobject2externalfile.h"
#include "kaobject2fake.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowsermgr.h"
#include "kasessionfile.h"
#include "katreewidgetitem.h"
#include "katreewidgetitembranch.h"
#include "messageloggerinterface.h"
#include "tapplicationdata.h"
#include "tdatabase.h"
#include "texternalprocess.h"
#include "tpixmapcache.h"
#include "ttree.h"
#include "txmlmethod.h"

#include <QAction>
#include <QDir>
#include <QDomDocument>
#include <QFileDialog>
#include <QXmlStreamWriter>

namespace {
const QString ListTag = QStringLiteral("externalFolders");


} // namespace

KAProjectBrowserPluginFiles::KAProjectBrowserPluginFiles(KAProjectBrowserCtrl* ctrl)
    : KAProjectBrowserPlugin(ctrl, QStringLiteral("Files"))
    , m_ctrl(ctrl)
{
}

KAProjectBrowserPluginFiles::~KAProjectBrowserPluginFiles() = default;

QString KAProjectBrowserPluginFiles::listPath() const
{
    const QList<KAProjectBrowserMgr*>& managers = m_ctrl ? m_ctrl->mgrList() : QList<KAProjectBrowserMgr*>();
    if (managers.isEmpty() || !managers.first()->database())
        return QString();
    return QDir(managers.first()->database()->location())
        .filePath(QStringLiteral("Settings/%2.projectbrowser_externalfiles.xml"));
}

void KAProjectBrowserPluginFiles::init()
{
    readList();
    rebuild();
}

void KAProjectBrowserPluginFiles::rebuild()
{
    Node* root = new Node;
    root->setOwnsData(true);
    root->setData(new KAObject2ExternalFile(tr("External folders", "Dossiers externes")));
    for (const QString& folder : qAsConst(m_folders))
        addEntry(root, folder);
    setTree(root);
}

KAProjectBrowserPluginFiles::Node* KAProjectBrowserPluginFiles::addEntry(Node* parent, const QString& path)
{
    const QFileInfo info(path);
    Node* node = new Node(parent, -1);
    node->setData(new KAObject2ExternalFile(info));
    if (info.isDir())
        (new Node(node, -1))->setData(new KAObject2Fake(KAObjectTypeExternalFolders));
    return node;
}

// <externalFolders version="1"><folder path="..."/></externalFolders>; a
// missing, malformed or foreign file means no linked folder.
bool KAProjectBrowserPluginFiles::readList()
{
    const QString path = listPath();
    if (path == m_listProject)
        return true;
    m_listProject = path;
    m_folders.clear();
    QDomDocument doc;
    if (path.isEmpty() || !TXMLMethod::load(KASessionFile::defaultPath(path), doc))
        return false;
    const QDomElement root = doc.documentElement();
    if (root.tagName() != ListTag)
        return false;
    for (QDomElement e = root.firstChildElement(QStringLiteral("folder")); !e.isNull();
         e = e.nextSiblingElement(QStringLiteral("folder"))) {
        const QString folder = e.attribute(QStringLiteral("path"));
        if (!folder.isEmpty() && !m_folders.contains(folder))
            m_folders.append(folder);
    }
    return true;
}

bool KAProjectBrowserPluginFiles::writeList()
{
    const QString path = listPath();
    if (path.isEmpty())
        return false;
    if (TApplicationData::getInstance()->isCurrentProjectReadOnly()) {
        MessageLoggerInterface::Warning(tr("The project is read only: the external folders will not be saved",
                                           "Le projet est en lecture seule : les dossiers externes ne seront pas enregistrés"));
        return false;
    }
    QByteArray bytes;
    QXmlStreamWriter xml(&bytes);
    xml.setAutoFormatting(true);
    xml.setAutoFormattingIndent(2);
    xml.writeStartDocument();
    xml.writeStartElement(ListTag);
    xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1"));
    for (const QString& folder : qAsConst(m_folders)) {
        xml.writeEmptyElement(QStringLiteral("folder"));
        xml.writeAttribute(QStringLiteral("path"), folder);
    }
    xml.writeEndElement();
    xml.writeEndDocument();
    QDir().mkpath(QFileInfo(path).absolutePath());
    return KASessionFile::write(path, bytes);
}

bool KAProjectBrowserPluginFiles::addFolder(const QString& path)
{
    const QFileInfo info(path);
    const QString folder = QDir::cleanPath(info.absoluteFilePath());
    if (!info.isDir() || m_folders.contains(folder))
        return false;
    readList();
    m_folders.append(folder);
    writeList();
    if (Node* root = getTree()) {
        addEntry(root, folder);
        if (m_ctrl)
            m_ctrl->refreshNode(root);
    }
    return true;
}

void KAProjectBrowserPluginFiles::slotAddFolder()
{
    const QString folder = QFileDialog::getExistingDirectory(
        m_ctrl ? m_ctrl->getEditor() : nullptr, tr("Add external folder", "Ajouter un dossier externe"));
    if (!folder.isEmpty())
        addFolder(folder);
}

QList<QAction*> KAProjectBrowserPluginFiles::contextActions(Node* node)
{
    if (!node || node != getTree())
        return {};
    if (!m_addAction) {
        m_addAction = new QAction(tr("Add external folder...", "Ajouter un dossier externe..."), this);
        connect(m_addAction, &QAction::triggered, this, &KAProjectBrowserPluginFiles::slotAddFolder);
    }
    return {m_addAction};
}

bool KAProjectBrowserPluginFiles::refreshRequested(KAObjectType, const KAObject2*)
{
    return false;
}

// Listed when expanded; a folder that vanished lists as empty.
bool KAProjectBrowserPluginFiles::fillNodeOnExpand(Node* node)
{
    if (!node || !isPlaceholder(node->firstChild()))
        return false;
    const auto* folder = dynamic_cast<const KAObject2ExternalFile*>(node->data());
    if (!folder || folder->isBranch())
        return false;
    delete node->firstChild();
    const QFileInfoList entries = QDir(folder->filePath())
                                      .entryInfoList(QDir::AllDirs | QDir::Files | QDir::NoDotAndDotDot, QDir::NoSort);
    for (const QFileInfo& entry : entries)
        addEntry(node, entry.absoluteFilePath());
    return true;
}

// Only a linked folder can be removed, and only its link goes.
bool KAProjectBrowserPluginFiles::deleteObject(Node* node, bool)
{
    Node* root = getTree();
    if (!node || !root || node->parent() != root)
        return false;
    const auto* folder = dynamic_cast<const KAObject2ExternalFile*>(node->data());
    if (!folder)
        return false;
    m_folders.removeAll(QDir::cleanPath(folder->filePath()));
    writeList();
    return true;
}

bool KAProjectBrowserPluginFiles::openFile(Node* node) const
{
    const auto* file = node ? dynamic_cast<const KAObject2ExternalFile*>(node->data()) : nullptr;
    if (!file || file->isBranch() || file->isDir())
        return false;
    return TExternalProcess::openDocument(file->filePath());
}

KATreeWidgetItem* KAProjectBrowserPluginFiles::createItem(const KAObject2* object, QTreeWidgetItem* parentItem,
                                                          QTreeWidget* view)
{
    const auto* file = dynamic_cast<const KAObject2ExternalFile*>(object);
    if (!file)
        return nullptr;
    KATreeWidgetItem* item = nullptr;
    if (file->isBranch())
        // After the project and after the saved searches ("z").
        item = KATreeWidgetItemBranch::make(object, parentItem, view, QStringLiteral("z1"));
    else
        item = parentItem ? new KATreeWidgetItem(parentItem, object) : new KATreeWidgetItem(view, object);
    const char* icon = file->isBranch() ? "external_folder" : file->isDir() ? "folder" : "file";
    item->setIcon(KATreeWidgetItem::NameColumn, QIcon(TPixmapCache::find(icon)));
    if (!file->isBranch())
        item->setToolTip(KATreeWidgetItem::NameColumn, file->filePath());
    return item;
}
