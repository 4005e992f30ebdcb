#pragma once

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// Shared test fixture: test mode for standard paths, sample projects made
// by the project's own generator in a temporary folder that is kept when a
// test fails.
class TestFixture
{
public:
    TestFixture();
    ~TestFixture();
    QString path() const { return m_dir.path(); }
    QString filePath(const QString& name) const { return m_dir.filePath(name); }

private:
    QTemporaryDir m_dir;
};

// Call once in initTestCase(): isolates QStandardPaths.
void kaInitTestEnvironment();
