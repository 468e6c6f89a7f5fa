#include <QTest>

#include "NextDefinition.h"
#include "OutputCapture.h"
#include "oxFileIOService.h"
#include "oxKernelService.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxMessageService.h"
#include "oxRenderService.h"
#include "oxdTimer.h"

struct ArgumentOfASlot
{};
Q_DECLARE_METATYPE(ArgumentOfASlot)

class ServiceWithATypeOfItsOwn : public oxBaseService
{
    Q_OBJECT

public Q_SLOTS:
    void take(const ArgumentOfASlot &) {}
    void takeTimers(const QList<oxdTimer> &) {}
};

namespace {

struct TypeRegistration
{
    const oxKernelServiceFactory *factory;
    const oxBaseService *service;
    bool isFiled;
};

QVector<TypeRegistration> typeRegistrations;
QVector<QPair<unsigned long, oxBaseService *>> insertions;

oxKernelServiceFactory *factory()
{
    return oxKernelServiceFactory::the();
}

template<class Service>
struct Lookup
{
    Service *service = nullptr;
    QByteArray output;
    QByteArray error;
};

template<class Service>
Lookup<Service> lookUp()
{
    Service *service = nullptr;
    const Output output = outputOf([&] { service = factory()->getService<Service>(); });
    return {service, output.standardOutput, output.standardError};
}

// Services of the types given, filed in that order.
template<class... Service>
QList<oxBaseService *> file()
{
    const QList<oxBaseService *> services{new Service...};
    auto next = services.begin();
    (factory()->fileService<Service>(*next++), ...);
    return services;
}

} // namespace

void oxKernelServiceFactory::registerTypes(oxBaseService *service) const
{
    typeRegistrations.append({this, service, the()->getServices().contains(service)});
    using Function = void(const oxKernelServiceFactory *, oxBaseService *);
    nextDefinition<Function>("_ZNK22oxKernelServiceFactory13registerTypesEP13oxBaseService")(this, service);
}

void oxKernelServiceFactory::insert(unsigned long key, oxBaseService *service)
{
    insertions.append({key, service});
    using Function = void(oxKernelServiceFactory *, unsigned long, oxBaseService *);
    nextDefinition<Function>("_ZN22oxKernelServiceFactory6insertEmP13oxBaseService")(this, key, service);
}

// The registry is one for the process, and nothing is ever taken out: each test files types of its own.
class tst_oxKernelServiceFactory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isOneForTheProcess();
    void typeThatWasNeverFiledIsReported();
    void nullThatWasFiledIsReported();
    void objectOfAnotherTypeGivesNullAndNoLine();
    void filedServiceIsFoundByItsInterface();
    void keyIsTheHashCodeOfTheInterfacesTypeInformation();
    void subclassFiledUnderItsInterfaceIsNotFoundByItsOwnType();
    void secondServiceReplacesTheFirstWhichStaysAlive();
    void nothingIsCached();
    void servicesAreListedInTheOrderOfFiling();
    void replacedServiceKeepsItsPlace();
    void listIsACopy();
    void forgottenServiceIsNullUnderEachOfItsKeysAndUnderNoOther();
    void typesAreRegisteredOnceForEachFilingAndAfterIt();
    void typesOfSlotArgumentsBecomeKnown();
};

void tst_oxKernelServiceFactory::isOneForTheProcess()
{
    QVERIFY(oxKernelServiceFactory::the());
    QCOMPARE(oxKernelServiceFactory::the(), oxKernelServiceFactory::the());
}

void tst_oxKernelServiceFactory::typeThatWasNeverFiledIsReported()
{
    for (int i = 0; i < 2; ++i) {
        const auto lookup = lookUp<oxMainWindowService>();
        QVERIFY(!lookup.service);
        QCOMPARE(lookup.error, QByteArray("oxKernelServiceFactory: couldn't find class '19oxMainWindowService'!\n"));
        QCOMPARE(lookup.output, QByteArray());
    }
    QCOMPARE(lookUp<oxFileIOService>().error,
             QByteArray("oxKernelServiceFactory: couldn't find class '15oxFileIOService'!\n"));
}

void tst_oxKernelServiceFactory::nullThatWasFiledIsReported()
{
    factory()->fileService<oxRenderService>(nullptr);

    const auto lookup = lookUp<oxRenderService>();
    QVERIFY(!lookup.service);
    QCOMPARE(lookup.error, QByteArray("oxKernelServiceFactory: service '15oxRenderService' is NULL!\n"));
    QCOMPARE(lookup.output, QByteArray());
}

void tst_oxKernelServiceFactory::objectOfAnotherTypeGivesNullAndNoLine()
{
    struct Wanted : oxBaseService
    {};
    factory()->fileService<Wanted>(new oxMessageService);

    const auto lookup = lookUp<Wanted>();
    QVERIFY(!lookup.service);
    QCOMPARE(lookup.error + lookup.output, QByteArray());
}

void tst_oxKernelServiceFactory::filedServiceIsFoundByItsInterface()
{
    auto *kernel = new oxKernelService;
    factory()->fileService<oxKernelService>(kernel);

    const auto lookup = lookUp<oxKernelService>();
    QCOMPARE(lookup.service, kernel);
    QCOMPARE(lookup.error + lookup.output, QByteArray());
}

void tst_oxKernelServiceFactory::keyIsTheHashCodeOfTheInterfacesTypeInformation()
{
    struct Implementation : oxKernelService
    {};
    insertions.clear();
    auto *service = new Implementation;
    factory()->fileService<oxKernelService>(service);
    factory()->fileService<oxBaseService>(service);

    const QVector<QPair<unsigned long, oxBaseService *>> expected{{typeid(oxKernelService).hash_code(), service},
                                                                  {typeid(oxBaseService).hash_code(), service}};
    QCOMPARE(insertions, expected);
}

void tst_oxKernelServiceFactory::subclassFiledUnderItsInterfaceIsNotFoundByItsOwnType()
{
    struct Interface : oxBaseService
    {};
    struct Implementation : Interface
    {};
    auto *service = new Implementation;
    factory()->fileService<Interface>(service);

    QCOMPARE(lookUp<Interface>().service, service);
    QVERIFY(lookUp<Implementation>().error.startsWith("oxKernelServiceFactory: couldn't find class '"));
}

void tst_oxKernelServiceFactory::secondServiceReplacesTheFirstWhichStaysAlive()
{
    struct Service : oxBaseService
    {};
    const QPointer<Service> first = new Service;
    const QPointer<Service> second = new Service;
    factory()->fileService<Service>(first);
    factory()->fileService<Service>(second);

    QCOMPARE(lookUp<Service>().service, second.data());
    QVERIFY(first);
    QVERIFY(!factory()->getServices().contains(first));
    QCOMPARE(factory()->getServices().count(second), 1);
    delete first;
}

void tst_oxKernelServiceFactory::nothingIsCached()
{
    struct Service : oxBaseService
    {};
    QVERIFY(lookUp<Service>().error.contains("couldn't find class"));

    for (int i = 0; i < 3; ++i) {
        auto *service = new Service;
        factory()->fileService<Service>(service);
        QCOMPARE(lookUp<Service>().service, service);
    }
    factory()->fileService<Service>(nullptr);
    QVERIFY(lookUp<Service>().error.contains("is NULL!"));
}

void tst_oxKernelServiceFactory::servicesAreListedInTheOrderOfFiling()
{
    struct A : oxBaseService
    {};
    struct B : oxBaseService
    {};
    struct C : oxBaseService
    {};
    struct D : oxBaseService
    {};
    struct E : oxBaseService
    {};
    struct F : oxBaseService
    {};
    const int before = factory()->getServices().size();
    const QList<oxBaseService *> services = file<D, A, F, C, B, E>();

    QCOMPARE(factory()->getServices().mid(before), services);
}

void tst_oxKernelServiceFactory::replacedServiceKeepsItsPlace()
{
    struct A : oxBaseService
    {};
    struct B : oxBaseService
    {};
    struct C : oxBaseService
    {};
    const int before = factory()->getServices().size();
    QList<oxBaseService *> services = file<A, B, C>();
    services[1] = new B;
    factory()->fileService<B>(services.at(1));

    QCOMPARE(factory()->getServices().mid(before), services);
}

void tst_oxKernelServiceFactory::listIsACopy()
{
    struct Service : oxBaseService
    {};
    file<Service>();
    const QList<oxBaseService *> before = factory()->getServices();
    factory()->getServices().clear();

    QCOMPARE(factory()->getServices(), before);
}

void tst_oxKernelServiceFactory::forgottenServiceIsNullUnderEachOfItsKeysAndUnderNoOther()
{
    struct A : oxBaseService
    {};
    struct B : oxBaseService
    {};
    struct C : oxBaseService
    {};
    const int before = factory()->getServices().size();
    const QList<oxBaseService *> services = file<A, B, C>();
    factory()->fileService<C>(services.first());
    typeRegistrations.clear();
    factory()->forgetService(services.first());

    QCOMPARE(factory()->getServices().mid(before), QList<oxBaseService *>({nullptr, services.at(1), nullptr}));
    QVERIFY(typeRegistrations.isEmpty());
    factory()->forgetService(services.at(2)); // is replaced already
    QCOMPARE(factory()->getServices().mid(before), QList<oxBaseService *>({nullptr, services.at(1), nullptr}));
}

void tst_oxKernelServiceFactory::typesAreRegisteredOnceForEachFilingAndAfterIt()
{
    struct A : oxBaseService
    {};
    struct B : oxBaseService
    {};
    typeRegistrations.clear();
    const QList<oxBaseService *> services = file<A, B>();
    factory()->fileService<A>(services.first());
    factory()->fileService<B>(nullptr);

    QList<const oxBaseService *> registered;
    for (const TypeRegistration &registration : qAsConst(typeRegistrations)) {
        QCOMPARE(registration.factory, factory());
        QVERIFY(registration.isFiled);
        registered.append(registration.service);
    }
    const QList<const oxBaseService *> expected{services[0], services[1], services[0], nullptr};
    QCOMPARE(registered, expected);
}

void tst_oxKernelServiceFactory::typesOfSlotArgumentsBecomeKnown()
{
    QCOMPARE(QMetaType::type("ArgumentOfASlot"), int(QMetaType::UnknownType));
    file<ServiceWithATypeOfItsOwn>();

    QVERIFY(QMetaType::type("ArgumentOfASlot") != QMetaType::UnknownType);
    QCOMPARE(QMetaType::type("QList<oxdTimer>"), int(QMetaType::UnknownType)); // that of data objects comes later
}

QTEST_GUILESS_MAIN(tst_oxKernelServiceFactory)
#include "tst_oxKernelServiceFactory.moc"
