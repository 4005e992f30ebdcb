#pragma once

#include "kabrowser_export.h"
#include "kadockwidget.h"
#include "kastackedbrowsereditorinterface.h"

class KAStackedBrowserCtrl;
class KAStackedBrowserEditor;

// The dock window of the stacked explorer.
class KABROWSER_EXPORT KAStackedBrowserEditorDockWidget : public KADockWidget, public KAStackedBrowserEditorInterface
{
    Q_OBJECT
public:
    explicit KAStackedBrowserEditorDockWidget(KAStackedBrowserCtrl* ctrl);
    ~KAStackedBrowserEditorDockWidget() override;

    QWidget* widget() override { return this; }
    int addEditor(QWidget* editor) override;
    void removeEditor(QWidget* editor) override;
    void setCurrentEditor(QWidget* editor) override;
    bool contains(QWidget* editor) const override;
    void setTitle(const QString& title) override;
    void setAllowedFilters(const QList<KAObjectType>& types) override;
    QList<KAObjectType> getAllowedFilters() override;
    void setCurrentFilter(const QList<KAObjectType>& types) override;
    TProcessProgressInterface* getSearchProgressBar() const override;
    void setCurrentSearch(const QString& text) override;
    void close() override;
    void restoreDefaultPosition() override;

    KAStackedBrowserEditor* editor() const { return m_editor; }
    virtual void setDefaultProperties();

private:
    KAStackedBrowserEditor* m_editor; // owned (the dock's widget)
};
