#pragma once

#include "mainwindowinterface.h"

#include <QMainWindow>

class KAFileSystemBrowserFilterPackage;
class KAHostMessageLog;
class KAStackedBrowserCtrl;
class QAction;
class QActionGroup;
class QDockWidget;
class QStackedWidget;
class QTabWidget;

// The desktop host: the stacked explorer docked on the left, opened objects
// in the centre, the message log below, the modules' ribbons above.
class KAHostMainWindow : public QMainWindow, public MainWindowInterface
{
    Q_OBJECT
public:
    enum ExplorerState { ProjectState = 0, FileSystemState = 1 };

    explicit KAHostMainWindow(const QString& workspace, QWidget* parent = nullptr);
    ~KAHostMainWindow() override;

    QStatusBar* statusBar() override;
    bool openObject(const KAObject2* object, int mode) override;
    void showMessage(const QString& message) override;

    KAStackedBrowserCtrl* explorer() const { return m_explorer; }
    QTabWidget* documents() const { return m_documents; }
    const QString& workspace() const { return m_workspace; }
    // Opens the workspace's first project and unfolds its tree (demo, screenshots).
    bool openFirstProject();
    // The window with the popups it shows drawn over it.
    QPixmap screenshot();

public slots:
    void showProjectSelection();
    void closeCurrentProject();
    void showExplorer(int state);
    void setLanguage(int language);

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void buildUi();
    void tearDownUi();
    void buildMenus();
    void openDescription(const KAObject2* object);

    QString m_workspace;
    KAFileSystemBrowserFilterPackage* m_filter = nullptr; // owned
    KAStackedBrowserCtrl* m_explorer = nullptr;           // owned; its dock is placed in this window
    QStackedWidget* m_ribbonArea = nullptr;               // owned (child)
    QTabWidget* m_documents = nullptr;                    // owned (child)
    QDockWidget* m_logDock = nullptr;                     // owned (child)
    KAHostMessageLog* m_log = nullptr;                    // owned by m_logDock
};
