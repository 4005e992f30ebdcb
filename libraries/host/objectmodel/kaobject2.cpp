#include "kaobject2.h"

#include <cstring>

namespace {

// Case folding of an ASCII name is lowering A-Z; Qt's general folding walks
// the Unicode tables character by character, which dominates the cost of
// making the objects of a large project. Names with other characters take
// the general path; a name without capitals is shared, not copied.
QString foldName(const QString& name)
{
    const int size = name.size();
    const ushort* in = reinterpret_cast<const ushort*>(name.constData());
    int i = 0;
    while (i < size && in[i] < 0x80 && (in[i] < 'A' || in[i] > 'Z'))
        ++i;
    if (i == size)
        return name;
    if (in[i] >= 0x80)
        return name.toCaseFolded();
    QString folded(size, Qt::Uninitialized);
    ushort* out = reinterpret_cast<ushort*>(folded.data());
    memcpy(out, in, size_t(i) * sizeof(ushort));
    for (; i < size; ++i) {
        const ushort c = in[i];
        if (c >= 0x80)
            return name.toCaseFolded();
        out[i] = ushort(c + (ushort(c - 'A') < 26 ? 32 : 0));
    }
    return folded;
}

} // namespace

KAObject2::KAObject2(KAObjectType type, const QString& name)
    : m_type(type)
    , m_name(name)
    , m_foldedName(foldName(name))
{
}

// A copy is a free-standing object: same kind, name, database and accepted
// kinds, but no place in the database's structure.
KAObject2::KAObject2(const KAObject2& other)
    : m_type(other.m_type)
    , m_name(other.m_name)
    , m_foldedName(other.m_foldedName)
    , m_db(other.m_db)
    , m_id(other.m_id)
    , m_allowedTypes(other.m_allowedTypes)
{
}

KAObject2& KAObject2::operator=(const KAObject2& other)
{
    if (this != &other) {
        m_type = other.m_type;
        m_name = other.m_name;
        m_foldedName = other.m_foldedName;
        m_db = other.m_db;
        m_id = other.m_id;
        m_allowedTypes = other.m_allowedTypes;
    }
    return *this;
}

KAObject2::~KAObject2() = default;

KAObjectType KAObject2::type() const
{
    return m_type;
}

void KAObject2::setName(const QString& name)
{
    m_name = name;
    m_foldedName = foldName(name);
}

void KAObject2::setParentObject(KAObject2* parent)
{
    m_parent = parent;
    if (parent)
        parent->m_children.append(this);
}

void KAObject2::detachFromParent()
{
    if (m_parent)
        m_parent->m_children.removeOne(this);
    m_parent = nullptr;
}

void KAObject2::addAllowedVisualReparentType(KAObjectType type)
{
    m_allowedTypes.append(type);
}

KAObject2* KAObject2::clone() const
{
    return new KAObject2(*this);
}
