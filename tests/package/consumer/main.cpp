#include <kaobject2folder.h>
#include <kaprojectbrowserfilterpackage.h>
#include <ttree.h>
#include <ttreeiterator.h>

#include <QCoreApplication>

#include <cstdio>

// Uses one class of each installed layer, so that the program needs the
// host and the browser libraries at run time. Like every host, it has an
// application object (the filter package looks up its icons).
int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    TTree<KAObject2*> root;
    root.setOwnsData(true);
    auto* child = new TTree<KAObject2*>(&root, -1);
    child->setData(new KAObject2Folder(QStringLiteral("Data"), KAObjectTypeUserFolder));
    int count = 0;
    for (TTreeIterator<KAObject2*> it(&root, 1); *it; ++it)
        ++count;

    KAProjectBrowserFilterPackage filter;
    filter.add(KAObjectTypeAnalysis);

    if (count == 2 && child->data()->type() == 260 && filter.contains(KAObjectTypeAnalysis))
        std::printf("consumer ok\n");
    return 0;
}
