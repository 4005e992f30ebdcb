#include "kaprojectbrowserfilter.h"
#include "kaprojectbrowserfilterpackage.h"
#include "testfixture.h"
#include "tpixmapcache.h"

#include <QTest>

namespace {

QList<qint32> typesOf(const KAProjectBrowserFilterPackage& package)
{
    QList<qint32> types;
    for (const KAProjectBrowserFilter* entry : package.list())
        types.append(entry->type);
    return types;
}

const QList<qint32> DefaultOrder = {768, 1, 3, 528, 277, 293, 2522, 512, 2538, 2539, 2541, 2542, 2543, 2544};

// A user-selectable entry has a label and an icon; the others are silent.
void checkEntry(const KAProjectBrowserFilter* entry, const QString& label, const char* icon)
{
    QVERIFY(entry);
    QCOMPARE(entry->label, label);
    QCOMPARE(entry->active, !label.isEmpty());
    QCOMPARE(entry->icon.isNull(), !icon);
    if (icon) {
        QVERIFY(!TPixmapCache::find(icon).isNull());
        QCOMPARE(entry->icon.cacheKey(), TPixmapCache::find(icon).cacheKey());
    }
}

} // namespace

class tst_KAProjectBrowserFilterPackage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }
    void defaultEntries();
    void removeThenAddAppends();
    void copyAndAssignmentAreIndependent();
    void setReadOnlyWithdrawsEditing();
};

void tst_KAProjectBrowserFilterPackage::defaultEntries()
{
    const KAProjectBrowserFilterPackage package;
    QCOMPARE(typesOf(package), DefaultOrder);
    QVERIFY(package.currentUserFilter() == KAObjectTypeProject && !package.readOnly());
    const QList<const KAProjectBrowserFilter*> list = package.list();
    checkEntry(list.at(0), QStringLiteral("Show projects"), "view_projectbrowser");
    checkEntry(list.at(1), QStringLiteral("Show analyses"), "folder_analysis");
    checkEntry(list.at(2), QStringLiteral("Show numerical arrays"), "datasetfolder");
    checkEntry(list.at(3), QStringLiteral("Show indexations"), "indexation");
    checkEntry(list.at(4), QStringLiteral("Show identifications"), "identification");
    for (int i = 5; i < DefaultOrder.size(); ++i)
        checkEntry(list.at(i), QString(), nullptr);
}

void tst_KAProjectBrowserFilterPackage::removeThenAddAppends()
{
    for (int type : {768, 528, 2541}) {
        KAProjectBrowserFilterPackage package;
        const KAProjectBrowserFilter original = *package.contains(KAObjectType(type));
        // Adding a kind already there, or one of no known kind, changes nothing.
        const QList<const KAProjectBrowserFilter*> before = package.list();
        for (int ignored : {type, 2540, 260, 2, 0, -1})
            package.add(KAObjectType(ignored));
        QCOMPARE(package.list(), before);
        package.remove(KAObjectType(type));
        package.remove(KAObjectType(type)); // absent: ignored
        package.add(KAObjectType(2540)); // unknown, even where there is room
        package.add(KAObjectType(type));
        QList<qint32> expected = DefaultOrder;
        expected.removeAll(type);
        expected.append(type);
        QCOMPARE(typesOf(package), expected);
        const KAProjectBrowserFilter* entry = package.list().last();
        QCOMPARE(package.contains(KAObjectType(type)), entry);
        QVERIFY(entry->label == original.label && entry->active == original.active
                && entry->icon.cacheKey() == original.icon.cacheKey());
    }
}

void tst_KAProjectBrowserFilterPackage::copyAndAssignmentAreIndependent()
{
    KAProjectBrowserFilterPackage source;
    source.setCurrentUserFilter(KAObjectTypeGlobalIndexation);
    source.remove(KAObjectTypeProject);
    source.add(KAObjectTypeProject);
    source.setReadOnly(); // withdraws the four editing kinds
    const QList<qint32> sourceTypes = typesOf(source);
    QCOMPARE(sourceTypes, (QList<qint32>{1, 3, 528, 277, 293, 2522, 512, 2538, 2539, 768}));
    const KAProjectBrowserFilter* sourceEntry = source.contains(KAObjectTypeWell);
    {
        KAProjectBrowserFilterPackage copy(source);
        QVERIFY(copy.readOnly() && copy.currentUserFilter() == KAObjectTypeGlobalIndexation);
        QCOMPARE(typesOf(copy), sourceTypes);
        for (int i = 0; i < sourceTypes.size(); ++i) {
            const KAProjectBrowserFilter* c = copy.list().at(i);
            const KAProjectBrowserFilter* s = source.list().at(i);
            QVERIFY(c != s); // deep copy, not shared records
            QVERIFY(c->label == s->label && c->active == s->active && c->icon.cacheKey() == s->icon.cacheKey());
        }
        copy.remove(KAObjectTypeWell);
    }
    // The copy is gone: the source's records are still its own and alive.
    QCOMPARE(source.contains(KAObjectTypeWell), sourceEntry);
    QCOMPARE(sourceEntry->label, QStringLiteral("Show numerical arrays"));
    QCOMPARE(typesOf(source), sourceTypes);
    // Assignment replaces the target's entries and flags, never merges.
    KAProjectBrowserFilterPackage target;
    target = source;
    QCOMPARE(typesOf(target), sourceTypes);
    QVERIFY(target.readOnly() && target.currentUserFilter() == KAObjectTypeGlobalIndexation);
    QVERIFY(target.contains(KAObjectTypeProject) != source.contains(KAObjectTypeProject));
    source = KAProjectBrowserFilterPackage();
    QCOMPARE(typesOf(source), DefaultOrder);
    QVERIFY(!source.readOnly() && source.currentUserFilter() == KAObjectTypeProject);
    QCOMPARE(typesOf(target), sourceTypes);
    KAProjectBrowserFilterPackage& self = target;
    target = self;
    QCOMPARE(typesOf(target), sourceTypes);
}

void tst_KAProjectBrowserFilterPackage::setReadOnlyWithdrawsEditing()
{
    KAProjectBrowserFilterPackage package;
    package.remove(KAObjectTypeEditRename); // partly withdrawn already
    package.setReadOnly();
    QCOMPARE(typesOf(package), DefaultOrder.mid(0, 10));
    // Adding the capabilities back does not clear the flag.
    package.add(KAObjectTypeEditRename);
    QVERIFY(package.readOnly());
}

QTEST_MAIN(tst_KAProjectBrowserFilterPackage)
#include "tst_kaprojectbrowserfilterpackage.moc"
