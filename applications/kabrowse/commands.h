#pragma once

#include <QStringList>

// Commands of kabrowse. Each takes the arguments after its name and returns
// the process exit code: 0 success, 1 failure, 2 bad arguments.
int commandSample(const QStringList& args);
int commandDump(const QStringList& args);
int commandTree(const QStringList& args);
int commandMkdir(const QStringList& args);
int commandMove(const QStringList& args);
int commandSearch(const QStringList& args);
int commandLs(const QStringList& args);
int commandFind(const QStringList& args);
int commandContent(const QStringList& args);

// Prints the usage text on standard error; returns 2.
int printUsage();
// True when path is a folder; else says so on standard error.
bool isFolderArgument(const QString& path);
