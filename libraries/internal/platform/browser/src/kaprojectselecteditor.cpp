#include "kaprojectselecteditor.h"

#include "kafilteractiongroup.h"
#include "kalineeditsearch.h"
#include "kapropertyeditorhtml.h"
#include "kaprojectbrowserfilterpackage.h"
#include "kaprojectselectctrl.h"
#include "kaprojectselectsearchprogressbar.h"
#include "tdescriptioncollector.h"
#include "tpixmapcache.h"

#include <QActionGroup>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QMenu>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

KAProjectSelectEditor::KAProjectSelectEditor(KAProjectSelectCtrl* ctrl, QWidget* parent)
    : QWidget(parent)
    , m_ctrl(ctrl)
{
}

void KAProjectSelectEditor::init(QWidget* view)
{
    auto* layout = new QVBoxLayout(this);
    m_splitter = new QSplitter(this);
    m_splitter->setHandleWidth(1);
    layout->addWidget(m_splitter);

    auto* left = new QWidget(m_splitter);
    auto* leftLayout = new QVBoxLayout(left);
    auto* bar = new QHBoxLayout;
    leftLayout->addLayout(bar);
    auto* search = new KALineEditSearch(left);
    search->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    search->setMinimumWidth(300);
    bar->addWidget(search);
    connect(search, &QLineEdit::textEdited, this, QOverload<const QString&>::of(&KAProjectSelectEditor::slotSearch));
    connect(search, &KALineEditSearch::stopSearch, this, QOverload<>::of(&KAProjectSelectEditor::slotSearch));
    auto* filterButton = new QToolButton(left);
    filterButton->setAutoRaise(true);
    filterButton->setIcon(QIcon(TPixmapCache::find("view_projectbrowser")));
    filterButton->setPopupMode(QToolButton::MenuButtonPopup);
    filterButton->setToolTip(tr("Display mode", "Mode d'affichage"));
    bar->addWidget(filterButton);

    auto* menu = new QMenu(filterButton);
    m_filterGroup = new KAFilterActionGroup(m_ctrl ? m_ctrl->getFilter() : nullptr, menu, this);
    for (QAction* action : m_filterGroup->actions())
        connect(action, &QAction::triggered, this, &KAProjectSelectEditor::slotFilterView);
    // The project kind is always shown here: its action exists, hidden.
    if (QAction* project = m_filterGroup->action(KAObjectTypeProject))
        project->setVisible(false);
    filterButton->setMenu(menu);

    auto* progress = new KAProjectSelectSearchProgressBar(left);
    progress->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    progress->setMinimumWidth(300);
    progress->hide();
    leftLayout->addWidget(progress);
    m_progress = progress;
    if (view)
        leftLayout->addWidget(view);
    m_splitter->addWidget(left);

    m_description = new QGroupBox(tr("Description", "Description"), m_splitter);
    auto* descriptionLayout = new QVBoxLayout(m_description);
    auto* html = new KAPropertyEditorHtml(m_description);
    descriptionLayout->addWidget(html);
    TDescriptionCollector::getInstance()->registerEditor(html);
    m_splitter->addWidget(m_description);
    m_splitter->setSizes({522, 574});
}

void KAProjectSelectEditor::setCurrentFilter(const QList<KAObjectType>& types)
{
    if (m_filterGroup)
        m_filterGroup->setCurrent(types);
}

void KAProjectSelectEditor::slotShowProperties(bool show)
{
    if (m_description)
        m_description->setVisible(show);
}

void KAProjectSelectEditor::slotFilterView()
{
    auto* action = qobject_cast<QAction*>(sender());
    auto* group = action ? qobject_cast<KAFilterActionGroup*>(action->actionGroup()) : nullptr;
    if (group && m_ctrl)
        m_ctrl->filterView(group->types(true));
}

void KAProjectSelectEditor::slotSearch(const QString& text)
{
    if (m_ctrl)
        m_ctrl->actionSearch(text);
}

void KAProjectSelectEditor::slotSearch()
{
    if (m_ctrl)
        m_ctrl->actionSearch(QString());
}
