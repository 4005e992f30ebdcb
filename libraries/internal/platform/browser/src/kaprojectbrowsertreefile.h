#pragma once

#include "kabrowser_export.h"

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QPair>
#include <QString>
#include <QStringList>

template <typename T> class TTree;
class KAObject2;

// The saved layout of a project tree: for every object below a user folder
// (and for the folders themselves) the folder path it sits in. Written as a
// "session" file that replaces the "default" file only once it is complete,
// so a complete "default" file exists at every instant.
class KABROWSER_EXPORT KAProjectBrowserTreeFile
{
public:
    using Node = TTree<KAObject2*>;
    // Folder path to the object names recorded under it, in document order.
    using FolderMap = QMap<QString, QStringList>;
    // Branch element name and the branch node it is written from.
    using Branch = QPair<QString, Node*>;

    static const QString DocType;      // "projectBrowser_tree"
    static const QStringList BranchTags; // in the order they are written and read

    // pathTemplate has %2 left for "default" or "session".
    static bool write(const QString& pathTemplate, const QString& projectName, const QList<Branch>& branches);

    // Reads the branch elements present, by tag; false when the file is
    // missing, malformed or not a saved project tree.
    static bool read(const QString& path, QMap<QString, FolderMap>* branches);
    // The same from bytes, through a general XML reader (the files this
    // class writes are read by a faster reader first).
    static bool readXml(const QByteArray& bytes, QMap<QString, FolderMap>* branches);

    // The folder path of a node: its own name when it is a folder, then the
    // names of its folder ancestors, outermost first, each after "/".
    static QString folderPath(const Node* node);
};
