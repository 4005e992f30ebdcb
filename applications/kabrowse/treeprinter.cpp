#include "treeprinter.h"

#include "kaobject2.h"
#include "ttree.h"

void printTree(QTextStream& out, const TTree<KAObject2*>* node, int depth)
{
    if (!node)
        return;
    const KAObject2* object = node->data();
    if (object && object->type() == KAObjectTypeFake)
        return;
    out << QString(depth * 2, QLatin1Char(' '));
    if (object)
        out << object->name() << " [" << int(object->type()) << "]";
    else
        out << "[]";
    if (!node->isVisible())
        out << " (hidden)";
    out << '\n';
    for (const TTree<KAObject2*>* child = node->firstChild(); child; child = child->nextSibling())
        printTree(out, child, depth + 1);
}
