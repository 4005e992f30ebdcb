#pragma once

#include "kabrowser_export.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

// Reads a saved project tree exactly as KAProjectBrowserTreeFile writes it,
// straight from its UTF-8 bytes: the XML declaration, the optional document
// type, the root element, then branch elements holding one
// <KAObject2 name="..." folder="..."/> entry per object. A general XML
// reader spends most of its time on what this layout never holds; anything
// outside it (comments, other attributes or orders, unknown entities, line
// breaks inside values, invalid UTF-8...) makes this reader give up, and
// the caller then reads the file with a general XML reader, which gives the
// same answer on every file this reader accepts.
class KABROWSER_EXPORT KAProjectBrowserTreeFileReader
{
public:
    using FolderMap = QMap<QString, QStringList>;

    explicit KAProjectBrowserTreeFileReader(const QByteArray& bytes);
    // False when the bytes are not in the written layout; branches is then
    // left alone.
    bool read(const QStringList& branchTags, QMap<QString, FolderMap>* branches);

    static bool isValidUtf8(const QByteArray& bytes);

private:
    void skipSpace();
    bool literal(const char* text);
    bool name(QByteArray* out);
    // A quoted value, entities decoded; the opening quote is next.
    bool value(QString* out);
    bool appendCharacterReference(QString* out, const char* begin, const char* end);
    // The attributes of a start tag up to its end; *empty tells "/>" from ">".
    bool skipAttributes(bool* empty);
    bool readBranch(FolderMap* map, const QByteArray& tag);

    const char* m_p;
    const char* m_end;
};
