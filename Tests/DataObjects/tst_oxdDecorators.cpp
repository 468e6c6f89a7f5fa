#include "oxdObjectManagerPython.h"

#include <QApplication>
#include <QChildEvent>
#include <QProcess>
#include <QTest>

#include <cstdio>

#include "InterpreterLock.h"
#include "oxKernelInterfaceRemote.h"
#include "oxQRPCClient.h"

namespace {

const QString tellAtExit = QStringLiteral("--tell-when-the-decorator-is-destroyed");
const QString withCleanUp = QStringLiteral("--with-a-clean-up-of-PythonQt");

} // namespace

/// A data object that tells when it goes.
class Watched : public oxdObject
{
    Q_OBJECT

public:
    using oxdObject::oxdObject;
    ~Watched() override { std::puts("decorator destroyed"); }
};
Q_DECLARE_METATYPE(Watched)

/// Sees PythonQt become the parent of a decorator, and whether its class is known to Python then.
class AdoptionWatcher : public QObject
{
    Q_OBJECT

public:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::ChildAdded || !dynamic_cast<Watched *>(static_cast<QChildEvent *>(event)->child()))
            return false;
        PythonQtClassInfo *info = PythonQt::priv()->getClassInfo(&Watched::staticMetaObject);
        classIsKnown.append(info && info->pythonQtClassWrapper());
        return false;
    }

    QVector<bool> classIsKnown;
};

/// The objects that stand for their classes, from their registration to the end of the process.
class tst_oxdDecorators : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decoratorIsDestroyedAtProcessExit_data();
    void decoratorIsDestroyedAtProcessExit();
    void classIsRegisteredBeforeItsDecorator();
};

namespace {

void startPython()
{
    static oxQRPCClient client;
    oxKernelInterface::the()->init(&client, true);
}

int childMain(bool cleansUp)
{
    startPython();
    PyGILState_Ensure();
    oxdObjectManager::registerToPython<Watched>();
    if (cleansUp)
        PythonQt::cleanup();
    std::puts("main ends");
    return 0;
}

} // namespace

void tst_oxdDecorators::decoratorIsDestroyedAtProcessExit_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("as it is") << QStringList{tellAtExit};
    QTest::newRow("after PythonQt") << QStringList{tellAtExit, withCleanUp};
}

void tst_oxdDecorators::decoratorIsDestroyedAtProcessExit()
{
    QFETCH(QStringList, arguments);
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), arguments);
    QVERIFY(process.waitForFinished(120'000));
    const QByteArray output = process.readAllStandardOutput();
    QVERIFY2(output.endsWith("main ends\ndecorator destroyed\n"), output);
    QCOMPARE(output.count("decorator destroyed"), 1);
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), 0);
}

void tst_oxdDecorators::classIsRegisteredBeforeItsDecorator()
{
    startPython();
    const InterpreterLock lock;
    AdoptionWatcher watcher;
    PythonQt::priv()->installEventFilter(&watcher);
    oxdObjectManager::registerToPython<Watched>();
    PythonQt::priv()->removeEventFilter(&watcher);
    QCOMPARE(watcher.classIsKnown, QVector<bool>{true});
}

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.contains(tellAtExit))
        return childMain(arguments.contains(withCleanUp));
    tst_oxdDecorators test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_oxdDecorators.moc"
