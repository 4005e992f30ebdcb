#include "txmlmethod.h"

#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QTextStream>
#include <QXmlStreamReader>

bool TXMLMethod::save(const QDomDocument* document, const QString& path, bool indent, bool encodingDeclaration)
{
    if (!document)
        return false;
    QByteArray bytes;
    {
        QTextStream stream(&bytes);
        stream.setCodec("UTF-8");
        if (encodingDeclaration && !document->firstChild().isProcessingInstruction())
            stream << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
        document->save(stream, indent ? 2 : -1);
        stream.flush();
    }
    return writeAtomically(path, bytes);
}

bool TXMLMethod::writeAtomically(const QString& path, const QByteArray& bytes)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    // QSaveFile::commit() may report success after a buffered write failed
    // (disk full): write, flush and check the error before committing.
    if (file.write(bytes) != bytes.size() || !file.flush() || file.error() != QFileDevice::NoError) {
        file.cancelWriting();
        return false;
    }
    return file.commit();
}

bool TXMLMethod::getElement(const QDomNode& parent, const QString& tag, QDomNode& result)
{
    result = parent.firstChildElement(tag);
    return !result.isNull();
}

QString TXMLMethod::getInfoString(const QDomNode& node, const QString& attribute)
{
    return node.toElement().attribute(attribute);
}

bool TXMLMethod::load(const QString& path, QDomDocument& document, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = file.errorString();
        return false;
    }
    if (file.size() > MaxFileSize) {
        if (error)
            *error = QStringLiteral("file too large");
        return false;
    }
    return parse(file.readAll(), document, error);
}

// A stream pass first: QDomDocument recurses per nesting level and crashes
// on very deep documents, so depth and well-formedness are checked without it.
bool TXMLMethod::parse(const QByteArray& data, QDomDocument& document, QString* error)
{
    if (data.size() > MaxFileSize) {
        if (error)
            *error = QStringLiteral("document too large");
        return false;
    }
    QXmlStreamReader reader(data);
    int depth = 0;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (++depth > MaxDepth) {
                if (error)
                    *error = QStringLiteral("document nested too deep");
                return false;
            }
        } else if (token == QXmlStreamReader::EndElement) {
            --depth;
        }
    }
    if (reader.hasError()) {
        if (error)
            *error = reader.errorString();
        return false;
    }
    QString message;
    if (!document.setContent(data, &message)) {
        if (error)
            *error = message;
        return false;
    }
    return true;
}
