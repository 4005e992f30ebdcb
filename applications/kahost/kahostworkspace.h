#pragma once

#include <QString>

// The workspace kahost runs on: the folder given on its command line, or a
// sample workspace generated in the application-data folder on first run.
class KAHostWorkspace
{
public:
    // The folder to use; generates the sample one when needed. Empty with
    // *error set when the given folder does not exist or generation failed.
    static QString resolve(const QString& requested, QString* error);
    static QString samplePath();
};
