#include "tdirectorylisting.h"

#include <QDir>
#include <QFile>
#include <QRegExp>

#ifdef Q_OS_UNIX
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#endif

namespace {

// The matching QDir applies to names: wildcards, case-insensitive.
class Patterns
{
public:
    explicit Patterns(const QStringList& patterns)
    {
        for (const QString& pattern : patterns)
            m_expressions.append(QRegExp(pattern, Qt::CaseInsensitive, QRegExp::Wildcard));
    }
    bool matches(const QString& name)
    {
        if (m_expressions.isEmpty())
            return true;
        for (QRegExp& expression : m_expressions) {
            if (expression.exactMatch(name))
                return true;
        }
        return false;
    }

private:
    QVector<QRegExp> m_expressions;
};

QVector<TDirectoryListing::Entry> listWithQDir(const QString& folder, const QStringList& patterns, bool files,
                                               const QString& markerFile, bool* holdsMarker)
{
    QDir::Filters filters = QDir::AllDirs | QDir::NoDotAndDotDot;
    if (files)
        filters |= QDir::Files;
    const QDir dir(folder);
    if (holdsMarker)
        *holdsMarker = !markerFile.isEmpty() && QFileInfo(dir.filePath(markerFile)).isFile();
    QVector<TDirectoryListing::Entry> entries;
    for (const QFileInfo& info : dir.entryInfoList(patterns, filters, QDir::NoSort)) {
        TDirectoryListing::Entry entry;
        entry.info = info;
        entry.name = info.fileName();
        entry.isDir = info.isDir();
        entry.isSymLink = info.isSymLink();
        entries.append(entry);
    }
    return entries;
}

} // namespace

QVector<TDirectoryListing::Entry> TDirectoryListing::list(const QString& folder, const QStringList& patterns,
                                                          bool files, const QString& markerFile, bool* holdsMarker)
{
    if (holdsMarker)
        *holdsMarker = false;
#ifdef Q_OS_UNIX
    const QString path = QDir::cleanPath(QFileInfo(folder).absoluteFilePath());
    DIR* dir = opendir(QFile::encodeName(path).constData());
    if (!dir)
        return listWithQDir(folder, patterns, files, markerFile, holdsMarker);
    const int fd = dirfd(dir);
    const QByteArray marker = QFile::encodeName(markerFile);
    Patterns filter(patterns);
    const QString prefix = path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
    QVector<Entry> entries;
    while (const dirent* d = readdir(dir)) {
        const char* name = d->d_name;
        // Hidden entries, "." and ".." among them, are not listed.
        if (name[0] == '.')
            continue;
        Entry entry;
        bool isFile = false;
        struct stat st;
        switch (d->d_type) {
        case DT_DIR:
            entry.isDir = true;
            break;
        case DT_REG:
            isFile = true;
            break;
        case DT_LNK:
        case DT_UNKNOWN:
            if (d->d_type == DT_UNKNOWN) {
                if (fstatat(fd, name, &st, AT_SYMLINK_NOFOLLOW) != 0)
                    continue;
                entry.isSymLink = S_ISLNK(st.st_mode);
            } else {
                entry.isSymLink = true;
            }
            // A link that leads nowhere is left out.
            if (fstatat(fd, name, &st, 0) != 0)
                continue;
            entry.isDir = S_ISDIR(st.st_mode);
            isFile = S_ISREG(st.st_mode);
            break;
        default:
            continue;
        }
        if (!entry.isDir && !isFile)
            continue;
        if (holdsMarker && isFile && marker == name)
            *holdsMarker = true;
        const QString fileName = QFile::decodeName(name);
        if (isFile && (!files || !filter.matches(fileName)))
            continue;
        entry.info = QFileInfo(prefix + fileName);
        entry.name = fileName;
        entries.append(entry);
    }
    closedir(dir);
    return entries;
#else
    return listWithQDir(folder, patterns, files, markerFile, holdsMarker);
#endif
}
