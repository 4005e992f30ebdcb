#include "testfixture.h"

#include "applicationinterface.h"
#include "kaaliasfolderinterface.h"
#include "kaaliasfoldermgr.h"
#include "kaobject2project.h"
#include "projectmgrinterface.h"

#include <QDir>
#include <QStandardPaths>
#include <QTest>

TestFixture::TestFixture() = default;

TestFixture::~TestFixture()
{
    // The project manager is left alone by fixtures that opened nothing.
    for (const KAObject2Project* project : qAsConst(m_opened)) {
        ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
        if (mgr->isOpen(project))
            mgr->closeProject(project);
    }
    m_dir.setAutoRemove(!QTest::currentTestFailed());
}

TSampleGenerator::Options TestFixture::smallOptions()
{
    TSampleGenerator::Options options;
    options.projects = 1;
    options.analyses = 4;
    options.signalsPerAnalysis = 2;
    options.peaksPerSignal = 3;
    options.wells = 3;
    options.datasetsPerWell = 2;
    options.variablesPerDataset = 2;
    options.groups = 4;
    return options;
}

QString TestFixture::makeProject(const QString& name, const TSampleGenerator::Options& options, quint32 seed,
                                 QString* error)
{
    const QString folder = QDir(path()).filePath(name);
    if (!TSampleGenerator::generateProject(folder, name, options, seed, error))
        return QString();
    return folder;
}

const KAObject2Project* TestFixture::openSampleProject(const QString& name, const TSampleGenerator::Options& options,
                                                       quint32 seed)
{
    QString error;
    const QString folder = makeProject(name, options, seed, &error);
    if (folder.isEmpty()) {
        qWarning("sample project not written: %s", qPrintable(error));
        return nullptr;
    }
    ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
    mgr->setWorkspaceFolders({path()});
    const KAObject2Project* project = mgr->findProject(folder);
    if (!project || !mgr->openProject(project))
        return nullptr;
    m_opened.append(project);
    return project;
}

bool TestFixture::reopen(const KAObject2Project* project)
{
    ProjectMgrInterface* mgr = ProjectMgrInterface::returnMe();
    return project && mgr->closeProject(project) && mgr->openProject(project);
}

void kaInitTestEnvironment()
{
    QStandardPaths::setTestModeEnabled(true);
}

void kaClearAliases()
{
    KAAliasFolderMgr* aliases = ApplicationInterface::returnMe()->aliasFolderMgr();
    for (const KAAliasFolderInterface* alias : aliases->aliasList())
        aliases->removeAlias(alias->name());
}
