#include <QCoreApplication>

#include <cstdio>

#include "EchoServiceMain.h"
#include "ShapeService.h"
#include "oxFileIOService.h"
#include "oxQRPCServer.h"
#include "oxdObjectManager.h"

namespace {

/// The name of a file says how many progress values its load emits.
class NumberedFiles : public oxFileIOService
{
public:
    bool loadFile(const QString &file) override
    {
        for (int i = 0; i < file.toInt(); ++i)
            Q_EMIT progress(i);
        return true;
    }
};

class ShapeServiceMain : public ShapeService
{
public:
    int sides(const Shape &shape) override { return shape.sides; }
    Shape polygon(int sides) override { return {sides}; }
    void draw(int sides) override { Q_EMIT drawn({sides}); }
};

} // namespace

/// A main process of its own: echoMain address [registered] [shapeProperty]. Prints the address when it listens.
///
/// registered     registers the type Shape
/// shapeProperty  offers the service with a property of that type, too
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
#define REGISTER(Class, Levels, Container, Python) oxdObjectManager::registerType<Class>(0);
    OXD_CLASSES(REGISTER)
#undef REGISTER

    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains(QLatin1String("registered")))
        qRegisterMetaTypeStreamOperators<Shape>();

    EchoServiceMain echo;
    NumberedFiles files;
    ShapeServiceMain shapes;
    ShapeHolder holder;
    oxQRPCServer server;
    server.registerService(&echo);
    server.registerService(&files);
    server.registerService(&shapes);
    if (arguments.contains(QLatin1String("shapeProperty")))
        server.registerService(&holder);
    if (!server.listen(QUrl(arguments.value(1)))) {
        fprintf(stderr, "%s\n", qPrintable(server.errorString()));
        return 1;
    }
    printf("%s\n", qPrintable(server.address().toString()));
    fflush(stdout);
    return QCoreApplication::exec();
}
