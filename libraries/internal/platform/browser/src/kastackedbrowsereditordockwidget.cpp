#include "kastackedbrowsereditordockwidget.h"

#include "kastackedbrowsereditor.h"

#include <QCoreApplication>

KAStackedBrowserEditorDockWidget::KAStackedBrowserEditorDockWidget(KAStackedBrowserCtrl* ctrl)
    : KADockWidget(QCoreApplication::translate("KAStackedBrowserEditorDockWidget", "Files explorer",
                                               "Explorateur de fichiers"),
                   QStringLiteral("stackedExplorer"), "project_explorer", true)
    , m_editor(new KAStackedBrowserEditor(ctrl))
{
    setWidget(m_editor);
    setAllowedDockAreas(Qt::LeftDockWidgetArea | Qt::RightDockWidgetArea);
    settingRead();
}

KAStackedBrowserEditorDockWidget::~KAStackedBrowserEditorDockWidget()
{
    settingWrite();
}

int KAStackedBrowserEditorDockWidget::addEditor(QWidget* editor)
{
    return m_editor->addEditor(editor);
}

void KAStackedBrowserEditorDockWidget::removeEditor(QWidget* editor)
{
    m_editor->removeEditor(editor);
}

void KAStackedBrowserEditorDockWidget::setCurrentEditor(QWidget* editor)
{
    m_editor->setCurrentEditor(editor);
}

bool KAStackedBrowserEditorDockWidget::contains(QWidget* editor) const
{
    return m_editor->contains(editor);
}

void KAStackedBrowserEditorDockWidget::setTitle(const QString& title)
{
    setWindowTitle(title);
}

void KAStackedBrowserEditorDockWidget::setAllowedFilters(const QList<KAObjectType>& types)
{
    m_editor->setAllowedFilters(types);
}

QList<KAObjectType> KAStackedBrowserEditorDockWidget::getAllowedFilters()
{
    return m_editor->getAllowedFilters();
}

void KAStackedBrowserEditorDockWidget::setCurrentFilter(const QList<KAObjectType>& types)
{
    m_editor->setCurrentFilter(types);
}

TProcessProgressInterface* KAStackedBrowserEditorDockWidget::getSearchProgressBar() const
{
    return m_editor->getSearchProgressBar();
}

void KAStackedBrowserEditorDockWidget::setCurrentSearch(const QString& text)
{
    m_editor->setCurrentSearch(text);
}

void KAStackedBrowserEditorDockWidget::close()
{
    KADockWidget::close();
}

void KAStackedBrowserEditorDockWidget::restoreDefaultPosition()
{
    setDefaultProperties();
}

void KAStackedBrowserEditorDockWidget::setDefaultProperties()
{
    setDockWidget(true);
    updateTitleBar();
    show();
}
