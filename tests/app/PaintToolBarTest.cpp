#include "CentralArea.h"
#include "MainWindow.h"
#include "PaintToolBar.h"
#include "PaintToolBox.h"
#include "Preview2DExtended.h"
#include "ProjectBrowserDock.h"
#include "ProjectDocument.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QMouseEvent>
#include <QTest>
#include <QUndoStack>

#include <vector>

namespace {

void sendMouse(QWidget* widget, QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held)
{
    QMouseEvent event(type, at, widget->mapToGlobal(at), button, held, Qt::NoModifier);
    QApplication::sendEvent(widget, &event);
}

// Whether the bar shows the control (in its row, or in its overflow menu
// when the bar is too narrow).
bool shown(const PaintToolBar& bar, const char* name)
{
    const QWidget* control = bar.findChild<QWidget*>(QString::fromLatin1(name));
    for (QAction* action : bar.actions())
        if (control && bar.widgetForAction(action) == control->parentWidget())
            return action->isVisible();
    return false;
}

} // namespace

// Choosing a tool on the bar hands the view the tool, shows the controls
// that tool reads, and the controls change the tools' settings.
TEST(PaintToolBar, SwitchesToolsAndSetsWhatTheyPaintWith)
{
    ProjectDocument document;
    PaintToolBox tools(&document);
    PaintToolBar bar(&tools);
    bar.show();
    std::vector<PaintTool*> handed;
    QObject::connect(&tools, &PaintToolBox::toolChanged, [&](PaintTool* tool) { handed.push_back(tool); });

    EXPECT_FALSE(shown(bar, "PaintRadius"));
    bar.toolAction(PaintToolBox::Scale)->trigger();
    ASSERT_EQ(handed.size(), 1u);
    EXPECT_EQ(handed.back(), tools.tool(PaintToolBox::Scale));
    EXPECT_TRUE(shown(bar, "PaintRadius"));
    EXPECT_TRUE(shown(bar, "PaintScale"));
    EXPECT_FALSE(shown(bar, "PaintDirection"));

    bar.findChild<QDoubleSpinBox*>("PaintRadius")->setValue(12.5);
    EXPECT_DOUBLE_EQ(tools.settings().radius, 0.125);
    EXPECT_DOUBLE_EQ(tools.currentTool()->outlineRadius(), 0.125);
    bar.findChild<QDoubleSpinBox*>("PaintScale")->setValue(0.5);
    EXPECT_FLOAT_EQ(tools.settings().scaleValue, 0.5f);

    // The fill shows the value control of the map it fills.
    bar.toolAction(PaintToolBox::Fill)->trigger();
    EXPECT_EQ(handed.back(), tools.tool(PaintToolBox::Fill));
    EXPECT_FALSE(shown(bar, "PaintRadius"));
    EXPECT_TRUE(shown(bar, "PaintDirection"));
    bar.findChild<QComboBox*>("PaintTargetMap")->setCurrentIndex(int(PaintMap::Mask));
    EXPECT_EQ(tools.settings().targetMap, PaintMap::Mask);
    EXPECT_FALSE(shown(bar, "PaintDirection"));
    EXPECT_TRUE(shown(bar, "PaintMaskMode"));
    bar.findChild<QComboBox*>("PaintFillMode")->setCurrentIndex(int(FillMode::Flood));
    EXPECT_EQ(tools.settings().fillMode, FillMode::Flood);

    // A tool chosen elsewhere checks its button.
    tools.setActiveTool(PaintToolBox::Smooth);
    EXPECT_TRUE(bar.toolAction(PaintToolBox::Smooth)->isChecked());
    bar.toolAction(PaintToolBox::NoTool)->trigger();
    EXPECT_EQ(handed.back(), nullptr);

    document.setReadOnly(true);
    EXPECT_FALSE(bar.isEnabled());
    document.setReadOnly(false);
    EXPECT_TRUE(bar.isEnabled());
}

// A drag on the generated view with the tool chosen on the main window's
// bar paints the surface chosen in the browser, as one undo step.
TEST(PaintToolBar, DragOnTheGeneratedViewPaintsTheChosenSurface)
{
    MainWindow* window = MainWindow::instance();
    auto* bar = window->findChild<PaintToolBar*>("PaintToolBar");
    ASSERT_NE(bar, nullptr);
    ProjectDocument* document = window->document();
    document->replaceProject(std::make_unique<Velmor::ProjectData>(), QString());
    Velmor::ProjectData::SurfaceData* surface = document->store().addSurface("Painted");
    surface->directionMap = document->store().addDirectionMap();
    window->browserDock()->selectRecord(RecordRef(surface));
    EXPECT_EQ(window->paintTools()->surface(), surface);
    window->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window));

    bar->toolAction(PaintToolBox::Direction)->trigger();
    Preview2DExtended* view = window->centralArea()->generatedView();
    ASSERT_EQ(view->tool(), window->paintTools()->tool(PaintToolBox::Direction));
    // Without an output the view shows a square centred in it: drag right
    // through its middle.
    const QPoint centre(view->width() / 2, view->height() / 2);
    const QPoint right = centre + QPoint(view->height() / 8, 0);
    sendMouse(view, QEvent::MouseButtonPress, centre - QPoint(view->height() / 8, 0), Qt::LeftButton, Qt::LeftButton);
    sendMouse(view, QEvent::MouseMove, right, Qt::NoButton, Qt::LeftButton);
    sendMouse(view, QEvent::MouseButtonRelease, right, Qt::LeftButton, Qt::NoButton);

    const Image& map = surface->directionMap->image;
    const Pixel middle = map.pixelAt(int(map.width / 2), int(map.height / 2));
    EXPECT_NEAR(middle[0], 1.0f, 1e-5);
    EXPECT_NEAR(middle[1], 0.0f, 1e-5);
    EXPECT_EQ(map.pixelAt(0, 0)[1], 1.0f);
    EXPECT_EQ(document->undoStack()->count(), 1);

    bar->toolAction(PaintToolBox::NoTool)->trigger();
    EXPECT_EQ(view->tool(), nullptr);
    document->replaceProject(std::make_unique<Velmor::ProjectData>(), QString());
    EXPECT_EQ(window->paintTools()->surface(), nullptr);
}
