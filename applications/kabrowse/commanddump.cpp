#include "commands.h"

#include "kaobject2.h"
#include "kaobject2analysis.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2project.h"
#include "tcompoundabstract.h"
#include "tdatabase.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTextStream>

#include <memory>

namespace {

QString kindName(KAObjectType kind)
{
    switch (kind) {
    case KAObjectTypeAnalysis: return QStringLiteral("Analysis");
    case KAObjectTypeSignal: return QStringLiteral("Signal");
    case KAObjectTypeWell: return QStringLiteral("Well");
    case KAObjectTypeDataset: return QStringLiteral("Dataset");
    case KAObjectTypeVariable: return QStringLiteral("Variable");
    case KAObjectTypePeakDetect: return QStringLiteral("Peak detection");
    case KAObjectTypeIdentificationGroup: return QStringLiteral("Identification group");
    case KAObjectTypeIdentification: return QStringLiteral("Identification");
    case KAObjectTypeGlobalIndexation: return QStringLiteral("Global indexation");
    case KAObjectTypeCompound: return QStringLiteral("Compound");
    case KAObjectTypeCompoundList: return QStringLiteral("Compound list");
    default: return QStringLiteral("Other");
    }
}

// What the browser decides on besides the name: the multichannel flag and
// the source codes.
QString details(const KAObject2* object)
{
    switch (object->type()) {
    case KAObjectTypeAnalysis:
        return static_cast<const KAObject2Analysis*>(object)->isMulticanal() ? QStringLiteral("  (multichannel)")
                                                                              : QString();
    case KAObjectTypePeakDetect:
        return QStringLiteral("  [source 0x%1]")
            .arg(static_cast<const KAObject2PeakDetect*>(object)->getSource(), 4, 16, QLatin1Char('0'));
    case KAObjectTypeIdentificationGroup:
        return QStringLiteral("  [source 0x%1]")
            .arg(static_cast<const KAObject2IdentificationGroup*>(object)->getSource(), 4, 16, QLatin1Char('0'));
    case KAObjectTypeCompound: {
        // Entries of another project count too: they are only named here.
        const int entries = static_cast<const TCompoundAbstract*>(object)->getPeakDetectList().size();
        return QStringLiteral("  [%1 peak detection%2]").arg(entries).arg(entries == 1 ? "" : "s");
    }
    default:
        return QString();
    }
}

} // namespace

// kabrowse dump PROJECT_DIR: the header, then per kind its number, name and
// count, then the names indented, in database order.
int commandDump(const QStringList& args)
{
    if (args.size() != 1)
        return printUsage();
    const QString folder = QFileInfo(args.first()).absoluteFilePath();
    QTextStream out(stdout);
    QTextStream err(stderr);

    KAObject2Project project(QDir(folder).dirName(), folder);
    QString error;
    std::unique_ptr<TechDB::TDatabase> db(TechDB::TDatabase::open(&project, true, &error));
    if (!db) {
        err << QCoreApplication::translate("kabrowse", "Cannot open the project %1: %2",
                                           "Impossible d'ouvrir le projet %1 : %2")
                   .arg(QDir::toNativeSeparators(folder), error)
            << '\n';
        return 1;
    }
    out << "Project: " << project.name() << '\n';
    out << "Description: " << project.description() << '\n';
    out << "State: " << project.projectState() << '\n';
    out << "Objects: " << db->objectCount() << '\n';
    for (KAObjectType kind : db->objectTypes()) {
        const QList<const KAObject2*> objects = db->getObjectLst(kind);
        out << '\n' << int(kind) << ' ' << kindName(kind) << ": " << objects.size() << '\n';
        for (const KAObject2* object : objects)
            out << "    " << object->name() << details(object) << '\n';
    }
    return 0;
}
