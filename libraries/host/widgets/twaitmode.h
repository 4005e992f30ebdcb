#pragma once

#include "kahost_export.h"

// The host wait cursor for the scope of an object: shown on construction,
// taken back on destruction. Nests (Qt keeps a stack of override cursors).
// Does nothing without a QApplication or off the GUI thread.
class KAHOST_EXPORT TWaitMode
{
public:
    TWaitMode();
    ~TWaitMode();
    TWaitMode(const TWaitMode&) = delete;
    TWaitMode& operator=(const TWaitMode&) = delete;

private:
    bool m_active = false; // this object pushed a cursor and must pop it
};
