#pragma once

#include "kahost_export.h"

#include <QString>
#include <QStringList>
#include <QVector>

// Writes realistic sample projects through the database code,
// deterministically for a seed.
class KAHOST_EXPORT TSampleGenerator
{
public:
    struct Options {
        int projects = 3;
        int analyses = 20;
        int signalsPerAnalysis = 3;
        int peaksPerSignal = 4;
        int wells = 5;
        int datasetsPerWell = 3;
        int variablesPerDataset = 4;
        int groups = 4;               // automatic identification groups
        int compoundLists = 2;
        int compoundsPerList = 4;
        quint32 seed = 1;
    };

    // Creates the projects as sub-folders of dir; returns their folders, or
    // an empty list with *error set.
    static QStringList generate(const QString& dir, const Options& options, QString* error = nullptr);
    // One project in the given folder.
    static bool generateProject(const QString& folder, const QString& name, const Options& options,
                                quint32 seed, QString* error = nullptr);

private:
    // Detections of a project written earlier in the run, that compounds of
    // the next project point to.
    struct Neighbour {
        QString folder;
        QVector<qint64> peakDetects;
    };
    static bool writeProject(const QString& folder, const QString& name, const QString& description, int state,
                             const Options& options, quint32 seed, const Neighbour* previous, Neighbour* written,
                             QString* error);
};
