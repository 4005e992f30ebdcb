#include "kaprojectbrowserabstract.h"

#include "kaabstractbrowserctrl.h"
#include "kaobject2fake.h"
#include "kaobject2folder.h"
#include "messageloggerinterface.h"
#include "tapplicationdata.h"
#include "ttree.h"
#include "ttreeiterator.h"
#include "txmlmethod.h"

#include <QDir>
#include <QFile>
#include <QTextStream>

namespace {
const QString DocType = QStringLiteral("filesystemtreeconfig.xml");
const QString RootTag = QStringLiteral("filesystemtreeconfig");
const QString Version = QString::number(0.2, 'g', 6);
const QString NameAttr = QStringLiteral("name");
} // namespace

KAProjectBrowserAbstract::KAProjectBrowserAbstract(KAAbstractBrowserCtrl* ctrl)
    : m_ctrl(ctrl)
{
    if (ctrl)
        loadTreeState(ctrl->getName());
}

KAProjectBrowserAbstract::~KAProjectBrowserAbstract() = default;

void KAProjectBrowserAbstract::refreshCurrentView()
{
}

QString KAProjectBrowserAbstract::treeStatePath()
{
    return QDir(TApplicationData::getInstance()->applicationDataPath()).filePath(DocType);
}

// ---- expand state -------------------------------------------------------

QDomDocument KAProjectBrowserAbstract::createXmlConfig()
{
    QDomDocument doc(DocType);
    QDomElement root = doc.createElement(RootTag);
    root.setAttribute(QStringLiteral("version"), Version);
    doc.appendChild(root);
    return doc;
}

// Anything but a readable, well-formed file of version 0.2 gives a fresh
// document; nothing is reported and nothing is written until a save.
QDomDocument KAProjectBrowserAbstract::readXmlConfig()
{
    QFile file(treeStatePath());
    if (!file.open(QIODevice::ReadOnly))
        return createXmlConfig();
    QDomDocument doc(DocType);
    const bool parsed = TXMLMethod::parse(file.readAll(), doc);
    file.close();
    if (!parsed)
        return createXmlConfig();
    if (doc.documentElement().attribute(QStringLiteral("version")) != Version)
        return createXmlConfig();
    return doc;
}

void KAProjectBrowserAbstract::writeXmlConfig(QDomDocument doc)
{
    QByteArray bytes;
    QTextStream stream(&bytes);
    stream.setCodec("UTF8");
    doc.save(stream, 2, QDomNode::EncodingFromTextStream);
    stream.flush();
    // Qt leaves the document type out of what it writes: it goes right
    // after the declaration.
    const QByteArray docType = "<!DOCTYPE " + DocType.toUtf8() + ">\n";
    if (!bytes.contains(docType)) {
        const int afterDeclaration = bytes.startsWith("<?xml") ? bytes.indexOf('\n') + 1 : 0;
        bytes.insert(afterDeclaration, docType);
    }
    // A file that cannot be written is skipped: the previous one stays.
    TXMLMethod::writeAtomically(treeStatePath(), bytes);
}

QDomElement KAProjectBrowserAbstract::encodeNodeState(Node* node)
{
    if (m_stateElement.isNull())
        m_stateDocument = QDomDocument();
    QDomDocument doc = m_stateElement.isNull() ? m_stateDocument : m_stateElement.ownerDocument();
    return encodeNodeState(node, doc);
}

QDomElement KAProjectBrowserAbstract::encodeNodeState(Node* node, QDomDocument& doc)
{
    if (!node || !node->data() || node->data()->type() == KAObjectTypeFake)
        return QDomElement();
    QDomElement element = doc.createElement(QStringLiteral("node"));
    element.setAttribute(NameAttr, node->data()->name());
    element.setAttribute(QStringLiteral("expanded"), node->isExpanded() ? 1 : 0);
    for (Node* child = node->firstChild(); child; child = child->nextSibling()) {
        const QDomElement sub = encodeNodeState(child, doc);
        if (!sub.isNull())
            element.appendChild(sub);
    }
    return element;
}

// The document is kept as a member: an element lives only as long as the
// document that made it.
void KAProjectBrowserAbstract::saveTreeState()
{
    QDomDocument doc;
    QDomElement instance = doc.createElement(QStringLiteral("instance"));
    doc.appendChild(instance);
    const QDomElement root = encodeNodeState(getTree(), doc);
    if (!root.isNull())
        instance.appendChild(root);
    m_stateDocument = doc;
    m_stateElement = instance;
}

void KAProjectBrowserAbstract::saveTreeState(const QString& name)
{
    if (name.isNull())
        return;
    QDomDocument doc = readXmlConfig();
    QDomElement root = doc.documentElement();
    QDomElement instance = doc.createElement(QStringLiteral("instance"));
    instance.setAttribute(NameAttr, name);
    const QDomElement tree = encodeNodeState(getTree(), doc);
    if (!tree.isNull())
        instance.appendChild(tree);
    QDomElement existing;
    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.attribute(NameAttr) == name) {
            existing = e;
            break;
        }
    }
    if (!existing.isNull())
        root.replaceChild(instance, existing);
    else
        root.appendChild(instance);
    writeXmlConfig(doc);
}

void KAProjectBrowserAbstract::loadTreeState(const QString& name)
{
    if (name.isNull())
        return;
    const QDomDocument doc = readXmlConfig();
    QDomElement found;
    for (QDomElement e = doc.documentElement().firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.attribute(NameAttr) == name) {
            found = e;
            break;
        }
    }
    m_stateDocument = doc;
    m_stateElement = found;
}

QDomElement KAProjectBrowserAbstract::findDomElt(const Node* node)
{
    if (!node)
        return QDomElement();
    const QDomElement scope = node->parent() ? findDomElt(node->parent()) : m_stateElement;
    if (scope.isNull() || !node->data())
        return QDomElement();
    const QString& name = node->data()->name();
    for (QDomElement e = scope.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.attribute(NameAttr) == name)
            return e;
    }
    return QDomElement();
}

bool KAProjectBrowserAbstract::getNodeExpandState(Node* node)
{
    if (m_stateElement.isNull())
        return false;
    const QDomElement record = findDomElt(node);
    return !record.isNull() && record.attribute(QStringLiteral("expanded")) == QLatin1String("1");
}

// ---- searches -------------------------------------------------------------

KAProjectBrowserAbstract::Node* KAProjectBrowserAbstract::walkFind(const KAObject2* object, Node* start) const
{
    for (TTreeIterator<KAObject2*> it(start, 0); *it; ++it) {
        if ((*it)->data() == object)
            return *it;
    }
    return nullptr;
}

KAProjectBrowserAbstract::Node* KAProjectBrowserAbstract::findObjectInTree(const KAObject2* object, Node* start) const
{
    if (!object || !start)
        return nullptr;
    if (m_indexEnabled) {
        Node* top = start;
        while (top->parent())
            top = top->parent();
        if (top == getTree()) {
            Node* node = m_nodeIndex.value(object);
            if (!node)
                return nullptr;
            if (node->isWithin(start))
                return node;
            // Indexed elsewhere in the tree: a copy under start, if any,
            // is found the slow way.
        }
    }
    return walkFind(object, start);
}

KAProjectBrowserAbstract::Node* KAProjectBrowserAbstract::findInTree(int type, const QString& name, Node* start) const
{
    if (!start)
        return nullptr;
    for (TTreeIterator<KAObject2*> it(start, 0); *it; ++it) {
        const KAObject2* object = (*it)->data();
        if (object && object->type() == type && object->name() == name)
            return *it;
    }
    return nullptr;
}

KAProjectBrowserAbstract::Node* KAProjectBrowserAbstract::findChild(const QString& name, Node* parent) const
{
    if (!parent)
        parent = getTree();
    if (!parent)
        return nullptr;
    const QString wanted = name.toLower();
    for (Node* child = parent->firstChild(); child; child = child->nextSibling()) {
        if (child->data() && child->data()->name().toLower() == wanted)
            return child;
    }
    return nullptr;
}

bool KAProjectBrowserAbstract::moveIsAllowed(Node* moved, Node* target)
{
    if (target == moved)
        return false;
    return !target || !target->isWithin(moved);
}

// ---- node index -------------------------------------------------------------

void KAProjectBrowserAbstract::enableNodeIndex(bool enabled)
{
    m_indexEnabled = enabled;
    if (!enabled)
        m_nodeIndex.clear();
}

void KAProjectBrowserAbstract::indexNode(Node* node)
{
    if (m_indexEnabled && node && node->data())
        m_nodeIndex.insert(node->data(), node);
}

void KAProjectBrowserAbstract::indexSubtree(Node* node)
{
    if (!m_indexEnabled || !node)
        return;
    if (node->data() && !m_nodeIndex.contains(node->data()))
        m_nodeIndex.insert(node->data(), node);
    for (Node* c = node->firstChild(); c; c = c->nextSibling())
        indexSubtree(c);
}

void KAProjectBrowserAbstract::unindexSubtree(Node* node)
{
    if (!m_indexEnabled || !node)
        return;
    if (node->data()) {
        auto it = m_nodeIndex.find(node->data());
        if (it != m_nodeIndex.end() && it.value() == node)
            m_nodeIndex.erase(it);
    }
    for (Node* c = node->firstChild(); c; c = c->nextSibling())
        unindexSubtree(c);
}

void KAProjectBrowserAbstract::clearNodeIndex()
{
    m_nodeIndex.clear();
}

void KAProjectBrowserAbstract::clearBrowserPayloads(Node* node)
{
    if (!node)
        return;
    if (node->data() && kaIsBrowserOwnedType(node->data()->type())) {
        if (m_indexEnabled) {
            auto it = m_nodeIndex.find(node->data());
            if (it != m_nodeIndex.end() && it.value() == node)
                m_nodeIndex.erase(it);
        }
        delete node->data();
        node->setData(nullptr);
    }
    for (Node* c = node->firstChild(); c; c = c->nextSibling())
        clearBrowserPayloads(c);
}

void KAProjectBrowserAbstract::destroyNode(Node* node)
{
    if (!node)
        return;
    unindexSubtree(node);
    clearBrowserPayloads(node);
    delete node;
}

// ---- default editing rules (user folders) -----------------------------------

QString KAProjectBrowserAbstract::uniqueFolderName(const QString& name, Node* scope, const KAObject2* self) const
{
    QString candidate = name;
    for (int n = 1;; ++n) {
        Node* found = findInTree(KAObjectTypeFolder, candidate, scope);
        if (!found || (self && found->data() == self))
            return candidate;
        candidate = QStringLiteral("%1_%2").arg(name).arg(n);
    }
}

bool KAProjectBrowserAbstract::checkFolderName(const QString& name)
{
    if (!name.contains(QLatin1Char('/')))
        return true;
    MessageLoggerInterface::Error(
        tr("The folder name <b>%1</b> is not allowed: a folder name cannot contain \"/\"",
           "Le nom de dossier <b>%1</b> n'est pas autorisé : un nom de dossier ne peut pas contenir \"/\"")
            .arg(name.toHtmlEscaped()));
    return false;
}

KAProjectBrowserAbstract::Node* KAProjectBrowserAbstract::createFolder(const QString& name, Node* parent)
{
    if (!parent || !checkFolderName(name))
        return nullptr;
    auto* folder = new KAObject2Folder(uniqueFolderName(name, parent), KAObjectTypeUserFolder);
    if (parent->data() && parent->data()->type() == KAObjectTypeFolder) {
        for (KAObjectType type : parent->data()->getAllowedVisualReparentType())
            folder->addAllowedVisualReparentType(type);
    }
    Node* node = new Node(parent, -1);
    node->setData(folder);
    indexNode(node);
    return node;
}

bool KAProjectBrowserAbstract::renameObject(Node* node, QString& name)
{
    if (!node || !node->data() || node->data()->type() != KAObjectTypeFolder || !checkFolderName(name))
        return false;
    KAObject2* object = node->data();
    const QString unique = uniqueFolderName(name, node->parent() ? node->parent() : node, object);
    object->setName(unique);
    name = unique;
    return true;
}

bool KAProjectBrowserAbstract::deleteObject(Node* node, bool flag)
{
    Q_UNUSED(flag);
    if (!node || !node->data() || node->data()->type() != KAObjectTypeFolder)
        return false;
    if (static_cast<const KAObject2Folder*>(node->data())->folderKind() != KAObjectTypeUserFolder)
        return false;
    deleteUserFolder(node);
    if (m_ctrl)
        m_ctrl->deleteNode(node);
    node->detach();
    destroyNode(node);
    return true;
}

// Nested user folders go first, deepest first; a child that cannot be
// deleted (a database object) stays first and is asked again. The base rule
// never deletes a database object.
bool KAProjectBrowserAbstract::deleteUserFolder(Node* node)
{
    const int count = node->childCount();
    for (int i = 0; i < count && node->firstChild(); ++i)
        KAProjectBrowserAbstract::deleteObject(node->firstChild(), false);
    return true;
}

bool KAProjectBrowserAbstract::moveItem(const QList<const KAObject2*>&, Node*, QList<const KAObject2*>&)
{
    return false;
}

bool KAProjectBrowserAbstract::isPlaceholder(const Node* node)
{
    return node && node->data() && node->data()->type() == KAObjectTypeFake;
}

KAProjectBrowserAbstract::Node* KAProjectBrowserAbstract::addReference(Node* parent, const KAObject2* object)
{
    auto* node = new Node(parent, -1);
    node->setData(const_cast<KAObject2*>(object));
    node->setOwnsData(false);
    return node;
}

KAProjectBrowserAbstract::Node* KAProjectBrowserAbstract::addPlaceholder(Node* parent, KAObjectType kind)
{
    auto* node = new Node(parent, -1);
    node->setData(new KAObject2Fake(kind));
    node->setOwnsData(true);
    return node;
}
