#pragma once

#include "kahost_export.h"

#include <QList>
#include <QObject>
#include <QPointer>

class QStackedLayout;
class QWidget;

// The host's ribbon area: the modules put their ribbons there, one shown
// at a time. The host window gives the area with setHost (a QStackedWidget,
// or any widget, which then gets a stacked layout). Without an area (tests,
// command-line runs) the ribbons are only listed, and move into the area
// when one is given. The service never owns a ribbon: the area holds the
// ribbons it shows, and a removed ribbon goes back to its module.
class KAHOST_EXPORT RibbonInterface : public QObject
{
    Q_OBJECT
public:
    static RibbonInterface* returnMe();

    // Not owned; null takes the ribbons out of the previous area.
    void setHost(QWidget* ribbonArea);
    QWidget* host() const { return m_host; }

    // Puts a ribbon into the area (the area's widget owns it from now on).
    // show: the area is shown if it was hidden; makeCurrent: the ribbon
    // becomes the one shown. Adding a listed ribbon again only applies the
    // flags.
    void addRibbon(QWidget* ribbon, bool show, bool makeCurrent);
    // Takes the ribbon out of the area and hands it back, without a parent
    // and hidden, to its module, which deletes it. The ribbon added before
    // it becomes current when it was.
    void removeRibbon(QWidget* ribbon);

    bool contains(QWidget* ribbon) const;
    QList<QWidget*> ribbons() const;
    QWidget* currentRibbon() const;
    void setCurrentRibbon(QWidget* ribbon);

signals:
    void currentRibbonChanged(QWidget* ribbon);

private:
    RibbonInterface() = default;
    // The stacked layout of the area, made on a widget that has no layout;
    // null without an area or when the area has another kind of layout.
    QStackedLayout* stack() const;
    void place(QWidget* ribbon);
    void prune();

    QPointer<QWidget> m_host;               // not owned
    QList<QPointer<QWidget>> m_ribbons;     // not owned; in the order they were added
    QPointer<QWidget> m_current;            // not owned: one of m_ribbons
};
