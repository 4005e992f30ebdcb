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
    // Four characters at a time: in each 16-bit lane below 0x80, adding
    // 0x3F sets bit 7 from 'A' up and adding 0x25 sets it from 'Z' + 1 up;
    // no lane can carry into the next.
    const quint64 high = Q_UINT64_C(0xFF80FF80FF80FF80);
    const quint64 bit7 = Q_UINT64_C(0x0080008000800080);
    for (; i + 4 <= size; i += 4) {
        quint64 word;
        memcpy(&word, in + i, sizeof(word));
        if (word & high)
            return name.toCaseFolded();
        const quint64 capitals = (word + Q_UINT64_C(0x003F003F003F003F)) & ~(word + Q_UINT64_C(0x0025002500250025)) & bit7;
        word |= capitals >> 2;
        memcpy(out + i, &word, sizeof(word));
    }
    for (; i < size; ++i) {
        const ushort c = in[i];
        if (c >= 0x80)
            return name.toCaseFolded();
        out[i] = ushort(c >= 'A' && c <= 'Z' ? c + 32 : c);
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
    m_itemSortKey.clear();
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
