#include "testfixture.h"
#include "tpixmapcache.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QImage>
#include <QImageReader>
#include <QTest>

namespace {

const char* const IconNames[] = {
    "view_projectbrowser", "folder_analysis", "datasetfolder", "indexation", "identification",
    "folder", "delete", "param", "drive", "search_object", "folder_search", "refresh",
    "project_explorer", "open_project", "description", "analysis", "signal", "peakdetect", "well",
    "dataset", "variable", "identificationgroup", "project", "file", "computer", "alias_folder",
    "deconvms", "compound", "placeholder", "user_folder", "rename", "reparent", "external_folder"};

const char* const ToolbarPng = ":Ressources/png/toolbar/reparentIcon.png";

// The test runs on a screen of pixel ratio 2 (see main), as applications do
// with high-density pixmaps enabled.
const qreal Ratio = 2.0;

int opaquePixels(const QImage& image)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 128)
                ++count;
    return count;
}

} // namespace

class TestTPixmapCache : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();

    void everyIconIsDrawn_data();
    void everyIconIsDrawn();
    void iconsAreDistinct();
    void repeatedLookupsShareOnePixmap();
    void unknownNameGivesNullPixmap();
    void toolbarImageIsARealPng();
};

void TestTPixmapCache::initTestCase()
{
    kaInitTestEnvironment();
    QCOMPARE(qApp->devicePixelRatio(), Ratio);
}

void TestTPixmapCache::everyIconIsDrawn_data()
{
    QTest::addColumn<QByteArray>("name");
    for (const char* name : IconNames)
        QTest::newRow(name) << QByteArray(name);
}

void TestTPixmapCache::everyIconIsDrawn()
{
    QFETCH(QByteArray, name);

    QVERIFY(QFile::exists(QStringLiteral(":/kabrowser/icons/%1.svg").arg(QString::fromLatin1(name))));
    const QPixmap& pixmap = TPixmapCache::find(name.constData());
    QVERIFY(!pixmap.isNull());
    // Sixteen logical pixels drawn at the screen's density, not upscaled.
    QCOMPARE(pixmap.devicePixelRatio(), Ratio);
    QCOMPARE(pixmap.size(), QSize(32, 32));
    // Something is actually drawn: a broken image renders as a blank square.
    QVERIFY(opaquePixels(pixmap.toImage()) > 20);
}

void TestTPixmapCache::iconsAreDistinct()
{
    QVector<QImage> images;
    for (const char* name : IconNames)
        images << TPixmapCache::find(name).toImage().convertToFormat(QImage::Format_ARGB32);
    for (int i = 0; i < images.size(); ++i)
        for (int j = i + 1; j < images.size(); ++j)
            QVERIFY2(images[i] != images[j],
                     qPrintable(QStringLiteral("%1 and %2 look the same").arg(IconNames[i], IconNames[j])));
}

void TestTPixmapCache::repeatedLookupsShareOnePixmap()
{
    // Callers keep the reference: it must stay valid while more icons load.
    const QPixmap* first = &TPixmapCache::find("folder");
    for (const char* name : IconNames)
        TPixmapCache::find(name);
    QCOMPARE(&TPixmapCache::find("folder"), first);
    QVERIFY(!first->isNull());
}

void TestTPixmapCache::unknownNameGivesNullPixmap()
{
    QVERIFY(TPixmapCache::find("no_such_icon_anywhere").isNull());
    QVERIFY(TPixmapCache::find(nullptr).isNull());
}

void TestTPixmapCache::toolbarImageIsARealPng()
{
    QImageReader reader(QString::fromLatin1(ToolbarPng));
    QCOMPARE(reader.format(), QByteArray("png"));
    const QImage image = reader.read();
    QCOMPARE(image.size(), QSize(16, 16));
    QVERIFY(opaquePixels(image) > 20);

    // On this screen the icon picks the double-size image.
    const QPixmap pixmap = QIcon(QString::fromLatin1(ToolbarPng)).pixmap(QSize(16, 16));
    QCOMPARE(pixmap.size(), QSize(32, 32));
    QCOMPARE(pixmap.devicePixelRatio(), Ratio);
}

int main(int argc, char* argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", "2");
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication app(argc, argv);
    TestTPixmapCache test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tpixmapcache.moc"
