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
// the disk than a look for the marker file inside each folder; elsewhere
// QDir does the listing.
class KAHOST_EXPORT TDirectoryListing
{
public:
    struct Entry {
        QFileInfo info;          // made from the path: it reads the disk only when asked
        bool isDir = false;
        bool isSymLink = false;
        bool holdsMarker = false; // a folder holding the marker file as a regular file
    };

    // Empty when the folder cannot be read.
    static QVector<Entry> list(const QString& folder, const QStringList& patterns, bool files,
                               const QString& markerFile);
};
