#include "tsamplegenerator.h"

#include "kaobject2analysis.h"
#include "kaobject2project.h"
#include "tdatabase.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QVector>

#include <memory>

namespace {

// splitmix64: small, fast and the same on every platform, so that a seed
// always gives the same projects.
class SampleRandom
{
public:
    explicit SampleRandom(quint64 seed) : m_state(seed) {}
    quint64 next()
    {
        quint64 z = (m_state += 0x9E3779B97F4A7C15ull);
        z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
        z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
        return z ^ (z >> 31);
    }
    int below(int n) { return n <= 0 ? 0 : int(next() % quint64(n)); }
    bool percent(int p) { return below(100) < p; }
    template <typename T>
    const T& pick(const QVector<T>& list) { return list.at(below(list.size())); }

private:
    quint64 m_state;
};

const QVector<QString>& compounds()
{
    static const QVector<QString> list = {
        QStringLiteral("Caffeine"), QStringLiteral("Théobromine"), QStringLiteral("Theophylline"),
        QStringLiteral("Paracétamol"), QStringLiteral("Naphthalene"), QStringLiteral("Benzo[a]pyrene"),
        QStringLiteral("Atrazine"), QStringLiteral("Glyphosate"), QStringLiteral("Acide ascorbique"),
        QStringLiteral("Limonène")};
    return list;
}

QString analysisName(SampleRandom& rng, int index)
{
    const int n = index + 1;
    // The first names are fixed so that even a tiny sample has accents,
    // spaces and every family of names.
    const int family = index < 6 ? index : rng.below(8);
    switch (family) {
    case 0: return QStringLiteral("Sample %1 - %2 %3 ppm").arg(n).arg(compounds().at(rng.below(4))).arg(5 * (1 + rng.below(40)));
    case 1: return QStringLiteral("Blank %1").arg(n);
    case 2: return QStringLiteral("Échantillon été %1").arg(n);
    case 3: return QStringLiteral("Café %1").arg(n);
    case 4: return QStringLiteral("Std Mix %1").arg(n);
    case 5: return QStringLiteral("QC Low %1").arg(n);
    case 6: return QStringLiteral("Calibration %1 (level %2)").arg(n).arg(1 + rng.below(6));
    default: return QStringLiteral("Sample %1 - %2 %3 mg/L").arg(n).arg(rng.pick(compounds())).arg(1 + rng.below(100));
    }
}

const QVector<QString>& signalNames()
{
    static const QVector<QString> list = {
        QStringLiteral("FID 1"), QStringLiteral("FID 2"), QStringLiteral("UV 254 nm"), QStringLiteral("UV 280 nm"),
        QStringLiteral("TCD"), QStringLiteral("DAD 210 nm"), QStringLiteral("ECD"), QStringLiteral("MS XIC m/z 194")};
    return list;
}

const QVector<QString>& variableNames()
{
    static const QVector<QString> list = {
        QStringLiteral("Retention time"), QStringLiteral("Area"), QStringLiteral("Height"),
        QStringLiteral("Concentration (µg/L)"), QStringLiteral("Résolution"), QStringLiteral("Signal/Noise"),
        QStringLiteral("Width at 50%")};
    return list;
}

struct ProjectTheme {
    const char* folder;
    const char* name;
};

const ProjectTheme Themes[] = {
    {"Caffeine", "Caffeine in beverages"},
    {"Pesticides", "Pesticide screening"},
    {"Café été", "Café été — arômes"},
    {"Essential oils", "Essential oils: lavender & mint"},
    {"Water QC", "Water QC 'river' campaign"},
    {"Hydrocarbures", "Hydrocarbures aromatiques"},
};
const int ThemeCount = int(sizeof(Themes) / sizeof(Themes[0]));
// A terminated project (4, 7) among the first three of every run.
const int States[] = {0, 1, 4, 0, 7, 2};

// Compound lists. In the first list the first two compounds share a
// detection and the last one holds only work detections ("tempPD_"); in the
// second the first compound has no detection and the second also names
// detections of the previous project of the run.
bool writeCompounds(TechDB::TDatabase* db, const TSampleGenerator::Options& options, SampleRandom& rng,
                    const QVector<qint64>& peakDetects, const QVector<qint64>& work, const QString& previousFolder,
                    const QVector<qint64>& previousPeaks)
{
    int named = 0;
    for (int l = 0; l < options.compoundLists; ++l) {
        const QString listName = l == 0 ? QStringLiteral("Target compounds")
            : l == 1                    ? QStringLiteral("Composés étalons")
                                        : QStringLiteral("Compound list %1").arg(l + 1);
        const qint64 list = db->addObject(KAObjectTypeCompoundList, 0, listName);
        if (!list)
            return false;
        for (int c = 0; c < options.compoundsPerList; ++c, ++named) {
            const qint64 compound = db->addObject(KAObjectTypeCompound, list, compounds().at(named % compounds().size()));
            if (!compound)
                return false;
            QVector<qint64> own;
            QVector<qint64> foreign;
            const bool last = c == options.compoundsPerList - 1 && c >= 2;
            if (peakDetects.size() >= 3 && l == 0 && c < 2) {
                own = c == 0 ? QVector<qint64>{peakDetects.at(0), peakDetects.at(1)}
                             : QVector<qint64>{peakDetects.at(1), peakDetects.at(2)};
            } else if (l == 0 && last) {
                own = work.mid(0, 2);
            } else if (l == 1 && c == 0) {
                // no detection
            } else if (!peakDetects.isEmpty()) {
                const int count = 1 + rng.below(3);
                for (int i = 0; i < count; ++i) {
                    const qint64 pd = peakDetects.at(rng.below(peakDetects.size()));
                    if (!own.contains(pd))
                        own.append(pd);
                }
                if (l == 1 && c == 1 && !previousPeaks.isEmpty())
                    foreign = previousPeaks.mid(previousPeaks.size() / 2, 2);
            }
            for (qint64 pd : qAsConst(own)) {
                if (!db->addCompoundPeakDetect(compound, pd))
                    return false;
            }
            for (qint64 pd : qAsConst(foreign)) {
                if (!db->addCompoundPeakDetect(compound, pd, previousFolder))
                    return false;
            }
        }
    }
    return true;
}

} // namespace

QStringList TSampleGenerator::generate(const QString& dir, const Options& options, QString* error)
{
    if (!QDir().mkpath(dir)) {
        if (error)
            *error = QStringLiteral("Cannot create %1").arg(QDir::toNativeSeparators(dir));
        return {};
    }
    QStringList folders;
    Neighbour previous;
    SampleRandom seeds(options.seed);
    for (int p = 0; p < options.projects; ++p) {
        const ProjectTheme& theme = Themes[p % ThemeCount];
        const QString suffix = p >= ThemeCount ? QStringLiteral(" %1").arg(p / ThemeCount + 1) : QString();
        const QString folder = QDir(dir).filePath(
            QStringLiteral("Project %1 %2").arg(p + 1, 2, 10, QLatin1Char('0')).arg(QString::fromUtf8(theme.folder)));
        const QString name = QString::fromUtf8(theme.name) + suffix;
        const QString description = QStringLiteral("Sample project %1, generated with seed %2.")
                                        .arg(p + 1)
                                        .arg(options.seed);
        Neighbour written;
        if (!writeProject(folder, name, description, States[p % 6], options, quint32(seeds.next()),
                          p > 0 ? &previous : nullptr, &written, error))
            return {};
        previous = written;
        folders.append(folder);
    }
    return folders;
}

bool TSampleGenerator::generateProject(const QString& folder, const QString& name, const Options& options,
                                       quint32 seed, QString* error)
{
    return writeProject(folder, name, QStringLiteral("Sample project generated with seed %1.").arg(seed), 0,
                        options, seed, nullptr, nullptr, error);
}

bool TSampleGenerator::writeProject(const QString& folder, const QString& name, const QString& description,
                                    int state, const Options& options, quint32 seed, const Neighbour* previous,
                                    Neighbour* written, QString* error)
{
    using TechDB::TDatabase;
    if (!TDatabase::createProject(folder, name, error))
        return false;
    KAObject2Project project(name, folder);
    std::unique_ptr<TDatabase> db(TDatabase::open(&project, false, error));
    if (!db)
        return false;
    auto failed = [&db, error]() {
        if (error)
            *error = db->lastError();
        return false;
    };
    if (!db->setProjectProperties(name, description, state) || !db->beginBatch())
        return failed();

    SampleRandom rng(seed);
    const QVector<QString> operators = {QStringLiteral("A. Martin"), QStringLiteral("B. Dupont"),
                                        QStringLiteral("C. Müller"), QStringLiteral("D. Nakamura")};
    const QVector<int> plainSources = {0x1, 0x2, 0x4, 0x100};
    QVector<qint64> peakDetects;     // candidates for identifications
    QVector<qint64> workPeakDetects; // "tempPD_" ones
    QVector<qint64> withMsFile;
    int peakCount = 0;
    for (int a = 0; a < options.analyses; ++a) {
        // The first two analyses are multichannel, one with an MS
        // peak-detection file and one without.
        const bool multichannel = a < 2 || rng.percent(30);
        const qint64 analysis = db->addObject(KAObjectTypeAnalysis, 0, analysisName(rng, a), 0, multichannel);
        if (!analysis)
            return failed();
        if (multichannel && (a == 0 || (a > 1 && rng.percent(50))))
            withMsFile.append(analysis);
        db->addProperty(analysis, TProperty(QStringLiteral("Operator"), rng.pick(operators)));
        db->addProperty(analysis, TProperty(QStringLiteral("Injection volume"), QString::number(1 + rng.below(20)),
                                            QStringLiteral("µL")));

        const int first = rng.below(signalNames().size());
        for (int s = 0; s < options.signalsPerAnalysis; ++s) {
            QString signalName;
            if (multichannel && s == 0)
                signalName = QStringLiteral("TIC");
            else
                signalName = signalNames().at((first + s) % signalNames().size());
            if (s >= signalNames().size())
                signalName += QStringLiteral(" (%1)").arg(s + 1);
            const qint64 signal = db->addObject(KAObjectTypeSignal, analysis, signalName);
            if (!signal)
                return failed();
            for (int p = 0; p < options.peaksPerSignal; ++p, ++peakCount) {
                QString pdName;
                int source;
                bool isWork = false;
                if (peakCount % 9 == 1) {
                    // Work files of the peak integration: marked manual but
                    // never shown as identifications.
                    pdName = QStringLiteral("tempPD_%1").arg(peakCount + 1);
                    source = 0x200 | 0x1;
                    isWork = true;
                } else if (peakCount == 0 || rng.percent(25)) {
                    pdName = QStringLiteral("Manual ID %1 - %2").arg(peakCount + 1).arg(rng.pick(compounds()));
                    source = 0x200 | (rng.percent(50) ? 0x4 : 0);
                } else {
                    pdName = QStringLiteral("Peak detection %1").arg(peakCount + 1);
                    source = rng.pick(plainSources);
                }
                const qint64 pd = db->addObject(KAObjectTypePeakDetect, signal, pdName, source);
                if (!pd)
                    return failed();
                if (isWork)
                    workPeakDetects.append(pd);
                // The very first manual identification stays free of groups.
                if (peakCount != 0 && peakCount % 9 != 1)
                    peakDetects.append(pd);
            }
        }
    }

    for (int g = 0; g < options.groups; ++g) {
        // Even groups are indexations (bit 0x800), odd ones identifications.
        const bool indexation = g % 2 == 0;
        const QString groupName = indexation
            ? QStringLiteral("Kovats indexation %1").arg(g + 1)
            : QStringLiteral("Auto identification %1 - %2 library").arg(g + 1).arg(rng.pick(compounds()));
        const qint64 group = db->addObject(KAObjectTypeIdentificationGroup, 0, groupName,
                                           indexation ? (0x800 | 0x1) : 0x1);
        if (!group)
            return failed();
        const int identifications = 1 + rng.below(3);
        for (int i = 0; i < identifications; ++i) {
            const qint64 identification =
                db->addObject(KAObjectTypeIdentification, group, rng.pick(compounds()) + QStringLiteral(" #%1").arg(i + 1));
            if (!identification)
                return failed();
            const int links = peakDetects.isEmpty() ? 0 : 1 + rng.below(3);
            for (int l = 0; l < links; ++l) {
                if (!db->addLink(identification, peakDetects.at(rng.below(peakDetects.size()))))
                    return failed();
            }
        }
    }
    for (int i = 0; i < (options.groups + 1) / 2; ++i) {
        if (!db->addObject(KAObjectTypeGlobalIndexation, 0, QStringLiteral("Retention index C8-C20 %1").arg(i + 1)))
            return failed();
    }

    if (!writeCompounds(db.get(), options, rng, peakDetects, workPeakDetects, previous ? previous->folder : QString(),
                        previous ? previous->peakDetects : QVector<qint64>()))
        return failed();
    if (written) {
        written->folder = db->location();
        written->peakDetects = peakDetects;
    }

    const QVector<QString> wellFamilies = {QStringLiteral("Plate A%1"), QStringLiteral("Puits B%1"),
                                           QStringLiteral("Rack %1 – série été")};
    const QVector<QString> datasetFamilies = {QStringLiteral("Dataset %1 - Absorbance"),
                                              QStringLiteral("Tableau %1 – Concentrations"),
                                              QStringLiteral("Calibration curve %1"), QStringLiteral("Résultats %1")};
    int datasetCount = 0;
    for (int w = 0; w < options.wells; ++w) {
        const qint64 well = db->addObject(KAObjectTypeWell, 0, wellFamilies.at(w % wellFamilies.size()).arg(w + 1));
        if (!well)
            return failed();
        // Every third well, starting with the second, has no dataset.
        if (w % 3 == 1)
            continue;
        for (int d = 0; d < options.datasetsPerWell; ++d, ++datasetCount) {
            const qint64 dataset = db->addObject(KAObjectTypeDataset, well,
                                                 rng.pick(datasetFamilies).arg(datasetCount + 1));
            if (!dataset)
                return failed();
            for (int v = 0; v < options.variablesPerDataset; ++v) {
                QString variable = variableNames().at(v % variableNames().size());
                if (v >= variableNames().size())
                    variable += QStringLiteral(" %1").arg(v / variableNames().size() + 1);
                if (!db->addObject(KAObjectTypeVariable, dataset, variable))
                    return failed();
            }
        }
    }
    if (!db->commitBatch())
        return failed();

    for (qint64 id : withMsFile) {
        const QString path = TDatabase::peakDetectMSPath(static_cast<const KAObject2Analysis*>(db->objectById(id)));
        QDir().mkpath(QFileInfo(path).absolutePath());
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly)) {
            if (error)
                *error = QStringLiteral("Cannot write %1").arg(QDir::toNativeSeparators(path));
            return false;
        }
        file.write(QByteArrayLiteral("MSPD 1\nanalysis=") + QByteArray::number(id) + '\n');
    }
    return true;
}
