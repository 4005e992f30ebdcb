#pragma once

#include <QStringList>

// Commands of kabrowse. Each takes the arguments after its name and returns
// the process exit code: 0 success, 1 failure, 2 bad arguments.
int commandSample(const QStringList& args);
int commandDump(const QStringList& args);

// Prints the usage text on standard error; returns 2.
int printUsage();
