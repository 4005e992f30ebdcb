#include <kaobject2folder.h>
#include <ttree.h>
#include <ttreeiterator.h>

#include <cstdio>

int main()
{
    TTree<KAObject2*> root;
    root.setOwnsData(true);
    auto* child = new TTree<KAObject2*>(&root, -1);
    child->setData(new KAObject2Folder(QStringLiteral("Data"), KAObjectTypeUserFolder));
    int count = 0;
    for (TTreeIterator<KAObject2*> it(&root, 1); *it; ++it)
        ++count;
    if (count == 2 && child->data()->type() == 260)
        std::printf("consumer ok\n");
    return 0;
}
