#pragma once

#include "kahost_export.h"

#include <QByteArray>
#include <QDockWidget>
#include <QRect>

class QLabel;
class QToolButton;

// A dock window of the host. It wears the host title bar (the dock's icon
// and title, float and close buttons) and keeps its placement in the
// application settings, under keys prefixed by its object name:
// "<name>/floating", "<name>/geometry" (the floating window, "x,y,w,h"),
// "<name>/visible" and "<name>/area" (the main-window dock area).
class KAHOST_EXPORT KADockWidget : public QDockWidget
{
    Q_OBJECT
public:
    // flag: true gives the dock the host title bar; false keeps the
    // platform's own. The icon name is looked up in the host icon cache.
    KADockWidget(const QString& title, const QString& objectName, const char* iconName, bool flag,
                 QWidget* parent = nullptr);
    ~KADockWidget() override;

    void setAllowedDockAreas(Qt::DockWidgetAreas areas);

    // Restores the saved placement; false (placement untouched) when none
    // was saved. The dock area is restored only under a QMainWindow parent.
    // A dock without a parent is never shown from here: the host shows it
    // when it places it.
    bool settingRead();
    // Saves the placement; false when the settings file could not be
    // written (the settings service logs why).
    bool settingWrite() const;

    // true docks the widget, false makes it float.
    void setDockWidget(bool docked);
    bool isDockWidget() const { return !isFloating(); }

    // Refreshes the host title bar from the window title, the icon and the
    // dock's features; removes it when the dock keeps the platform's.
    void updateTitleBar();

    // The host closes the dock (teardown, or the dock's owner going away):
    // the visibility saved afterwards stays the one the user had chosen. The
    // title bar's close button is the user's choice and is saved as hidden.
    bool close();

    const QByteArray& iconName() const { return m_iconName; }
    bool hasHostTitleBar() const { return m_hostTitleBar; }

    static QString settingKey(const QString& objectName, const QString& field);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void buildTitleBar();
    void slotToggleFloating();
    void slotUserClose();
    bool isHiddenByChoice() const;
    // A saved floating rectangle that no screen shows any more is moved
    // onto the screen the dock is on.
    static QRect visibleOnScreen(const QRect& rect);

    QByteArray m_iconName;
    bool m_hostTitleBar = true;
    bool m_closedByHost = false;      // close() ran and the dock was not shown since
    bool m_visibleBeforeClose = true; // the user's visibility when the host closed it
    QWidget* m_titleBar = nullptr;        // owned through Qt parenthood
    QLabel* m_titleIcon = nullptr;        // not owned: child of m_titleBar
    QLabel* m_titleText = nullptr;        // not owned: child of m_titleBar
    QToolButton* m_floatButton = nullptr; // not owned: child of m_titleBar
    QToolButton* m_closeButton = nullptr; // not owned: child of m_titleBar
};
