#include "testfixture.h"

#include <QStandardPaths>
#include <QTest>

TestFixture::TestFixture() = default;

TestFixture::~TestFixture()
{
    m_dir.setAutoRemove(!QTest::currentTestFailed());
}

void kaInitTestEnvironment()
{
    QStandardPaths::setTestModeEnabled(true);
}
