#pragma once

#include "kabrowser_export.h"

#include <QDialog>

class KAObject2;
class QListWidget;
namespace TechDB { class TDatabase; }

// Lets the user pick the analysis an object is to be associated with.
class KABROWSER_EXPORT KAReparentDialog : public QDialog
{
    Q_OBJECT
public:
    KAReparentDialog(const KAObject2* object, const TechDB::TDatabase* db, QWidget* parent = nullptr);
    const KAObject2* selectedObject() const;
    QListWidget* list() const { return m_list; }

private:
    QListWidget* m_list = nullptr; // owned (child)
    QList<const KAObject2*> m_candidates;
};
