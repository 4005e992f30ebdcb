#pragma once

// Small readers of a project tree for the tests: names and nodes in child
// order, whole-subtree searches by kind or payload, and the entries of a
// saved project tree file.

#include "kaobject2.h"
#include "ttree.h"

#include <QDomDocument>
#include <QFile>
#include <QList>
#include <QStringList>

namespace TreeTest {

using Node = TTree<KAObject2*>;

inline QList<Node*> childNodes(const Node* parent)
{
    QList<Node*> result;
    for (Node* c = parent ? parent->firstChild() : nullptr; c; c = c->nextSibling())
        result.append(c);
    return result;
}

inline QStringList childNames(const Node* parent)
{
    QStringList names;
    for (const Node* c : childNodes(parent))
        names.append(c->data() ? c->data()->name() : QStringLiteral("<null>"));
    return names;
}

// The direct child whose payload has that name, or null.
inline Node* childNamed(const Node* parent, const QString& name)
{
    for (Node* c : childNodes(parent)) {
        if (c->data() && c->data()->name() == name)
            return c;
    }
    return nullptr;
}

// The node carries nothing but a placeholder (children not built yet).
inline bool carriesPlaceholder(const Node* node)
{
    return node && node->childCount() == 1 && node->firstChild()->data()
        && node->firstChild()->data()->type() == KAObjectTypeFake;
}

inline QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

// Every node of the subtree (start included), depth-first, whose payload is
// of that kind.
inline QList<Node*> nodesOfType(Node* start, qint32 type)
{
    QList<Node*> result;
    if (!start)
        return result;
    if (start->data() && start->data()->type() == type)
        result.append(start);
    for (Node* c = start->firstChild(); c; c = c->nextSibling())
        result += nodesOfType(c, type);
    return result;
}

inline QList<const KAObject2*> payloadsOfType(Node* start, qint32 type)
{
    QList<const KAObject2*> result;
    for (Node* n : nodesOfType(start, type))
        result.append(n->data());
    return result;
}

inline Node* nodeOf(Node* start, const KAObject2* object)
{
    if (!start)
        return nullptr;
    if (start->data() == object)
        return start;
    for (Node* c = start->firstChild(); c; c = c->nextSibling()) {
        if (Node* found = nodeOf(c, object))
            return found;
    }
    return nullptr;
}

// The direct child folder (kind 260) of that name, or null.
inline Node* childFolder(const Node* parent, const QString& name)
{
    for (Node* c : childNodes(parent)) {
        if (c->data() && c->data()->type() == KAObjectTypeFolder && c->data()->name() == name)
            return c;
    }
    return nullptr;
}

// The folders (kind 260) above a node, outermost first, each after "/":
// "/Analysis/Batch 3" for an analysis inside user folder Batch 3.
inline QString folderChain(const Node* node)
{
    QString path;
    for (const Node* n = node ? node->parent() : nullptr; n; n = n->parent()) {
        if (n->data() && n->data()->type() == KAObjectTypeFolder)
            path.prepend(QLatin1Char('/') + n->data()->name());
    }
    return path;
}

// One "KAObject2" entry of a saved project tree.
struct SavedEntry {
    QString branch;
    QString name;
    QString folder;
    bool operator==(const SavedEntry& o) const
    {
        return branch == o.branch && name == o.name && folder == o.folder;
    }
};

inline QList<SavedEntry> readSavedEntries(const QString& path, QDomDocument* document = nullptr)
{
    QList<SavedEntry> entries;
    QFile file(path);
    QDomDocument doc;
    if (!file.open(QIODevice::ReadOnly) || !doc.setContent(&file))
        return entries;
    for (QDomElement branch = doc.documentElement().firstChildElement(); !branch.isNull();
         branch = branch.nextSiblingElement()) {
        for (QDomElement e = branch.firstChildElement(); !e.isNull(); e = e.nextSiblingElement())
            entries.append({branch.tagName(), e.attribute(QStringLiteral("name")), e.attribute(QStringLiteral("folder"))});
    }
    if (document)
        *document = doc;
    return entries;
}

// Found by QCOMPARE through argument-dependent lookup.
inline char* toString(const SavedEntry& e)
{
    return qstrdup(QStringLiteral("%1 \"%2\" in \"%3\"").arg(e.branch, e.name, e.folder).toUtf8().constData());
}

} // namespace TreeTest
