#include "commands.h"

#include "tsamplegenerator.h"

#include <QCoreApplication>
#include <QDir>
#include <QMap>
#include <QTextStream>


// kabrowse sample DIR [--option N]...
int commandSample(const QStringList& args)
{
    TSampleGenerator::Options options;
    const QMap<QString, int*> counts = {
        {QStringLiteral("--projects"), &options.projects},
        {QStringLiteral("--analyses"), &options.analyses},
        {QStringLiteral("--signals"), &options.signalsPerAnalysis},
        {QStringLiteral("--peaks"), &options.peaksPerSignal},
        {QStringLiteral("--wells"), &options.wells},
        {QStringLiteral("--datasets"), &options.datasetsPerWell},
        {QStringLiteral("--variables"), &options.variablesPerDataset},
        {QStringLiteral("--groups"), &options.groups},
    };
    QString dir;
    for (int i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        if (!arg.startsWith(QLatin1String("--"))) {
            if (!dir.isEmpty())
                return printUsage();
            dir = arg;
            continue;
        }
        if (i + 1 >= args.size())
            return printUsage();
        bool ok = false;
        const QString value = args.at(++i);
        if (arg == QLatin1String("--seed")) {
            options.seed = value.toUInt(&ok);
        } else if (int* count = counts.value(arg)) {
            *count = value.toInt(&ok);
            ok = ok && *count >= 0;
        }
        if (!ok)
            return printUsage();
    }
    if (dir.isEmpty())
        return printUsage();

    QTextStream out(stdout);
    QTextStream err(stderr);
    QString error;
    const QStringList folders = TSampleGenerator::generate(dir, options, &error);
    if (folders.isEmpty() && options.projects > 0) {
        err << QCoreApplication::translate("kabrowse", "Cannot write the sample projects: %1",
                                           "Impossible d'écrire les projets d'exemple : %1")
                   .arg(error)
            << '\n';
        return 1;
    }
    for (const QString& folder : folders)
        out << QDir::toNativeSeparators(folder) << '\n';
    return 0;
}
