// Searching the tree of a 200,000-object project for a text that about 1%
// of the names hold.
//
//   search-200k  KAProjectBrowserCtrl::search without a view (the results
//                tree of the search plug-in), against a plain
//                case-insensitive scan of every object's name held in memory
#include "benchsupport.h"

#include "kaobject2project.h"
#include "kaprojectbrowserctrl.h"
#include "kaprojectbrowserfilterpackage.h"
#include "tdatabase.h"
#include "ttree.h"

#include <QApplication>
#include <QStringList>

namespace {

// "Height" is one of the generator's variable names: every dataset has one,
// about 1% of the objects of this project mix.
const QString SearchText = QStringLiteral("height");

int countNodes(const TTree<KAObject2*>* node)
{
    if (!node)
        return 0;
    int count = 1;
    for (const TTree<KAObject2*>* child = node->firstChild(); child; child = child->nextSibling())
        count += countNodes(child);
    return count;
}

} // namespace

int main(int argc, char** argv)
{
    Bench::initEnvironment();
    QApplication app(argc, argv);

    Bench::SampleProject sample(QStringLiteral("Search 200k"), Bench::projectOptions(10), 42);
    if (!sample.isValid()) {
        Bench::note("sample project not made: %s", qPrintable(sample.error()));
        return 1;
    }
    Bench::note("generated %d objects in %.0f ms", sample.objectCount(), sample.generationMs());

    KAProjectBrowserFilterPackage filter;
    KAProjectBrowserCtrl ctrl;
    ctrl.init(&filter, sample.project(), true);

    QStringList names;
    for (KAObjectType type : sample.db()->objectTypes()) {
        for (const KAObject2* object : sample.db()->getObjectLst(type))
            names.append(object->name());
    }
    int matches = 0;
    for (const QString& name : qAsConst(names))
        matches += name.contains(SearchText, Qt::CaseInsensitive) ? 1 : 0;
    const TTree<KAObject2*>* result = ctrl.search(SearchText);
    Bench::note("\"%s\": %d of %d names match (%.2f%%); the results tree holds %d nodes", qPrintable(SearchText),
                matches, names.size(), 100.0 * matches / qMax(1, names.size()), countNodes(result));

    Bench::compare(
        QStringLiteral("search-200k"), 5, [&]() { ctrl.search(SearchText); },
        [&]() {
            int found = 0;
            for (const QString& name : qAsConst(names))
                found += name.contains(SearchText, Qt::CaseInsensitive) ? 1 : 0;
            if (found != matches)
                Bench::note("the scan found %d names", found);
        });
    return 0;
}
