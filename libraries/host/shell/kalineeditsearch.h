#pragma once

#include "kahost_export.h"

#include <QLineEdit>

class QAction;

// The host search field: a search icon at the front, a clear button at the
// end while there is text, and two looks: idle and searching (a tinted
// field, so the user sees that the view shows search results). Escape or
// the clear button empties the field, returns to the idle look and emits
// stopSearch().
class KAHOST_EXPORT KALineEditSearch : public QLineEdit
{
    Q_OBJECT
public:
    enum SearchMode { ModeIdle = 0, ModeSearching = 1 };

    explicit KALineEditSearch(QWidget* parent = nullptr);

    // 0: idle look, 1: searching look; other values are refused.
    void changeSearchMode(int mode);
    int searchMode() const { return m_mode; }

    // The clear button's action (owned by the field).
    QAction* clearAction() const { return m_clearAction; }

signals:
    void stopSearch();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void slotClear();
    void applyLook();

    QAction* m_searchAction = nullptr; // owned through Qt parenthood
    QAction* m_clearAction = nullptr;  // owned through Qt parenthood
    int m_mode = ModeIdle;
    bool m_applyingLook = false;       // our own palette change is not a theme change
};
