#pragma once

#include <QString>

class QSqlDatabase;

namespace TechDB {

class TDatabaseIndex;

// Reads every object, property and link of a project database into an index.
class TDatabaseLoader
{
public:
    // False with *error (naming the file) when a query fails: a damaged file
    // shows itself here, since the whole file is read.
    static bool load(const QSqlDatabase& connection, TDatabaseIndex* index, QString* error);

private:
    static bool loadObjects(const QSqlDatabase& connection, TDatabaseIndex* index, QString* error);
};

} // namespace TechDB
