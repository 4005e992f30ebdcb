#include "commands.h"
#include "treeprinter.h"

#include "kafilesystembrowserctrl.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilesystembrowsersearchmediator.h"
#include "projectmgrinterface.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTextStream>
#include <QTimer>

#include <functional>

namespace {
// A file-system controller whose "view" is standard output: every result
// the mediator hands over is printed as it arrives.
class PrintingCtrl : public KAFileSystemBrowserCtrl
{
public:
    PrintingCtrl()
        : KAFileSystemBrowserCtrl(QString()) {}
    void fillTree(TTree<KAObject2*>* node) override
    {
        QTextStream out(stdout);
        printTree(out, node);
        out.flush();
        ++m_results;
        // Called once: taken out first, as it may replace itself.
        if (m_onResult) {
            const std::function<void()> callback = std::move(m_onResult);
            m_onResult = nullptr;
            callback();
        }
    }
    int m_results = 0;
    std::function<void()> m_onResult;
};
} // namespace

int commandFind(const QStringList& args)
{
    QStringList positional;
    int kind = KAObjectTypeProject;
    QString then;
    for (int i = 0; i < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--kind") && i + 1 < args.size()) {
            bool ok = false;
            kind = args.at(++i).toInt(&ok);
            if (!ok)
                return printUsage();
        } else if (args.at(i) == QLatin1String("--then") && i + 1 < args.size()) {
            then = args.at(++i);
        } else {
            positional.append(args.at(i));
        }
    }
    if (positional.size() != 2 || positional.at(1).isEmpty())
        return printUsage();
    if (!isFolderArgument(positional.at(0)))
        return 1;
    const QFileInfo root(positional.at(0));
    ProjectMgrInterface::returnMe()->setWorkspaceFolders({root.absoluteFilePath()}, -1);
    const int projects = ProjectMgrInterface::returnMe()->projectList().size();

    KAFileSystemBrowserFilterPackage filter;
    filter.setCurrentUserFilter(KAObjectType(kind));
    PrintingCtrl ctrl;
    ctrl.init(&filter, nullptr, false);
    KAFileSystemBrowserSearchMediator* mediator = ctrl.mediator();

    QElapsedTimer clock;
    clock.start();
    bool pendingThen = false;
    if (!then.isEmpty()) {
        // The newer search supersedes the first as soon as its first result
        // is out: only the newer one's results follow.
        PrintingCtrl* printer = &ctrl;
        bool* pending = &pendingThen;
        ctrl.m_onResult = [printer, pending, mediator, then]() {
            *pending = true;
            QTimer::singleShot(0, [printer, pending, mediator, then]() {
                printer->m_results = 0;
                mediator->search(then);
                *pending = false;
            });
        };
    }
    mediator->search(positional.at(1));

    QTimer poll;
    poll.setInterval(20);
    QObject::connect(&poll, &QTimer::timeout, [&]() {
        QCoreApplication::sendPostedEvents(mediator, 0);
        if (!pendingThen && mediator->isFinished())
            QCoreApplication::quit();
    });
    poll.start();
    QCoreApplication::exec();
    QTextStream(stdout) << QCoreApplication::translate("kabrowse", "%1 projects, %2 results, %3 ms",
                                                       "%1 projets, %2 résultats, %3 ms")
                               .arg(projects)
                               .arg(ctrl.m_results)
                               .arg(clock.elapsed())
                        << '\n';
    return 0;
}
