#include "projectfolders.h"

#include "kaobject2.h"
#include "kaprojectbrowserctrl.h"
#include "messageloggerinterface.h"
#include "ttree.h"

#include <QStringList>
#include <QTextStream>

namespace {
TTree<KAObject2*>* folderChild(TTree<KAObject2*>* parent, const QString& name, Qt::CaseSensitivity cs)
{
    for (TTree<KAObject2*>* child = parent->firstChild(); child; child = child->nextSibling()) {
        if (child->data() && child->data()->type() == KAObjectTypeFolder
            && child->data()->name().compare(name, cs) == 0)
            return child;
    }
    return nullptr;
}

TTree<KAObject2*>* walk(KAProjectBrowserCtrl& ctrl, const QString& path, bool create)
{
    const QStringList parts = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    TTree<KAObject2*>* current = ctrl.getTree();
    if (!current || parts.isEmpty())
        return nullptr;
    current = folderChild(current, parts.first(), Qt::CaseInsensitive);
    for (int i = 1; current && i < parts.size(); ++i) {
        TTree<KAObject2*>* next = folderChild(current, parts.at(i), Qt::CaseSensitive);
        if (!next && create)
            next = ctrl.createFolder(parts.at(i), current);
        current = next;
    }
    return current;
}
} // namespace

namespace ProjectFolders {

TTree<KAObject2*>* find(KAProjectBrowserCtrl& ctrl, const QString& path)
{
    return walk(ctrl, path, false);
}

TTree<KAObject2*>* make(KAProjectBrowserCtrl& ctrl, const QString& path)
{
    return walk(ctrl, path, true);
}

void printMessages()
{
    static int printed = 0;
    const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
    QTextStream out(stdout);
    for (int i = printed; i < entries.size(); ++i) {
        const char* level = entries.at(i).level == MessageLoggerInterface::LevelError ? "error"
            : entries.at(i).level == MessageLoggerInterface::LevelWarning             ? "warning"
                                                                                      : "information";
        out << level << ": " << entries.at(i).text << '\n';
    }
    printed = entries.size();
}

} // namespace ProjectFolders
