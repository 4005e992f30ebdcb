#pragma once

#include "kahost_export.h"
#include "karibbongroup.h"

class QFrame;
class QToolButton;

// A ribbon group whose content is too large for the ribbon: it lives in a
// panel that opens below the group (exec) and closes again (collapse), the
// way a drop-down gallery does. The panel is a frameless tool window of the
// group's window; it takes no input grab, so dialogs opened from its
// content work as usual. Clicking the group or its arrow toggles it.
class KAHOST_EXPORT KARibbonGroupExpandable : public KARibbonGroup
{
    Q_OBJECT
public:
    explicit KARibbonGroupExpandable(const QString& title, QWidget* parent = nullptr);
    ~KARibbonGroupExpandable() override;

    // The panel's content, owned by the group from now on; a previous
    // content is deleted.
    void setContent(QWidget* content);
    QWidget* content() const { return m_content; }
    QFrame* panel() const { return m_panel; }
    bool isExpanded() const;

public slots:
    // Opens the panel below the group (nothing without content).
    void exec();
    void collapse();
    void toggle();

signals:
    void expanded();
    void collapsed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    QRect panelGeometry() const;

    QFrame* m_panel = nullptr;      // owned through Qt parenthood
    QWidget* m_content = nullptr;   // owned by m_panel
    QToolButton* m_arrow = nullptr; // owned through Qt parenthood
};
