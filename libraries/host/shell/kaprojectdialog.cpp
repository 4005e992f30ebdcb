#include "kaprojectdialog.h"

#include "applicationinterface.h"
#include "kaobject2project.h"
#include "messageloggerinterface.h"
#include "projectmgrinterface.h"
#include "tassert.h"
#include "tdatabase.h"
#include "tpixmapcache.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QStyle>
#include <QVBoxLayout>

namespace {
const char* const SourceFile = "libraries\\host\\shell\\kaprojectdialog";
}

KAProjectDialog::KAProjectDialog(const QList<const KAObject2Project*>& projects, QWidget* parent)
    : QDialog(parent)
{
    setWindowTitle(tr("Project properties", "Propriétés du projet"));
    setWindowIcon(TPixmapCache::icon("param"));
    setObjectName(QStringLiteral("kaProjectDialog"));
    for (const KAObject2Project* project : projects) {
        if (!project) {
            t_assert("project != NULL", SourceFile, __LINE__, false);
            continue;
        }
        m_projects.append(project);
        m_edits.append(Edit{project->name(), project->description(), project->projectState()});
    }

    auto* column = new QVBoxLayout(this);
    auto* row = new QHBoxLayout;
    column->addLayout(row, 1);
    if (m_projects.size() > 1) {
        m_list = new QListWidget(this);
        m_list->setObjectName(QStringLiteral("kaProjectList"));
        m_list->setSelectionMode(QAbstractItemView::SingleSelection);
        m_list->setMaximumWidth(200);
        const QIcon icon = TPixmapCache::icon("project");
        for (const KAObject2Project* project : qAsConst(m_projects)) {
            auto* item = new QListWidgetItem(icon, project->name(), m_list);
            item->setToolTip(QDir::toNativeSeparators(project->folder()));
        }
        row->addWidget(m_list);
        connect(m_list, &QListWidget::currentRowChanged, this, [this](int index) {
            if (index != m_current)
                setCurrentProject(index);
        });
    }
    auto* fields = new QWidget(this);
    buildFields(fields);
    row->addWidget(fields, 1);

    auto* messageRow = new QHBoxLayout;
    m_messageIcon = new QLabel(this);
    m_messageIcon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning, nullptr, this).pixmap(16, 16));
    m_messageIcon->hide();
    m_message = new QLabel(this);
    m_message->setObjectName(QStringLiteral("kaProjectMessage"));
    m_message->setTextFormat(Qt::RichText);
    m_message->setWordWrap(true);
    m_message->hide();
    messageRow->addWidget(m_messageIcon, 0, Qt::AlignTop);
    messageRow->addWidget(m_message, 1);
    column->addLayout(messageRow);

    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("kaProjectButtons"));
    connect(buttons, &QDialogButtonBox::accepted, this, &KAProjectDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &KAProjectDialog::reject);
    column->addWidget(buttons);

    resize(m_list ? 620 : 440, 340);
    setCurrentProject(m_projects.isEmpty() ? -1 : 0);
}

KAProjectDialog::~KAProjectDialog() = default;

void KAProjectDialog::buildFields(QWidget* parent)
{
    auto* form = new QFormLayout(parent);
    form->setContentsMargins(0, 0, 0, 0);
    m_name = new QLineEdit(parent);
    m_name->setObjectName(QStringLiteral("kaProjectName"));
    m_description = new QPlainTextEdit(parent);
    m_description->setObjectName(QStringLiteral("kaProjectDescription"));
    m_description->setTabChangesFocus(true);
    m_state = new QComboBox(parent);
    m_state->setObjectName(QStringLiteral("kaProjectState"));
    for (int state : states())
        m_state->addItem(stateName(state), state);
    m_folder = new QLineEdit(parent);
    m_folder->setObjectName(QStringLiteral("kaProjectFolder"));
    m_folder->setReadOnly(true);
    m_folder->setFrame(false);

    form->addRow(tr("Name:", "Nom :"), m_name);
    form->addRow(tr("Description:", "Description :"), m_description);
    form->addRow(tr("State:", "État :"), m_state);
    form->addRow(tr("Folder:", "Dossier :"), m_folder);

    connect(m_name, &QLineEdit::textEdited, this, [this]() {
        storeFields();
        if (m_list && m_current >= 0)
            m_list->item(m_current)->setText(m_edits.at(m_current).name);
    });
    connect(m_description, &QPlainTextEdit::textChanged, this, &KAProjectDialog::storeFields);
    connect(m_state, QOverload<int>::of(&QComboBox::currentIndexChanged), this, &KAProjectDialog::storeFields);
}

QList<int> KAProjectDialog::states()
{
    return {KAObject2Project::StateInProgress, KAObject2Project::StateValidated, KAObject2Project::StateArchived,
            KAObject2Project::StateLocked,     KAObject2Project::StateTerminated,
            KAObject2Project::StateTerminatedArchived};
}

QString KAProjectDialog::stateName(int state)
{
    switch (state) {
    case KAObject2Project::StateInProgress: return tr("In progress", "En cours");
    case KAObject2Project::StateValidated: return tr("Validated", "Validé");
    case KAObject2Project::StateArchived: return tr("Archived", "Archivé");
    case KAObject2Project::StateLocked: return tr("Locked", "Verrouillé");
    case KAObject2Project::StateTerminated: return tr("Terminated", "Terminé");
    case KAObject2Project::StateTerminatedArchived: return tr("Terminated and archived", "Terminé et archivé");
    default: return tr("Unknown state (%1)", "État inconnu (%1)").arg(state);
    }
}

void KAProjectDialog::setCurrentProject(int index)
{
    if (index < -1 || index >= m_projects.size()) {
        t_assert("index >= -1 && index < m_projects.size()", SourceFile, __LINE__, false);
        return;
    }
    storeFields();
    m_current = index;
    loadFields(index);
    if (m_list && m_list->currentRow() != index)
        m_list->setCurrentRow(index);
}

void KAProjectDialog::loadFields(int index)
{
    m_loading = true;
    const bool valid = index >= 0;
    const Edit edit = valid ? m_edits.at(index) : Edit();
    m_name->setText(edit.name);
    m_description->setPlainText(edit.description);
    // A state this dialog does not know is kept as it is.
    int row = m_state->findData(edit.state);
    if (row < 0 && valid) {
        m_state->addItem(stateName(edit.state), edit.state);
        row = m_state->count() - 1;
    }
    m_state->setCurrentIndex(row);
    m_folder->setText(valid ? QDir::toNativeSeparators(m_projects.at(index)->folder()) : QString());
    for (QWidget* field : {static_cast<QWidget*>(m_name), static_cast<QWidget*>(m_description),
                           static_cast<QWidget*>(m_state)})
        field->setEnabled(valid);
    m_loading = false;
}

void KAProjectDialog::storeFields()
{
    if (m_loading || m_current < 0)
        return;
    Edit& edit = m_edits[m_current];
    edit.name = m_name->text();
    edit.description = m_description->toPlainText();
    if (m_state->currentIndex() >= 0)
        edit.state = m_state->currentData().toInt();
    markList(m_current);
}

// A project with unsaved edits is written in bold in the list.
void KAProjectDialog::markList(int index)
{
    if (!m_list || index < 0)
        return;
    QListWidgetItem* item = m_list->item(index);
    QFont font = item->font();
    font.setBold(isChanged(index));
    item->setFont(font);
}

bool KAProjectDialog::isChanged(int index) const
{
    const KAObject2Project* project = m_projects.at(index);
    const Edit& edit = m_edits.at(index);
    return edit.name != project->name() || edit.description != project->description()
        || edit.state != project->projectState();
}

QString KAProjectDialog::message() const
{
    return m_message->isHidden() ? QString() : m_message->text();
}

void KAProjectDialog::showMessage(const QString& html)
{
    m_message->setText(html);
    m_message->setVisible(!html.isEmpty());
    m_messageIcon->setVisible(!html.isEmpty());
}

void KAProjectDialog::accept()
{
    storeFields();
    showMessage(QString());
    for (int i = 0; i < m_projects.size(); ++i) {
        if (m_edits.at(i).name.trimmed().isEmpty()) {
            const QString text = tr("The project name cannot be empty.", "Le nom du projet ne peut pas être vide.");
            MessageLoggerInterface::Warning(text);
            setCurrentProject(i);
            showMessage(text.toHtmlEscaped());
            m_name->setFocus();
            return;
        }
    }
    for (int i = 0; i < m_projects.size(); ++i) {
        if (!isChanged(i))
            continue;
        if (!save(i)) {
            setCurrentProject(i);
            return;
        }
        markList(i);
    }
    QDialog::accept();
}

bool KAProjectDialog::save(int index)
{
    // The host lists its projects as const; their header is what this
    // dialog edits, so the objects are updated here with the database.
    auto* project = const_cast<KAObject2Project*>(m_projects.at(index));
    const Edit edit = m_edits.at(index);
    ProjectMgrInterface* manager = ProjectMgrInterface::returnMe();
    const bool wasOpen = project->db() != nullptr;
    if (!wasOpen && !manager->openProject(project, false, true)) {
        // The silent open says nothing: find the reason to give the user.
        QString reason;
        const QString folder = project->folder();
        if (TechDB::TDatabase::readProjectHeader(folder, nullptr, nullptr, nullptr, &reason))
            reason = QFileInfo(TechDB::TDatabase::databasePath(folder)).isWritable()
                ? tr("the project database cannot be opened for writing.",
                     "la base de données du projet ne peut pas être ouverte en écriture.")
                : tr("the project database is write-protected.", "la base de données du projet est protégée en écriture.");
        const QString text = tr("The properties of project <b>%1</b> were not saved: %2",
                                "Les propriétés du projet <b>%1</b> n'ont pas été enregistrées : %2")
                                 .arg(project->name().toHtmlEscaped(), reason.toHtmlEscaped());
        MessageLoggerInterface::Error(text);
        showMessage(text);
        return false;
    }
    TechDB::TDatabase* db = project->db();
    const bool saved = db->setProjectProperties(edit.name, edit.description, edit.state);
    QString error = db->lastError();
    if (error.isEmpty())
        error = tr("The properties of project <b>%1</b> were not saved.",
                   "Les propriétés du projet <b>%1</b> n'ont pas été enregistrées.")
                    .arg(project->name().toHtmlEscaped());
    if (!wasOpen)
        manager->closeProject(project);
    if (!saved) {
        // The database logs its refusals itself; logged here only if it
        // did not.
        const QList<MessageLoggerInterface::Entry> entries = MessageLoggerInterface::returnMe()->entries();
        if (entries.isEmpty() || entries.last().text != error)
            MessageLoggerInterface::Error(error);
        showMessage(error);
        return false;
    }
    project->setName(edit.name);
    project->setDescription(edit.description);
    project->setProjectState(edit.state);
    ApplicationInterface::returnMe()->objectChanged(project);
    return true;
}
