#include "tdescriptioncollector.h"

#include "kaobject2.h"
#include "kaobject2folder.h"
#include "tdatabase.h"

#include <QDir>
#include <QMetaObject>

TDescriptionCollector* TDescriptionCollector::getInstance()
{
    static TDescriptionCollector collector;
    return &collector;
}

void TDescriptionCollector::registerEditor(QObject* editor)
{
    if (!editor)
        return;
    m_editors.removeAll(QPointer<QObject>());
    for (const QPointer<QObject>& known : qAsConst(m_editors)) {
        if (known == editor)
            return;
    }
    m_editors.append(editor);
}

void TDescriptionCollector::unregisterEditor(QObject* editor)
{
    for (int i = m_editors.size() - 1; i >= 0; --i) {
        if (!m_editors.at(i) || m_editors.at(i) == editor)
            m_editors.removeAt(i);
    }
}

int TDescriptionCollector::editorCount() const
{
    int count = 0;
    for (const QPointer<QObject>& editor : m_editors)
        count += editor ? 1 : 0;
    return count;
}

void TDescriptionCollector::displayProperties(const KAObject2* object)
{
    m_lastObject = object;
    const QString html = describe(object);
    // A copy: an editor may unregister itself while it is fed.
    const QList<QPointer<QObject>> editors = m_editors;
    for (const QPointer<QObject>& editor : editors) {
        if (!editor || editor->metaObject()->indexOfMethod("setHtml(QString)") < 0)
            continue;
        QMetaObject::invokeMethod(editor.data(), "setHtml", Q_ARG(QString, html));
    }
    emit descriptionChanged(html);
}

QString TDescriptionCollector::kindName(const KAObject2* object)
{
    if (!object)
        return QString();
    // Plain kind numbers: they are the contract, and some enumerators share
    // a value.
    switch (static_cast<qint32>(object->type())) {
    case 1: return tr("Analysis", "Analyse");
    case 2: return tr("Signal", "Signal");
    case 3: return tr("Well", "Puits");
    case 4: return tr("Numerical array", "Tableau numérique");
    case 5: return tr("Variable", "Variable");
    case 260: {
        const auto* folder = dynamic_cast<const KAObject2Folder*>(object);
        if (folder && folder->isUserFolder())
            return tr("User folder", "Dossier utilisateur");
        return tr("Folder", "Dossier");
    }
    case 264: return tr("Peak detection", "Détection de pics");
    case 265: return tr("Chromatogram", "Chromatogramme");
    case 277: return tr("Identifications", "Identifications");
    case 281: return tr("Identification group", "Groupe d'identifications");
    case 282: return tr("Identification", "Identification");
    case 293: return tr("MS deconvolution", "Déconvolution MS");
    case 528: return tr("Indexation", "Indexation");
    case 600: return tr("Compound", "Composé");
    case 601: return tr("Compound list", "Liste de composés");
    case 602: return tr("Compound lists", "Listes de composés");
    case 768: return tr("Project", "Projet");
    case 2554:
    case 2555: return tr("File", "Fichier");
    case 2556: return tr("Folder", "Dossier");
    case 2557: return tr("Computer", "Ordinateur");
    case 2558: return tr("Alias folder", "Dossier alias");
    default: return tr("Object", "Objet");
    }
}

QString TDescriptionCollector::describe(const KAObject2* object)
{
    if (!object)
        return QString();
    QString html = QStringLiteral("<html><body><h3>%1</h3><table>").arg(kindName(object).toHtmlEscaped());
    const QString row = QStringLiteral("<tr><td><b>%1</b></td><td>%2</td></tr>");
    html += row.arg(tr("Name", "Nom").toHtmlEscaped(), object->name().toHtmlEscaped());
    if (const TechDB::TDatabase* db = object->db()) {
        const QString folder = QDir::toNativeSeparators(db->location());
        if (!folder.isEmpty())
            html += row.arg(tr("Project folder", "Dossier du projet").toHtmlEscaped(), folder.toHtmlEscaped());
    }
    html += QStringLiteral("</table></body></html>");
    return html;
}
