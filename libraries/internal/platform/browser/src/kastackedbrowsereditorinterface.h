#pragma once

#include "kabrowser_export.h"
#include "kaobjecttype.h"

#include <QList>

class QString;
class QWidget;
class TProcessProgressInterface;

// The widget that holds the stacked explorer's views.
class KABROWSER_EXPORT KAStackedBrowserEditorInterface
{
public:
    virtual ~KAStackedBrowserEditorInterface();
    virtual QWidget* widget() = 0;
    virtual int addEditor(QWidget* editor) = 0;
    virtual void removeEditor(QWidget* editor) = 0;
    virtual void setCurrentEditor(QWidget* editor) = 0;
    virtual bool contains(QWidget* editor) const = 0;
    virtual void setTitle(const QString& title) = 0;
    virtual void setAllowedFilters(const QList<KAObjectType>& types) = 0;
    virtual QList<KAObjectType> getAllowedFilters() = 0;
    virtual void setCurrentFilter(const QList<KAObjectType>& types) = 0;
    virtual TProcessProgressInterface* getSearchProgressBar() const = 0;
    virtual void setCurrentSearch(const QString& text) = 0;
    virtual void close() = 0;
    virtual void restoreDefaultPosition() = 0;
};
