#pragma once

#include "kahost_export.h"

#include <QFileInfo>
#include <QString>
#include <QStringList>
#include <QVector>

// The entries of one folder as the file-system explorer lists them: every
// folder, and the files when asked (only those matching one of the
// wildcard patterns, case-insensitively, when there are any); hidden
// entries and anything that is neither a file nor a folder (a broken
// link, a device...) left out; in the order the system gives them. Where
// the system tells an entry's kind while listing, nothing more is asked of
// the disk (no look inside the folders listed); elsewhere QDir does the
// listing.
class KAHOST_EXPORT TDirectoryListing
{
public:
    struct Entry {
        QFileInfo info;          // made from the path: it reads the disk only when asked
        QString name;            // the file name
        bool isDir = false;
        bool isSymLink = false;
    };

    // Empty when the folder cannot be read. With holdsMarker, tells whether
    // the folder itself holds markerFile as a regular file (or a link to
    // one), seen on the way, whatever the patterns and files ask.
    static QVector<Entry> list(const QString& folder, const QStringList& patterns, bool files,
                               const QString& markerFile = QString(), bool* holdsMarker = nullptr);
};
