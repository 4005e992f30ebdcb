// Opening a 200,000-object project: our open (checks, load into KAObject2
// objects with every index, close) against a plain forward-only scan of the
// same rows through the same SQLite driver.
#include "benchsupport.h"

#include "kaobject2project.h"
#include "tdatabase.h"
#include "tsamplegenerator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QVariant>

#include <cstdio>

namespace {

void plainScan(const QString& path)
{
    const QString name = QStringLiteral("bench_baseline");
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        db.open();
        QSqlQuery query(db);
        const char* const scans[][2] = {
            {"SELECT key, value FROM meta", "2"},
            {"SELECT id, parent, kind, name, source, multichannel FROM objects ORDER BY id", "6"},
            {"SELECT object, key, value, unit, comment FROM properties", "5"},
            {"SELECT identification, peakdetect FROM links", "2"},
            {"SELECT compound, position, project, peakdetect FROM compound_peaks ORDER BY compound, position", "4"},
        };
        for (const auto& scan : scans) {
            query.setForwardOnly(true);
            query.exec(QString::fromLatin1(scan[0]));
            const int columns = QByteArray(scan[1]).toInt();
            while (query.next()) {
                for (int c = 0; c < columns; ++c)
                    query.value(c);
            }
            query.finish();
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    QTemporaryDir dir;
    TSampleGenerator::Options options;
    options.projects = 1;
    options.analyses = 1500;
    options.signalsPerAnalysis = 4;
    options.peaksPerSignal = 30;
    options.groups = 40;
    options.wells = 300;
    options.datasetsPerWell = 10;
    options.variablesPerDataset = 5;
    options.seed = 42;

    QElapsedTimer timer;
    timer.start();
    QString error;
    const QStringList folders = TSampleGenerator::generate(dir.path(), options, &error);
    if (folders.isEmpty()) {
        std::fprintf(stderr, "generation failed: %s\n", qPrintable(error));
        return 1;
    }
    const QString folder = folders.first();
    int objects = 0;
    {
        KAObject2Project project(QStringLiteral("bench"), folder);
        TechDB::TDatabase* db = TechDB::TDatabase::open(&project, false, &error);
        if (!db) {
            std::fprintf(stderr, "open failed: %s\n", qPrintable(error));
            return 1;
        }
        objects = db->objectCount();
        delete db;
    }
    std::printf("generated %d objects in %lld ms\n", objects, timer.elapsed());
    std::fflush(stdout);

    Bench::compare(
        QStringLiteral("open-200k"), 5,
        [&folder]() {
            KAObject2Project project(QStringLiteral("bench"), folder);
            QString openError;
            delete TechDB::TDatabase::open(&project, false, &openError);
        },
        [&folder]() { plainScan(TechDB::TDatabase::databasePath(folder)); });
    return 0;
}
