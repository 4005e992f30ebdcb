#pragma once

#include <QMutex>
#include <QString>
#include <QStringList>

#include <functional>

class QSqlDatabase;

namespace TechDB {

// The SQLite connections of one database file. Qt lets a connection be used
// only by the thread that made it, so each thread that writes gets its own,
// named after the owner and the thread; all are removed with this object.
class TDatabaseConnections
{
public:
    // prefix names the owner (the database's address); every connection
    // name starts with it.
    TDatabaseConnections(const QString& prefix, const QString& path, bool readOnly);
    ~TDatabaseConnections();
    TDatabaseConnections(const TDatabaseConnections&) = delete;
    TDatabaseConnections& operator=(const TDatabaseConnections&) = delete;

    // The calling thread's connection, opened on first use; invalid with
    // *error set when the file cannot be opened.
    QSqlDatabase connection(QString* error);
    // Removes the calling thread's connection (it is made again if needed).
    void releaseThisThread();
    const QString& prefix() const { return m_prefix; }

    // Opens a named connection; invalid (and removed) with *error on failure.
    static QSqlDatabase add(const QString& name, const QString& path, bool readOnly, QString* error);
    // Runs work on a private read-only connection of the calling thread,
    // then removes it. Read-only: SQLite then neither writes the file nor
    // creates a journal next to it.
    static bool withReadConnection(const QString& prefix, const QString& path, QString* error,
                                   const std::function<bool(QSqlDatabase&)>& work);
    // A name no other connection has, for a short-lived connection.
    static QString uniqueName(const QString& prefix);
    static QString threadTag();

    static void setBusyTimeout(int milliseconds);
    static int busyTimeout();

private:
    void remove(const QString& name);

    QString m_prefix;
    QString m_path;
    bool m_readOnly = false;
    QMutex m_mutex;
    QStringList m_names; // guarded by m_mutex
};

} // namespace TechDB
