#include <QCoreApplication>

#include <cstdio>

#include "EchoServiceMain.h"
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

} // namespace

/// A main process of its own: echoMain address. Prints the address when it listens.
int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
#define REGISTER(Class, Levels, Container, Python) oxdObjectManager::registerType<Class>(0);
    OXD_CLASSES(REGISTER)
#undef REGISTER

    EchoServiceMain echo;
    NumberedFiles files;
    oxQRPCServer server;
    server.registerService(&echo);
    server.registerService(&files);
    if (!server.listen(QUrl(QCoreApplication::arguments().value(1)))) {
        fprintf(stderr, "%s\n", qPrintable(server.errorString()));
        return 1;
    }
    printf("%s\n", qPrintable(server.address().toString()));
    fflush(stdout);
    return QCoreApplication::exec();
}
