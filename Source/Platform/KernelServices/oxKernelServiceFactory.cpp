#include "oxKernelServiceFactory.h"

#include <QMetaMethod>

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
        for (int i = 0; i < metaObject->method(method).parameterCount(); ++i) {
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
