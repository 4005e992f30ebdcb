#include "kastackedbrowsereditor.h"

#include "kaabstractbrowserlistview.h"
#include "kafilesystembrowserfilterpackage.h"
#include "kafilteractiongroup.h"
#include "kalineeditsearch.h"
#include "kaprojectbrowserfilter.h"
#include "kastackedbrowserctrl.h"
#include "kastackedbrowsersearchprogressbar.h"
#include "projectmgrinterface.h"
#include "tdatabase.h"
#include "tpixmapcache.h"
#include "twaitmode.h"

#include <QActionGroup>
#include <QHBoxLayout>
#include <QMenu>
#include <QToolButton>
#include <QVBoxLayout>

KAStackedBrowserEditor::KAStackedBrowserEditor(KAStackedBrowserCtrl* ctrl)
    : QWidget(nullptr)
    , m_ctrl(ctrl)
{
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(2, 2, 2, 2);
    auto* bar = new QHBoxLayout;
    layout->addLayout(bar);

    m_search = new KALineEditSearch(this);
    m_search->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    bar->addWidget(m_search);
    connect(m_search, &QLineEdit::textEdited, this, &KAStackedBrowserEditor::slotSearch);
    connect(m_search, &KALineEditSearch::stopSearch, this, [this]() {
        if (m_ctrl)
            m_ctrl->search(QString());
    });

    m_refreshButton = new QToolButton(this);
    m_refreshButton->setAutoRaise(true);
    m_refreshButton->setToolTip(tr("Synchronize database", "Synchroniser la base de données"));
    m_refreshButton->setIcon(QIcon(TPixmapCache::find("refresh")));
    connect(m_refreshButton, &QToolButton::clicked, this, &KAStackedBrowserEditor::slotRefresh);
    bar->addWidget(m_refreshButton);

    m_filterButton = new QToolButton(this);
    m_filterButton->setAutoRaise(true);
    m_filterButton->setIcon(QIcon(TPixmapCache::find("view_projectbrowser")));
    m_filterButton->setPopupMode(QToolButton::MenuButtonPopup);
    m_filterButton->setToolTip(tr("Show all", "Tout afficher"));
    connect(m_filterButton, &QToolButton::clicked, this, &KAStackedBrowserEditor::slotResetFilter);
    bar->addWidget(m_filterButton);

    auto* menu = new QMenu(this);
    m_filterGroup = new KAFilterActionGroup(ctrl ? ctrl->getFilter() : nullptr, menu, this);
    for (QAction* action : m_filterGroup->actions())
        connect(action, &QAction::triggered, this, &KAStackedBrowserEditor::slotFilterView);
    m_filterButton->setMenu(menu);

    auto* progress = new KAStackedBrowserSearchProgressBar(this);
    progress->hide();
    layout->addWidget(progress);
    m_progress = progress;

    layout->addWidget(&m_stack);
}

KAStackedBrowserEditor::~KAStackedBrowserEditor()
{
    // The views belong to their controllers, which the stacked controller
    // deletes: the stack lets them go instead of deleting them twice.
    while (m_stack.count() > 0)
        m_stack.removeWidget(m_stack.widget(0));
}

int KAStackedBrowserEditor::addEditor(QWidget* editor)
{
    return m_stack.addWidget(editor);
}

void KAStackedBrowserEditor::removeEditor(QWidget* editor)
{
    m_stack.removeWidget(editor);
}

void KAStackedBrowserEditor::setCurrentEditor(QWidget* editor)
{
    m_stack.setCurrentWidget(editor);
    if (auto* view = qobject_cast<KAAbstractBrowserListView*>(editor))
        view->startIntuitiveMode();
}

bool KAStackedBrowserEditor::contains(QWidget* editor) const
{
    return m_stack.indexOf(editor) != -1;
}

void KAStackedBrowserEditor::setTitle(const QString&)
{
}

void KAStackedBrowserEditor::setAllowedFilters(const QList<KAObjectType>& types)
{
    m_filterGroup->setAllowed(types);
}

QList<KAObjectType> KAStackedBrowserEditor::getAllowedFilters()
{
    return m_filterGroup->types(false);
}

void KAStackedBrowserEditor::setCurrentFilter(const QList<KAObjectType>& types)
{
    m_filterGroup->setCurrent(types);
}

void KAStackedBrowserEditor::setCurrentSearch(const QString& text)
{
    if (text.isEmpty()) {
        m_search->changeSearchMode(0);
        return;
    }
    m_search->changeSearchMode(1);
    m_search->setText(text);
}

void KAStackedBrowserEditor::close()
{
    QWidget::close();
}

void KAStackedBrowserEditor::restoreDefaultPosition()
{
}

void KAStackedBrowserEditor::slotSearch(const QString& text)
{
    if (m_ctrl)
        m_ctrl->search(text);
}

void KAStackedBrowserEditor::slotRefresh()
{
    TWaitMode wait;
    if (TechDB::TDatabase* db = ProjectMgrInterface::returnMe()->currentDatabase())
        db->synchronize();
    if (m_ctrl)
        m_ctrl->refreshCurrentView(false);
}

void KAStackedBrowserEditor::slotFilterView()
{
    if (m_ctrl)
        m_ctrl->filterView(m_filterGroup->types(true));
}

void KAStackedBrowserEditor::slotResetFilter()
{
    for (QAction* action : m_filterGroup->actions())
        action->setChecked(true);
    slotFilterView();
}
