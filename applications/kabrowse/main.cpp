#include "commands.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QMap>
#include <QTextStream>

#include <cstdio>

// Adding a command: declare it in commands.h, write it in its own
// command<name>.cpp, add it to the table below and to the usage text.
bool isFolderArgument(const QString& path)
{
    if (QFileInfo(path).isDir())
        return true;
    QTextStream(stderr) << QCoreApplication::translate("kabrowse", "%1 is not a folder", "%1 n'est pas un dossier").arg(path)
                        << '\n';
    return false;
}

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
               "      Lists the objects of a project, kind by kind.\n"
               "  kabrowse tree PROJECT_DIR [--kinds K,K,...]\n"
               "      Prints the project tree as the project explorer builds it.\n"
               "  kabrowse mkdir PROJECT_DIR FOLDER_PATH\n"
               "      Creates user folders, e.g. \"Analysis/Batch 3/Rejected\".\n"
               "  kabrowse move PROJECT_DIR OBJECT_NAME FOLDER_PATH\n"
               "      Moves an object into a folder of the project tree.\n"
               "  kabrowse search PROJECT_DIR TEXT [--kind K]\n"
               "      Prints the results tree of a search.\n"
               "  kabrowse ls ROOT [--depth N] [--files] [--ext .a,.b]\n"
               "      Prints the file-system tree below ROOT, project folders unfolded.\n"
               "  kabrowse find ROOT TEXT [--kind K] [--then TEXT]\n"
               "      Searches every project below ROOT in the background, printing results as they come.\n"
               "  kabrowse content ROOT\n"
               "      Prints, for every project below ROOT, the analyses and peak detections of its compounds.\n",
               "Utilisation :\n"
               "  kabrowse sample DOSSIER [--projects N] [--analyses N] [--signals N] [--peaks N]\n"
               "                          [--wells N] [--datasets N] [--variables N] [--groups N] [--seed S]\n"
               "      Écrit des projets d'exemple dans DOSSIER.\n"
               "  kabrowse dump DOSSIER_PROJET\n"
               "      Liste les objets d'un projet, type par type.\n"
               "  kabrowse tree DOSSIER_PROJET [--kinds K,K,...]\n"
               "      Affiche l'arbre du projet tel que l'explorateur de projet le construit.\n"
               "  kabrowse mkdir DOSSIER_PROJET CHEMIN_DOSSIER\n"
               "      Crée des dossiers utilisateur, par ex. \"Analysis/Batch 3/Rejected\".\n"
               "  kabrowse move DOSSIER_PROJET NOM_OBJET CHEMIN_DOSSIER\n"
               "      Déplace un objet dans un dossier de l'arbre du projet.\n"
               "  kabrowse search DOSSIER_PROJET TEXTE [--kind K]\n"
               "      Affiche l'arbre des résultats d'une recherche.\n"
               "  kabrowse ls RACINE [--depth N] [--files] [--ext .a,.b]\n"
               "      Affiche l'arbre des fichiers sous RACINE, dossiers de projet dépliés.\n"
               "  kabrowse find RACINE TEXTE [--kind K] [--then TEXTE]\n"
               "      Cherche dans tous les projets sous RACINE en arrière-plan et affiche les résultats au fil de l'eau.\n"
               "  kabrowse content RACINE\n"
               "      Affiche, pour chaque projet sous RACINE, les analyses et détections de pics de ses composés.\n");
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
        {QStringLiteral("tree"), &commandTree},
        {QStringLiteral("mkdir"), &commandMkdir},
        {QStringLiteral("move"), &commandMove},
        {QStringLiteral("search"), &commandSearch},
        {QStringLiteral("ls"), &commandLs},
        {QStringLiteral("find"), &commandFind},
        {QStringLiteral("content"), &commandContent},
    };
    const QStringList args = app.arguments().mid(1);
    if (args.isEmpty())
        return printUsage();
    const auto it = commands.constFind(args.first());
    if (it == commands.constEnd())
        return printUsage();
    return it.value()(args.mid(1));
}
