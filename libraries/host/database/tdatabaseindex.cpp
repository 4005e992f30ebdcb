#include "tdatabaseindex.h"

#include "kaobject2.h"
#include "kaobject2analysis.h"
#include "kaobject2compoundlist.h"
#include "kaobject2dataset.h"
#include "kaobject2globalindexation.h"
#include "kaobject2identification.h"
#include "kaobject2identificationgroup.h"
#include "kaobject2peakdetect.h"
#include "kaobject2signal.h"
#include "kaobject2variable.h"
#include "kaobject2well.h"
#include "tcompound.h"

#include <algorithm>

namespace TechDB {

namespace {

bool idLess(const KAObject2* a, const KAObject2* b)
{
    return a->id() < b->id();
}

} // namespace

TDatabaseIndex::TDatabaseIndex(TDatabase* db)
    : m_db(db)
{
}

TDatabaseIndex::~TDatabaseIndex()
{
    for (KAObject2* object : qAsConst(m_objects))
        TObjectArena::destroy(object);
}

qint32 TDatabaseIndex::normalizedKind(qint32 kind)
{
    return kind == 282 ? qint32(KAObjectTypeIdentification) : kind;
}

void TDatabaseIndex::reserve(int objects)
{
    m_objects.reserve(objects);
}

KAObject2* TDatabaseIndex::makeObject(qint32 kind, const QString& name, int source, bool multichannel)
{
    switch (kind) {
    case KAObjectTypeAnalysis: return m_arena.make<KAObject2Analysis>(name, multichannel);
    case KAObjectTypeSignal: return m_arena.make<KAObject2Signal>(name);
    case KAObjectTypeWell: return m_arena.make<KAObject2Well>(name);
    case KAObjectTypeDataset: return m_arena.make<KAObject2Dataset>(name);
    case KAObjectTypeVariable: return m_arena.make<KAObject2Variable>(name);
    case KAObjectTypePeakDetect: return m_arena.make<KAObject2PeakDetect>(name, quint16(source));
    case KAObjectTypeIdentificationGroup: return m_arena.make<KAObject2IdentificationGroup>(name, quint16(source));
    case KAObjectTypeIdentification: return m_arena.make<KAObject2Identification>(name);
    case KAObjectTypeGlobalIndexation: return m_arena.make<KAObject2GlobalIndexation>(name);
    case KAObjectTypeCompoundList: return m_arena.make<KAObject2CompoundList>(name);
    case KAObjectTypeCompound: return m_arena.make<TCompound>(name);
    default: return m_arena.make<KAObject2>(KAObjectType(kind), name);
    }
}

// Ids are dense until objects are deleted, and a deletion only opens gaps:
// the object with an id is at its offset from the first id, or before it.
KAObject2* TDatabaseIndex::object(qint64 id) const
{
    if (m_objects.isEmpty())
        return nullptr;
    const qint64 offset = id - m_objects.first()->id();
    if (offset < 0)
        return nullptr;
    if (offset < m_objects.size() && m_objects.at(int(offset))->id() == id)
        return m_objects.at(int(offset));
    const auto end = offset < m_objects.size() ? m_objects.cbegin() + int(offset) : m_objects.cend();
    auto it = std::lower_bound(m_objects.cbegin(), end, id,
                               [](const KAObject2* object, qint64 value) { return object->id() < value; });
    return it != end && (*it)->id() == id ? *it : nullptr;
}

KAObject2* TDatabaseIndex::insertObject(qint64 id, qint64 parentId, qint32 kind, const QString& name, int source,
                                        bool multichannel)
{
    kind = normalizedKind(kind);
    KAObject2* object = makeObject(kind, name, source, multichannel);
    object->setId(id);
    object->dbChange(m_db);
    // Rows arrive in id order; keep m_objects sorted should one not.
    if (!m_objects.isEmpty() && id < m_maxId)
        m_objects.insert(std::upper_bound(m_objects.begin(), m_objects.end(), object, idLess), object);
    else
        m_objects.append(object);
    m_maxId = qMax(m_maxId, id);

    if (parentId != 0 && parentId != id) {
        KAObject2* parent = m_lastParent && m_lastParent->id() == parentId ? m_lastParent : this->object(parentId);
        if (parent) {
            attach(object, parent);
            m_lastParent = parent;
        } else {
            m_waitingForParent[parentId].append(object);
        }
    }
    if (!m_waitingForParent.isEmpty()) {
        const QVector<KAObject2*> waiting = m_waitingForParent.take(id);
        for (KAObject2* child : waiting) {
            // A damaged file may make two objects each other's parent:
            // the loop is broken rather than followed for ever later.
            bool cycle = false;
            for (const KAObject2* up = object; up && !cycle; up = up->parentObject())
                cycle = up == child;
            if (!cycle)
                attach(child, object);
        }
    }
    if (kind == KAObjectTypeAnalysis) {
        auto it = m_analysisByName.find(name);
        if (it == m_analysisByName.end())
            m_analysisByName.insert(name, static_cast<KAObject2Analysis*>(object));
        else if (it.value()->id() > id)
            it.value() = static_cast<KAObject2Analysis*>(object);
    }
    return object;
}

// The lists are made in one go after the rows: grown row by row, their
// reallocations would leave holes that the rows' small strings fill, and a
// heap scattered that way is much slower to free when the project closes.
void TDatabaseIndex::fileKinds()
{
    QHash<qint32, int> counts;
    qint32 lastKind = 0;
    int* lastCount = nullptr;
    for (const KAObject2* object : qAsConst(m_objects)) {
        const qint32 kind = object->type();
        if (!lastCount || kind != lastKind) {
            lastCount = &counts[kind];
            lastKind = kind;
        }
        ++*lastCount;
    }
    m_byType.clear();
    for (auto it = counts.constBegin(); it != counts.constEnd(); ++it)
        m_byType[it.key()].reserve(it.value());
    QList<const KAObject2*>* list = nullptr;
    lastKind = 0;
    for (const KAObject2* object : qAsConst(m_objects)) {
        const qint32 kind = object->type();
        if (!list || kind != lastKind) {
            list = &m_byType[kind];
            lastKind = kind;
        }
        list->append(object);
    }
}

void TDatabaseIndex::attach(KAObject2* child, KAObject2* parent)
{
    child->setParentObject(parent);
    if (child->type() == KAObjectTypeIdentification && parent->type() == KAObjectTypeIdentificationGroup)
        static_cast<KAObject2Identification*>(child)->setParentGroup(
            static_cast<const KAObject2IdentificationGroup*>(parent));
}

bool TDatabaseIndex::insertLink(qint64 identificationId, qint64 peakDetectId)
{
    KAObject2* identification = object(identificationId);
    KAObject2* peakDetect = object(peakDetectId);
    if (!identification || !peakDetect || identification->type() != KAObjectTypeIdentification
        || peakDetect->type() != KAObjectTypePeakDetect)
        return false;
    auto* ident = static_cast<KAObject2Identification*>(identification);
    auto* pd = static_cast<const KAObject2PeakDetect*>(peakDetect);
    ident->addWorkPD(pd);
    m_identificationsOf[pd].append(ident);
    return true;
}

bool TDatabaseIndex::contains(const KAObject2* object) const
{
    return object && this->object(object->id()) == object;
}

QList<KAObjectType> TDatabaseIndex::types() const
{
    QList<KAObjectType> result;
    for (auto it = m_byType.constBegin(); it != m_byType.constEnd(); ++it) {
        if (!it.value().isEmpty())
            result.append(KAObjectType(it.key()));
    }
    std::sort(result.begin(), result.end());
    return result;
}

const KAObject2IdentificationGroup* TDatabaseIndex::groupOf(const KAObject2PeakDetect* peakDetect) const
{
    auto it = m_identificationsOf.constFind(peakDetect);
    if (it == m_identificationsOf.constEnd())
        return nullptr;
    for (const KAObject2Identification* identification : it.value()) {
        if (identification->parentGroup())
            return identification->parentGroup();
    }
    return nullptr;
}

TProperty TDatabaseIndex::property(qint64 objectId, const QString& key, bool* found) const
{
    auto it = m_properties.constFind(objectId);
    if (it != m_properties.constEnd()) {
        for (const TProperty& property : it.value()) {
            if (property.key() == key) {
                if (found)
                    *found = true;
                return property;
            }
        }
    }
    if (found)
        *found = false;
    return TProperty();
}

bool TDatabaseIndex::visualKey(const QVector<TProperty>& properties, VisualKey* key, bool* complete)
{
    bool hasParent = false;
    *complete = false;
    for (const TProperty& property : properties) {
        if (property.key() == QLatin1String("parent")) {
            hasParent = true;
            key->first = property.value().toInt();
        } else if (property.key() == QLatin1String("parentID")) {
            *complete = true;
            key->second = property.value();
        }
    }
    *complete = *complete && hasParent;
    return hasParent;
}

void TDatabaseIndex::setProperty(qint64 objectId, const TProperty& property)
{
    KAObject2* object = this->object(objectId);
    if (!object)
        return;
    QVector<TProperty>& properties = m_properties[objectId];
    auto it = std::find_if(properties.begin(), properties.end(),
                           [&](const TProperty& p) { return p.key() == property.key(); });
    if (it != properties.end())
        *it = property;
    else
        properties.append(property);

    if (property.key() != QLatin1String("parent") && property.key() != QLatin1String("parentID"))
        return;
    removeVisual(object);
    VisualKey key;
    bool complete = false;
    if (visualKey(properties, &key, &complete)) {
        m_visualKeyOf.insert(object, key);
        if (complete)
            addVisual(object, key);
    }
}

void TDatabaseIndex::addVisual(const KAObject2* object, const VisualKey& key)
{
    QList<const KAObject2*>& list = m_visualByParent[key];
    list.insert(std::upper_bound(list.begin(), list.end(), object, idLess), object);
}

void TDatabaseIndex::removeVisual(const KAObject2* object)
{
    auto it = m_visualKeyOf.find(object);
    if (it == m_visualKeyOf.end())
        return;
    auto listIt = m_visualByParent.find(it.value());
    if (listIt != m_visualByParent.end()) {
        listIt.value().removeOne(object);
        if (listIt.value().isEmpty())
            m_visualByParent.erase(listIt);
    }
    m_visualKeyOf.erase(it);
}

QList<const KAObject2*> TDatabaseIndex::visualChildren(qint32 kind, const KAObject2* parent) const
{
    QList<const KAObject2*> structural;
    if (!parent)
        return structural;
    for (const KAObject2* child : parent->children()) {
        if (child->type() == kind && !m_visualKeyOf.contains(child))
            structural.append(child);
    }
    const auto it = m_visualByParent.constFind(VisualKey(parent->type(), parent->name()));
    if (it == m_visualByParent.constEnd())
        return structural;
    QList<const KAObject2*> associated;
    for (const KAObject2* object : it.value()) {
        if (object->type() == kind)
            associated.append(object);
    }
    if (associated.isEmpty())
        return structural;
    if (structural.isEmpty())
        return associated;
    QList<const KAObject2*> merged;
    merged.reserve(structural.size() + associated.size());
    std::merge(structural.begin(), structural.end(), associated.begin(), associated.end(),
               std::back_inserter(merged), idLess);
    return merged;
}

void TDatabaseIndex::rename(KAObject2* object, const QString& name)
{
    const QString oldName = object->name();
    object->setName(name);
    if (object->type() == KAObjectTypeAnalysis) {
        refileAnalysisName(oldName);
        refileAnalysisName(name);
    }
}

// The entry of a name is the first analysis of that name in database order;
// only renames and deletions walk the analyses to find it again.
void TDatabaseIndex::refileAnalysisName(const QString& name)
{
    m_analysisByName.remove(name);
    for (const KAObject2* object : m_byType.value(KAObjectTypeAnalysis)) {
        if (object->name() == name) {
            m_analysisByName.insert(name, static_cast<KAObject2Analysis*>(const_cast<KAObject2*>(object)));
            return;
        }
    }
}

// Rows arrive in position order, and positions only grow.
void TDatabaseIndex::appendCompoundRef(qint64 compoundId, const TCompoundRef& ref)
{
    m_compoundRefs[compoundId].append(ref);
}

qint64 TDatabaseIndex::nextCompoundPosition(qint64 compoundId) const
{
    const auto it = m_compoundRefs.constFind(compoundId);
    return it == m_compoundRefs.cend() || it->isEmpty() ? 1 : it->last().position + 1;
}

void TDatabaseIndex::removeCompoundRef(qint64 compoundId, qint64 position)
{
    auto it = m_compoundRefs.find(compoundId);
    if (it == m_compoundRefs.end())
        return;
    QVector<TCompoundRef>& refs = it.value();
    for (int i = 0; i < refs.size(); ++i) {
        if (refs.at(i).position == position) {
            refs.remove(i);
            break;
        }
    }
    if (refs.isEmpty())
        m_compoundRefs.erase(it);
}

QList<const KAObject2*> TDatabaseIndex::subtree(const KAObject2* root) const
{
    QList<const KAObject2*> result;
    if (!root)
        return result;
    result.append(root);
    for (int i = 0; i < result.size(); ++i) {
        for (const KAObject2* child : result.at(i)->children())
            result.append(child);
    }
    return result;
}

void TDatabaseIndex::remove(const QList<const KAObject2*>& objects)
{
    if (objects.isEmpty())
        return;
    const QSet<const KAObject2*> gone(objects.begin(), objects.end());
    QSet<qint32> kinds;
    QSet<QString> analysisNames;
    for (const KAObject2* object : objects) {
        kinds.insert(object->type());
        m_properties.remove(object->id());
        m_compoundRefs.remove(object->id());
        removeVisual(object);
        if (object->type() == KAObjectTypeAnalysis) {
            analysisNames.insert(object->name());
        } else if (object->type() == KAObjectTypePeakDetect) {
            auto* pd = static_cast<const KAObject2PeakDetect*>(object);
            for (KAObject2Identification* identification : m_identificationsOf.take(pd)) {
                if (!gone.contains(identification))
                    identification->removeWorkPD(pd);
            }
        } else if (object->type() == KAObjectTypeIdentification) {
            auto* identification = static_cast<const KAObject2Identification*>(object);
            for (const KAObject2PeakDetect* pd : identification->workPDList()) {
                auto it = m_identificationsOf.find(pd);
                if (it == m_identificationsOf.end())
                    continue;
                it.value().removeAll(const_cast<KAObject2Identification*>(identification));
                if (it.value().isEmpty())
                    m_identificationsOf.erase(it);
            }
        }
    }
    auto isGone = [&gone](const KAObject2* object) { return gone.contains(object); };
    for (qint32 kind : kinds) {
        auto it = m_byType.find(kind);
        if (it == m_byType.end())
            continue;
        QList<const KAObject2*>& list = it.value();
        list.erase(std::remove_if(list.begin(), list.end(), isGone), list.end());
        if (list.isEmpty())
            m_byType.erase(it);
    }
    m_objects.erase(std::remove_if(m_objects.begin(), m_objects.end(), isGone), m_objects.end());
    m_maxId = m_objects.isEmpty() ? 0 : m_objects.last()->id();
    for (const QString& name : analysisNames)
        refileAnalysisName(name);

    // Only the roots of the removed set leave a surviving parent; the rest go
    // with their parents.
    for (const KAObject2* object : objects) {
        if (object->parentObject() && !gone.contains(object->parentObject()))
            const_cast<KAObject2*>(object)->detachFromParent();
    }
    m_lastParent = nullptr;
    for (const KAObject2* object : objects)
        TObjectArena::destroy(const_cast<KAObject2*>(object));
}

} // namespace TechDB
