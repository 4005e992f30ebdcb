#include "tdatabaseconnections.h"

#include "tdatabaseschema.h"

#include <QAtomicInt>
#include <QDir>
#include <QMutexLocker>
#include <QSqlDatabase>
#include <QSqlError>
#include <QThread>

namespace TechDB {

namespace {
QAtomicInt g_busyTimeout(2000);
QAtomicInt g_serial(0);
} // namespace

void TDatabaseConnections::setBusyTimeout(int milliseconds)
{
    g_busyTimeout.storeRelaxed(qMax(0, milliseconds));
}

int TDatabaseConnections::busyTimeout()
{
    return g_busyTimeout.loadRelaxed();
}

QString TDatabaseConnections::threadTag()
{
    return QString::number(quintptr(QThread::currentThreadId()), 16);
}

QString TDatabaseConnections::uniqueName(const QString& prefix)
{
    return QStringLiteral("%1%2_%3").arg(prefix, threadTag()).arg(g_serial.fetchAndAddRelaxed(1));
}

QSqlDatabase TDatabaseConnections::add(const QString& name, const QString& path, bool readOnly, QString* error)
{
    QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
    db.setDatabaseName(path);
    QString options = QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(busyTimeout());
    if (readOnly)
        options += QStringLiteral(";QSQLITE_OPEN_READONLY");
    db.setConnectOptions(options);
    if (!db.open()) {
        if (error)
            *error = TDatabaseSchema::tr("The project database %1 cannot be opened: %2",
                                         "La base de données du projet %1 ne peut pas être ouverte : %2")
                         .arg(QDir::toNativeSeparators(path), db.lastError().text());
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(name);
    }
    return db;
}

bool TDatabaseConnections::withReadConnection(const QString& prefix, const QString& path, QString* error,
                                              const std::function<bool(QSqlDatabase&)>& work)
{
    const QString name = uniqueName(prefix + QStringLiteral("ro_"));
    bool ok = false;
    {
        QSqlDatabase db = add(name, path, true, error);
        if (!db.isValid())
            return false;
        ok = work(db);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
    return ok;
}

TDatabaseConnections::TDatabaseConnections(const QString& prefix, const QString& path, bool readOnly)
    : m_prefix(prefix)
    , m_path(path)
    , m_readOnly(readOnly)
{
}

// A connection may be removed from another thread than its own: it is not
// in use any more, and SQLite closes a handle from any thread.
TDatabaseConnections::~TDatabaseConnections()
{
    QMutexLocker lock(&m_mutex);
    for (const QString& name : qAsConst(m_names))
        QSqlDatabase::removeDatabase(name);
    m_names.clear();
}

QSqlDatabase TDatabaseConnections::connection(QString* error)
{
    const QString name = m_prefix + threadTag();
    if (QSqlDatabase::contains(name)) {
        // A connection of a finished thread whose id came back is refused by
        // Qt as belonging to another thread: it is replaced.
        QSqlDatabase db = QSqlDatabase::database(name, false);
        if (db.isValid() && db.isOpen())
            return db;
        db = QSqlDatabase();
        remove(name);
    }
    QSqlDatabase db = add(name, m_path, m_readOnly, error);
    if (db.isValid()) {
        QMutexLocker lock(&m_mutex);
        m_names.append(name);
    }
    return db;
}

void TDatabaseConnections::releaseThisThread()
{
    remove(m_prefix + threadTag());
}

void TDatabaseConnections::remove(const QString& name)
{
    {
        QMutexLocker lock(&m_mutex);
        m_names.removeAll(name);
    }
    QSqlDatabase::removeDatabase(name);
}

} // namespace TechDB
