#include "kapropertyeditorhtml.h"

KAPropertyEditorHtml::KAPropertyEditorHtml(QWidget* parent)
    : QTextBrowser(parent)
{
    setReadOnly(true);
    setOpenExternalLinks(true);
    setUndoRedoEnabled(false);
    setPlaceholderText(tr("No object selected", "Aucun objet sélectionné"));
    setFrameShape(QFrame::NoFrame);
}

void KAPropertyEditorHtml::setHtml(const QString& html)
{
    m_html = html;
    QTextBrowser::setHtml(html);
}
