#include "PluginHost.h"

#include <QtTest>

#include "OutputCapture.h"
#include "oxKernelServiceFactory.h"
#include "oxMessageService.h"

class oxMessageServiceImpl : public oxBaseService
{
    Q_OBJECT
};

class oxMessageServiceRemoteImpl : public oxBaseService
{
    Q_OBJECT
};

class oxMessageServiceImplImpl : public oxBaseService
{
    Q_OBJECT
};

class oxMessageServiceImplRemoteImpl : public oxBaseService
{
    Q_OBJECT
};

class oxMessageServiceRemoteImplImpl : public oxBaseService
{
    Q_OBJECT
};

class oxMessageServiceimpl : public oxBaseService
{
    Q_OBJECT
};

class oxMessageServiceRemote : public oxBaseService
{
    Q_OBJECT
};

class oxMessageserviceImpl : public oxBaseService
{
    Q_OBJECT
};

class oxMessageservice : public oxBaseService
{
    Q_OBJECT
};

class OXMESSAGESERVICE : public oxBaseService
{
    Q_OBJECT
};

class MyoxMessageService : public oxBaseService
{
    Q_OBJECT
};

class oxMessageServiceImplX : public oxBaseService
{
    Q_OBJECT
};

class Impl : public oxBaseService
{
    Q_OBJECT
};

class RemoteImpl : public oxBaseService
{
    Q_OBJECT
};

// Which of the filed services Python sees, and under which name.
class tst_pythonBindings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void startPrintsALineForEachBoundObject();
    void mainModuleKeepsTheLastOfTheList();
    void suffixOfAnImplementationIsDropped_data();
    void suffixOfAnImplementationIsDropped();
    void laterServiceReplacesTheEarlier();
    void pluginIsBoundSilently();
    void noOtherServiceIsVisible();
    void withoutMessageServiceTheNameIsUnknown();
    void scriptsTalkToTheFiledService();

private:
    QObject *boundInPlugin();

    std::unique_ptr<PluginHost> m_host;
    Output m_startOutput;
    oxBaseService m_noMessageService;
};

namespace {

// Two keys that come, in the order of the registry, before those of the start, and one after.
struct FirstKey
{};
struct SecondKey
{};
struct LastKey
{};

const QString pluginKey = QStringLiteral("Plugin");
const QString name = QStringLiteral("oxMessageService");

template<class Key>
void file(oxBaseService *service)
{
    oxKernelServiceFactory::the()->fileService<Key>(service);
}

oxMessageService *filedMessageService()
{
    return oxKernelServiceFactory::the()->getService<oxMessageService>();
}

} // namespace

void tst_pythonBindings::initTestCase()
{
    file<FirstKey>(new oxMessageServiceRemoteImpl);
    file<SecondKey>(new oxMessageServiceImpl);
    m_startOutput = outputOf([this] { m_host = std::make_unique<PluginHost>(); });
    cleanup();
}

// Nothing but the message service of the start under its own key.
void tst_pythonBindings::cleanup()
{
    static oxMessageService *const genuine = filedMessageService();
    file<FirstKey>(&m_noMessageService);
    file<SecondKey>(&m_noMessageService);
    file<LastKey>(&m_noMessageService);
    file<oxMessageService>(genuine);
}

// What the global is in a plugin that is loaded now; null when there is none.
QObject *tst_pythonBindings::boundInPlugin()
{
    m_host->load(m_host->write(pluginKey + ".py", "bound = globals().get('oxMessageService')\n"));
    return m_host->evaluateIn(pluginKey, QStringLiteral("bound")).value<QObject *>();
}

void tst_pythonBindings::startPrintsALineForEachBoundObject()
{
    QCOMPARE(m_startOutput.standardOutput, QByteArray("python binding: oxMessageService\n").repeated(3));
    QCOMPARE(m_startOutput.standardError, QByteArray());
}

void tst_pythonBindings::mainModuleKeepsTheLastOfTheList()
{
    QCOMPARE(PluginHost::evaluate(name).value<QObject *>(), filedMessageService());
}

void tst_pythonBindings::suffixOfAnImplementationIsDropped_data()
{
    QTest::addColumn<oxBaseService *>("service");
    QTest::addColumn<bool>("isBound");

    const auto add = [this](oxBaseService *service, bool isBound) {
        service->setParent(this);
        QTest::newRow(service->metaObject()->className()) << service << isBound;
    };
    add(new oxMessageService, true);
    add(new oxMessageServiceImpl, true);
    add(new oxMessageServiceRemoteImpl, true);
    add(new oxMessageServiceImplImpl, false);
    add(new oxMessageServiceImplRemoteImpl, false);
    add(new oxMessageServiceRemoteImplImpl, false);
    add(new oxMessageServiceImplX, false);
    add(new oxMessageServiceimpl, false);
    add(new oxMessageServiceRemote, false);
    add(new oxMessageserviceImpl, false);
    add(new oxMessageservice, false);
    add(new OXMESSAGESERVICE, false);
    add(new MyoxMessageService, false);
    add(new Impl, false);
    add(new RemoteImpl, false);
    add(new oxBaseService, false);
}

void tst_pythonBindings::suffixOfAnImplementationIsDropped()
{
    QFETCH(oxBaseService *, service);
    QFETCH(bool, isBound);

    file<oxMessageService>(&m_noMessageService);
    file<LastKey>(service);
    QCOMPARE(boundInPlugin(), isBound ? service : nullptr);
    const QString names = QStringLiteral("sorted(n for n in globals() if n[0] != '_' and n != 'bound')");
    QCOMPARE(m_host->evaluateIn(pluginKey, names).toStringList(), isBound ? QStringList{name} : QStringList());
}

void tst_pythonBindings::laterServiceReplacesTheEarlier()
{
    oxMessageServiceRemoteImpl first;
    oxMessageServiceImpl last;
    file<FirstKey>(&first);
    QCOMPARE(boundInPlugin(), filedMessageService());
    file<LastKey>(&last);
    QCOMPARE(boundInPlugin(), &last);
    file<oxMessageService>(&m_noMessageService);
    file<LastKey>(&m_noMessageService);
    QCOMPARE(boundInPlugin(), &first);
}

void tst_pythonBindings::pluginIsBoundSilently()
{
    QObject *bound = nullptr;
    const Output output = outputOf([this, &bound] { bound = boundInPlugin(); });
    QCOMPARE(bound, filedMessageService());
    QCOMPARE(output.standardOutput, QByteArray("PythonQt: no PySide2: no\nLoaded 'Plugin' python plugin.\n"));
    QCOMPARE(output.standardError, QByteArray());
}

void tst_pythonBindings::noOtherServiceIsVisible()
{
    const QString path = m_host->write(pluginKey + ".py", "print sorted(n for n in dir() if n[0] != '_')\n");
    const Output output = outputOf([this, &path] {
        m_host->load(path);
        PluginHost::run(QStringLiteral("print [n for n in dir() if n.startswith('ox')]"));
    });
    QCOMPARE(output.standardOutput,
             QByteArray("PythonQt: no PySide2: no\n"
                        "python info: '['TARNPluginWidget', 'TARNPluginWidgetId', 'oxMessageService']'\n"
                        "Loaded 'Plugin' python plugin.\n"
                        "python info: '['oxMessageService']'\n"));
}

void tst_pythonBindings::withoutMessageServiceTheNameIsUnknown()
{
    file<oxMessageService>(&m_noMessageService);
    const QString path = m_host->write(pluginKey + ".py", "oxMessageService.information('text')\n");
    const Output output = outputOf([this, &path] { m_host->load(path); });
    QCOMPARE(output.standardOutput, QByteArray("PythonQt: no PySide2: no\nLoaded 'Plugin' python plugin.\n"));
    QCOMPARE(output.standardError,
             QByteArray("python error: 'Traceback (most recent call last):'\n"
                        "python error: '  File \"<string>\", line 1, in <module>'\n"
                        "python error: 'NameError: name 'oxMessageService' is not defined'\n"));
}

void tst_pythonBindings::scriptsTalkToTheFiledService()
{
    const QSignalSpy messages(filedMessageService(), &oxMessageService::messageReceived);
    m_host->load(m_host->write(pluginKey + ".py", "oxMessageService.warning(u'gr\\xfcn')\n"));
    QCOMPARE(messages.size(), 1);
    QCOMPARE(messages.first().value(0).value<int>(), int(oxMessageService::Warning));
    QCOMPARE(messages.first().value(1).toString(), QStringLiteral("gr\u00fcn"));
}

QTEST_MAIN(tst_pythonBindings)
#include "tst_pythonBindings.moc"
