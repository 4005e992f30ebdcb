#pragma once

#include "kaobject2.h"

#include <QCoreApplication>

// The root of the file-system explorer.
class KAHOST_EXPORT KAObject2WinComputer : public KAObject2
{
    Q_DECLARE_TR_FUNCTIONS(KAObject2WinComputer)
public:
    KAObject2WinComputer()
        : KAObject2(KAObjectTypeWinComputer, tr("Computer", "Ordinateur")) {}
    KAObject2* clone() const override { return new KAObject2WinComputer(*this); }
};
