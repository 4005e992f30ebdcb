#pragma once

#include "kahost_export.h"

#include <QTextBrowser>

// The host's read-only property pane: shows the HTML description of the
// object the user picked. Registered with the description collector, which
// feeds it through its setHtml slot; links open in the desktop's browser.
class KAHOST_EXPORT KAPropertyEditorHtml : public QTextBrowser
{
    Q_OBJECT
public:
    explicit KAPropertyEditorHtml(QWidget* parent = nullptr);

    // The text last given to setHtml, as given.
    const QString& currentHtml() const { return m_html; }

public slots:
    // An empty text shows the pane's placeholder ("No object selected").
    void setHtml(const QString& html);

private:
    QString m_html;
};
