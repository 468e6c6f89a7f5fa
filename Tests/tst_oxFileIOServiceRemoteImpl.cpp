#include <QApplication>
#include <QLabel>
#include <QProcess>
#include <QProcessEnvironment>
#include <QPushButton>
#include <QtTest>
#include <qpa/qwindowsysteminterface.h>

#include <functional>
#include <thread>

#include <sys/resource.h>

#include "FileIOServiceMain.h"
#include "MainThread.h"
#include "NextDefinition.h"
#include "OutputCapture.h"
#include "oxFileIOServiceRemoteImpl.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowServiceRemoteImpl.h"
#include "oxQRPCClient.h"

namespace {

constexpr QLatin1String childOption("--load-without");

QStringList steps; // what was called to make a dialog ready

} // namespace

void QProgressDialog::setAutoClose(bool on)
{
    steps.append(QStringLiteral("setAutoClose"));
    nextDefinition<void(QProgressDialog *, bool)>("_ZN15QProgressDialog12setAutoCloseEb")(this, on);
}

void QProgressDialog::setBar(QProgressBar *bar)
{
    steps.append(QStringLiteral("setBar"));
    nextDefinition<void(QProgressDialog *, QProgressBar *)>("_ZN15QProgressDialog6setBarEP12QProgressBar")(this, bar);
}

void QWidget::show()
{
    if (qobject_cast<QProgressDialog *>(this))
        steps.append(QStringLiteral("show"));
    nextDefinition<void(QWidget *)>("_ZN7QWidget4showEv")(this);
}

namespace {

// Looks on while files load: at each dialog that is shown, and in the middle of each load.
class Onlooker : public QObject
{
public:
    using Action = std::function<void(QProgressDialog *)>;

    explicit Onlooker(const oxFileIOService *service, Action whileLoading = {})
        : m_service(service)
        , m_whileLoading(std::move(whileLoading))
    {
        qApp->installEventFilter(this);
    }

    QVector<QPointer<QProgressDialog>> dialogs;

    /// As it is shown, before anything else can be done with it.
    Action whenShown;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        auto *dialog = qobject_cast<QProgressDialog *>(watched);
        if (dialog && event->type() == QEvent::Show) {
            dialogs.append(dialog);
            if (whenShown)
                whenShown(dialog);
            // The service is connected by now, so that this comes after it.
            m_connection = connect(m_service, &oxFileIOService::progress, dialog, [this, dialog] { act(dialog); });
        }
        return false;
    }

private:
    void act(QProgressDialog *dialog)
    {
        disconnect(m_connection); // once
        if (m_whileLoading)
            m_whileLoading(dialog);
    }

    const oxFileIOService *m_service;
    Action m_whileLoading;
    QMetaObject::Connection m_connection;
};

class EventCounter : public QObject
{
public:
    EventCounter(QObject *watched, QEvent::Type type)
        : m_type(type)
    {
        watched->installEventFilter(this);
    }

    int count = 0;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == m_type;
        return false;
    }

private:
    QEvent::Type m_type;
};

QString label(const QProgressDialog *dialog)
{
    return dialog->findChild<QLabel *>()->text();
}

QProgressBar *bar(const QProgressDialog *dialog)
{
    return dialog->findChild<QProgressBar *>();
}

using Properties = QMap<QByteArray, QVariant>;

Properties propertiesOf(const QObject *object)
{
    Properties properties;
    for (int i = 0; i < object->metaObject()->propertyCount(); ++i) {
        const QMetaProperty property = object->metaObject()->property(i);
        properties.insert(property.name(), property.read(object));
    }
    return properties;
}

void fileServices(oxMainWindowService *mainWindow, oxFileIOService *fileIO)
{
    oxKernelServiceFactory::the()->fileService<oxMainWindowService>(mainWindow);
    oxKernelServiceFactory::the()->fileService<oxFileIOService>(fileIO);
}

// The process that is started to die: see missingMainWindowServiceIsFatal().
int loadWithoutMainWindowService(bool isFiledAsNull)
{
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    oxFileIOServiceRemoteImpl service;
    oxKernelServiceFactory::the()->fileService<oxFileIOService>(&service);
    if (isFiledAsNull)
        oxKernelServiceFactory::the()->fileService<oxMainWindowService>(nullptr);
    service.loadFile(QStringLiteral("scene"));
    return 0;
}

} // namespace

class tst_oxFileIOServiceRemoteImpl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void dialogIsAFramelessChildOfTheMainWindow();
    void dialogSaysLoadingAndHasNoCancelButton();
    void dialogHasOneBarFrom0To100();
    void dialogDoesNotCloseByItself();
    void dialogIsMadeReadyInOrder();
    void dialogIsOtherwiseAsQtMakesIt();
    void dialogHasNoParentWithoutAMainWindow();
    void readingIsFollowedByUploading();
    void only100SwitchesToUploading_data();
    void only100SwitchesToUploading();
    void labelIsSetOnceOnly();
    void barWithAnotherMaximumDoesNotSwitch();
    void uploadingBarTakesFurtherValues();
    void eachProgressRepaintsTheDialogAndProcessesEvents();
    void eachProgressLetsTheUserAct();
    void progressFromAnotherThreadIsAppliedInThisOne();
    void progressOutsideALoadDoesNothing();
    void eachLoadShowsADialogOfItsOwn();
    void loadInsideALoadHasADialogOfItsOwn();
    void nthLoadAppliesEachProgressNTimes();
    void progressIsThatOfTheFiledService();
    void fileGoesToTheMainProcess();
    void resultIsPassedThroughWhenTheDialogIsGone_data();
    void resultIsPassedThroughWhenTheDialogIsGone();
    void loadWithoutAConnectionIsFalseAndOneLine();
    void mainWindowDeletedDuringALoad();
    void barDeletedDuringALoad();
    void missingMainWindowServiceIsFatal_data();
    void missingMainWindowServiceIsFatal();
    void missingFileServiceLeavesTheDialogWithoutProgress();
    void otherOperationsAreInherited();

private:
    // The main process loads; the action runs when the load has begun, once.
    bool load(const Onlooker::Action &whileLoading = {});
    void setLoad(const QVector<int> &values, bool result);

    const QString m_file = QStringLiteral("/scenes/car");
    FileIOServiceMain m_serviceMain;
    MainThread m_main;
    std::unique_ptr<QMainWindow> m_window;
    std::unique_ptr<oxMainWindowServiceRemoteImpl> m_mainWindowService;
    std::unique_ptr<oxFileIOServiceRemoteImpl> m_service;
    std::unique_ptr<oxQRPCClient> m_client;
};

void tst_oxFileIOServiceRemoteImpl::initTestCase()
{
    m_main.offer(&m_serviceMain);
}

void tst_oxFileIOServiceRemoteImpl::init()
{
    m_window = std::make_unique<QMainWindow>();
    m_mainWindowService = std::make_unique<oxMainWindowServiceRemoteImpl>();
    m_mainWindowService->setWidget(m_window.get());
    m_service = std::make_unique<oxFileIOServiceRemoteImpl>();
    fileServices(m_mainWindowService.get(), m_service.get());

    setLoad({0, 20, 40, 60, 80, 100, 100, 100}, true);
    m_client = std::make_unique<oxQRPCClient>();
    m_service->setClient(m_client.get());
    m_client->registerService(m_service.get());
    QVERIFY(m_client->connectToHost(m_main.address()));
    QVERIFY(m_client->waitForConnected(30000));
}

void tst_oxFileIOServiceRemoteImpl::cleanup()
{
    QVERIFY(m_window->findChildren<QProgressDialog *>().isEmpty());
    fileServices(nullptr, nullptr);
    m_client.reset();
    m_service.reset();
    m_window.reset();
}

void tst_oxFileIOServiceRemoteImpl::setLoad(const QVector<int> &values, bool result)
{
    m_main.run([&] {
        m_serviceMain.values = values;
        m_serviceMain.result = result;
        m_serviceMain.files.clear();
    });
}

bool tst_oxFileIOServiceRemoteImpl::load(const Onlooker::Action &whileLoading)
{
    bool hasActed = false;
    const Onlooker onlooker(m_service.get(), [&](QProgressDialog *dialog) {
        hasActed = true;
        if (whileLoading)
            whileLoading(dialog);
    });
    return m_service->loadFile(m_file) && hasActed;
}

void tst_oxFileIOServiceRemoteImpl::dialogIsAFramelessChildOfTheMainWindow()
{
    QVERIFY(load([this](const QProgressDialog *dialog) {
        QCOMPARE(dialog->parentWidget(), m_window.get());
        QVERIFY(dialog->isVisible());
        QVERIFY(!dialog->isModal());
        // Qt makes a dialog of it.
        QCOMPARE(int(dialog->windowFlags()), 0x2000800 | int(Qt::Dialog));
    }));
}

void tst_oxFileIOServiceRemoteImpl::dialogSaysLoadingAndHasNoCancelButton()
{
    QVERIFY(load([](const QProgressDialog *dialog) {
        QCOMPARE(label(dialog).toUtf8(), QByteArray("Loading ..."));
        QCOMPARE(dialog->findChildren<QLabel *>().size(), 1);
        QVERIFY(dialog->findChildren<QAbstractButton *>().isEmpty());
    }));
}

void tst_oxFileIOServiceRemoteImpl::dialogHasOneBarFrom0To100()
{
    QVERIFY(load([](const QProgressDialog *dialog) {
        QCOMPARE(dialog->findChildren<QProgressBar *>().size(), 1);
        QCOMPARE(bar(dialog)->parent(), dialog);
        QVERIFY(bar(dialog)->isVisible());
        QCOMPARE(bar(dialog)->minimum(), 0);
        QCOMPARE(bar(dialog)->maximum(), 100);
        // The dialog answers for the bar that was set into it.
        bar(dialog)->setRange(3, 97);
        QCOMPARE(dialog->minimum(), 3);
        QCOMPARE(dialog->maximum(), 97);
    }));
}

void tst_oxFileIOServiceRemoteImpl::dialogDoesNotCloseByItself()
{
    QVERIFY(load([this](QProgressDialog *dialog) {
        QVERIFY(!dialog->autoClose());
        bar(dialog)->setRange(0, 50);
        Q_EMIT m_service->progress(50);
        QVERIFY(dialog->isVisible());
    }));
}

void tst_oxFileIOServiceRemoteImpl::dialogIsMadeReadyInOrder()
{
    steps.clear();
    QVERIFY(load());

    QCOMPARE(steps, QStringList({"setAutoClose", "setBar", "show"}));
}

// All that Qt tells of it and of its bar, as it is shown.
void tst_oxFileIOServiceRemoteImpl::dialogIsOtherwiseAsQtMakesIt()
{
    QVector<Properties> dialogs;
    QVector<Properties> bars;
    Onlooker onlooker(m_service.get());
    onlooker.whenShown = [&](const QProgressDialog *dialog) {
        dialogs.append(propertiesOf(dialog));
        bars.append(propertiesOf(bar(dialog)));
    };
    QVERIFY(m_service->loadFile(m_file));
    QProgressDialog likeIt(QStringLiteral("Loading ..."), QString(), 0, 100, m_window.get(),
                           Qt::CustomizeWindowHint | Qt::FramelessWindowHint);
    auto *itsBar = new QProgressBar(&likeIt);
    itsBar->setRange(0, 100);
    likeIt.setAutoClose(false);
    likeIt.setBar(itsBar);
    likeIt.show();

    QCOMPARE(dialogs.size(), 2);
    QVERIFY(dialogs.first().contains("minimumDuration"));
    QCOMPARE(dialogs.first(), dialogs.last());
    QCOMPARE(bars.first(), bars.last());
}

void tst_oxFileIOServiceRemoteImpl::dialogHasNoParentWithoutAMainWindow()
{
    m_window.reset(new QMainWindow); // the service knows of none, now
    QVERIFY(!m_mainWindowService->getWidget());

    QVERIFY(load([](const QProgressDialog *dialog) {
        QVERIFY(!dialog->parent());
        QVERIFY(dialog->isVisible());
    }));
    QVERIFY(QApplication::topLevelWidgets() == QWidgetList{m_window.get()});
}

void tst_oxFileIOServiceRemoteImpl::readingIsFollowedByUploading()
{
    QVector<int> values;
    QStringList labels;
    QVERIFY(load([&](const QProgressDialog *dialog) {
        connect(m_service.get(), &oxFileIOService::progress, dialog, [&, dialog](int value) {
            values.append(value);
            labels.append(label(dialog));
        });
    }));

    // That of 0 brought the onlooker.
    QCOMPARE(values, QVector<int>({20, 40, 60, 80, 100, 100, 100}));
    const int switched = values.indexOf(100);
    for (int i = 0; i < labels.size(); ++i)
        QCOMPARE(labels.at(i).toUtf8(), i < switched ? QByteArray("Loading ...") : QByteArray("Uploading ..."));
}

void tst_oxFileIOServiceRemoteImpl::only100SwitchesToUploading_data()
{
    QTest::addColumn<int>("value");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<int>("maximum");
    QTest::addColumn<int>("shownValue");

    const QByteArray loading = "Loading ...";
    QTest::newRow("-1: not the bar's") << -1 << loading << 100 << 0;
    QTest::newRow("0") << 0 << loading << 100 << 0;
    QTest::newRow("1") << 1 << loading << 100 << 1;
    QTest::newRow("99") << 99 << loading << 100 << 99;
    QTest::newRow("100") << 100 << QByteArray("Uploading ...") << 0 << 100;
    QTest::newRow("101: not the bar's") << 101 << loading << 100 << 0;
    QTest::newRow("least") << std::numeric_limits<int>::min() << loading << 100 << 0;
    QTest::newRow("most") << std::numeric_limits<int>::max() << loading << 100 << 0;
}

void tst_oxFileIOServiceRemoteImpl::only100SwitchesToUploading()
{
    QFETCH(int, value);
    QFETCH(QByteArray, text);
    QFETCH(int, maximum);
    QFETCH(int, shownValue);

    QVERIFY(load([&](const QProgressDialog *dialog) {
        Q_EMIT m_service->progress(value);
        QCOMPARE(label(dialog).toUtf8(), text);
        QCOMPARE(bar(dialog)->minimum(), 0);
        QCOMPARE(bar(dialog)->maximum(), maximum);
        QCOMPARE(dialog->value(), shownValue);
        QVERIFY(dialog->isVisible());
    }));
}

void tst_oxFileIOServiceRemoteImpl::labelIsSetOnceOnly()
{
    QVERIFY(load([this](QProgressDialog *dialog) {
        Q_EMIT m_service->progress(100);
        dialog->setLabelText(QStringLiteral("as it was"));
        Q_EMIT m_service->progress(100);
        QCOMPARE(label(dialog), QStringLiteral("as it was"));
    }));
}

void tst_oxFileIOServiceRemoteImpl::barWithAnotherMaximumDoesNotSwitch()
{
    QVERIFY(load([this](const QProgressDialog *dialog) {
        bar(dialog)->setMaximum(200);
        Q_EMIT m_service->progress(100);
        QCOMPARE(label(dialog), QStringLiteral("Loading ..."));
        QCOMPARE(bar(dialog)->maximum(), 200);
        QCOMPARE(bar(dialog)->value(), 100);
    }));
}

void tst_oxFileIOServiceRemoteImpl::uploadingBarTakesFurtherValues()
{
    QVERIFY(load([this](const QProgressDialog *dialog) {
        Q_EMIT m_service->progress(100);
        for (const int value : {7, 101, 100}) {
            Q_EMIT m_service->progress(value);
            QCOMPARE(dialog->value(), value);
            QCOMPARE(label(dialog), QStringLiteral("Uploading ..."));
            QCOMPARE(bar(dialog)->maximum(), 0);
        }
    }));
}

void tst_oxFileIOServiceRemoteImpl::eachProgressRepaintsTheDialogAndProcessesEvents()
{
    QVERIFY(load([this](QProgressDialog *dialog) {
        const EventCounter paints(dialog, QEvent::Paint);
        bool isProcessed = false;
        QMetaObject::invokeMethod(
            this, [&isProcessed] { isProcessed = true; }, Qt::QueuedConnection);
        Q_EMIT m_service->progress(0); // no new value
        QCOMPARE(paints.count, 1);
        QVERIFY(isProcessed);
    }));
}

void tst_oxFileIOServiceRemoteImpl::eachProgressLetsTheUserAct()
{
    QVERIFY(load([this](QProgressDialog *dialog) {
        const EventCounter turns(dialog, QEvent::Wheel);
        const QPoint corner(1, 1);
        QWindowSystemInterface::handleWheelEvent(dialog->windowHandle(), corner, dialog->mapToGlobal(corner), QPoint(),
                                                 QPoint(0, 120));
        QCOMPARE(turns.count, 0);
        Q_EMIT m_service->progress(0);
        QCOMPARE(turns.count, 1);
    }));
}

void tst_oxFileIOServiceRemoteImpl::progressFromAnotherThreadIsAppliedInThisOne()
{
    QVERIFY(load([this](const QProgressDialog *dialog) {
        std::thread([this] { Q_EMIT m_service->progress(42); }).join();
        QCOMPARE(dialog->value(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(dialog->value(), 42);
    }));
}

void tst_oxFileIOServiceRemoteImpl::progressOutsideALoadDoesNothing()
{
    const QWidgetList before = QApplication::topLevelWidgets();
    for (const int value : {0, 100, 101})
        QMetaObject::invokeMethod(m_service.get(), "changedProgress", Q_ARG(int, value));
    QVERIFY(load());
    for (const int value : {0, 100, 101})
        Q_EMIT m_service->progress(value);

    QCOMPARE(QApplication::topLevelWidgets(), before);
}

void tst_oxFileIOServiceRemoteImpl::eachLoadShowsADialogOfItsOwn()
{
    const Onlooker onlooker(m_service.get(), [](const QProgressDialog *dialog) {
        QCOMPARE(label(dialog), QStringLiteral("Loading ..."));
        QCOMPARE(bar(dialog)->maximum(), 100);
    });
    for (int i = 1; i <= 3; ++i) {
        QVERIFY(m_service->loadFile(m_file));
        QCOMPARE(onlooker.dialogs.size(), i);
        QVERIFY(!onlooker.dialogs.last());
    }
}

void tst_oxFileIOServiceRemoteImpl::loadInsideALoadHasADialogOfItsOwn()
{
    QPointer<QProgressDialog> outer;
    QPointer<QProgressDialog> inner;
    const auto lookAtInner = [&] {
        const int before = outer->value();
        Q_EMIT m_service->progress(30);
        QCOMPARE(inner->value(), 30);
        QCOMPARE(outer->value(), before);
    };
    const auto loadInside = [&] {
        QVERIFY(m_service->loadFile(m_file));
        QVERIFY(inner.isNull());
        QVERIFY(outer->isVisible());
        const int before = outer->value();
        Q_EMIT m_service->progress(100);
        QCOMPARE(outer->value(), before);
        QCOMPARE(label(outer), QStringLiteral("Loading ..."));
    };
    const Onlooker onlooker(m_service.get(), [&](QProgressDialog *dialog) {
        const bool isFirst = !outer;
        (isFirst ? outer : inner) = dialog;
        isFirst ? loadInside() : lookAtInner();
    });

    QVERIFY(m_service->loadFile(m_file));
    QCOMPARE(onlooker.dialogs.size(), 2);
    QVERIFY(!outer);
}

void tst_oxFileIOServiceRemoteImpl::nthLoadAppliesEachProgressNTimes()
{
    for (int n = 1; n <= 4; ++n) {
        QVERIFY(load([&](QProgressDialog *dialog) {
            const EventCounter paints(dialog, QEvent::Paint);
            Q_EMIT m_service->progress(0);
            QCOMPARE(paints.count, n);
        }));
    }
}

void tst_oxFileIOServiceRemoteImpl::progressIsThatOfTheFiledService()
{
    oxFileIOService other;
    fileServices(m_mainWindowService.get(), &other);

    QVERIFY(load([&](const QProgressDialog *dialog) {
        Q_EMIT m_service->progress(30);
        QCOMPARE(dialog->value(), -1);
        Q_EMIT other.progress(40);
        QCOMPARE(dialog->value(), 40);
    }));
}

void tst_oxFileIOServiceRemoteImpl::fileGoesToTheMainProcess()
{
    QVERIFY(load());
    QStringList files;
    m_main.run([&] { files = m_serviceMain.files; });
    QCOMPARE(files, QStringList(m_file));
}

void tst_oxFileIOServiceRemoteImpl::resultIsPassedThroughWhenTheDialogIsGone_data()
{
    QTest::addColumn<QVector<int>>("values");
    QTest::addColumn<bool>("result");

    QTest::newRow("loads") << QVector<int>{0, 100} << true;
    QTest::newRow("loads without progress") << QVector<int>() << true;
    QTest::newRow("fails on the way") << QVector<int>{0, 50} << false;
    QTest::newRow("fails while it uploads") << QVector<int>{0, 100, 100} << false;
    QTest::newRow("fails at once") << QVector<int>() << false;
}

void tst_oxFileIOServiceRemoteImpl::resultIsPassedThroughWhenTheDialogIsGone()
{
    QFETCH(QVector<int>, values);
    QFETCH(bool, result);
    setLoad(values, result);
    const Onlooker onlooker(m_service.get());

    QCOMPARE(m_service->loadFile(m_file), result);
    QCOMPARE(onlooker.dialogs.size(), 1);
    QVERIFY(!onlooker.dialogs.first());
}

void tst_oxFileIOServiceRemoteImpl::loadWithoutAConnectionIsFalseAndOneLine()
{
    m_client->disconnectFromHost();
    const Onlooker onlooker(m_service.get());
    bool isLoaded = true;
    const Output output = outputOf([&] { isLoaded = m_service->loadFile(m_file); });

    QVERIFY(!isLoaded);
    QCOMPARE(output.standardError,
             QByteArray("oxQRPCClient: not connected, oxFileIOService::loadFile(QString) does nothing\n"));
    QCOMPARE(output.standardOutput, QByteArray());
    QCOMPARE(onlooker.dialogs.size(), 1);
    QVERIFY(!onlooker.dialogs.first());
}

void tst_oxFileIOServiceRemoteImpl::mainWindowDeletedDuringALoad()
{
    QVERIFY(load([this](const QProgressDialog *) {
        m_window.reset(new QMainWindow);
        Q_EMIT m_service->progress(100);
    }));
}

void tst_oxFileIOServiceRemoteImpl::barDeletedDuringALoad()
{
    QVERIFY(load([this](const QProgressDialog *dialog) {
        delete bar(dialog);
        Q_EMIT m_service->progress(100);
        QCOMPARE(label(dialog), QStringLiteral("Loading ..."));
    }));
}

void tst_oxFileIOServiceRemoteImpl::missingMainWindowServiceIsFatal_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("nothing") << QByteArray("oxKernelServiceFactory: couldn't find class '19oxMainWindowService'!\n");
    QTest::newRow("null") << QByteArray("oxKernelServiceFactory: service '19oxMainWindowService' is NULL!\n");
}

void tst_oxFileIOServiceRemoteImpl::missingMainWindowServiceIsFatal()
{
    QFETCH(QByteArray, line);
    QProcess process;
    // Where a sanitizer is built in, what it says of this end is no finding.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"ASAN_OPTIONS", "TSAN_OPTIONS"})
        environment.insert(name, environment.value(name) + ":log_path=stderr");
    process.setProcessEnvironment(environment);
    process.start(QCoreApplication::applicationFilePath(), {childOption, QString::fromLatin1(QTest::currentDataTag())});
    QVERIFY(process.waitForFinished());

    QVERIFY(process.exitStatus() == QProcess::CrashExit || process.exitCode() != 0);
    QVERIFY(process.readAllStandardError().contains(line));
    QCOMPARE(process.readAllStandardOutput(), QByteArray());
}

void tst_oxFileIOServiceRemoteImpl::missingFileServiceLeavesTheDialogWithoutProgress()
{
    fileServices(m_mainWindowService.get(), nullptr);
    bool isLoaded = false;
    const Output output = outputOf([&] {
        isLoaded = load([this](const QProgressDialog *dialog) {
            Q_EMIT m_service->progress(50);
            QCOMPARE(dialog->value(), -1);
        });
    });

    QVERIFY(isLoaded);
    QCOMPARE(output.standardError,
             QByteArray("oxKernelServiceFactory: service '15oxFileIOService' is NULL!\n"
                        "QObject::connect: Cannot connect (nullptr)::progress(int) to "
                        "oxFileIOServiceRemoteImpl::changedProgress(int)\n"));
}

void tst_oxFileIOServiceRemoteImpl::otherOperationsAreInherited()
{
    oxQRPCClient client;
    m_service->setClient(&client);
    const Output output = outputOf([this] {
        m_service->newFile();
        m_service->saveFile(m_file);
        m_service->getTARNDir();
        m_service->getTARNDataDir();
        m_service->getTARNExamplesDir();
        m_service->getImageReadFilter();
        m_service->getImageWriteFilter();
    });

    QByteArray expected;
    for (const char *operation : {"newFile()", "saveFile(QString)", "getTARNDir()", "getTARNDataDir()",
                                  "getTARNExamplesDir()", "getImageReadFilter()", "getImageWriteFilter()"})
        expected += QByteArray("oxQRPCClient: not connected, oxFileIOService::") + operation + " does nothing\n";
    QCOMPARE(output.standardError, expected);
    m_service->setClient(nullptr);
}

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.value(1) == childOption)
        return loadWithoutMainWindowService(arguments.value(2) == QLatin1String("null"));
    tst_oxFileIOServiceRemoteImpl test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_oxFileIOServiceRemoteImpl.moc"
