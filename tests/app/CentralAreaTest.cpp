#include "CentralArea.h"
#include "DocumentTestSupport.h"
#include "GenerationController.h"
#include "GenerationTestSupport.h"
#include "GeneratedViewPane.h"
#include "ImageEditCommand.h"
#include "ImageSynthesizer.h"
#include "InputViewPane.h"
#include "LayeredImage.h"
#include "Preview2DExtended.h"
#include "ProjectEdits.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QMouseEvent>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QUndoStack>

using ProjectData = Velmor::ProjectData;

namespace {

void fill(Image& image, float r, float g, float b)
{
    for (uint64_t i = 0; i < image.pixelCount(); ++i) {
        image.data[i * 3] = r;
        image.data[i * 3 + 1] = g;
        image.data[i * 3 + 2] = b;
    }
}

// The colour the view shows for pixel (x, y) of its image, 0..255.
QRgb shownPixel(Preview2D* view, uint32_t x, uint32_t y)
{
    const Image* image = view->image();
    const QPointF texture((x + 0.5) / image->width, (y + 0.5) / image->height);
    const QPointF at = view->transform().textureToScreen(texture, view->size(), view->imageAspect());
    return view->grabFramebuffer().pixel(at.toPoint());
}

bool near(QRgb shown, const float* expected)
{
    const int channels[3] = {qRed(shown), qGreen(shown), qBlue(shown)};
    for (int c = 0; c < 3; ++c)
        if (std::abs(channels[c] - int(std::lround(std::clamp(expected[c], 0.0f, 1.0f) * 255.0f))) > 2)
            return false;
    return true;
}

QRgb centreOf(Preview2D* view)
{
    const QImage frame = view->grabFramebuffer();
    return frame.pixel(frame.width() / 2, frame.height() / 2);
}

} // namespace

TEST(CentralArea, ViewsFollowTheSelectionTheOutputAndRemovals)
{
    QTemporaryDir files;
    ProjectDocument document;
    const std::vector<RecordRef> textures = ProjectEdits::importImages(
        document, {writePng(files.path(), "a.png"), writePng(files.path(), "b.png", true)});
    ASSERT_EQ(textures.size(), 2u);
    ProjectData::SurfaceData* surface = ProjectEdits::newSurface(document).surface();
    ProjectEdits::setLayers(document, surface, {{"color", textures[0].texture(), ProjectData::LayerMode::Color}},
                            "Layers");

    CentralArea area(&document);
    area.resize(900, 600);
    area.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&area));
    for (const char* name : {"InputZoom11", "InputZoomFit", "GeneratedZoom11", "GeneratedZoomFit"})
        EXPECT_NE(area.findChild<QPushButton*>(name), nullptr) << name;

    // A texture, then the project mask from the chooser.
    area.showRecord(textures[1]);
    EXPECT_EQ(area.inputView()->image(), &textures[1].texture()->image);
    QComboBox* sources = area.inputPane()->sourceChooser();
    ASSERT_EQ(sources->count(), 2);
    emit sources->activated(1);
    EXPECT_EQ(area.inputView()->image(), &document.store().projectMask);

    // A surface: its first layer in the input view, no output yet.
    area.showRecord(RecordRef(surface));
    EXPECT_EQ(area.inputView()->image(), &textures[0].texture()->image);
    EXPECT_EQ(area.generatedView()->image(), nullptr);
    EXPECT_FALSE(area.generatedPane()->layerChooser()->isEnabled());

    // Output appears and grows: each refresh shows the current pixels.
    LayeredImage source;
    source.setLayer("color", new Image(4, 4, RGB));
    surface->synthesizer()->setInputs(&source, 8, 8, nullptr, nullptr, nullptr);
    surface->synthesizer()->forgetInputs();
    source.deleteLayers();
    surface->synthesizer()->targetReady = true;
    Image* output = surface->synthesizer()->target->layer("color");
    ASSERT_NE(output, nullptr);
    fill(*output, 1.0f, 0.0f, 0.0f);
    area.refreshViews();
    EXPECT_EQ(area.generatedView()->image(), output);
    EXPECT_EQ(centreOf(area.generatedView()), qRgb(255, 0, 0));
    fill(*output, 0.0f, 1.0f, 0.0f);
    area.refreshViews();
    EXPECT_EQ(centreOf(area.generatedView()), qRgb(0, 255, 0));

    // The fit button: a square image in a wide view is as tall as the view.
    area.findChild<QPushButton*>("GeneratedZoomFit")->click();
    EXPECT_FLOAT_EQ(area.generatedView()->transform().zoom, 1.0f);

    // The read-out names the view, the pixel and its stored value.
    float* pixel = output->data + 3 * (5 + 8 * 2);
    pixel[0] = 0.25f;
    pixel[2] = 0.75f;
    QSignalSpy readouts(&area, &CentralArea::readoutChanged);
    Preview2DExtended* generated = area.generatedView();
    const QPoint over = generated->transform()
                            .textureToScreen(QPointF(5.5 / 8, 2.5 / 8), generated->size(), 1.0f)
                            .toPoint();
    QMouseEvent move(QEvent::MouseMove, over, generated->mapToGlobal(over), Qt::NoButton, Qt::NoButton,
                     Qt::NoModifier);
    QApplication::sendEvent(generated, &move);
    ASSERT_EQ(readouts.count(), 1);
    EXPECT_EQ(readouts.at(0).at(0).toString().toStdString(), "Generated: x 5  y 2  0.250 1.000 0.750");
    // Outside the picture there is nothing to read.
    QMouseEvent outside(QEvent::MouseMove, QPoint(2, 2), generated->mapToGlobal(QPoint(2, 2)), Qt::NoButton,
                        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(generated, &outside);
    ASSERT_EQ(readouts.count(), 2);
    EXPECT_TRUE(readouts.at(1).at(0).toString().isEmpty());
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(generated, &leave);
    ASSERT_EQ(readouts.count(), 3);
    EXPECT_TRUE(readouts.at(2).at(0).toString().isEmpty());

    // The mask overlay follows an edit of the project mask, and its undo.
    area.findChild<QCheckBox*>("GeneratedMaskOverlay")->click();
    EXPECT_EQ(centreOf(area.generatedView()), qRgb(32, 191, 64)); // masked in: light tint
    Image& mask = document.store().projectMask;
    const Image before = mask;
    std::fill(mask.data, mask.data + mask.floatCount(), 0.0f);
    document.push(new ImageEditCommand(&document, RecordRef::projectMask(document.store()), &mask, before, "Mask"));
    EXPECT_EQ(centreOf(area.generatedView()), qRgb(96, 64, 191)); // masked out: strong tint
    document.undoStack()->undo();
    EXPECT_EQ(centreOf(area.generatedView()), qRgb(32, 191, 64));
    area.findChild<QCheckBox*>("GeneratedMaskOverlay")->click();

    // While a run may replace the output's images the view holds none.
    document.setReadOnly(true);
    EXPECT_EQ(area.generatedView()->image(), nullptr);
    document.setReadOnly(false);
    EXPECT_EQ(area.generatedView()->image(), output);

    // Removing the shown texture leaves the project mask, not a dangling image.
    area.showRecord(textures[1]);
    ProjectEdits::remove(document, textures[1]);
    EXPECT_EQ(area.inputView()->image(), &document.store().projectMask);

    // A new project: nothing of the old one stays shown.
    document.replaceProject(std::make_unique<ProjectData>(), QString());
    EXPECT_EQ(area.generatedView()->image(), nullptr);
    EXPECT_EQ(area.inputView()->image(), &document.store().projectMask);
    area.grab(); // paints without touching the old records
}

TEST(CentralArea, TheGeneratedViewShowsTheRunsOutputLayers)
{
    QTemporaryDir files;
    ProjectDocument document;
    GenerationScene scene(document, files.path(), 48);
    CentralArea area(&document);
    area.resize(900, 600);
    area.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&area));
    area.showRecord(RecordRef(scene.surface));

    GenerationController controller(&document);
    QObject::connect(&controller, &GenerationController::needRedraw, &area, &CentralArea::refreshViews);
    QSignalSpy finished(&controller, &GenerationController::finished);
    ASSERT_TRUE(controller.start(scene.surface));
    ASSERT_TRUE(finished.wait(60000));

    const LayeredImage* output = scene.surface->synthesizer()->target;
    ASSERT_NE(output, nullptr);
    QComboBox* layers = area.generatedPane()->layerChooser();
    ASSERT_EQ(layers->count(), 2);
    EXPECT_EQ(layers->itemText(0), QStringLiteral("Color"));
    area.generatedView()->zoomToFit();
    const Image* colour = output->layer("Color");
    ASSERT_EQ(area.generatedView()->image(), colour);
    for (uint32_t y : {3u, 30u})
        for (uint32_t x : {5u, 41u})
            EXPECT_TRUE(near(shownPixel(area.generatedView(), x, y), colour->data + 3 * (x + colour->width * y)))
                << x << "," << y;

    // The normal layer shows as its colours: flipped Y, mapped.
    layers->setCurrentIndex(1); // as a click does before it emits activated
    emit layers->activated(1);
    const Image* normal = output->layer("Normal");
    ASSERT_EQ(area.generatedView()->image(), normal);
    ASSERT_EQ(normal->format, Normal);
    float expected[3];
    std::copy(normal->data + 3 * (41 + normal->width * 30), normal->data + 3 * (42 + normal->width * 30), expected);
    normal->normalToColour(expected);
    EXPECT_TRUE(near(shownPixel(area.generatedView(), 41, 30), expected));
}
