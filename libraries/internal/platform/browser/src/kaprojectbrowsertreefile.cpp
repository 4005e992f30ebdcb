#include "kaprojectbrowsertreefile.h"

#include "kaobject2.h"
#include "kaprojectbrowsertreefilereader.h"
#include "kasessionfile.h"
#include "ttree.h"
#include "txmlmethod.h"

#include <QFile>
#include <QXmlStreamReader>
#include <QXmlStreamWriter>

const QString KAProjectBrowserTreeFile::DocType = QStringLiteral("projectBrowser_tree");
const QStringList KAProjectBrowserTreeFile::BranchTags = {
    QStringLiteral("KAObject2Analysis"), QStringLiteral("KAObject2GlobalIndexation"),
    QStringLiteral("KAObject2Well"), QStringLiteral("KAObject2Identification"),
    QStringLiteral("KAObject2IdentificationManual"),
};

namespace {

const QString EntryTag = QStringLiteral("KAObject2");

bool isFolder(const KAObject2* object)
{
    return object && object->type() == KAObjectTypeFolder;
}

// Entries in depth-first order, each node before its children. The path of
// the parent's folders is carried down instead of being rebuilt per node.
void writeSubtree(QXmlStreamWriter& xml, const TTree<KAObject2*>* node, const QString& parentPath)
{
    for (const TTree<KAObject2*>* child = node->firstChild(); child; child = child->nextSibling()) {
        const KAObject2* object = child->data();
        QString path = parentPath;
        if (isFolder(object))
            path += QLatin1Char('/') + object->name();
        if (object && !path.isEmpty()) {
            xml.writeEmptyElement(EntryTag);
            xml.writeAttribute(QStringLiteral("name"), object->name());
            xml.writeAttribute(QStringLiteral("folder"), path);
        }
        writeSubtree(xml, child, path);
    }
}

} // namespace

QString KAProjectBrowserTreeFile::folderPath(const Node* node)
{
    QString path;
    for (const Node* n = node; n; n = n->parent()) {
        if (isFolder(n->data()))
            path.prepend(QLatin1Char('/') + n->data()->name());
    }
    return path;
}

bool KAProjectBrowserTreeFile::write(const QString& pathTemplate, const QString& projectName,
                                     const QList<Branch>& branches)
{
    QByteArray bytes;
    {
        QXmlStreamWriter xml(&bytes);
        xml.setAutoFormatting(true);
        xml.setAutoFormattingIndent(2);
        xml.writeStartDocument();
        xml.writeDTD(QStringLiteral("<!DOCTYPE %1>").arg(DocType));
        xml.writeStartElement(QStringLiteral("root"));
        xml.writeAttribute(QStringLiteral("version"), QStringLiteral("1.0"));
        xml.writeAttribute(QStringLiteral("projectName"), projectName);
        for (const Branch& branch : branches) {
            xml.writeStartElement(branch.first);
            if (branch.second)
                writeSubtree(xml, branch.second, folderPath(branch.second));
            xml.writeEndElement();
        }
        xml.writeEndElement();
        xml.writeEndDocument();
    }
    return KASessionFile::write(pathTemplate, bytes);
}

bool KAProjectBrowserTreeFile::read(const QString& path, QMap<QString, FolderMap>* branches)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > TXMLMethod::MaxFileSize)
        return false;
    const QByteArray bytes = file.readAll();
    if (KAProjectBrowserTreeFileReader::isValidUtf8(bytes)
        && KAProjectBrowserTreeFileReader(bytes).read(BranchTags, branches))
        return true;
    return readXml(bytes, branches);
}

bool KAProjectBrowserTreeFile::readXml(const QByteArray& bytes, QMap<QString, FolderMap>* branches)
{
    QXmlStreamReader xml(bytes);
    bool sawDocType = false;
    while (!xml.atEnd() && !xml.isStartElement()) {
        xml.readNext();
        if (xml.tokenType() == QXmlStreamReader::DTD)
            sawDocType = xml.dtdName() == DocType;
    }
    if (xml.hasError() || !xml.isStartElement() || xml.name() != QLatin1String("root"))
        return false;
    Q_UNUSED(sawDocType); // older writers left the document type out
    QMap<QString, FolderMap> result;
    while (xml.readNextStartElement()) {
        const QString tag = xml.name().toString();
        if (!BranchTags.contains(tag) || result.contains(tag)) {
            xml.skipCurrentElement();
            continue;
        }
        FolderMap& map = result[tag];
        while (xml.readNextStartElement()) {
            if (xml.name() != EntryTag) {
                xml.skipCurrentElement();
                continue;
            }
            const QXmlStreamAttributes attributes = xml.attributes();
            map[attributes.value(QStringLiteral("folder")).toString()].append(
                attributes.value(QStringLiteral("name")).toString());
            xml.skipCurrentElement();
        }
    }
    if (xml.hasError())
        return false;
    *branches = result;
    return true;
}
