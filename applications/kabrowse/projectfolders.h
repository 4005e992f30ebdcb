#pragma once

#include <QString>

template <typename T> class TTree;
class KAObject2;
class KAProjectBrowserCtrl;

// Folder paths of the command line, such as "Analysis/Batch 3/Rejected":
// the first part names a branch folder of the project tree.
namespace ProjectFolders {
// The folder node of the path, or null when a part is missing.
TTree<KAObject2*>* find(KAProjectBrowserCtrl& ctrl, const QString& path);
// Finds the path, creating the missing user folders.
TTree<KAObject2*>* make(KAProjectBrowserCtrl& ctrl, const QString& path);
// Every message the log received since the last call, one per line.
void printMessages();
}
