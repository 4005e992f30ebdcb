#pragma once

#include <QString>

namespace TechDB {

class TDatabase;

// The databases open in the process, by project folder, so that a compound
// can reach the detections it names in another open project. Any thread
// may open or close a database: the registry has its own lock.
class TDatabaseRegistry
{
public:
    static QString key(const QString& projectFolder);
    static void add(TDatabase* db);
    static void remove(TDatabase* db);
    // The database opened last on the folder, or null.
    static TDatabase* find(const QString& projectFolder);
};

} // namespace TechDB
