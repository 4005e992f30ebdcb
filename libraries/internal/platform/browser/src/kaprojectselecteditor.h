#pragma once

#include "kabrowser_export.h"
#include "kaobjecttype.h"

#include <QWidget>

class KAFilterActionGroup;
class KAProjectSelectCtrl;
class QGroupBox;
class QSplitter;
class TProcessProgressInterface;

// The project selection panel: search field, display-mode filter, progress
// bar, the project list and a "Description" pane.
class KABROWSER_EXPORT KAProjectSelectEditor : public QWidget
{
    Q_OBJECT
public:
    KAProjectSelectEditor(KAProjectSelectCtrl* ctrl, QWidget* parent);

    virtual void init(QWidget* view);
    virtual void setCurrentFilter(const QList<KAObjectType>& types);

    TProcessProgressInterface* progress() const { return m_progress; }
    QGroupBox* descriptionBox() const { return m_description; }
    KAFilterActionGroup* filterActions() const { return m_filterGroup; }
    QSplitter* splitter() const { return m_splitter; }

public slots:
    void slotShowProperties(bool show);
    void slotFilterView();
    void slotSearch();
    void slotSearch(const QString& text);

private:
    KAProjectSelectCtrl* m_ctrl;                  // not owned
    QSplitter* m_splitter = nullptr;              // owned (child)
    QGroupBox* m_description = nullptr;           // owned (child)
    TProcessProgressInterface* m_progress = nullptr; // owned (child widget)
    KAFilterActionGroup* m_filterGroup = nullptr; // owned (child)
};
