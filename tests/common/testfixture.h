#pragma once

#include "tsamplegenerator.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

class KAObject2Project;

// Shared test fixture: test mode for standard paths, sample projects made
// by the project's own generator in a temporary folder that is kept when a
// test fails.
class TestFixture
{
public:
    TestFixture();
    // Closes the projects this fixture opened before its folder goes.
    ~TestFixture();
    QString path() const { return m_dir.path(); }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }

    // A few analyses, wells and groups: enough for every branch of a
    // project tree, fast to write.
    static TSampleGenerator::Options smallOptions();

    // Writes one sample project in the sub-folder `name`; its folder, or an
    // empty string (the reason in *error).
    QString makeProject(const QString& name, const TSampleGenerator::Options& options = smallOptions(),
                        quint32 seed = 7, QString* error = nullptr);

    // Makes the project, points the host's workspace at this fixture's
    // folder and opens the project through the host project manager (it
    // becomes the current project). Null on failure.
    const KAObject2Project* openSampleProject(const QString& name,
                                              const TSampleGenerator::Options& options = smallOptions(),
                                              quint32 seed = 7);

    // Closes and opens the project again through the project manager, so
    // that everything is read back from the database file.
    static bool reopen(const KAObject2Project* project);

private:
    QTemporaryDir m_dir;
    QList<const KAObject2Project*> m_opened; // not owned: the project manager's
};

// Call once in initTestCase(): isolates QStandardPaths.
void kaInitTestEnvironment();

// Removes every alias folder of the host's alias manager.
void kaClearAliases();
