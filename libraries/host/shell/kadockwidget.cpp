#include "kadockwidget.h"

#include "applicationinterface.h"
#include "tassert.h"
#include "tpixmapcache.h"

#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QMainWindow>
#include <QScreen>
#include <QStyle>
#include <QToolButton>

namespace {
const char* const SourceFile = "libraries\\host\\shell\\kadockwidget";

QString rectToText(const QRect& rect)
{
    return QStringLiteral("%1,%2,%3,%4").arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

QRect rectFromText(const QString& text)
{
    const QStringList parts = text.split(QLatin1Char(','));
    if (parts.size() != 4)
        return QRect();
    int values[4];
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        values[i] = parts.at(i).trimmed().toInt(&ok);
        if (!ok)
            return QRect();
    }
    return QRect(values[0], values[1], values[2], values[3]);
}

bool isSingleArea(int area)
{
    return area == Qt::LeftDockWidgetArea || area == Qt::RightDockWidgetArea || area == Qt::TopDockWidgetArea
        || area == Qt::BottomDockWidgetArea;
}
} // namespace

KADockWidget::KADockWidget(const QString& title, const QString& objectName, const char* iconName, bool flag,
                           QWidget* parent)
    : QDockWidget(title, parent)
    , m_iconName(iconName ? iconName : "")
    , m_hostTitleBar(flag)
{
    setObjectName(objectName);
    if (!m_iconName.isEmpty())
        setWindowIcon(TPixmapCache::icon(m_iconName.constData()));
    if (m_hostTitleBar)
        buildTitleBar();
    connect(this, &QWidget::windowTitleChanged, this, &KADockWidget::updateTitleBar);
    connect(this, &QDockWidget::featuresChanged, this, &KADockWidget::updateTitleBar);
    connect(this, &QDockWidget::topLevelChanged, this, &KADockWidget::updateTitleBar);
    updateTitleBar();
}

KADockWidget::~KADockWidget() = default;

QString KADockWidget::settingKey(const QString& objectName, const QString& field)
{
    return objectName + QLatin1Char('/') + field;
}

void KADockWidget::setAllowedDockAreas(Qt::DockWidgetAreas areas)
{
    setAllowedAreas(areas);
}

void KADockWidget::buildTitleBar()
{
    m_titleBar = new QWidget(this);
    m_titleBar->setObjectName(QStringLiteral("kaDockTitleBar"));
    m_titleBar->setAutoFillBackground(true);
    QPalette palette = m_titleBar->palette();
    palette.setColor(QPalette::Window, palette.color(QPalette::Window).darker(108));
    m_titleBar->setPalette(palette);

    auto* layout = new QHBoxLayout(m_titleBar);
    layout->setContentsMargins(6, 2, 2, 2);
    layout->setSpacing(4);
    m_titleIcon = new QLabel(m_titleBar);
    m_titleIcon->setObjectName(QStringLiteral("kaDockTitleIcon"));
    m_titleText = new QLabel(m_titleBar);
    m_titleText->setObjectName(QStringLiteral("kaDockTitleText"));
    QFont font = m_titleText->font();
    font.setBold(true);
    m_titleText->setFont(font);
    m_titleText->setTextFormat(Qt::PlainText);
    m_titleText->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);

    m_floatButton = new QToolButton(m_titleBar);
    m_floatButton->setObjectName(QStringLiteral("kaDockFloatButton"));
    m_floatButton->setAutoRaise(true);
    m_floatButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarNormalButton, nullptr, this));
    m_floatButton->setFocusPolicy(Qt::NoFocus);
    connect(m_floatButton, &QToolButton::clicked, this, &KADockWidget::slotToggleFloating);

    m_closeButton = new QToolButton(m_titleBar);
    m_closeButton->setObjectName(QStringLiteral("kaDockCloseButton"));
    m_closeButton->setAutoRaise(true);
    m_closeButton->setIcon(style()->standardIcon(QStyle::SP_TitleBarCloseButton, nullptr, this));
    m_closeButton->setToolTip(tr("Close", "Fermer"));
    m_closeButton->setFocusPolicy(Qt::NoFocus);
    connect(m_closeButton, &QToolButton::clicked, this, &KADockWidget::slotUserClose);

    layout->addWidget(m_titleIcon);
    layout->addWidget(m_titleText, 1);
    layout->addWidget(m_floatButton);
    layout->addWidget(m_closeButton);
    setTitleBarWidget(m_titleBar);
}

void KADockWidget::updateTitleBar()
{
    if (!m_titleBar)
        return;
    const QPixmap& pixmap = TPixmapCache::find(m_iconName.constData());
    m_titleIcon->setPixmap(pixmap);
    m_titleIcon->setVisible(!pixmap.isNull());
    m_titleText->setText(windowTitle());
    m_titleText->setToolTip(windowTitle());
    m_floatButton->setVisible(features().testFlag(QDockWidget::DockWidgetFloatable));
    m_floatButton->setToolTip(isFloating() ? tr("Dock", "Ancrer") : tr("Float", "Détacher"));
    m_closeButton->setVisible(features().testFlag(QDockWidget::DockWidgetClosable));
}

void KADockWidget::setDockWidget(bool docked)
{
    setFloating(!docked);
    updateTitleBar();
}

void KADockWidget::slotToggleFloating()
{
    setDockWidget(isFloating());
}

void KADockWidget::slotUserClose()
{
    m_closedByHost = false;
    QWidget::close();
}

bool KADockWidget::close()
{
    if (!m_closedByHost) {
        m_visibleBeforeClose = !isHiddenByChoice();
        m_closedByHost = true;
    }
    return QWidget::close();
}

void KADockWidget::showEvent(QShowEvent* event)
{
    m_closedByHost = false;
    QDockWidget::showEvent(event);
}

bool KADockWidget::settingWrite() const
{
    if (objectName().isEmpty()) {
        t_assert("!objectName().isEmpty()", SourceFile, __LINE__, false);
        return false;
    }
    ApplicationInterface* app = ApplicationInterface::returnMe();
    const QString name = objectName();
    const bool visible = m_closedByHost ? m_visibleBeforeClose : !isHiddenByChoice();
    bool ok = app->setSetting(settingKey(name, QStringLiteral("floating")), isFloating());
    ok = app->setSetting(settingKey(name, QStringLiteral("visible")), visible) && ok;
    // The floating rectangle is kept while the dock is docked, so that
    // floating it again puts it back where the user left it.
    if (isFloating())
        ok = app->setSetting(settingKey(name, QStringLiteral("geometry")), rectToText(geometry())) && ok;
    if (auto* window = qobject_cast<QMainWindow*>(parentWidget())) {
        const Qt::DockWidgetArea area = window->dockWidgetArea(const_cast<KADockWidget*>(this));
        if (isSingleArea(area))
            ok = app->setSetting(settingKey(name, QStringLiteral("area")), int(area)) && ok;
    }
    return ok;
}

bool KADockWidget::settingRead()
{
    if (objectName().isEmpty()) {
        t_assert("!objectName().isEmpty()", SourceFile, __LINE__, false);
        return false;
    }
    const ApplicationInterface* app = ApplicationInterface::returnMe();
    const QString name = objectName();
    const QVariant floating = app->setting(settingKey(name, QStringLiteral("floating")));
    if (!floating.isValid())
        return false;

    if (auto* window = qobject_cast<QMainWindow*>(parentWidget())) {
        bool ok = false;
        const int area = app->setting(settingKey(name, QStringLiteral("area"))).toInt(&ok);
        if (ok && isSingleArea(area) && isAreaAllowed(Qt::DockWidgetArea(area))
            && window->dockWidgetArea(this) != Qt::DockWidgetArea(area))
            window->addDockWidget(Qt::DockWidgetArea(area), this);
    }

    const bool wantFloating = floating.toBool();
    setDockWidget(!wantFloating);
    if (wantFloating) {
        const QRect rect = rectFromText(app->setting(settingKey(name, QStringLiteral("geometry"))).toString());
        if (rect.isValid())
            setGeometry(visibleOnScreen(rect));
    }

    const bool visible = app->setting(settingKey(name, QStringLiteral("visible")), true).toBool();
    if (!visible)
        hide();
    else if (parentWidget())
        show();
    return true;
}

// Not isVisible(): a dock of a hidden or closing main window, or one not
// shown yet, is still one the user wants to see; only an explicit hide
// (close button, view menu) counts.
bool KADockWidget::isHiddenByChoice() const
{
    return testAttribute(Qt::WA_WState_ExplicitShowHide) && testAttribute(Qt::WA_WState_Hidden);
}

QRect KADockWidget::visibleOnScreen(const QRect& rect)
{
    const QList<QScreen*> screens = QGuiApplication::screens();
    for (const QScreen* screen : screens) {
        if (screen->availableGeometry().intersects(rect))
            return rect;
    }
    const QScreen* primary = QGuiApplication::primaryScreen();
    if (!primary)
        return rect;
    QRect moved = rect;
    moved.moveCenter(primary->availableGeometry().center());
    return moved;
}
