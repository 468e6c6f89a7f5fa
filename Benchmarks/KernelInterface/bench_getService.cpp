#include <benchmark/benchmark.h>

#include <QHash>

#include "oxKernelInterfaceRemote.h"
#include "oxKernelServiceFactory.h"
#include "oxMainWindowService.h"
#include "oxQRPCClient.h"

// The typed look-up of a service: beside a look-up in a hash of the same size and the same cast.

namespace {

using Service = oxMainWindowService;

oxKernelServiceFactory *filledFactory()
{
    static oxQRPCClient client;
    static const bool filled = [] {
        oxKernelInterface::the()->init(&client, false);
        return true;
    }();
    Q_UNUSED(filled)
    return oxKernelServiceFactory::the();
}

void getServiceBare(benchmark::State &state)
{
    oxKernelServiceFactory *factory = filledFactory();
    QHash<unsigned long, oxBaseService *> services;
    const QList<oxBaseService *> all = factory->getServices();
    for (oxBaseService *service : all)
        services.insert(typeid(*service).hash_code(), service);
    oxBaseService *service = factory->getService<Service>();
    unsigned long key = typeid(*service).hash_code();
    for (auto _ : state) {
        benchmark::DoNotOptimize(key);
        benchmark::DoNotOptimize(dynamic_cast<Service *>(services.constFind(key).value()));
    }
}

void getServiceOurs(benchmark::State &state)
{
    oxKernelServiceFactory *factory = filledFactory();
    for (auto _ : state) {
        benchmark::DoNotOptimize(factory);
        benchmark::DoNotOptimize(factory->getService<Service>());
    }
}

BENCHMARK(getServiceBare)->Name("getService/bare");
BENCHMARK(getServiceOurs)->Name("getService/ours");

} // namespace
