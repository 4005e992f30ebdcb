#pragma once

#include "kahost_export.h"

#include <QString>

class QDomDocument;
class QDomNode;
class QIODevice;

// XML helpers of the saved files.
class KAHOST_EXPORT TXMLMethod
{
public:
    // Files larger or nested deeper than this are treated as malformed.
    static const qint64 MaxFileSize = 256 * 1024 * 1024;
    static const int MaxDepth = 512;

    // Writes the document in UTF-8, indented by 2, replacing the file only
    // when every byte reached the disk: a failed write keeps the old file.
    static bool save(const QDomDocument* document, const QString& path, bool indent = true, bool encodingDeclaration = true);
    // Replaces the file with the bytes only when all of them reached the
    // disk; on failure the previous file is left as it was.
    static bool writeAtomically(const QString& path, const QByteArray& bytes);
    // The first child element of that tag, into result; false when absent.
    static bool getElement(const QDomNode& parent, const QString& tag, QDomNode& result);
    // The attribute of an element, empty when absent.
    static QString getInfoString(const QDomNode& node, const QString& attribute);

    // Parses a file after a cheap bounded pass (size, depth, well-formed);
    // false with *error set for anything missing, malformed or too large.
    static bool load(const QString& path, QDomDocument& document, QString* error = nullptr);
    static bool parse(const QByteArray& data, QDomDocument& document, QString* error = nullptr);
};
