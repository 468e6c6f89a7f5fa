#include "oxKernelServiceFactory.h"

#include <QMetaMethod>

namespace {

// Data objects, their lists and vectors get their type ids later, in the order of the catalogue.
bool isOfDataObjects(const QByteArray &type)
{
    return type.contains("oxd");
}

} // namespace

oxKernelServiceFactory *oxKernelServiceFactory::the()
{
    static oxKernelServiceFactory factory;
    return &factory;
}

QList<oxBaseService *> oxKernelServiceFactory::getServices()
{
    QList<oxBaseService *> services;
    services.reserve(m_order.size());
    for (const unsigned long key : qAsConst(m_order))
        services.append(m_services.value(key));
    return services;
}

void oxKernelServiceFactory::registerTypes(oxBaseService *service) const
{
    if (!service)
        return;
    const QMetaObject *metaObject = service->metaObject();
    for (int method = QObject::staticMetaObject.methodCount(); method < metaObject->methodCount(); ++method) {
        const QList<QByteArray> types = metaObject->method(method).parameterTypes();
        for (int i = 0; i < types.size(); ++i) {
            if (isOfDataObjects(types.at(i)))
                continue;
            int type = QMetaType::UnknownType;
            void *arguments[] = {&type, &i};
            QMetaObject::metacall(service, QMetaObject::RegisterMethodArgumentMetaType, method, arguments);
        }
    }
}

void oxKernelServiceFactory::insert(unsigned long key, oxBaseService *service)
{
    if (!m_services.contains(key))
        m_order.append(key);
    m_services.insert(key, service);
}
