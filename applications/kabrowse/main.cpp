#include "commands.h"

#include <QCoreApplication>
#include <QMap>
#include <QTextStream>

#include <cstdio>

// Adding a command: declare it in commands.h, write it in its own
// command<name>.cpp, add it to the table below and to the usage text.
int printUsage()
{
    QTextStream err(stderr);
    err << QCoreApplication::translate(
               "kabrowse",
               "Usage:\n"
               "  kabrowse sample DIR [--projects N] [--analyses N] [--signals N] [--peaks N]\n"
               "                      [--wells N] [--datasets N] [--variables N] [--groups N] [--seed S]\n"
               "      Writes sample projects into DIR.\n"
               "  kabrowse dump PROJECT_DIR\n"
               "      Lists the objects of a project, kind by kind.\n",
               "Utilisation :\n"
               "  kabrowse sample DOSSIER [--projects N] [--analyses N] [--signals N] [--peaks N]\n"
               "                          [--wells N] [--datasets N] [--variables N] [--groups N] [--seed S]\n"
               "      Écrit des projets d'exemple dans DOSSIER.\n"
               "  kabrowse dump DOSSIER_PROJET\n"
               "      Liste les objets d'un projet, type par type.\n");
    err.flush();
    return 2;
}

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kabrowse"));

    using Command = int (*)(const QStringList&);
    const QMap<QString, Command> commands = {
        {QStringLiteral("sample"), &commandSample},
        {QStringLiteral("dump"), &commandDump},
    };
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty())
        return printUsage();
    const auto it = commands.constFind(args.first());
    if (it == commands.constEnd())
        return printUsage();
    return it.value()(args.mid(1));
}
