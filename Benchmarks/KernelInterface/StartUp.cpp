#include <PythonQt.h>
#include <PythonQt_QtAll.h>

#include <QApplication>
#include <QMainWindow>

#include <cstdio>
#include <cstring>
#include <ctime>

#include "oxKernelInterfaceRemote.h"
#include "oxQRPCClient.h"

// A process that starts the library, or with the argument "bare" PythonQt alone, and prints how
// many nanoseconds of the processor's time that took.
int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const bool bare = argc > 1 && std::strcmp(argv[1], "bare") == 0;

    const QMainWindow window; // every process has one, and with the first widget Qt reads the fonts
    oxQRPCClient client;
    timespec start;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &start);
    if (bare) {
        PythonQt::init(PythonQt::RedirectStdOut | PythonQt::IgnoreSiteModule);
        PythonQt_QtAll::init();
    } else {
        oxKernelInterface::the()->init(&client, false);
    }
    timespec end;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &end);

    std::printf("%ld\n", (end.tv_sec - start.tv_sec) * 1'000'000'000L + (end.tv_nsec - start.tv_nsec));
    return 0;
}
