#include "applicationinterface.h"
#include "kahostmainwindow.h"
#include "kahostworkspace.h"
#include "modulelauncherinterface.h"
#include "ttranslator.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QTextStream>
#include <QTimer>

namespace {
int usage()
{
    QTextStream(stderr) << QCoreApplication::translate(
        "kahost",
        "Usage: kahost [WORKSPACE] [--screenshot FILE [--state project|filesystem|select]]\n",
        "Utilisation : kahost [ESPACE_DE_TRAVAIL] [--screenshot FICHIER [--state project|filesystem|select]]\n");
    return 2;
}
} // namespace

int main(int argc, char** argv)
{
    QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("kahost"));
    QCoreApplication::setOrganizationName(QStringLiteral("kabrowser"));

    QString workspace;
    QString screenshot;
    QString state = QStringLiteral("project");
    const QStringList args = app.arguments().mid(1);
    for (int i = 0; i < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--screenshot") && i + 1 < args.size())
            screenshot = args.at(++i);
        else if (args.at(i) == QLatin1String("--state") && i + 1 < args.size())
            state = args.at(++i);
        else if (workspace.isEmpty() && !args.at(i).startsWith(QLatin1String("--")))
            workspace = args.at(i);
        else
            return usage();
    }
    if (state != QLatin1String("project") && state != QLatin1String("filesystem") && state != QLatin1String("select"))
        return usage();

    if (ApplicationInterface::returnMe()->language() == QLatin1String("fr"))
        TTranslator::setLanguage(TTranslator::French);
    QString error;
    const QString folder = KAHostWorkspace::resolve(workspace, &error);
    if (folder.isEmpty()) {
        QTextStream(stderr) << error << '\n';
        return 1;
    }

    auto* window = new KAHostMainWindow(folder);
    window->show();
    if (screenshot.isEmpty()) {
        const int status = app.exec();
        delete window;
        return status;
    }

    // Renders the window once it is set up, then leaves.
    if (state == QLatin1String("filesystem"))
        window->showExplorer(KAHostMainWindow::FileSystemState);
    else if (state == QLatin1String("select"))
        window->showProjectSelection();
    else
        window->openFirstProject();
    int status = 0;
    QTimer::singleShot(800, [&]() {
        const QPixmap shot = window->screenshot();
        if (shot.save(screenshot)) {
            QTextStream(stdout) << QFileInfo(screenshot).absoluteFilePath() << '\n';
        } else {
            QTextStream(stderr) << QCoreApplication::translate("kahost", "Cannot write %1", "Impossible d'écrire %1")
                                       .arg(screenshot)
                                << '\n';
            status = 1;
        }
        app.quit();
    });
    app.exec();
    delete window;
    return status;
}
