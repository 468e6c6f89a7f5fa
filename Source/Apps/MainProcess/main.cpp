// The main process: renders a scene off screen and offers it, and what goes with it, to secondary
// processes.

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "CameraService.h"
#include "DisplayGuard.h"
#include "FileIOService.h"
#include "KernelService.h"
#include "MaterialService.h"
#include "MessageService.h"
#include "NodeService.h"
#include "PreferencesService.h"
#include "RenderService.h"
#include "Renderer.h"
#include "Scene.h"
#include "TerminationSignals.h"
#include "UndoService.h"
#include "oxQRPCAddress.h"
#include "oxQRPCServer.h"
#include "oxdDataObjects.h"
#include "oxdObjectManager.h"

namespace {

int fail(const QString &why)
{
    fprintf(stderr, "oxMainProcess: %s\n", why.toUtf8().constData());
    return 1;
}

bool parseSize(const QString &text, QSize *size)
{
    const QStringList sides = text.split(QLatin1Char('x'));
    bool isWidth = false;
    bool isHeight = false;
    *size = {sides.value(0).toInt(&isWidth), sides.value(1).toInt(&isHeight)};
    return sides.size() == 2 && isWidth && isHeight && !size->isEmpty()
        && size->boundedTo(RenderService::largestSize()) == *size;
}

void registerDataObjects()
{
#define OX_REGISTER(Class, Levels, Container, Python) oxdObjectManager::registerType<Class>(0);
    OXD_CLASSES(OX_REGISTER)
#undef OX_REGISTER
}

} // namespace

int main(int argc, char **argv)
{
    TerminationSignals terminationSignals;
    allowTextWithoutDisplay(argc, argv);
    // An X server's display, on Wayland as well.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "xcb");
    QStringList arguments;
    std::transform(argv, argv + argc, std::back_inserter(arguments),
                   [](const char *argument) { return QString::fromLocal8Bit(argument); });
    argc = 1; // Qt would take --session for its own
    const auto application = makeApplication<QGuiApplication>(
        argc, argv, "oxMainProcess", "set DISPLAY to a running X server's, or start the process by xvfb-run");
    QGuiApplication::setApplicationName(QStringLiteral("oxMainProcess"));
    QGuiApplication::setApplicationVersion(QStringLiteral(OX_VERSION));
    setvbuf(stdout, nullptr, _IOLBF, 0); // a console that is a pipe shows each line at once, too

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Renders a scene and offers it to secondary processes. Prints a line when it is ready."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption session(QStringLiteral("session"),
                                     QStringLiteral("Name by which secondary processes of this user find it."),
                                     QStringLiteral("name"));
    const QCommandLineOption listen(
        QStringLiteral("listen"),
        QStringLiteral("Listen there instead: tcp://host:port, port 0 for a free one, or local:name."),
        QStringLiteral("url"));
    const QCommandLineOption size(QStringLiteral("size"), QStringLiteral("Size of the picture at first [1280x720]."),
                                  QStringLiteral("WxH"), QStringLiteral("1280x720"));
    const QCommandLineOption open(QStringLiteral("open"),
                                  QStringLiteral("Model file to show, for instance an OBJ file."),
                                  QStringLiteral("file"));
    parser.addOptions({session, listen, size, open});
    parser.process(arguments);

    QSize pictureSize;
    if (!parseSize(parser.value(size), &pictureSize))
        return fail(QStringLiteral("'%1' is no size up to 3840x2160").arg(parser.value(size)));

    Renderer renderer;
    if (!renderer.initialize())
        return fail(renderer.errorString() + QStringLiteral("; a display is needed, such as an X server's"));

    registerDataObjects();
    Scene scene;
    renderer.uploadAll(scene);
    RenderService renderService(&scene, &renderer, pictureSize);
    FileIOService fileIOService(&scene, &renderer);
    MaterialService materialService(&scene);
    CameraService cameraService(&scene);
    NodeService nodeService(&scene);
    UndoService undoService(scene.undoStack());
    MessageService messageService;
    PreferencesService preferencesService;
    KernelService kernelService;

    oxQRPCServer server;
    for (QObject *service : std::initializer_list<QObject *>{&kernelService, &fileIOService, &messageService,
                                                             &renderService, &preferencesService, &materialService,
                                                             &cameraService, &nodeService, &undoService})
        server.registerService(service);
    const QUrl address =
        parser.isSet(listen) ? QUrl(parser.value(listen)) : oxQRPCAddress::ofSession(parser.value(session));
    if (!server.listen(address))
        return fail(server.errorString());
    if (!renderService.shareFrames())
        fail(QStringLiteral("frames are not shared: ") + renderService.errorString());

    terminationSignals.connectToApplication();
    if (parser.isSet(open) && !fileIOService.loadFile(parser.value(open)))
        return 1;
    printf("oxMainProcess: ready at %s\n", server.address().toString().toUtf8().constData());
    return QGuiApplication::exec();
}
