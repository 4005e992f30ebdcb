#include "kareparentdialog.h"

#include "kaobject2.h"
#include "tdatabase.h"
#include "tpixmapcache.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QVBoxLayout>

KAReparentDialog::KAReparentDialog(const KAObject2* object, const TechDB::TDatabase* db, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Associate with", "Associer à"));
    auto* layout = new QVBoxLayout(this);
    auto* label = new QLabel(tr("Associate <b>%1</b> with the analysis:", "Associer <b>%1</b> à l'analyse :")
                                 .arg(object ? object->name().toHtmlEscaped() : QString()),
                             this);
    layout->addWidget(label);
    m_list = new QListWidget(this);
    if (db) {
        m_candidates = db->getObjectLst(KAObjectTypeAnalysis);
        const QIcon icon(TPixmapCache::find("analysis"));
        for (const KAObject2* analysis : qAsConst(m_candidates))
            new QListWidgetItem(icon, analysis->name(), m_list);
    }
    layout->addWidget(m_list);
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_list, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    layout->addWidget(buttons);
}

const KAObject2* KAReparentDialog::selectedObject() const
{
    const int row = m_list->currentRow();
    return row >= 0 && row < m_candidates.size() ? m_candidates.at(row) : nullptr;
}
