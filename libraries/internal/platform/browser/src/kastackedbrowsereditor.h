#pragma once

#include "kabrowser_export.h"
#include "kastackedbrowsereditorinterface.h"

#include <QStackedWidget>
#include <QWidget>

class KAFilterActionGroup;
class KALineEditSearch;
class KAStackedBrowserCtrl;
class QToolButton;

// The stacked explorer's panel: search field, refresh and filter buttons,
// a progress bar and the stack of browser views.
class KABROWSER_EXPORT KAStackedBrowserEditor : public QWidget, public KAStackedBrowserEditorInterface
{
    Q_OBJECT
public:
    explicit KAStackedBrowserEditor(KAStackedBrowserCtrl* ctrl);
    ~KAStackedBrowserEditor() override;

    QWidget* widget() override { return this; }
    int addEditor(QWidget* editor) override;
    void removeEditor(QWidget* editor) override;
    void setCurrentEditor(QWidget* editor) override;
    bool contains(QWidget* editor) const override;
    void setTitle(const QString& title) override;
    void setAllowedFilters(const QList<KAObjectType>& types) override;
    QList<KAObjectType> getAllowedFilters() override;
    void setCurrentFilter(const QList<KAObjectType>& types) override;
    TProcessProgressInterface* getSearchProgressBar() const override { return m_progress; }
    void setCurrentSearch(const QString& text) override;
    void close() override;
    void restoreDefaultPosition() override;

    QStackedWidget* stack() { return &m_stack; }
    KALineEditSearch* searchField() const { return m_search; }
    QToolButton* refreshButton() const { return m_refreshButton; }
    QToolButton* filterButton() const { return m_filterButton; }
    KAFilterActionGroup* filterActions() const { return m_filterGroup; }

public slots:
    void slotRefresh();
    void slotFilterView();
    void slotResetFilter();
    void slotSearch(const QString& text);

private:
    KAStackedBrowserCtrl* m_ctrl;                 // not owned
    QStackedWidget m_stack;
    QToolButton* m_refreshButton = nullptr;       // owned (child)
    QToolButton* m_filterButton = nullptr;        // owned (child)
    KAFilterActionGroup* m_filterGroup = nullptr; // owned (child)
    TProcessProgressInterface* m_progress = nullptr; // owned (child widget)
    KALineEditSearch* m_search = nullptr;         // owned (child)
};
