// Saving and reading back the user's folder layout of a large project tree:
// 50,000 analyses placed in 500 user folders.
//
//   saved-tree-50k  saveTree() then createUserFolder() (the reading a new
//                   manager does), against parsing the saved file alone
//                   into a QDomDocument
#include "benchsupport.h"

#include "kaobject2.h"
#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectbrowsermgr.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "ttree.h"

#include <QApplication>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>

#include <memory>

namespace {
const int AnalysisCount = 50000;
const int FolderCount = 500;
} // namespace

int main(int argc, char** argv)
{
    Bench::initEnvironment();
    QApplication app(argc, argv);

    TSampleGenerator::Options options;
    options.projects = 1;
    options.analyses = AnalysisCount;
    options.signalsPerAnalysis = 0;
    options.peaksPerSignal = 0;
    options.wells = 0;
    options.groups = 0;
    Bench::SampleProject sample(QStringLiteral("Saved tree 50k"), options, 42);
    // Every move saves the layout, unless another project is current: the
    // 500 moves of the set-up are made while a small project is current, so
    // that the set-up does not write the file 500 times.
    TSampleGenerator::Options tiny;
    tiny.projects = 1;
    tiny.analyses = 1;
    tiny.signalsPerAnalysis = 1;
    tiny.peaksPerSignal = 1;
    tiny.wells = 1;
    tiny.groups = 0;
    Bench::SampleProject other(QStringLiteral("Other"), tiny, 7);
    if (!sample.isValid() || !other.isValid()) {
        Bench::note("sample projects not made: %s%s", qPrintable(sample.error()), qPrintable(other.error()));
        return 1;
    }
    Bench::note("generated %d objects in %.0f ms", sample.objectCount(), sample.generationMs());

    KAProjectBrowserFilterPackage filter;
    KAProjectBrowserCtrl ctrl;
    ctrl.init(&filter, sample.project(), true);
    KAProjectBrowserMgr* mgr = ctrl.mgrList().first();
    TTree<KAObject2*>* branch = mgr->getTree(KAObjectTypeAnalysis);
    const QList<const KAObject2*> analyses = sample.db()->getObjectLst(KAObjectTypeAnalysis);
    const int perFolder = analyses.size() / FolderCount;
    // Each folder takes the first analyses of the branch's child chain: a
    // node leaves its parent's chain by a walk from the first child, so
    // moving from the head keeps the set-up short.
    int placedInSetup = 0;
    const double layoutMs = Bench::timeMs([&]() {
        for (int f = 0; f < FolderCount; ++f) {
            TTree<KAObject2*>* folder =
                ctrl.createFolder(QStringLiteral("Batch %1").arg(f + 1, 3, 10, QLatin1Char('0')), branch);
            QList<const KAObject2*> chunk;
            for (TTree<KAObject2*>* c = branch->firstChild(); c && chunk.size() < perFolder; c = c->nextSibling()) {
                if (c->data() && c->data()->type() == KAObjectTypeAnalysis)
                    chunk.append(c->data());
            }
            QList<const KAObject2*> rejected;
            if (!folder || !ctrl.moveItem(chunk, folder, rejected) || !rejected.isEmpty()) {
                Bench::note("the layout could not be made (folder %d)", f + 1);
                std::exit(1);
            }
            placedInSetup += chunk.size();
        }
    });
    Bench::note("placed %d analyses in %d folders in %.0f ms", placedInSetup, FolderCount, layoutMs);

    ProjectMgrInterface::returnMe()->setCurrentProject(sample.project());
    const QString path = mgr->savedTreePath();
    if (!mgr->saveTree() || !QFileInfo::exists(path)) {
        Bench::note("the layout was not saved to %s", qPrintable(path));
        return 1;
    }
    Bench::note("saved tree: %lld bytes", QFileInfo(path).size());

    Bench::compare(
        QStringLiteral("saved-tree-50k"), 5,
        [&]() {
            mgr->saveTree();
            mgr->createUserFolder();
        },
        [&]() {
            QFile file(path);
            QDomDocument document;
            if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
                Bench::note("the saved tree does not parse");
        });

    // The placement table read back holds every analysis.
    int placed = 0;
    for (const KAObject2* analysis : analyses)
        placed += mgr->getParent(KAObjectTypeAnalysis, analysis->name()) ? 1 : 0;
    Bench::note("read back: %d analyses placed in user folders", placed);
    return 0;
}
