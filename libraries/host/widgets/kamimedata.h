#pragma once

#include <QByteArray>
#include <QMimeData>
#include <QString>

// Drag data that carries one value of type T in memory (drags stay inside
// the application). The format passed to create() is advertised with an
// empty payload so that drop targets can test for it.
//
// The class is given default visibility so that a drag made in one library
// is recognised (dynamic_cast) by a decoder living in another.
#if defined(_WIN32)
#define KAMIMEDATA_VISIBLE
#else
#define KAMIMEDATA_VISIBLE __attribute__((visibility("default")))
#endif

template <typename T>
class KAMIMEDATA_VISIBLE KAMimeData : public QMimeData
{
public:
    KAMimeData() = default;
    explicit KAMimeData(const T& value)
        : m_value(value)
    {
    }

    // Stores value in existing when it already is a KAMimeData<T> (and
    // returns it), else in a new KAMimeData<T> that the caller owns (a
    // QDrag takes it over). A foreign existing object is neither changed nor
    // deleted: it stays with whoever owned it.
    static KAMimeData<T>* create(QMimeData* existing, const T& value, const QString& format)
    {
        auto* data = dynamic_cast<KAMimeData<T>*>(existing);
        if (!data)
            data = new KAMimeData<T>;
        data->m_value = value;
        data->setData(format, QByteArray());
        return data;
    }

    const T& value() const { return m_value; }
    void setValue(const T& value) { m_value = value; }

private:
    T m_value{};
};
