#include "MainWindow.h"
#include "MyApplication.h"
#include "ThreadWaits.h"

#include <QPixmap>
#include <QSplashScreen>
#include <QSurfaceFormat>

int main(int argc, char** argv)
{
    useShortThreadWaits(argv);

    // Every OpenGL view shares textures and buffers with the others.
    QCoreApplication::setAttribute(Qt::AA_UseDesktopOpenGL, true);
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts, true);

    // The default format must be set before the application object creates
    // the shared context, or Qt warns that sharing may break.
    QSurfaceFormat format;
    format.setSwapInterval(0);
    format.setVersion(2, 1);
    QSurfaceFormat::setDefaultFormat(format);

    MyApplication app(argc, argv);

    QPixmap splashImage(":/Images/images/Ondrels01_trial.png");
    QSplashScreen splash(splashImage);
    splash.setWindowFlag(Qt::WindowStaysOnTopHint);
    splash.show();

    QApplication::setStyle("Fusion");

    MainWindow* window = MainWindow::instance();
    window->show();
    // One optional argument: a project directory to open.
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() > 1)
        window->loadProject(arguments.at(1));
    return app.exec();
}
