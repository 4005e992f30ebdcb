#include "testfixture.h"
#include "tpixmapcache.h"

#include <QApplication>
#include <QTest>

class TestTPixmapCache : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { kaInitTestEnvironment(); }

    // Every icon name the browsers use is one of the module's own images,
    // drawn at the screen's density (2, see main), and no two look the same.
    void everyIconIsDrawnAndDistinct()
    {
        const auto opaquePixels = [](const QImage& image) {
            const QImage a = image.convertToFormat(QImage::Format_Alpha8);
            return std::count_if(a.constBits(), a.constBits() + a.sizeInBytes(), [](uchar v) { return v > 128; });
        };
        const QPixmap* folder = &TPixmapCache::find("folder");
        QVector<QImage> images;
        const QByteArrayList names = QByteArray(
            "view_projectbrowser folder_analysis datasetfolder indexation identification folder delete param "
            "drive search_object folder_search refresh project_explorer open_project description analysis "
            "signal peakdetect well dataset variable identificationgroup project file computer alias_folder "
            "deconvms compound placeholder user_folder rename reparent external_folder").split(' ');
        for (const QByteArray& name : names) {
            const QPixmap& pixmap = TPixmapCache::find(name);
            // Sixteen logical pixels at the screen's density, not upscaled; a broken image is blank.
            QVERIFY2(QFile::exists(":/kabrowser/icons/" + name + ".svg") && pixmap.devicePixelRatio() == 2.0
                         && pixmap.size() == QSize(32, 32), name);
            const QImage image = pixmap.toImage().convertToFormat(QImage::Format_ARGB32);
            QVERIFY2(opaquePixels(image) > 20 && !images.contains(image), name);
            images << image;
        }
        // Callers keep the reference: it must stay valid while more icons load.
        QCOMPARE(&TPixmapCache::find("folder"), folder);
        QVERIFY(TPixmapCache::find("no_such_icon_anywhere").isNull() && TPixmapCache::find(nullptr).isNull());
        // The toolbar image is a real PNG, and the icon picks its double-size image.
        const QString png = QStringLiteral(":Ressources/png/toolbar/reparentIcon.png");
        QVERIFY(QImage(png, "png").size() == QSize(16, 16) && opaquePixels(QImage(png, "png")) > 20);
        const QPixmap pixmap = QIcon(png).pixmap(QSize(16, 16));
        QVERIFY(pixmap.size() == QSize(32, 32) && pixmap.devicePixelRatio() == 2.0);
    }
};

int main(int argc, char* argv[])
{
    // A screen of pixel ratio 2, as applications have with high-density pixmaps enabled.
    qputenv("QT_SCALE_FACTOR", "2");
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication app(argc, argv);
    TestTPixmapCache test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_tpixmapcache.moc"
