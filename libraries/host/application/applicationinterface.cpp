#include "applicationinterface.h"

#include "kaaliasfoldermgr.h"
#include "tapplicationdata.h"
#include "txmlmethod.h"

#include <QDir>
#include <QDomDocument>

ApplicationInterface* ApplicationInterface::returnMe()
{
    static ApplicationInterface instance;
    return &instance;
}

ApplicationInterface::ApplicationInterface() = default;

ApplicationInterface::~ApplicationInterface()
{
    delete m_aliasFolderMgr;
}

KAAliasFolderMgr* ApplicationInterface::aliasFolderMgr()
{
    if (!m_aliasFolderMgr)
        m_aliasFolderMgr = new KAAliasFolderMgr;
    return m_aliasFolderMgr;
}

QString ApplicationInterface::settingsPath() const
{
    return QDir(TApplicationData::getInstance()->applicationDataPath()).filePath(QStringLiteral("settings.xml"));
}

// Settings file: <settings version="1"><setting key="..." value="..."/></settings>.
// A missing or malformed file gives the defaults.
void ApplicationInterface::loadSettings()
{
    if (m_loaded)
        return;
    m_loaded = true;
    QDomDocument doc;
    if (!TXMLMethod::load(settingsPath(), doc))
        return;
    const QDomElement root = doc.documentElement();
    if (root.tagName() != QLatin1String("settings"))
        return;
    for (QDomElement e = root.firstChildElement(QStringLiteral("setting")); !e.isNull();
         e = e.nextSiblingElement(QStringLiteral("setting")))
        m_settings.insert(e.attribute(QStringLiteral("key")), e.attribute(QStringLiteral("value")));
}

void ApplicationInterface::reloadSettings()
{
    m_settings.clear();
    m_loaded = false;
    loadSettings();
}

QVariant ApplicationInterface::setting(const QString& key, const QVariant& defaultValue) const
{
    const_cast<ApplicationInterface*>(this)->loadSettings();
    auto it = m_settings.constFind(key);
    return it == m_settings.constEnd() ? defaultValue : QVariant(it.value());
}

bool ApplicationInterface::setSetting(const QString& key, const QVariant& value)
{
    loadSettings();
    m_settings.insert(key, value.toString());
    QDomDocument doc(QStringLiteral("settings"));
    QDomElement root = doc.createElement(QStringLiteral("settings"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1"));
    doc.appendChild(root);
    for (auto it = m_settings.constBegin(); it != m_settings.constEnd(); ++it) {
        QDomElement e = doc.createElement(QStringLiteral("setting"));
        e.setAttribute(QStringLiteral("key"), it.key());
        e.setAttribute(QStringLiteral("value"), it.value());
        root.appendChild(e);
    }
    return TXMLMethod::save(&doc, settingsPath(), true, true);
}

QString ApplicationInterface::language() const
{
    return setting(QStringLiteral("language"), QStringLiteral("en")).toString();
}

void ApplicationInterface::objectChanged(const KAObject2* object)
{
    emit refreshObject(object);
}
