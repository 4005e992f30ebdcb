#pragma once

#include "kahost_export.h"
#include "karibbonbar.h"

#include <QByteArray>
#include <QEvent>
#include <QList>
#include <QMap>
#include <QPointer>

class KARibbonGroup;
class ModuleObserver;
class QAction;
class QLabel;

// The ribbon of a host module, which is also the module's editor: a
// description group (the module's pixmap and description), the module's
// groups, and at the far right the generic commands (Close, and optionally
// Help and Minimize). A close request goes to the registered observers
// (the module controller). Moves and hides of the window holding the bar
// are reported to slotEventOccured, so that panels opened from the ribbon
// can close.
class KAHOST_EXPORT KARibbonModuleBar : public KARibbonBar
{
    Q_OBJECT
public:
    explicit KARibbonModuleBar(const QString& title, QWidget* parent = nullptr);
    ~KARibbonModuleBar() override;

    QString title() const { return m_title; }

    void setModulePixmap(const char* iconName);
    const QByteArray& modulePixmap() const { return m_pixmapName; }

    // The group at the front of the bar showing the module's pixmap and
    // description, made once (later calls return it). id: the help topic of
    // the group; flag: the module's title is written under the pixmap.
    KARibbonGroup* createDescriptionGroup(int id, bool flag);
    KARibbonGroup* descriptionGroup() const { return m_descriptionGroup; }
    int descriptionHelpId() const { return m_descriptionHelpId; }

    // Keeps the module controller's actions (not owned); shows nothing.
    void createActionGroup(const QMap<int, QAction*>& actions);
    const QMap<int, QAction*>& actionList() const { return m_actions; }

    // Not owned; an observer unregisters before it goes. Registered once.
    void registerObserver(ModuleObserver* observer);
    void unregisterObserver(ModuleObserver* observer);

    // A label in the ribbon's module style, width pixels wide, for the
    // caller to place (it belongs to the bar until placed).
    QLabel* createModuleLabel(const QString& text, int width);
    // The pixmap and text of the description group (made when missing).
    void setModuleDescription(const char* iconName, const QString& text);
    QString moduleDescription() const;

    // The generic commands at the far right: Close always (made once);
    // Help (emits helpRequested(getIdForHelp())) and Minimize (hides the
    // groups, leaving the generic commands) when asked.
    void addGenericActions(bool withHelp, bool withMinimize);
    QAction* closeAction() const { return m_closeAction; }
    QAction* helpAction() const { return m_helpAction; }
    QAction* minimizeAction() const { return m_minimizeAction; }

    // The user asked to close the module: every observer is told.
    virtual void closeRequested();
    virtual int getIdForHelp() const;

public slots:
    // A Move or Hide of the window that holds the bar, or a Hide of the bar
    // itself. Nothing by default.
    virtual void slotEventOccured(QEvent::Type type);

signals:
    void helpRequested(int id);

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void watchWindow();
    QAction* addTrailingAction(QAction* action);
    void slotMinimize(bool minimized);

    QString m_title;
    QByteArray m_pixmapName;
    QMap<int, QAction*> m_actions;          // not owned: the module controller's
    QList<ModuleObserver*> m_observers;     // not owned
    KARibbonGroup* m_descriptionGroup = nullptr; // owned through Qt parenthood
    QLabel* m_descriptionPixmap = nullptr;  // owned through Qt parenthood
    QLabel* m_descriptionTitle = nullptr;   // owned through Qt parenthood
    QLabel* m_descriptionText = nullptr;    // owned through Qt parenthood
    int m_descriptionHelpId = 0;
    QAction* m_closeAction = nullptr;       // owned through Qt parenthood
    QAction* m_helpAction = nullptr;        // owned through Qt parenthood
    QAction* m_minimizeAction = nullptr;    // owned through Qt parenthood
    QPointer<QWidget> m_watchedWindow;      // not owned
};
