#include "kaaliasfoldermgr.h"

#include "kaaliasfolderinterface.h"
#include "kaaliasfoldermgrobserver.h"
#include "tapplicationdata.h"
#include "txmlmethod.h"

#include <QDir>
#include <QDomDocument>

KAAliasFolderMgrObserver::~KAAliasFolderMgrObserver() = default;

KAAliasFolderMgr::KAAliasFolderMgr()
{
    reload();
}

KAAliasFolderMgr::~KAAliasFolderMgr()
{
    qDeleteAll(m_aliases);
}

QString KAAliasFolderMgr::filePath() const
{
    return QDir(TApplicationData::getInstance()->applicationDataPath()).filePath(QStringLiteral("aliasfolders.xml"));
}

// <aliasfolders version="1"><alias name="..." path="..."/></aliasfolders>;
// a missing or malformed file means no alias.
void KAAliasFolderMgr::reload()
{
    qDeleteAll(m_aliases);
    m_aliases.clear();
    QDomDocument doc;
    if (!TXMLMethod::load(filePath(), doc) || doc.documentElement().tagName() != QLatin1String("aliasfolders"))
        return;
    for (QDomElement e = doc.documentElement().firstChildElement(QStringLiteral("alias")); !e.isNull();
         e = e.nextSiblingElement(QStringLiteral("alias"))) {
        const QString name = e.attribute(QStringLiteral("name"));
        if (!name.isEmpty() && !findByName(name))
            m_aliases.append(new KAAliasFolderInterface(name, e.attribute(QStringLiteral("path"))));
    }
}

bool KAAliasFolderMgr::save() const
{
    QDomDocument doc;
    QDomElement root = doc.createElement(QStringLiteral("aliasfolders"));
    root.setAttribute(QStringLiteral("version"), QStringLiteral("1"));
    doc.appendChild(root);
    for (const KAAliasFolderInterface* alias : m_aliases) {
        QDomElement e = doc.createElement(QStringLiteral("alias"));
        e.setAttribute(QStringLiteral("name"), alias->name());
        e.setAttribute(QStringLiteral("path"), alias->path());
        root.appendChild(e);
    }
    return TXMLMethod::save(&doc, filePath(), true, true);
}

QList<const KAAliasFolderInterface*> KAAliasFolderMgr::aliasList() const
{
    QList<const KAAliasFolderInterface*> list;
    for (const KAAliasFolderInterface* alias : m_aliases)
        list.append(alias);
    return list;
}

bool KAAliasFolderMgr::addAlias(const QString& name, const QString& path)
{
    if (name.trimmed().isEmpty() || findByName(name))
        return false;
    m_aliases.append(new KAAliasFolderInterface(name, QDir::cleanPath(path)));
    save();
    notify();
    return true;
}

bool KAAliasFolderMgr::removeAlias(const QString& name)
{
    for (int i = 0; i < m_aliases.size(); ++i) {
        if (m_aliases.at(i)->name().compare(name, Qt::CaseInsensitive) == 0) {
            delete m_aliases.takeAt(i);
            save();
            notify();
            return true;
        }
    }
    return false;
}

const KAAliasFolderInterface* KAAliasFolderMgr::findByName(const QString& name) const
{
    for (const KAAliasFolderInterface* alias : m_aliases) {
        if (alias->name().compare(name, Qt::CaseInsensitive) == 0)
            return alias;
    }
    return nullptr;
}

const KAAliasFolderInterface* KAAliasFolderMgr::findByFolder(const QString& path) const
{
    const QString clean = QDir::cleanPath(path);
    const KAAliasFolderInterface* best = nullptr;
    for (const KAAliasFolderInterface* alias : m_aliases) {
        const QString root = QDir::cleanPath(alias->path());
        const bool holds = clean == root || clean.startsWith(root.endsWith(QLatin1Char('/')) ? root : root + QLatin1Char('/'));
        if (holds && (!best || root.size() > best->path().size()))
            best = alias;
    }
    return best;
}

void KAAliasFolderMgr::registerObserver(KAAliasFolderMgrObserver* observer)
{
    if (observer && !m_observers.contains(observer))
        m_observers.append(observer);
}

void KAAliasFolderMgr::unregisterObserver(KAAliasFolderMgrObserver* observer)
{
    m_observers.removeAll(observer);
}

void KAAliasFolderMgr::notify()
{
    // A copy: an observer may unregister while being told.
    const QList<KAAliasFolderMgrObserver*> observers = m_observers;
    for (KAAliasFolderMgrObserver* observer : observers)
        observer->aliasListChanged();
}
