#include "kalineeditsearch.h"

#include "tassert.h"
#include "tpixmapcache.h"

#include <QAction>
#include <QEvent>
#include <QIcon>
#include <QKeyEvent>
#include <QStyle>

namespace {
const char* const SourceFile = "libraries\\host\\shell\\kalineeditsearch";

QColor blend(const QColor& base, const QColor& tint, qreal amount)
{
    return QColor::fromRgbF(base.redF() + (tint.redF() - base.redF()) * amount,
                            base.greenF() + (tint.greenF() - base.greenF()) * amount,
                            base.blueF() + (tint.blueF() - base.blueF()) * amount);
}
} // namespace

KALineEditSearch::KALineEditSearch(QWidget* parent)
    : QLineEdit(parent)
{
    setPlaceholderText(tr("Search", "Rechercher"));
    m_searchAction = new QAction(TPixmapCache::icon("search_object"), QString(), this);
    m_searchAction->setToolTip(tr("Search", "Rechercher"));
    addAction(m_searchAction, QLineEdit::LeadingPosition);

    const QIcon clearIcon = QIcon::fromTheme(QStringLiteral("edit-clear"),
                                             style()->standardIcon(QStyle::SP_LineEditClearButton, nullptr, this));
    m_clearAction = new QAction(clearIcon, tr("Clear the search", "Effacer la recherche"), this);
    m_clearAction->setToolTip(m_clearAction->text());
    addAction(m_clearAction, QLineEdit::TrailingPosition);
    // Hidden after it is added: the field's button follows later changes of
    // the action, not the state it had when added.
    m_clearAction->setVisible(false);
    connect(m_clearAction, &QAction::triggered, this, &KALineEditSearch::slotClear);
    connect(this, &QLineEdit::textChanged, this,
            [this](const QString& text) { m_clearAction->setVisible(!text.isEmpty()); });
}

void KALineEditSearch::changeSearchMode(int mode)
{
    if (mode != ModeIdle && mode != ModeSearching) {
        t_assert("mode == ModeIdle || mode == ModeSearching", SourceFile, __LINE__, false);
        return;
    }
    if (mode == m_mode)
        return;
    m_mode = mode;
    applyLook();
}

void KALineEditSearch::applyLook()
{
    m_applyingLook = true;
    // Back to the inherited palette first: the tint is always computed from
    // the current theme, never from a previous tint.
    setPalette(QPalette());
    if (m_mode == ModeSearching) {
        QPalette tinted;
        tinted.setColor(QPalette::Base, blend(palette().color(QPalette::Base), palette().color(QPalette::Highlight), 0.18));
        setPalette(tinted);
    }
    setProperty("searching", m_mode == ModeSearching);
    m_applyingLook = false;
}

void KALineEditSearch::changeEvent(QEvent* event)
{
    QLineEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !m_applyingLook && m_mode == ModeSearching)
        applyLook();
}

void KALineEditSearch::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        slotClear();
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void KALineEditSearch::slotClear()
{
    clear();
    changeSearchMode(ModeIdle);
    emit stopSearch();
}
