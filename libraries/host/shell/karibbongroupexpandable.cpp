#include "karibbongroupexpandable.h"

#include <QApplication>
#include <QFrame>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QScreen>
#include <QToolButton>
#include <QVBoxLayout>

KARibbonGroupExpandable::KARibbonGroupExpandable(const QString& title, QWidget* parent)
    : KARibbonGroup(title, parent)
{
    m_arrow = new QToolButton(this);
    m_arrow->setObjectName(QStringLiteral("kaRibbonExpandArrow"));
    m_arrow->setArrowType(Qt::DownArrow);
    m_arrow->setAutoRaise(true);
    m_arrow->setCheckable(true);
    m_arrow->setFocusPolicy(Qt::NoFocus);
    m_arrow->setFixedSize(16, 14);
    m_arrow->setToolTip(tr("Show or hide the panel", "Afficher ou masquer le panneau"));
    titleLayout()->addWidget(m_arrow);
    connect(m_arrow, &QToolButton::clicked, this, &KARibbonGroupExpandable::toggle);

    m_panel = new QFrame(this, Qt::Tool | Qt::FramelessWindowHint);
    m_panel->setObjectName(QStringLiteral("kaRibbonExpandPanel"));
    m_panel->setFrameShape(QFrame::StyledPanel);
    m_panel->setFrameShadow(QFrame::Raised);
    auto* layout = new QVBoxLayout(m_panel);
    layout->setContentsMargins(4, 4, 4, 4);
    m_panel->installEventFilter(this);
}

KARibbonGroupExpandable::~KARibbonGroupExpandable()
{
    // The panel goes with the group; it must not report a collapse to a
    // half-destroyed group.
    m_panel->removeEventFilter(this);
}

void KARibbonGroupExpandable::setContent(QWidget* content)
{
    if (content == m_content)
        return;
    delete m_content;
    m_content = content;
    if (m_content)
        m_panel->layout()->addWidget(m_content);
}

bool KARibbonGroupExpandable::isExpanded() const
{
    return m_panel->isVisible();
}

QRect KARibbonGroupExpandable::panelGeometry() const
{
    QSize size = m_panel->sizeHint().expandedTo(QSize(width(), 0));
    QPoint topLeft = mapToGlobal(QPoint(0, height()));
    const QScreen* screen = QGuiApplication::screenAt(topLeft);
    if (!screen)
        screen = this->screen();
    if (screen) {
        // Kept on the screen: shifted left, then shortened at the bottom.
        const QRect available = screen->availableGeometry();
        size = size.boundedTo(available.size());
        if (topLeft.x() + size.width() > available.right() + 1)
            topLeft.setX(available.right() + 1 - size.width());
        topLeft.setX(qMax(topLeft.x(), available.left()));
        size.setHeight(qMin(size.height(), available.bottom() + 1 - topLeft.y()));
    }
    return QRect(topLeft, size);
}

void KARibbonGroupExpandable::exec()
{
    if (!m_content)
        return;
    if (isExpanded()) {
        m_panel->raise();
        return;
    }
    m_panel->setGeometry(panelGeometry());
    m_panel->show();
    m_panel->raise();
    m_arrow->setChecked(true);
    emit expanded();
}

void KARibbonGroupExpandable::collapse()
{
    // The panel's hide event reports the collapse.
    m_panel->hide();
}

void KARibbonGroupExpandable::toggle()
{
    if (isExpanded())
        collapse();
    else
        exec();
    m_arrow->setChecked(isExpanded());
}

bool KARibbonGroupExpandable::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == m_panel) {
        if (event->type() == QEvent::Hide) {
            m_arrow->setChecked(false);
            emit collapsed();
        } else if (event->type() == QEvent::KeyPress
                   && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
            collapse();
            return true;
        }
    }
    return KARibbonGroup::eventFilter(watched, event);
}

void KARibbonGroupExpandable::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton) {
        toggle();
        event->accept();
        return;
    }
    KARibbonGroup::mousePressEvent(event);
}

void KARibbonGroupExpandable::hideEvent(QHideEvent* event)
{
    collapse();
    KARibbonGroup::hideEvent(event);
}
