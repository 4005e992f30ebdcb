#pragma once

#include <QString>

namespace TechDB {

// One entry of a compound's list of peak detections.
struct TCompoundRef {
    qint64 position = 0;
    QString project;       // relative to the compound's project folder; empty: the same project
    qint64 peakDetect = 0; // id in that project's database
};

} // namespace TechDB
