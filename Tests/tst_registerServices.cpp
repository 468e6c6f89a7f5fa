#include <QTest>

#include <functional>
#include <memory>

#include "PrivateData.h"
#include "oxKernelService.h"
#include "oxKernelServiceFactory.h"
#include "oxMessageService.h"
#include "oxQRPCClient.h"
#include "oxRenderService.h"

namespace {

template<class Interface>
void file(oxBaseService *service)
{
    oxKernelServiceFactory::the()->fileService<Interface>(service);
}

class ServiceThatActs : public oxRenderService
{
public:
    explicit ServiceThatActs(std::function<void()> whenItHasTheClient)
        : m_action(std::move(whenItHasTheClient))
    {}

    void setClient(oxQRPCClient *client) override
    {
        oxRenderService::setClient(client);
        m_action();
    }

private:
    std::function<void()> m_action;
};

} // namespace

// With services of its own, of which the first does something to the others as it gets the client.
class tst_registerServices : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void servicesGetTheClientAndAreRegisteredInTheOrderOfTheRegistry();
    void withoutServicesNothingHappens();
    void nullIsPassedOver();
    void serviceThatIsFiledMeanwhileIsNotBound();
    void serviceThatIsReplacedMeanwhileIsBoundAndItsReplacementIsNot();
    void serviceThatIsDeletedBeforeItsTurnIsPassedOver();
    void serviceThatIsDeletedAsItGetsTheClientIsNotRegistered();

private:
    void registerServices(const QList<QObject *> &expected)
    {
        oxKernelInterface::the()->registerServices();
        QCOMPARE(m_client->services(), expected);
    }

    std::unique_ptr<oxQRPCClient> m_client;
    std::unique_ptr<oxMessageService> m_message;
    std::unique_ptr<oxKernelService> m_kernel;
};

void tst_registerServices::init()
{
    m_client = std::make_unique<oxQRPCClient>();
    privateData(oxKernelInterface::the())->client = m_client.get();
    m_message = std::make_unique<oxMessageService>();
    m_kernel = std::make_unique<oxKernelService>();
    file<oxRenderService>(nullptr);
    file<oxMessageService>(m_message.get());
    file<oxKernelService>(m_kernel.get());
    file<oxBaseService>(nullptr);
}

void tst_registerServices::cleanup()
{
    privateData(oxKernelInterface::the())->client = nullptr;
}

void tst_registerServices::servicesGetTheClientAndAreRegisteredInTheOrderOfTheRegistry()
{
    QList<const QObject *> withClient;
    ServiceThatActs first([&] { withClient = {m_message->client(), m_kernel->client()}; });
    file<oxRenderService>(&first);
    registerServices({&first, m_message.get(), m_kernel.get()});

    QCOMPARE(withClient, QList<const QObject *>({nullptr, nullptr}));
    for (const oxBaseService *service :
         {static_cast<oxBaseService *>(&first), static_cast<oxBaseService *>(m_message.get()),
          static_cast<oxBaseService *>(m_kernel.get())})
        QCOMPARE(service->client(), m_client.get());
}

void tst_registerServices::withoutServicesNothingHappens()
{
    file<oxMessageService>(nullptr);
    file<oxKernelService>(nullptr);
    registerServices({});
}

void tst_registerServices::nullIsPassedOver()
{
    file<oxMessageService>(nullptr);
    registerServices({m_kernel.get()});

    QVERIFY(!m_message->client());
}

void tst_registerServices::serviceThatIsFiledMeanwhileIsNotBound()
{
    oxBaseService later;
    ServiceThatActs first([&later] { file<oxBaseService>(&later); });
    file<oxRenderService>(&first);
    registerServices({&first, m_message.get(), m_kernel.get()});

    QVERIFY(!later.client());
}

void tst_registerServices::serviceThatIsReplacedMeanwhileIsBoundAndItsReplacementIsNot()
{
    oxMessageService replacement;
    ServiceThatActs first([&replacement] { file<oxMessageService>(&replacement); });
    file<oxRenderService>(&first);
    registerServices({&first, m_message.get(), m_kernel.get()});

    QVERIFY(!replacement.client());
}

void tst_registerServices::serviceThatIsDeletedBeforeItsTurnIsPassedOver()
{
    ServiceThatActs first([this] { m_message.reset(); });
    file<oxRenderService>(&first);
    registerServices({&first, m_kernel.get()});
}

void tst_registerServices::serviceThatIsDeletedAsItGetsTheClientIsNotRegistered()
{
    ServiceThatActs *first = nullptr;
    first = new ServiceThatActs([&first] { delete first; });
    file<oxRenderService>(first);
    registerServices({m_message.get(), m_kernel.get()});
}

QTEST_GUILESS_MAIN(tst_registerServices)
#include "tst_registerServices.moc"
