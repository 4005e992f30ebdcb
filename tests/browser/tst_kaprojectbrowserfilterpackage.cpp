#include "kaprojectbrowserfilter.h"
#include "kaprojectbrowserfilterpackage.h"
#include "testfixture.h"
#include "tpixmapcache.h"

#include <QTest>

#include <memory>

namespace {

QList<qint32> typesOf(const KAProjectBrowserFilterPackage& package)
{
    QList<qint32> types;
    for (const KAProjectBrowserFilter* entry : package.list())
        types.append(entry->type);
    return types;
}

const QList<qint32> DefaultOrder = {768, 1, 3, 528, 277, 293, 2522, 512, 2538, 2539, 2541, 2542, 2543, 2544};

} // namespace

class tst_KAProjectBrowserFilterPackage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();

    void defaultOrder();
    void selectableEntries_data();
    void selectableEntries();
    void silentEntries_data();
    void silentEntries();
    void defaultState();
    void addPresentTypeKeepsList_data();
    void addPresentTypeKeepsList();
    void removeThenAddAppends_data();
    void removeThenAddAppends();
    void addUnknownTypeIgnored_data();
    void addUnknownTypeIgnored();
    void removeAbsentTypeIgnored();
    void containsReturnsTheEntry();
    void copyIsIndependent();
    void copyKeepsFlagsAndEntries();
    void assignmentReplaces();
    void setReadOnlyWithdrawsEditing();
    void setReadOnlyAfterPartialRemoval();
    void currentUserFilterIsPlain();

private:
    std::unique_ptr<KAProjectBrowserFilterPackage> m_package;
};

void tst_KAProjectBrowserFilterPackage::initTestCase()
{
    kaInitTestEnvironment();
}

void tst_KAProjectBrowserFilterPackage::init()
{
    m_package.reset(new KAProjectBrowserFilterPackage);
}

void tst_KAProjectBrowserFilterPackage::defaultOrder()
{
    QCOMPARE(typesOf(*m_package), DefaultOrder);
}

void tst_KAProjectBrowserFilterPackage::selectableEntries_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QByteArray>("icon");
    QTest::newRow("projects") << 0 << 768 << "Show projects" << QByteArray("view_projectbrowser");
    QTest::newRow("analyses") << 1 << 1 << "Show analyses" << QByteArray("folder_analysis");
    QTest::newRow("numerical arrays") << 2 << 3 << "Show numerical arrays" << QByteArray("datasetfolder");
    QTest::newRow("indexations") << 3 << 528 << "Show indexations" << QByteArray("indexation");
    QTest::newRow("identifications") << 4 << 277 << "Show identifications" << QByteArray("identification");
}

void tst_KAProjectBrowserFilterPackage::selectableEntries()
{
    QFETCH(int, index);
    QFETCH(int, type);
    QFETCH(QString, label);
    QFETCH(QByteArray, icon);
    const KAProjectBrowserFilter* entry = m_package->list().at(index);
    QCOMPARE(int(entry->type), type);
    QCOMPARE(entry->label, label);
    QVERIFY(entry->active);
    QVERIFY(!entry->icon.isNull());
    const QPixmap& expected = TPixmapCache::find(icon.constData());
    QVERIFY(!expected.isNull());
    QCOMPARE(entry->icon.cacheKey(), expected.cacheKey());
}

void tst_KAProjectBrowserFilterPackage::silentEntries_data()
{
    QTest::addColumn<int>("type");
    for (int i = 5; i < DefaultOrder.size(); ++i)
        QTest::newRow(qPrintable(QString::number(DefaultOrder.at(i)))) << DefaultOrder.at(i);
}

void tst_KAProjectBrowserFilterPackage::silentEntries()
{
    QFETCH(int, type);
    const KAProjectBrowserFilter* entry = m_package->contains(KAObjectType(type));
    QVERIFY(entry);
    QVERIFY(entry->label.isEmpty());
    QVERIFY(entry->icon.isNull());
    QVERIFY(!entry->active);
}

void tst_KAProjectBrowserFilterPackage::defaultState()
{
    QCOMPARE(int(m_package->currentUserFilter()), 768);
    QVERIFY(!m_package->readOnly());
}

void tst_KAProjectBrowserFilterPackage::addPresentTypeKeepsList_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("selectable 277") << 277;
    QTest::newRow("selectable 768") << 768;
    QTest::newRow("silent 2522") << 2522;
    QTest::newRow("silent 2544") << 2544;
}

void tst_KAProjectBrowserFilterPackage::addPresentTypeKeepsList()
{
    QFETCH(int, type);
    const QList<const KAProjectBrowserFilter*> before = m_package->list();
    m_package->add(KAObjectType(type));
    QCOMPARE(m_package->list(), before);
}

void tst_KAProjectBrowserFilterPackage::removeThenAddAppends_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("label");
    QTest::addColumn<QByteArray>("icon");
    QTest::newRow("projects") << 768 << "Show projects" << QByteArray("view_projectbrowser");
    QTest::newRow("analyses") << 1 << "Show analyses" << QByteArray("folder_analysis");
    QTest::newRow("indexations") << 528 << "Show indexations" << QByteArray("indexation");
    QTest::newRow("silent 293") << 293 << QString() << QByteArray();
    QTest::newRow("silent 2541") << 2541 << QString() << QByteArray();
}

void tst_KAProjectBrowserFilterPackage::removeThenAddAppends()
{
    QFETCH(int, type);
    QFETCH(QString, label);
    QFETCH(QByteArray, icon);
    m_package->remove(KAObjectType(type));
    QVERIFY(!m_package->contains(KAObjectType(type)));
    QCOMPARE(m_package->list().size(), DefaultOrder.size() - 1);

    m_package->add(KAObjectType(type));
    QList<qint32> expected = DefaultOrder;
    expected.removeAll(type);
    expected.append(type);
    QCOMPARE(typesOf(*m_package), expected);

    const KAProjectBrowserFilter* entry = m_package->list().last();
    QCOMPARE(entry->label, label);
    QCOMPARE(entry->active, !label.isEmpty());
    if (icon.isEmpty()) {
        QVERIFY(entry->icon.isNull());
    } else {
        QVERIFY(!entry->icon.isNull());
        QCOMPARE(entry->icon.cacheKey(), TPixmapCache::find(icon.constData()).cacheKey());
    }
}

void tst_KAProjectBrowserFilterPackage::addUnknownTypeIgnored_data()
{
    QTest::addColumn<int>("type");
    QTest::newRow("2540") << 2540;
    QTest::newRow("folder 260") << 260;
    QTest::newRow("signal 2") << 2;
    QTest::newRow("none 0") << 0;
    QTest::newRow("negative") << -1;
}

void tst_KAProjectBrowserFilterPackage::addUnknownTypeIgnored()
{
    QFETCH(int, type);
    m_package->add(KAObjectType(type));
    QCOMPARE(typesOf(*m_package), DefaultOrder);
    // Also on a package where there is room at the end.
    m_package->remove(KAObjectTypeEditMove);
    m_package->add(KAObjectType(type));
    QCOMPARE(m_package->list().size(), DefaultOrder.size() - 1);
    QVERIFY(!m_package->contains(KAObjectType(type)));
}

void tst_KAProjectBrowserFilterPackage::removeAbsentTypeIgnored()
{
    m_package->remove(KAObjectType(2540));
    m_package->remove(KAObjectTypeAnalysis);
    m_package->remove(KAObjectTypeAnalysis);
    QList<qint32> expected = DefaultOrder;
    expected.removeAll(1);
    QCOMPARE(typesOf(*m_package), expected);
}

void tst_KAProjectBrowserFilterPackage::containsReturnsTheEntry()
{
    const QList<const KAProjectBrowserFilter*> entries = m_package->list();
    for (const KAProjectBrowserFilter* entry : entries)
        QCOMPARE(m_package->contains(entry->type), entry);
    QVERIFY(!m_package->contains(KAObjectType(2540)));
}

void tst_KAProjectBrowserFilterPackage::copyIsIndependent()
{
    const KAProjectBrowserFilter* sourceEntry = m_package->contains(KAObjectTypeWell);
    QVERIFY(sourceEntry);
    {
        KAProjectBrowserFilterPackage copy(*m_package);
        QVERIFY(copy.contains(KAObjectTypeWell) != sourceEntry); // deep copy, not shared records
        copy.remove(KAObjectTypeWell);
        copy.remove(KAObjectTypeDeconvMS);
        copy.add(KAObjectType(2540));
        QVERIFY(!copy.contains(KAObjectTypeWell));
    }
    // The copy is gone: the source's records are still its own and alive.
    QCOMPARE(m_package->contains(KAObjectTypeWell), sourceEntry);
    QCOMPARE(sourceEntry->label, QStringLiteral("Show numerical arrays"));
    QCOMPARE(typesOf(*m_package), DefaultOrder);
}

void tst_KAProjectBrowserFilterPackage::copyKeepsFlagsAndEntries()
{
    m_package->setCurrentUserFilter(KAObjectTypeGlobalIndexation);
    m_package->remove(KAObjectTypeAnalysis);
    m_package->add(KAObjectTypeAnalysis);
    m_package->setReadOnly();
    const KAProjectBrowserFilterPackage copy(*m_package);
    QCOMPARE(int(copy.currentUserFilter()), 528);
    QVERIFY(copy.readOnly());
    QCOMPARE(typesOf(copy), typesOf(*m_package));
    const QList<const KAProjectBrowserFilter*> a = m_package->list();
    const QList<const KAProjectBrowserFilter*> b = copy.list();
    for (int i = 0; i < a.size(); ++i) {
        QCOMPARE(b.at(i)->label, a.at(i)->label);
        QCOMPARE(b.at(i)->active, a.at(i)->active);
        QCOMPARE(b.at(i)->icon.cacheKey(), a.at(i)->icon.cacheKey());
    }
}

void tst_KAProjectBrowserFilterPackage::assignmentReplaces()
{
    KAProjectBrowserFilterPackage other;
    other.remove(KAObjectTypeProject);
    other.remove(KAObjectTypeIdentifications);
    other.add(KAObjectTypeProject);
    other.setCurrentUserFilter(KAObjectTypeAnalysis);
    other.setReadOnly();

    *m_package = other;
    QCOMPARE(typesOf(*m_package), typesOf(other));
    QCOMPARE(typesOf(*m_package), (QList<qint32>{1, 3, 528, 293, 2522, 512, 2538, 2539, 768}));
    QCOMPARE(int(m_package->currentUserFilter()), 1);
    QVERIFY(m_package->readOnly());
    QVERIFY(m_package->contains(KAObjectTypeProject) != other.contains(KAObjectTypeProject));
    QCOMPARE(m_package->list().last()->label, QStringLiteral("Show projects"));

    // Assigned back: the target's entries are replaced, not merged.
    KAProjectBrowserFilterPackage fresh;
    other = fresh;
    QCOMPARE(typesOf(other), DefaultOrder);
    QVERIFY(other.readOnly() == false);
    QCOMPARE(int(other.currentUserFilter()), 768);
    QCOMPARE(typesOf(*m_package), (QList<qint32>{1, 3, 528, 293, 2522, 512, 2538, 2539, 768}));

    KAProjectBrowserFilterPackage& self = *m_package;
    self = *m_package;
    QCOMPARE(typesOf(*m_package), (QList<qint32>{1, 3, 528, 293, 2522, 512, 2538, 2539, 768}));
}

void tst_KAProjectBrowserFilterPackage::setReadOnlyWithdrawsEditing()
{
    m_package->setReadOnly();
    QVERIFY(m_package->readOnly());
    QCOMPARE(typesOf(*m_package), DefaultOrder.mid(0, 10));
    // Adding the capabilities back does not clear the flag.
    m_package->add(KAObjectTypeEditRename);
    QVERIFY(m_package->readOnly());
}

void tst_KAProjectBrowserFilterPackage::setReadOnlyAfterPartialRemoval()
{
    m_package->remove(KAObjectTypeEditRename);
    m_package->setReadOnly();
    QVERIFY(m_package->readOnly());
    for (qint32 type : {2541, 2542, 2543, 2544})
        QVERIFY2(!m_package->contains(KAObjectType(type)), qPrintable(QString::number(type)));
    QCOMPARE(typesOf(*m_package), DefaultOrder.mid(0, 10));
}

void tst_KAProjectBrowserFilterPackage::currentUserFilterIsPlain()
{
    m_package->setCurrentUserFilter(KAObjectType(12345));
    QCOMPARE(int(m_package->currentUserFilter()), 12345);
    m_package->setCurrentUserFilter(KAObjectTypeProject);
    QCOMPARE(int(m_package->currentUserFilter()), 768);
}

QTEST_MAIN(tst_KAProjectBrowserFilterPackage)
#include "tst_kaprojectbrowserfilterpackage.moc"
